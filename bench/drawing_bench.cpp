// What windows are made of, drawn onto a picture of 1,024 x 1,024: through our draw device, beside the library below it when it is
// called by itself, and beside another framework. An item is one line, rectangle, frame or label.
#include "frame/source/graphics/cairo/cairobitmap.h"
#include "graphics/platformgraphics.h"
#include "gui/drawing/bitmappixelaccessor.h"
#include "gui/drawing/ubitmap.h"
#include "gui/drawing/ubitmapweaver.h"
#include "gui/drawing/uoffscreen.h"
#include <algorithm>
#include <benchmark/benchmark.h>
#include <pango/pangocairo.h>
#include <string>
#include <vector>
#ifdef BENCH_QTWIDGETS
#include <QImage>
#include <QPainter>
#endif

using namespace Tessarine;

namespace {
constexpr int32_t kSide = 1024;
constexpr uint32_t kOpaque = 0xFF405060, kHalf = 0x80405060;
constexpr int32_t kCellsSide = 24, kMargin = 8;  // of a frame made of nine cells, and each of its margins
constexpr int32_t kFontSize = 12;
constexpr char kFontName[] = "DejaVu Sans";
const URect kFrame(100, 100, 220, 140), kButton(10, 10, 110, 40);
const UPoint kLabelPlace(20, 200);

struct Line {
    UPoint from, to;
};
constexpr int32_t kLineStart = 10, kLineEnd = 300, kSlope = 160;
const Line kLevel = {UPoint(kLineStart, kLineStart), UPoint(kLineEnd, kLineStart)};
const Line kSlanted = {UPoint(kLineStart, kLineStart), UPoint(kLineEnd, kLineStart + kSlope)};

using Pixels = std::vector<uint32_t>;

/** A frame with a darker margin, of one alpha. */
Pixels cells(uint32_t color) {
    Pixels pixels(size_t(kCellsSide) * kCellsSide, color);
    for (int32_t index = 0; index < kCellsSide; ++index)
        pixels[size_t(index)] = pixels[size_t(index) * kCellsSide] = color & 0xFF000000;
    return pixels;
}

/** 16 letters; another text for each number. */
template <class Char>
std::basic_string<Char> label(int32_t number) {
    constexpr char kText[] = "A label, 16 wide";
    constexpr int32_t kChanging = 6, kLetters = 26;
    std::basic_string<Char> text(std::begin(kText), std::end(kText) - 1);
    for (auto place = text.end() - kChanging; place != text.end(); ++place, number /= kLetters)
        *place = Char('a' + number % kLetters);
    return text;
}

struct Ours {
    using Image = OPtr<UBitmap>;
    using Text = std::u16string;

    Ours() {
        installTessarinePlatformGraphics();
        page = OPtr<UBitmap>(new UBitmap(UPoint(kSide, kSide), 32));
        device = OPtr<UOffscreen>(new UOffscreen(page));
    }
    void setPen(uint32_t spec, bool smooth) { device->setPen(UPen(UColor(spec), 1, UPen::kSolid, smooth)); }
    void drawLine(const Line& line) {
        device->moveTo(line.from);
        device->lineTo(line.to);
    }
    void setBrush(uint32_t spec) { device->setBrush(UBrush(UColor(spec))); }
    void fillRect(const URect& rect) { device->paintRect(rect); }
    static Image imageOf(const Pixels& pixels) {
        Image image(new UBitmap(UPoint(kCellsSide, kCellsSide), 32));
        const BitmapPixelAccessor rows(image->getBitmap(), Graphics::kLockWrite);
        std::copy(pixels.begin(), pixels.end(), rows.row(0));
        return image;
    }
    void drawFrame(const Image& image) {
        UBitmapWeaver::weave(*device, image, kScaledMarginArea, kFrame, kFrame,
                             URect(kMargin, kMargin, kMargin, kMargin));
    }
    uint32_t pixel(const UPoint& place) const {
        const BitmapPixelAccessor rows(page->getBitmap(), Graphics::kLockRead);
        return rows.row(place.y)[place.x];
    }
    void setFont() {
        device->setFont(UFont(u"DejaVu Sans", kFontSize));
        setPen(kOpaque, true);
    }
    void drawText(const Text& text) { device->drawString(text.c_str(), kLabelPlace); }
    void drawNewText(const Text& text) { drawText(text); }

