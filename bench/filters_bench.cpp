// What the filters do to a bitmap of 1024 x 1024, each into a new one, beside libraries that have the same.
#include "frame/source/graphics/cairo/cairobitmap.h"
#include "frame/source/graphics/cairo/cairobitmapfactory.h"
#include "graphics/bitmapfilters/bitmapfilter.h"
#include "graphics/bitmapfilters/bitmapfilterfactory.h"
#include "gui/drawing/bitmappixelaccessor.h"
#include <algorithm>
#include <benchmark/benchmark.h>
#include <cmath>
#include <cstring>
#include <memory>
#include <random>
#include <vector>
#ifdef BENCH_GDKPIXBUF  // before Qt, which defines words that it uses as names
#include <gdk-pixbuf/gdk-pixbuf.h>
#endif
#ifdef BENCH_QTWIDGETS
#include <QImage>
#include <QPainter>
#endif

using namespace Tessarine;
using namespace Tessarine::Graphics;

namespace {
constexpr int32_t kSide = 1024;
constexpr int64_t kCount = int64_t(kSide) * kSide;
constexpr double kHue = 24, kSaturation = 20, kLuminance = 10;  // degrees and percent
using Pixels = std::vector<uint32_t>;

/** Colours of all hues that change slowly, with grain, as photographs have. Not opaque: soft to all sides. */
Pixels drawn(bool opaque) {
    std::mt19937 random(1);
    const auto wave = [&random](double place) { return uint32_t(120 + 100 * std::sin(place) + double(random() % 16)); };
    Pixels pixels;
    for (int32_t y = 0; y < kSide; ++y)
        for (int32_t x = 0; x < kSide; ++x) {
            const auto edge = uint32_t(std::min({x, y, kSide - 1 - x, kSide - 1 - y, 255}));
            pixels.push_back((opaque ? 255 : edge) << 24 | wave(x / 90.0) << 16 | wave(y / 70.0) << 8 |
                             wave((x + y) / 110.0));
        }
    return pixels;
}

struct Ours {
    explicit Ours(const Pixels& pixels) {
        const BitmapPixelAccessor rows(input, kLockWrite);
        std::copy(pixels.begin(), pixels.end(), rows.row(0));
    }

    auto desaturate() { return run(BitmapFilter::Desaturate::create(factory, 1, 1)); }
    auto adjustHSL() { return run(BitmapFilter::AdjustHSL::create(factory, kHue, kSaturation, kLuminance)); }
    auto tint() { return run(BitmapFilter::Tint::create(factory, 0xFF336699, 1)); }
    auto mirror() { return run(BitmapFilter::Mirror::create(factory, true, false)); }
    auto rotate() { return run(BitmapFilter::Rotate::create(factory, 30 / 360.0, true, false, nullptr)); }
    auto scale(int32_t side) { return run(BitmapFilter::PNMScale::create(factory, {double(side), double(side)})); }

private:
    IPtr<IBitmap> run(IBitmapFilter* made) {
        const OPtr<IBitmapFilter> filter(made);
        filter->setInputValue("Bitmap", FVariant(static_cast<IBitmap*>(input)));
        FVariant result;
        if (filter->runFilter(0) == kResultOk)
            filter->getValue("Bitmap", result, kOutputValue);
        return FUnknownPtr<IBitmap>(result.getObject());
    }

    const OPtr<CairoBitmapFactory> bitmaps = new CairoBitmapFactory;
    const OPtr<BitmapFilterFactory> factory = new BitmapFilterFactory(bitmaps);
    const OPtr<CairoBitmap> input = CairoBitmap::create(kSide, kSide);
};

/** What one writes without any library. */
struct PlainLoop {
    explicit PlainLoop(const Pixels& pixels) : input(pixels) {}

    Pixels adjustHSL() {
        Pixels result(input.size());
        for (size_t i = 0; i < input.size(); ++i)
            result[i] = shifted(input[i]);
        return result;
    }

private:
    static float channel(float low, float high, float hue) {
        hue -= std::floor(hue);
        if (hue < 1 / 6.0F)
            return low + (high - low) * 6 * hue;
        if (hue < 0.5F)
            return high;
        return hue < 2 / 3.0F ? low + (high - low) * 6 * (2 / 3.0F - hue) : low;
    }
    static uint32_t shifted(uint32_t pixel) {
        const float red = float(pixel >> 16 & 0xFF) / 255, green = float(pixel >> 8 & 0xFF) / 255,
                    blue = float(pixel & 0xFF) / 255;
        const float most = std::max({red, green, blue}), least = std::min({red, green, blue}), range = most - least;
        float light = (most + least) / 2, saturation = 0, hue = 0;
        if (range > 0) {
            saturation = range / (light <= 0.5F ? most + least : 2 - most - least);
            if (most == red)
                hue = (green - blue) / range;
            else
                hue = most == green ? 2 + (blue - red) / range : 4 + (red - green) / range;
        }
        hue = hue / 6 + float(kHue / 360);
        saturation = std::min(1.0F, saturation * float(1 + kSaturation / 100));
        light = std::min(1.0F, light * float(1 + kLuminance / 100));
        const float high = light <= 0.5F ? light * (1 + saturation) : light + saturation - light * saturation;
        const float low = 2 * light - high;
        const auto byte = [&](float place) { return uint32_t(channel(low, high, place) * 255 + 0.5F); };
        return (pixel & 0xFF000000) | byte(hue + 1 / 3.0F) << 16 | byte(hue) << 8 | byte(hue - 1 / 3.0F);
    }

