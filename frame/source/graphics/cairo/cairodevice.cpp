#include "frame/source/graphics/cairo/cairodevice.h"
#include "frame/source/graphics/cairo/cairofast.h"
#include "frame/source/graphics/cairo/cairopath.h"
#include "frame/source/graphics/cairo/cairotext.h"
#include <algorithm>
#include <cmath>
#include <numbers>

namespace Tessarine::Graphics {
namespace {
constexpr double kRange = 4e6;  // in pixels: half of what fixed coordinates of 24.8 bits hold
constexpr size_t kMaxSavedStates = 256;
constexpr cairo_line_cap_t kCaps[] = {CAIRO_LINE_CAP_BUTT, CAIRO_LINE_CAP_ROUND, CAIRO_LINE_CAP_SQUARE};
constexpr cairo_line_join_t kJoins[] = {CAIRO_LINE_JOIN_MITER, CAIRO_LINE_JOIN_ROUND, CAIRO_LINE_JOIN_BEVEL};

cairo_matrix_t cairoMatrix(const TransformMatrix& m) {
    return {m.xx, m.yx, m.xy, m.yy, m.x0, m.y0};
}

bool isUsable(const TransformMatrix& m) {
    const double determinant = m.xx * m.yy - m.xy * m.yx;
    return std::isnormal(determinant) && std::isfinite(m.x0) && std::isfinite(m.y0);
}

bool isFinite(const Point& point) {
    return std::isfinite(point.x) && std::isfinite(point.y);
}

bool isWhole(double value) {
    return value == std::floor(value);
}

template <class Row, size_t count>
Row rowOf(const Row (&rows)[count], int32_t index) {
    return rows[index >= 0 && size_t(index) < count ? index : 0];
}

/** Sampling stays within the source, so that what lies beside it in the bitmap doesn't show at its edges. */
class SourcePattern {
public:
    SourcePattern(cairo_surface_t* surface, const Rect& source)
        : part(cairo_surface_create_for_rectangle(surface, source.x, source.y, source.width, source.height)),
          pattern(cairo_pattern_create_for_surface(part.get())) {
        cairo_pattern_set_extend(pattern, CAIRO_EXTEND_PAD);
    }
    ~SourcePattern() { cairo_pattern_destroy(pattern); }
    SourcePattern(const SourcePattern&) = delete;
    SourcePattern& operator=(const SourcePattern&) = delete;