    OPtr<UBitmap> page;
    OPtr<UOffscreen> device;
};

struct Cairo {
    using Image = cairo_surface_t*;

    Cairo() : page(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, kSide, kSide)), context(cairo_create(page)) {
        cairo_set_antialias(context, CAIRO_ANTIALIAS_NONE);
        cairo_set_line_width(context, 1);
    }
    ~Cairo() {
        cairo_destroy(context);
        cairo_surface_destroy(page);
    }
    Cairo(const Cairo&) = delete;
    Cairo& operator=(const Cairo&) = delete;

    void setPen(uint32_t spec, bool smooth) {
        setBrush(spec);
        cairo_set_antialias(context, smooth ? CAIRO_ANTIALIAS_DEFAULT : CAIRO_ANTIALIAS_NONE);
    }
    void drawLine(const Line& line) {
        cairo_move_to(context, line.from.x + 0.5, line.from.y + 0.5);
        cairo_line_to(context, line.to.x + 0.5, line.to.y + 0.5);
        cairo_stroke(context);
    }
    void setBrush(uint32_t spec) {
        const auto channel = [spec](int32_t shift) { return (spec >> shift & 0xFF) / 255.0; };
        cairo_set_source_rgba(context, channel(16), channel(8), channel(0), channel(24));
    }
    void fillRect(const URect& rect) {
        cairo_rectangle(context, rect.left, rect.top, rect.getWidth(), rect.getHeight());
        cairo_fill(context);
    }
    static Image imageOf(const Pixels& pixels) {
        Image image = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, kCellsSide, kCellsSide);
        auto* bytes = reinterpret_cast<uint32_t*>(cairo_image_surface_get_data(image));
        std::ranges::transform(pixels, bytes, Graphics::multiplied);
        cairo_surface_mark_dirty(image);
        return image;
    }
    void drawCell(Image image, const URect& from, const URect& to) {
        cairo_save(context);
        cairo_rectangle(context, to.left, to.top, to.getWidth(), to.getHeight());
        cairo_clip(context);
        cairo_translate(context, to.left, to.top);
        cairo_scale(context, double(to.getWidth()) / from.getWidth(), double(to.getHeight()) / from.getHeight());
        cairo_surface_t* part =
            cairo_surface_create_for_rectangle(image, from.left, from.top, from.getWidth(), from.getHeight());
        cairo_set_source_surface(context, part, 0, 0);
        cairo_pattern_set_extend(cairo_get_source(context), CAIRO_EXTEND_PAD);
        cairo_paint(context);
        cairo_surface_destroy(part);
        cairo_restore(context);
    }
    uint32_t pixel(const UPoint& place) const {
        cairo_surface_flush(page);
        const unsigned char* bytes = cairo_image_surface_get_data(page);
        return reinterpret_cast<const uint32_t*>(bytes)[place.y * kSide + place.x];
    }

    cairo_surface_t* page;
    cairo_t* context;
};

struct Pango : Cairo {
    using Text = std::string;

    Pango() : fonts(pango_cairo_create_context(context)), font(pango_font_description_from_string(kFontName)) {
        pango_font_description_set_absolute_size(font, kFontSize * PANGO_SCALE);
        cairo_font_options_t* options = cairo_font_options_create();
        cairo_font_options_set_antialias(options, CAIRO_ANTIALIAS_GRAY);
        cairo_font_options_set_hint_metrics(options, CAIRO_HINT_METRICS_OFF);
        pango_cairo_context_set_font_options(fonts, options);
        cairo_font_options_destroy(options);
    }
    ~Pango() {
        if (kept)
            g_object_unref(kept);
        g_object_unref(fonts);
        pango_font_description_free(font);
    }
    Pango(const Pango&) = delete;
    Pango& operator=(const Pango&) = delete;