    const Pixels input;
};

#ifdef BENCH_QTWIDGETS
struct Qt5 {
    explicit Qt5(const Pixels& pixels)
        : image(QImage(reinterpret_cast<const uchar*>(pixels.data()), kSide, kSide, QImage::Format_ARGB32).copy()),
          painted(image.convertToFormat(QImage::Format_ARGB32_Premultiplied)) {}

    QImage desaturate() { return image.convertToFormat(QImage::Format_Grayscale8); }
    QImage adjustHSL() {
        QImage result(image.size(), QImage::Format_ARGB32);
        for (int y = 0; y < kSide; ++y) {
            const auto* from = reinterpret_cast<const QRgb*>(image.constScanLine(y));
            auto* to = reinterpret_cast<QRgb*>(result.scanLine(y));
            std::transform(from, from + kSide, to, shifted);
        }
        return result;
    }
    QImage mirror() { return image.mirrored(true, false); }
    QImage rotate() {
        QImage result(painted.size(), painted.format());
        result.fill(0);
        QPainter painter(&result);
        painter.setRenderHint(QPainter::SmoothPixmapTransform);
        painter.translate(kSide / 2, kSide / 2);
        painter.rotate(-30);
        painter.drawImage(-kSide / 2, -kSide / 2, painted);
        return result;
    }
    QImage scale(int32_t side) { return image.scaled(side, side, Qt::IgnoreAspectRatio, Qt::SmoothTransformation); }

private:
    static QRgb shifted(QRgb pixel) {
        const QColor color = QColor::fromRgba(pixel).toHsl();
        const int hue = (std::max(color.hslHue(), 0) + int(kHue)) % 360;
        const int saturation = std::min(255, int(color.hslSaturation() * (1 + kSaturation / 100)));
        const int light = std::min(255, int(color.lightness() * (1 + kLuminance / 100)));
        return QColor::fromHsl(hue, saturation, light, color.alpha()).rgba();
    }

    const QImage image;
    const QImage painted;  // as it likes to draw best
};
#endif

#ifdef BENCH_GDKPIXBUF
struct GdkPixbuf2 {
    struct Release {
        void operator()(GdkPixbuf* image) const { g_object_unref(image); }
    };
    using Image = std::unique_ptr<GdkPixbuf, Release>;

    explicit GdkPixbuf2(const Pixels& pixels) : image(made()) {
        std::memcpy(gdk_pixbuf_get_pixels(image.get()), pixels.data(), pixels.size() * sizeof(uint32_t));
    }

    Image desaturate() {
        Image result = made();
        gdk_pixbuf_saturate_and_pixelate(image.get(), result.get(), 0, FALSE);
        return result;
    }
    Image mirror() { return Image(gdk_pixbuf_flip(image.get(), TRUE)); }
    Image scale(int32_t side) { return Image(gdk_pixbuf_scale_simple(image.get(), side, side, GDK_INTERP_BILINEAR)); }

private:
    static Image made() { return Image(gdk_pixbuf_new(GDK_COLORSPACE_RGB, TRUE, 8, kSide, kSide)); }

    const Image image;
};
#endif

template <class Peer, class Work>
void runAll(benchmark::State& state, bool opaque, int64_t items, const Work& work) {
    Peer peer(drawn(opaque));
    for (auto _ : state)
        benchmark::DoNotOptimize(work(peer));
    state.SetItemsProcessed(state.iterations() * items);
}
}  // namespace

template <class Peer>
void Desaturate(benchmark::State& state) {
    runAll<Peer>(state, true, kCount, [](Peer& peer) { return peer.desaturate(); });
}

template <class Peer>
void AdjustHSL(benchmark::State& state) {
    runAll<Peer>(state, true, kCount, [](Peer& peer) { return peer.adjustHSL(); });
}

template <class Peer>
void Tint(benchmark::State& state) {
    runAll<Peer>(state, true, kCount, [](Peer& peer) { return peer.tint(); });
}

template <class Peer>
void Mirror(benchmark::State& state) {
    runAll<Peer>(state, true, kCount, [](Peer& peer) { return peer.mirror(); });
}

template <class Peer>
void Rotate(benchmark::State& state) {
    runAll<Peer>(state, true, kCount, [](Peer& peer) { return peer.rotate(); });
}

template <class Peer>
void Scale(benchmark::State& state) {
    runAll<Peer>(state, true, 1, [&state](Peer& peer) { return peer.scale(int32_t(state.range(0))); });
}

template <class Peer>
void ScaleSoftEdged(benchmark::State& state) {
    runAll<Peer>(state, false, 1, [&state](Peer& peer) { return peer.scale(int32_t(state.range(0))); });
}

/** Time of all threads, since some peers take the whole machine. */
#define BENCHMARK_FILTER(Filter, Peer) BENCHMARK_TEMPLATE(Filter, Peer)->MeasureProcessCPUTime()
#define BENCHMARK_MOST(Peer)                            \
    BENCHMARK_FILTER(Desaturate, Peer);                 \
    BENCHMARK_FILTER(Mirror, Peer);                     \
    BENCHMARK_FILTER(Scale, Peer)->Arg(333)->Arg(1500); \
    BENCHMARK_FILTER(ScaleSoftEdged, Peer)->Arg(333)->Arg(1500)

BENCHMARK_MOST(Ours);
BENCHMARK_FILTER(AdjustHSL, Ours);
BENCHMARK_FILTER(Tint, Ours);
BENCHMARK_FILTER(Rotate, Ours);
BENCHMARK_FILTER(AdjustHSL, PlainLoop);
#ifdef BENCH_QTWIDGETS
BENCHMARK_MOST(Qt5);
BENCHMARK_FILTER(AdjustHSL, Qt5);
BENCHMARK_FILTER(Rotate, Qt5);
#endif
#ifdef BENCH_GDKPIXBUF
BENCHMARK_MOST(GdkPixbuf2);
#endif
