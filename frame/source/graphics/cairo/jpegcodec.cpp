#include "frame/source/graphics/cairo/imagecodec.h"
#include "gui/drawing/bitmappixelaccessor.h"
#include <algorithm>
#include <bit>
#include <csetjmp>
#include <cstdio>
#include <jerror.h>
#include <jpeglib.h>

// As with PNG, failures jump: nothing with an end of its own stands where a jump passes.

namespace Tessarine::Graphics {
namespace {
constexpr long kMostMemory = 512l << 20;  // three coefficients of 16 bits for each pixel of the largest picture
constexpr int32_t kMostScans = 100;       // programs that write progressive files need some 10
constexpr J_COLOR_SPACE kWords = std::endian::native == std::endian::little ? JCS_EXT_BGRA : JCS_EXT_ARGB;

/** What is odd about a file and changes no pixel. */
constexpr int kHarmless[] = {JWRN_EXTRANEOUS_DATA, JWRN_JFIF_MAJOR, JWRN_ADOBE_XFORM, JWRN_BOGUS_ICC,
                             JWRN_NOT_SEQUENTIAL};

/** How each colour space of files is read. */
struct ColorSpaceRow {
    J_COLOR_SPACE stored;
    J_COLOR_SPACE read;
};
constexpr ColorSpaceRow kColorSpaces[] = {
    {JCS_GRAYSCALE, kWords  },
    {JCS_YCbCr,     kWords  },
    {JCS_RGB,       kWords  },
    {JCS_CMYK,      JCS_CMYK},
    {JCS_YCCK,      JCS_CMYK},
};

struct JpegReading {
    explicit JpegReading(ImageSource& bytes);
    ~JpegReading() { jpeg_destroy_decompress(&info); }
    JpegReading(const JpegReading&) = delete;
    JpegReading& operator=(const JpegReading&) = delete;

    ImageSource& bytes;
    jpeg_decompress_struct info = {};
    jpeg_error_mgr errors = {};
    jpeg_source_mgr source = {};
    jpeg_progress_mgr progress = {};
    jmp_buf failure;
};

template <class Info>
JpegReading& readingOf(const Info* info) {
    return *static_cast<JpegReading*>(info->client_data);
}

[[noreturn]] void onFailure(j_common_ptr info) {
    std::longjmp(readingOf(info).failure, 1);
}

void onMessage(j_common_ptr info, int level) {
    if (level < 0 && std::ranges::find(kHarmless, info->err->msg_code) == std::end(kHarmless))
        onFailure(info);
}

void printNothing(j_common_ptr) {}

void onProgress(j_common_ptr info) {
    if (readingOf(info).info.input_scan_number > kMostScans)
        onFailure(info);
}

void beginSource(j_decompress_ptr) {}
void endSource(j_decompress_ptr) {}

boolean fillSource(j_decompress_ptr info) {
    const ImageSource::Bytes block = readingOf(info).bytes.takeBlock();
    if (block.empty())
        ERREXIT(info, JERR_INPUT_EOF);
    info->src->next_input_byte = block.data();
    info->src->bytes_in_buffer = block.size();
    return TRUE;
}

void skipInSource(j_decompress_ptr info, long count) {
    const size_t all = count > 0 ? size_t(count) : 0;
    const size_t ahead = std::min(all, info->src->bytes_in_buffer);
    info->src->next_input_byte += ahead;
    info->src->bytes_in_buffer -= ahead;
    if (!readingOf(info).bytes.skip(all - ahead))
        ERREXIT(info, JERR_INPUT_EOF);
}

JpegReading::JpegReading(ImageSource& bytes) : bytes(bytes) {
    info.client_data = this;
    info.err = jpeg_std_error(&errors);
    errors.error_exit = onFailure;
    errors.emit_message = onMessage;
    errors.output_message = printNothing;
    source.init_source = beginSource;
    source.fill_input_buffer = fillSource;
    source.skip_input_data = skipInSource;
    source.resync_to_restart = jpeg_resync_to_restart;
    source.term_source = endSource;
    progress.progress_monitor = onProgress;
}

bool readHeader(JpegReading& reading) {
    jpeg_decompress_struct& info = reading.info;
    if (setjmp(reading.failure))
        return false;
    jpeg_create_decompress(&info);
    info.mem->max_memory_to_use = kMostMemory;
    info.src = &reading.source;
    info.progress = &reading.progress;
    jpeg_read_header(&info, TRUE);
    const auto* row = std::ranges::find(kColorSpaces, info.jpeg_color_space, &ColorSpaceRow::stored);
    if (row == std::end(kColorSpaces))
        return false;
    info.out_color_space = row->read;
    return true;
}

bool readRows(JpegReading& reading, const BitmapPixelAccessor& pixels) {
    jpeg_decompress_struct& info = reading.info;
    if (setjmp(reading.failure))
        return false;
    jpeg_start_decompress(&info);
    while (info.output_scanline < info.output_height) {
        auto* row = reinterpret_cast<JSAMPROW>(pixels.row(int32_t(info.output_scanline)));
        jpeg_read_scanlines(&info, &row, 1);
    }
    jpeg_finish_decompress(&info);
    return true;
}

/** Four bytes of inks, as amounts or, after an Adobe marker, as the light that they leave. */
uint32_t fromInks(uint32_t word, bool asLight) {
    const auto inks = std::bit_cast<std::array<uint8_t, 4>>(asLight ? word : ~word);
    const uint32_t light = uint32_t(inks[3]) << 24 | uint32_t(inks[0]) << 16 | uint32_t(inks[1]) << 8 | inks[2];
    return multiplied(light) | 0xFF000000;
}

void replaceInks(const BitmapPixelAccessor& pixels, bool asLight) {
    for (int32_t y = 0; y < pixels.getHeight(); ++y)
        std::transform(pixels.row(y), pixels.row(y) + pixels.getWidth(), pixels.row(y),
                       [asLight](uint32_t word) { return fromInks(word, asLight); });
}

CairoBitmap* readJpeg(ImageSource& source) {
    JpegReading reading(source);
    if (!readHeader(reading))
        return nullptr;
    OPtr<CairoBitmap> bitmap(CairoBitmap::create(reading.info.image_width, reading.info.image_height));
    const BitmapPixelAccessor pixels(bitmap, kLockWrite);
    if (!pixels.isValid() || !readRows(reading, pixels))
        return nullptr;
    if (reading.info.out_color_space == JCS_CMYK)
        replaceInks(pixels, reading.info.saw_Adobe_marker);
    return bitmap.detach();
}
}  // namespace

const ImageCodec kJpegCodec = {"jpg", "JPEG", "image/jpeg", "\xFF\xD8\xFF", readJpeg, nullptr};

}  // namespace Tessarine::Graphics