    void place(const Rect& source, const Rect& target, bool sameSize) {
        const double across = source.width / target.width, down = source.height / target.height;
        cairo_matrix_t matrix = {across, 0, 0, down, -target.x * across, -target.y * down};
        cairo_pattern_set_matrix(pattern, &matrix);
        cairo_pattern_set_filter(pattern, sameSize ? CAIRO_FILTER_NEAREST : CAIRO_FILTER_GOOD);
    }
    cairo_pattern_t* get() const { return pattern; }

private:
    SurfaceHolder part;
    cairo_pattern_t* pattern;
};
}  // namespace

CairoDevice* CairoDevice::create(CairoBitmap* bitmap, double scale) {
    cairo_surface_t* surface = bitmap ? bitmap->getSurface() : nullptr;
    if (!surface || !std::isnormal(scale) || scale <= 0)
        return nullptr;
    cairo_t* context = cairo_create(surface);
    if (cairo_status(context) != CAIRO_STATUS_SUCCESS) {
        cairo_destroy(context);
        return nullptr;
    }
    cairo_scale(context, scale, scale);
    return new CairoDevice(bitmap, context);
}

CairoDevice::CairoDevice(CairoBitmap* bitmap, cairo_t* context) : bitmap(bitmap), context(context) {
    state.clip = {0, 0, bitmap->getWidth(), bitmap->getHeight()};
    cairo_set_antialias(context, CAIRO_ANTIALIAS_NONE);
}

int32_t CairoDevice::queryInterface(const char* iid, void** obj) {
    return answerInterface<IDrawDevice>(this, iid, obj) ? kResultOk : FObject::queryInterface(iid, obj);
}

bool CairoDevice::begin() {
    return bitmap->getSurface();
}

int32_t CairoDevice::end() {
    bitmap->touch(state.clip);
    return kResultOk;
}

double CairoDevice::within(double coordinate) const {
    return std::clamp(coordinate, -kRange, kRange);
}

/** The sides are clamped, so that a huge rectangle covers what it should. */
bool CairoDevice::toCairo(const Rect& rect, Rect& result) const {
    if (rect.isEmpty() || !rect.isFinite())
        return false;
    const double left = within(rect.x), top = within(rect.y);
    result = {left, top, within(rect.x + rect.width) - left, within(rect.y + rect.height) - top};
    return !result.isEmpty();
}

PixelRect CairoDevice::pixelsOf(const Rect& rect) const {
    double left = rect.x, top = rect.y, right = rect.x + rect.width, bottom = rect.y + rect.height;
    cairo_user_to_device(context.get(), &left, &top);
    cairo_user_to_device(context.get(), &right, &bottom);
    const auto pixel = [](double value) { return int32_t(std::clamp(value, -kRange, kRange)); };
    return {pixel(std::floor(std::min(left, right))), pixel(std::floor(std::min(top, bottom))),
            pixel(std::ceil(std::max(left, right))), pixel(std::ceil(std::max(top, bottom)))};
}

void CairoDevice::useColor(uint32_t spec) {
    if (sourceIsColor && sourceColor == spec)
        return;
    const auto channel = [spec](int32_t shift) { return (spec >> shift & 0xFF) / 255.0; };
    cairo_set_source_rgba(context.get(), channel(16), channel(8), channel(0), channel(24));
    sourceColor = spec;
    sourceIsColor = true;
}

void CairoDevice::applyPen() {
    if (penIsApplied)
        return;
    const LineStyle& style = state.lineStyle;
    cairo_set_line_width(context.get(), state.penWidth);
    cairo_set_line_cap(context.get(), rowOf(kCaps, style.cap));
    cairo_set_line_join(context.get(), rowOf(kJoins, style.join));
    cairo_set_dash(context.get(), style.dashLengths, style.dashCount, 0);
    penIsApplied = true;
}

int32_t CairoDevice::finish(char mode) {
    if (mode & kDrawFill) {
        useColor(state.brushColor);
        if (mode & kDrawStroke)
            cairo_fill_preserve(context.get());
        else
            cairo_fill(context.get());
    }
    if (mode & kDrawStroke) {
        useColor(state.penColor);
        applyPen();
        cairo_stroke(context.get());
    }
    cairo_new_path(context.get());
    return end();
}

int32_t CairoDevice::drawLine(Point from, Point to) {
    if (!isFinite(from) || !isFinite(to))
        return kInvalidArgument;
    if (!begin())
        return kResultFalse;
    cairo_move_to(context.get(), within(from.x), within(from.y));
    cairo_line_to(context.get(), within(to.x), within(to.y));
    return finish(kDrawStroke);
}

bool CairoDevice::fillPixels(const Rect& rect) {
    cairo_matrix_t matrix;
    cairo_get_matrix(context.get(), &matrix);
    if (state.brushColor >> 24 != 0xFF || matrix.xy != 0 || matrix.yx != 0)
        return false;
    const double left = matrix.xx * rect.x + matrix.x0, top = matrix.yy * rect.y + matrix.y0;
    const double width = matrix.xx * rect.width, height = matrix.yy * rect.height;
    if (width <= 0 || height <= 0 || !isWhole(left) || !isWhole(top) || !isWhole(width) || !isWhole(height))
        return false;
    PixelRect pixels = pixelsOf(rect);
    pixels.intersect(state.clip);
    if (pixels.isEmpty())
        return true;
    cairo_surface_t* surface = bitmap->getSurface();
    cairo_surface_flush(surface);
    unsigned char* data = cairo_image_surface_get_data(surface);
    const ptrdiff_t stride = cairo_image_surface_get_stride(surface);
    for (int32_t y = pixels.top; y < pixels.bottom; ++y)
        std::fill_n(reinterpret_cast<uint32_t*>(data + y * stride) + pixels.left, pixels.right - pixels.left,
                    state.brushColor);
    cairo_surface_mark_dirty_rectangle(surface, pixels.left, pixels.top, pixels.right - pixels.left,
                                       pixels.bottom - pixels.top);
    bitmap->touch(pixels);
    return true;
}

int32_t CairoDevice::drawRect(Rect rect, char mode) {
    Rect inside;
    if (!toCairo(rect, inside))
        return kInvalidArgument;
    if (!begin())
        return kResultFalse;
    if (mode == kDrawFill && fillPixels(inside))
        return kResultOk;
    cairo_rectangle(context.get(), inside.x, inside.y, inside.width, inside.height);
    return finish(mode);
}

int32_t CairoDevice::drawEllipse(Rect rect, char mode) {
    Rect inside;
    if (!toCairo(rect, inside))
        return kInvalidArgument;
    if (!begin())
        return kResultFalse;
    cairo_matrix_t matrix;
    cairo_get_matrix(context.get(), &matrix);
    cairo_translate(context.get(), inside.x + inside.width / 2, inside.y + inside.height / 2);
    cairo_scale(context.get(), inside.width / 2, inside.height / 2);
    cairo_arc(context.get(), 0, 0, 1, 0, 2 * std::numbers::pi);
    cairo_close_path(context.get());
    cairo_set_matrix(context.get(), &matrix);
    return finish(mode);
}

int32_t CairoDevice::drawPath(IGraphicsPath* path, char mode, const TransformMatrix* matrix) {
    const CairoPath* ours = CairoPath::behind(path);
    if (!ours || (matrix && !isUsable(*matrix)))
        return kInvalidArgument;
    if (!begin())
        return kResultFalse;
    cairo_matrix_t before;
    cairo_get_matrix(context.get(), &before);
    if (matrix) {
        const cairo_matrix_t added = cairoMatrix(*matrix);
        cairo_transform(context.get(), &added);
    }
    for (const char step : {char(mode & kDrawFill), char(mode & kDrawStroke)})
        if (step) {
            ours->addTo(context.get(), step == kDrawStroke);
            finish(step);
        }
    cairo_set_matrix(context.get(), &before);
    return kResultOk;
}

int32_t CairoDevice::drawString(const tchar* text, Rect rect, IFontFace* face, unsigned colorSpec, unsigned alignment) {
    if (!text || !face || !rect.isFinite())
        return kInvalidArgument;
    if (!begin())
        return kResultFalse;
    return drawText(context.get(), text, rect, face, colorSpec, alignment, state.antialiased)
               ? end()
               : int32_t(kInvalidArgument);
}

int32_t CairoDevice::drawBitmap(IBitmap* source, Rect part, Point target, double alpha) {
    return drawBitmapStretched(source, part, {target.x, target.y, part.width, part.height}, alpha);
}

int32_t CairoDevice::drawBitmapStretched(IBitmap* source, Rect part, Rect target, double alpha) {
    CairoBitmap* ours = CairoBitmap::behind(source);
    Rect inside;
    if (!ours || part.isEmpty() || !part.isFinite() || !std::isfinite(alpha) || !toCairo(target, inside))
        return kInvalidArgument;
    cairo_surface_t* surface = ours->getSurface();
    if (!surface || !begin())
        return kResultFalse;
    SourcePattern pattern(surface, part);
    pattern.place(part, target, part.width == target.width && part.height == target.height);
    cairo_save(context.get());
    cairo_rectangle(context.get(), inside.x, inside.y, inside.width, inside.height);
    cairo_clip(context.get());
    cairo_set_source(context.get(), pattern.get());
    cairo_paint_with_alpha(context.get(), std::clamp(alpha, 0.0, 1.0));
    cairo_restore(context.get());
    return end();
}

int32_t CairoDevice::clearRect(Rect rect) {
    Rect inside;
    if (!toCairo(rect, inside))
        return kInvalidArgument;
    if (!begin())
        return kResultFalse;
    cairo_set_operator(context.get(), CAIRO_OPERATOR_CLEAR);
    cairo_rectangle(context.get(), inside.x, inside.y, inside.width, inside.height);
    cairo_fill(context.get());
    cairo_set_operator(context.get(), CAIRO_OPERATOR_OVER);
    return end();
}

int32_t CairoDevice::setDrawAntialiased(unsigned char antialiased) {
    if (state.antialiased == (antialiased != 0))
        return kResultOk;
    state.antialiased = antialiased != 0;
    cairo_set_antialias(context.get(), antialiased ? CAIRO_ANTIALIAS_DEFAULT : CAIRO_ANTIALIAS_NONE);
    return kResultOk;
}

int32_t CairoDevice::setPenColor(unsigned colorSpec) {
    state.penColor = colorSpec;
    return kResultOk;
}

int32_t CairoDevice::setPenWidth(double width) {
    if (!(width >= 0) || width > kRange)
        return kInvalidArgument;
    penIsApplied = penIsApplied && state.penWidth == width;
    state.penWidth = width;
    return kResultOk;
}

int32_t CairoDevice::setLineStyle(const LineStyle& style) {
    const bool countable = style.dashCount >= 0 && style.dashCount <= LineStyle::kMaxDashes;
    const auto usable = [](double length) { return length >= 0 && length < kRange; };
    if (!countable || !std::all_of(style.dashLengths, style.dashLengths + style.dashCount, usable))
        return kInvalidArgument;
    if (style.dashCount > 0 && std::all_of(style.dashLengths, style.dashLengths + style.dashCount,
                                           [](double length) { return length < 0.01; }))
        return kInvalidArgument;  // no end of dashes
    penIsApplied = penIsApplied && state.lineStyle == style;
    state.lineStyle = style;
    return kResultOk;
}

int32_t CairoDevice::setBrushColor(unsigned colorSpec) {
    state.brushColor = colorSpec;
    return kResultOk;
}

int32_t CairoDevice::concatTransformMatrix(const TransformMatrix& matrix) {
    if (!isUsable(matrix))
        return kInvalidArgument;
    const cairo_matrix_t added = cairoMatrix(matrix);
    cairo_transform(context.get(), &added);
    return kResultOk;
}

int32_t CairoDevice::setClip(Rect rect) {
    Rect inside;
    cairo_reset_clip(context.get());
    if (!toCairo(rect, inside))
        inside = {};
    const PixelRect whole = {0, 0, bitmap->getWidth(), bitmap->getHeight()};
    state.clip = inside.isEmpty() ? PixelRect{} : pixelsOf(inside);
    state.clip.intersect(whole);
    if (state.clip == whole)
        return kResultOk;
    cairo_rectangle(context.get(), inside.x, inside.y, inside.width, inside.height);
    cairo_clip(context.get());
    return inside.isEmpty() ? kInvalidArgument : kResultOk;
}

int32_t CairoDevice::saveGlobalState() {
    if (saved.size() >= kMaxSavedStates)
        return kResultFalse;
    saved.push_back(state);
    cairo_save(context.get());
    return kResultOk;
}

int32_t CairoDevice::restoreGlobalState() {
    if (saved.empty())
        return kResultFalse;
    state = saved.back();
    saved.pop_back();
    cairo_restore(context.get());
    sourceIsColor = penIsApplied = false;
    return kResultOk;
}

IFastLines* CairoDevice::createFastLines(int count) {
    auto* lines = new CairoFastLines;
    lines->lines.reserve(size_t(std::clamp(count, 0, 4096)));
    return lines;
}

int32_t CairoDevice::drawFastLines(IFastLines* lines) {
    const CairoFastLines* ours = CairoFastLines::behind(lines);
    if (!ours)
        return kInvalidArgument;
    if (!begin())
        return kResultFalse;
    for (const auto& [from, to] : ours->lines) {
        if (!isFinite(from) || !isFinite(to))
            continue;
        cairo_move_to(context.get(), within(from.x), within(from.y));
        cairo_line_to(context.get(), within(to.x), within(to.y));
    }
    return finish(kDrawStroke);
}

IFastRects* CairoDevice::createFastRects(int count) {
    auto* rects = new CairoFastRects;
    rects->rects.reserve(size_t(std::clamp(count, 0, 4096)));
    return rects;
}

int32_t CairoDevice::drawFastRects(IFastRects* rects, char mode) {
    const CairoFastRects* ours = CairoFastRects::behind(rects);
    if (!ours)
        return kInvalidArgument;
    if (!begin())
        return kResultFalse;
    Rect inside;
    for (const Rect& rect : ours->rects)
        if (toCairo(rect, inside) && !(mode == kDrawFill && fillPixels(inside)))
            cairo_rectangle(context.get(), inside.x, inside.y, inside.width, inside.height);
    return finish(mode);
}

}  // namespace Tessarine::Graphics