    void setFont() { setPen(kOpaque, true); }
    PangoLayout* layoutOf(const Text& text) {
        PangoLayout* layout = pango_layout_new(fonts);
        pango_layout_set_font_description(layout, font);
        pango_layout_set_text(layout, text.data(), int(text.size()));
        return layout;
    }
    void draw(PangoLayout* layout) {
        cairo_move_to(context, kLabelPlace.x, kLabelPlace.y - pango_layout_get_baseline(layout) / double(PANGO_SCALE));
        pango_cairo_show_layout(context, layout);
        cairo_new_path(context);
    }
    /** The layout is made once, for the first text. */
    void drawText(const Text& text) {
        if (!kept)
            kept = layoutOf(text);
        draw(kept);
    }
    void drawNewText(const Text& text) {
        PangoLayout* layout = layoutOf(text);
        draw(layout);
        g_object_unref(layout);
    }

    PangoContext* fonts;
    PangoFontDescription* font;
    PangoLayout* kept = nullptr;
};

#ifdef BENCH_QTWIDGETS
struct Qt5 {
    using Image = QImage;

    Qt5() : page(kSide, kSide, QImage::Format_ARGB32_Premultiplied) {
        page.fill(0);
        painter.begin(&page);
        painter.setRenderHint(QPainter::SmoothPixmapTransform);
    }
    void setPen(uint32_t spec, bool smooth) {
        painter.setPen(QPen(QColor::fromRgba(spec), 1));
        painter.setRenderHint(QPainter::Antialiasing, smooth);
    }
    void drawLine(const Line& line) {
        painter.drawLine(QLineF(line.from.x + 0.5, line.from.y + 0.5, line.to.x + 0.5, line.to.y + 0.5));
    }
    void setBrush(uint32_t spec) { color = QColor::fromRgba(spec); }
    static QRect rectOf(const URect& rect) { return {rect.left, rect.top, rect.getWidth(), rect.getHeight()}; }
    void fillRect(const URect& rect) { painter.fillRect(rectOf(rect), color); }
    static Image imageOf(const Pixels& pixels) {
        const QImage image(reinterpret_cast<const uchar*>(pixels.data()), kCellsSide, kCellsSide,
                           QImage::Format_ARGB32);
        return image.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    }
    void drawCell(const Image& image, const URect& from, const URect& to) {
        painter.drawImage(rectOf(to), image, rectOf(from));
    }
    uint32_t pixel(const UPoint& place) const {
        return reinterpret_cast<const QRgb*>(page.constScanLine(place.y))[place.x];
    }

    QImage page;
    QPainter painter;
    QColor color;
};
#endif

/** Nine of them: the margins as they are, and what is between them stretched. */
template <class Peer>
void drawFrame(Peer& peer, const typename Peer::Image& image) {
    constexpr int32_t kInner = kCellsSide - kMargin;
    const int32_t sources[] = {0, kMargin, kInner, kCellsSide};
    const int32_t across[] = {kFrame.left, kFrame.left + kMargin, kFrame.right - kMargin, kFrame.right};
    const int32_t down[] = {kFrame.top, kFrame.top + kMargin, kFrame.bottom - kMargin, kFrame.bottom};
    for (size_t row = 0; row < 3; ++row)
        for (size_t column = 0; column < 3; ++column)
            peer.drawCell(image, URect(sources[column], sources[row], sources[column + 1], sources[row + 1]),
                          URect(across[column], down[row], across[column + 1], down[row + 1]));
}

void drawFrame(Ours& ours, const Ours::Image& image) {
    ours.drawFrame(image);
}

