#include "frame/source/graphics/cairo/imagecodec.h"
#include "gui/drawing/bitmappixelaccessor.h"
#include <bit>
#include <csetjmp>
#include <png.h>

// Failures of the library come back as jumps: whatever has an end of its own stands outside of the functions that call setjmp
// and of those that the library calls.

namespace Tessarine::Graphics {
namespace {
constexpr bool kBlueIsFirst = std::endian::native == std::endian::little;
constexpr int kFillerPlace = kBlueIsFirst ? PNG_FILLER_AFTER : PNG_FILLER_BEFORE;

[[noreturn]] void onFailure(png_structp png, png_const_charp) {
    png_longjmp(png, 1);
}

void onWarning(png_structp, png_const_charp) {}

void readBytes(png_structp png, png_bytep to, size_t count) {
    if (!static_cast<ImageSource*>(png_get_io_ptr(png))->read(to, count))
        onFailure(png, nullptr);
}

void writeBytes(png_structp png, png_bytep from, size_t count) {
    int32_t written = 0;
    static_cast<IBStream*>(png_get_io_ptr(png))->write(from, int32_t(count), &written);
    if (written != int32_t(count))
        onFailure(png, nullptr);
}

void flushNothing(png_structp) {}

/** The library's two records, of reading or of writing. */
template <auto Create, auto Destroy>
struct PngRecords {
    PngRecords()
        : png(Create(PNG_LIBPNG_VER_STRING, nullptr, onFailure, onWarning)),
          info(png ? png_create_info_struct(png) : nullptr) {}
    ~PngRecords() { Destroy(&png, &info); }
    PngRecords(const PngRecords&) = delete;
    PngRecords& operator=(const PngRecords&) = delete;

    png_structp png;
    png_infop info;
};

void destroyReading(png_structpp png, png_infopp info) {
    png_destroy_read_struct(png, info, nullptr);
}

using Reading = PngRecords<png_create_read_struct, destroyReading>;
using Writing = PngRecords<png_create_write_struct, png_destroy_write_struct>;

/** What is damaged anywhere is refused; what says more than the pixels is passed over unread. */
bool readHeader(const Reading& reading) {
    png_structp png = reading.png;
    if (setjmp(png_jmpbuf(png)))
        return false;
    png_set_user_limits(png, IBitmapFactory::kMaxSide, IBitmapFactory::kMaxSide);
    png_set_benign_errors(png, 0);
    png_set_crc_action(png, PNG_CRC_NO_CHANGE, PNG_CRC_ERROR_QUIT);
    png_set_keep_unknown_chunks(png, PNG_HANDLE_CHUNK_NEVER, nullptr, -1);
    png_read_info(png, reading.info);
    return true;
}

/** Whatever the file holds comes as words of 0xAARRGGBB. */
void orderWords(png_structp png) {
    png_set_expand(png);
    png_set_strip_16(png);
    png_set_gray_to_rgb(png);
    png_set_filler(png, 0xFF, kFillerPlace);
    if (kBlueIsFirst)
        png_set_bgr(png);
    else
        png_set_swap_alpha(png);
}

bool readRows(const Reading& reading, const BitmapPixelAccessor& pixels) {
    png_structp png = reading.png;
    if (setjmp(png_jmpbuf(png)))
        return false;
    orderWords(png);
    int passes = png_set_interlace_handling(png);
    png_read_update_info(png, reading.info);
    if (png_get_rowbytes(png, reading.info) != size_t(pixels.getWidth()) * sizeof(uint32_t))
        return false;
    for (; passes > 0; --passes)
        for (int32_t y = 0; y < pixels.getHeight(); ++y)
            png_read_row(png, reinterpret_cast<png_bytep>(pixels.row(y)), nullptr);
    png_read_end(png, nullptr);
    return true;
}

CairoBitmap* readPng(ImageSource& source) {
    const Reading reading;
    if (!reading.info)
        return nullptr;
    png_set_read_fn(reading.png, &source, readBytes);
    if (!readHeader(reading))
        return nullptr;
    OPtr<CairoBitmap> bitmap(CairoBitmap::create(png_get_image_width(reading.png, reading.info),
                                                 png_get_image_height(reading.png, reading.info)));
    const BitmapPixelAccessor pixels(bitmap, kLockWrite);
    return pixels.isValid() && readRows(reading, pixels) ? bitmap.detach() : nullptr;
}

bool isOpaque(const BitmapPixelAccessor& pixels) {
    uint32_t common = 0xFF000000;
    for (int32_t y = 0; y < pixels.getHeight() && common == 0xFF000000; ++y)
        for (int32_t x = 0; x < pixels.getWidth(); ++x)
            common &= pixels.row(y)[x] | 0x00FFFFFF;
    return common == 0xFF000000;
}

bool writeRows(const Writing& writing, const BitmapPixelAccessor& pixels, bool opaque) {
    png_structp png = writing.png;
    if (setjmp(png_jmpbuf(png)))
        return false;
    png_set_IHDR(png, writing.info, uint32_t(pixels.getWidth()), uint32_t(pixels.getHeight()), 8,
                 opaque ? PNG_COLOR_TYPE_RGB : PNG_COLOR_TYPE_RGB_ALPHA, PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_write_info(png, writing.info);
    if (opaque)
        png_set_filler(png, 0, kFillerPlace);
    if (kBlueIsFirst)
        png_set_bgr(png);
    else if (!opaque)
        png_set_swap_alpha(png);
    for (int32_t y = 0; y < pixels.getHeight(); ++y)
        png_write_row(png, reinterpret_cast<png_const_bytep>(pixels.row(y)));
    png_write_end(png, nullptr);
    return true;
}

bool writePng(IBitmap* bitmap, IBStream* stream) {
    const BitmapPixelAccessor pixels(bitmap, kLockRead);
    const Writing writing;
    if (!pixels.isValid() || !writing.info)
        return false;
    png_set_write_fn(writing.png, stream, writeBytes, flushNothing);
    return writeRows(writing, pixels, isOpaque(pixels));
}
}  // namespace

const ImageCodec kPngCodec = {"png", "PNG", "image/png", "\x89PNG\r\n\x1A\n", readPng, writePng};

}  // namespace Tessarine::Graphics
