// Images of 256 x 256 out of files in memory and into them, beside the libraries that do the work when they are called for it by
// themselves, and beside another framework. All end with the same pixels: words with alpha, colours not multiplied by it.
#include "frame/source/graphics/cairo/cairobitmapfactory.h"
#include "frame/source/graphics/cairo/imagecodec.h"
#include "gui/drawing/bitmappixelaccessor.h"
#include "storage/fmstream.h"
#include <algorithm>
#include <benchmark/benchmark.h>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <jpeglib.h>
#include <memory>
#include <png.h>
#include <string>
#include <vector>
#ifdef BENCH_QTWIDGETS
#include <QBuffer>
#include <QImage>
#endif

using namespace Tessarine;
using namespace Tessarine::Graphics;

namespace {
constexpr int32_t kSide = 256;
using Pixels = std::vector<uint32_t>;

/** As skins have them: a shape with soft edges on nothing, shaded, with a little grain. Opaque: on a ground. */
Pixels drawn(bool opaque) {
    Pixels pixels;
    for (int32_t y = 0; y < kSide; ++y)
        for (int32_t x = 0; x < kSide; ++x) {
            const int32_t away = (x - 128) * (x - 128) + (y - 128) * (y - 128);
            const int32_t alpha = std::clamp((14400 - away) / 8, 0, 255);
            const auto shade = uint32_t(60 + y / 2 + (x * 7 + y * 13) % 5);
            const uint32_t color = alpha > 0 ? shade << 16 | (shade + 20) << 8 | (shade + 40) : 0x202020;
            pixels.push_back(opaque ? 0xFF000000 | color : uint32_t(alpha) << 24 | (alpha > 0 ? color : 0));
        }
    return pixels;
}

struct LibPng {
    static void append(png_structp png, png_bytep bytes, size_t size) {
        static_cast<std::string*>(png_get_io_ptr(png))->append(reinterpret_cast<char*>(bytes), size);
    }
    static void take(png_structp png, png_bytep bytes, size_t size) {
        auto*& from = *static_cast<const char**>(png_get_io_ptr(png));
        std::memcpy(bytes, from, size);
        from += size;
    }