/** Times the drawing but for the first one, and sees that there is something. */
template <class Peer, class Draw>
void drawAll(benchmark::State& state, const Peer& peer, const URect& where, const Draw& draw) {
    draw();
    for (auto _ : state)
        draw();
    bool drawn = false;
    for (int32_t y = where.top; y < where.bottom; ++y)
        for (int32_t x = where.left; x < where.right; ++x)
            drawn |= peer.pixel(UPoint(x, y)) != 0;
    if (!drawn)
        state.SkipWithError("nothing was drawn");
    state.SetItemsProcessed(state.iterations());
}

template <class Peer>
void drawLines(benchmark::State& state, const Line& line, bool smooth) {
    Peer peer;
    peer.setPen(kOpaque, smooth);
    drawAll(state, peer, URect(line.from, UPoint(1, 1)), [&] { peer.drawLine(line); });
}

template <class Peer>
void fillRects(benchmark::State& state, uint32_t color) {
    Peer peer;
    peer.setBrush(color);
    drawAll(state, peer, kButton, [&] { peer.fillRect(kButton); });
}

template <class Peer>
void drawFrames(benchmark::State& state, uint32_t color) {
    Peer peer;
    const typename Peer::Image image = Peer::imageOf(cells(color));
    drawAll(state, peer, kFrame, [&] { drawFrame(peer, image); });
}

const URect kLabelArea(kLabelPlace - UPoint(0, kFontSize), UPoint(100, kFontSize));

template <class Peer>
using CharOf = typename Peer::Text::value_type;
}  // namespace

template <class Peer>
void DrawLevelLine(benchmark::State& state) {
    drawLines<Peer>(state, kLevel, false);
}

template <class Peer>
void DrawLine(benchmark::State& state) {
    drawLines<Peer>(state, kSlanted, false);
}

template <class Peer>
void DrawSmoothLine(benchmark::State& state) {
    drawLines<Peer>(state, kSlanted, true);
}

template <class Peer>
void FillRect(benchmark::State& state) {
    fillRects<Peer>(state, kOpaque);
}

template <class Peer>
void FillHalfRect(benchmark::State& state) {
    fillRects<Peer>(state, kHalf);
}

template <class Peer>
void DrawNineCells(benchmark::State& state) {
    drawFrames<Peer>(state, kOpaque);
}

template <class Peer>
void DrawNineHalfCells(benchmark::State& state) {
    drawFrames<Peer>(state, kHalf);
}

template <class Peer>
void DrawLabel(benchmark::State& state) {
    Peer peer;
    const auto text = label<CharOf<Peer>>(0);
    peer.setFont();
    drawAll(state, peer, kLabelArea, [&] { peer.drawText(text); });
}

template <class Peer>
void DrawNewLabel(benchmark::State& state) {
    static int32_t number = 0;
    Peer peer;
    peer.setFont();
    drawAll(state, peer, kLabelArea, [&] { peer.drawNewText(label<CharOf<Peer>>(++number)); });
}

#define BENCHMARK_SHAPES(Peer)                \
    BENCHMARK_TEMPLATE(DrawLevelLine, Peer);  \
    BENCHMARK_TEMPLATE(DrawLine, Peer);       \
    BENCHMARK_TEMPLATE(DrawSmoothLine, Peer); \
    BENCHMARK_TEMPLATE(FillRect, Peer);       \
    BENCHMARK_TEMPLATE(FillHalfRect, Peer);   \
    BENCHMARK_TEMPLATE(DrawNineCells, Peer);  \
    BENCHMARK_TEMPLATE(DrawNineHalfCells, Peer)
#define BENCHMARK_LABELS(Peer)           \
    BENCHMARK_TEMPLATE(DrawLabel, Peer); \
    BENCHMARK_TEMPLATE(DrawNewLabel, Peer)

BENCHMARK_SHAPES(Ours);
BENCHMARK_LABELS(Ours);
BENCHMARK_SHAPES(Cairo);
BENCHMARK_LABELS(Pango);
#ifdef BENCH_QTWIDGETS
BENCHMARK_SHAPES(Qt5);
#endif