    static std::string write(const Pixels& pixels, bool opaque = false) {
        png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
        png_infop info = png_create_info_struct(png);
        std::string file;
        png_set_write_fn(png, &file, append, nullptr);
        png_set_IHDR(png, info, kSide, kSide, 8, opaque ? PNG_COLOR_TYPE_RGB : PNG_COLOR_TYPE_RGBA, 0, 0, 0);
        png_write_info(png, info);
        if (opaque)
            png_set_filler(png, 0, PNG_FILLER_AFTER);
        png_set_bgr(png);
        for (int32_t y = 0; y < kSide; ++y)
            png_write_row(png, reinterpret_cast<png_const_bytep>(pixels.data() + y * kSide));
        png_write_end(png, nullptr);
        png_destroy_write_struct(&png, &info);
        return file;
    }
    static uint32_t read(const std::string& file) {
        png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
        png_infop info = png_create_info_struct(png);
        const char* from = file.data();
        png_set_read_fn(png, &from, take);
        png_read_info(png, info);
        png_set_expand(png);
        png_set_strip_16(png);
        png_set_gray_to_rgb(png);
        png_set_filler(png, 0xFF, PNG_FILLER_AFTER);
        png_set_bgr(png);
        png_read_update_info(png, info);
        const auto pixels = std::make_unique_for_overwrite<uint32_t[]>(size_t(kSide) * kSide);
        for (int32_t y = 0; y < kSide; ++y)
            png_read_row(png, reinterpret_cast<png_bytep>(pixels.get() + y * kSide), nullptr);
        png_read_end(png, nullptr);
        png_destroy_read_struct(&png, &info, nullptr);
        return pixels[kSide * kSide / 2 + kSide / 2];
    }
};

struct LibJpeg {
    static std::string write(const Pixels& pixels) {
        jpeg_compress_struct info;
        jpeg_error_mgr errors;
        info.err = jpeg_std_error(&errors);
        jpeg_create_compress(&info);
        unsigned char* bytes = nullptr;
        unsigned long size = 0;
        jpeg_mem_dest(&info, &bytes, &size);
        info.image_width = info.image_height = kSide;
        info.input_components = 4;
        info.in_color_space = JCS_EXT_BGRA;
        jpeg_set_defaults(&info);
        jpeg_set_quality(&info, 90, TRUE);
        jpeg_start_compress(&info, TRUE);
        for (Pixels copy = pixels; info.next_scanline < info.image_height;) {
            auto* row = reinterpret_cast<JSAMPROW>(copy.data() + info.next_scanline * kSide);
            jpeg_write_scanlines(&info, &row, 1);
        }
        jpeg_finish_compress(&info);
        jpeg_destroy_compress(&info);
        const std::string file(bytes, bytes + size);
        std::free(bytes);
        return file;
    }
    static uint32_t read(const std::string& file) {
        jpeg_decompress_struct info;
        jpeg_error_mgr errors;
        info.err = jpeg_std_error(&errors);
        jpeg_create_decompress(&info);
        jpeg_mem_src(&info, reinterpret_cast<const unsigned char*>(file.data()), file.size());
        jpeg_read_header(&info, TRUE);
        info.out_color_space = JCS_EXT_BGRA;
        jpeg_start_decompress(&info);
        const auto pixels = std::make_unique_for_overwrite<uint32_t[]>(size_t(kSide) * kSide);
        while (info.output_scanline < info.output_height) {
            auto* row = reinterpret_cast<JSAMPROW>(pixels.get() + info.output_scanline * kSide);
            jpeg_read_scanlines(&info, &row, 1);
        }
        jpeg_finish_decompress(&info);
        jpeg_destroy_decompress(&info);
        return pixels[kSide * kSide / 2 + kSide / 2];
    }
};

struct Ours {
    static std::string write(const Pixels& pixels) {
        const OPtr<CairoBitmap> bitmap(CairoBitmap::create(kSide, kSide));
        {
            const BitmapPixelAccessor rows(bitmap, kLockWrite);
            std::copy(pixels.begin(), pixels.end(), rows.row(0));
        }
        FMemoryStream stream;
        kPngCodec.write(bitmap, &stream);
        return {stream.getData(), size_t(stream.getSize())};
    }
    static uint32_t read(const std::string& file) {
        static CairoBitmapFactory factory;
        FMemoryStream stream(const_cast<char*>(file.data()), int32_t(file.size()));
        const OPtr<IBitmap> bitmap(factory.createFromStream(&stream));
        const BitmapPixelAccessor rows(bitmap, kLockRead);
        return rows.isValid() ? rows.row(kSide / 2)[kSide / 2] : 0;
    }
};

#ifdef BENCH_QTWIDGETS
struct Qt5 {
    static std::string write(const Pixels& pixels) {
        const QImage image(reinterpret_cast<const uchar*>(pixels.data()), kSide, kSide, QImage::Format_ARGB32);
        QByteArray file;
        QBuffer buffer(&file);
        buffer.open(QIODevice::WriteOnly);
        image.save(&buffer, "PNG");
        return file.toStdString();
    }
    static uint32_t read(const std::string& file) {
        QImage image;
        image.loadFromData(reinterpret_cast<const uchar*>(file.data()), int(file.size()));
        image = image.convertToFormat(QImage::Format_ARGB32);
        return image.pixel(kSide / 2, kSide / 2);
    }
};
#endif

template <class Peer>
void readAll(benchmark::State& state, const std::string& file, uint32_t expected) {
    for (auto _ : state)
        if (Peer::read(file) != expected)
            state.SkipWithError("not what was written");
    state.SetItemsProcessed(state.iterations());
}
}  // namespace

template <class Peer>
void ReadPng(benchmark::State& state) {
    readAll<Peer>(state, LibPng::write(drawn(false)), drawn(false)[kSide * kSide / 2 + kSide / 2]);
}

template <class Peer>
void ReadOpaquePng(benchmark::State& state) {
    readAll<Peer>(state, LibPng::write(drawn(true), true), drawn(true)[kSide * kSide / 2 + kSide / 2]);
}

template <class Peer>
void ReadJpeg(benchmark::State& state) {
    const std::string file = LibJpeg::write(drawn(true));
    readAll<Peer>(state, file, LibJpeg::read(file));
}

template <class Peer>
void WritePng(benchmark::State& state) {
    const Pixels pixels = drawn(false);
    for (auto _ : state)
        benchmark::DoNotOptimize(Peer::write(pixels).size());
    state.SetItemsProcessed(state.iterations());
}

#define BENCHMARK_PNG(Peer)                  \
    BENCHMARK_TEMPLATE(ReadPng, Peer);       \
    BENCHMARK_TEMPLATE(ReadOpaquePng, Peer); \
    BENCHMARK_TEMPLATE(WritePng, Peer)

BENCHMARK_PNG(Ours);
BENCHMARK_TEMPLATE(ReadJpeg, Ours);
BENCHMARK_PNG(LibPng);
BENCHMARK_TEMPLATE(ReadJpeg, LibJpeg);
#ifdef BENCH_QTWIDGETS
BENCHMARK_PNG(Qt5);
BENCHMARK_TEMPLATE(ReadJpeg, Qt5);
#endif
