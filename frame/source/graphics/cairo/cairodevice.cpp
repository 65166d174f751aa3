#include "frame/source/graphics/cairo/cairodevice.h"
#include "frame/source/graphics/cairo/cairofast.h"
#include "frame/source/graphics/cairo/cairopath.h"
#include "frame/source/graphics/cairo/cairotext.h"
#include <cmath>
#include <numbers>
#include <numeric>
#include <utility>

namespace Tessarine::Graphics {
namespace {
constexpr double kRange = 1e5;        // in pixels; cairo holds more, but draws each dash on the way there
constexpr double kFarthest = 1e9;     // side of a clip: whole ones stay whole, and no matrix makes them endless
constexpr double kMaxStretch = 1e12;  // of bitmaps: their matrices can be inverted, for cairo insists on it
constexpr double kMaxStep = 30000;    // pixels of a bitmap that one of the surface steps over: cairo breaks at 32768
constexpr double kMaxScale = 1000;
constexpr double kMinScale = 0.001;
constexpr double kFlat = 1e-6;        // of one direction against the other: strokes of such pens have no end
constexpr double kMinDashes = 0.1;    // of all lengths together
constexpr double kMinEllipse = 1e-6;  // of a side
constexpr double kMiterReach = 5;     // of the pen's width: cairo cuts longer miters
constexpr size_t kMaxSavedStates = 256;
constexpr cairo_line_cap_t kCaps[] = {CAIRO_LINE_CAP_BUTT, CAIRO_LINE_CAP_ROUND, CAIRO_LINE_CAP_SQUARE};
constexpr cairo_line_join_t kJoins[] = {CAIRO_LINE_JOIN_MITER, CAIRO_LINE_JOIN_ROUND, CAIRO_LINE_JOIN_BEVEL};

bool isFinite(const Point& point) {
    return std::isfinite(point.x) && std::isfinite(point.y);
}

/** The same by whole numbers; false: it lies between them, or out of range. */
bool isWhole(double value) {
    return std::fabs(value) <= 2 * kRange && value == double(int32_t(value));
}

int32_t floorOf(double value) {
    const double limited = std::clamp(value, -2 * kRange, 2 * kRange);
    const int32_t whole = int32_t(limited);
    return whole - (whole > limited ? 1 : 0);
}

template <class Row, size_t count>
Row rowOf(const Row (&rows)[count], int32_t index) {
    return rows[index >= 0 && size_t(index) < count ? index : 0];
}

/** Coordinates that stay in range under a matrix; 0: it can't be drawn with. */
double rangeUnder(const cairo_matrix_t& m) {
    const double scale = std::max(std::fabs(m.xx) + std::fabs(m.xy), std::fabs(m.yx) + std::fabs(m.yy));
    const double offset = std::max(std::fabs(m.x0), std::fabs(m.y0));
    const double area = std::fabs(m.xx * m.yy - m.xy * m.yx);
    const bool isNear = std::fabs(m.x0) < kRange && std::fabs(m.y0) < kRange;
    const bool usable = scale >= kMinScale && scale <= kMaxScale && area >= scale * scale * kFlat && isNear;
    return usable ? (kRange - offset) / scale : 0;
}

cairo_matrix_t combined(const cairo_matrix_t& matrix, const TransformMatrix& added) {
    const cairo_matrix_t first = {added.xx, added.yx, added.xy, added.yy, added.x0, added.y0};
    cairo_matrix_t result;
    cairo_matrix_multiply(&result, &first, &matrix);
    return result;
}

/** Of all dashes, and the gaps between them. */
double lengthOf(const LineStyle& style) {
    return std::accumulate(style.dashLengths, style.dashLengths + style.dashCount, 0.0);
}

PixelRect outwards(const Rect& rect) {
    return {floorOf(rect.x), floorOf(rect.y), -floorOf(-(rect.x + rect.width)), -floorOf(-(rect.y + rect.height))};
}

/** Of a finite rectangle, as much as is within a distance of the origin. */
Rect limited(const Rect& rect, double distance) {
    const double left = std::clamp(rect.x, -distance, distance), top = std::clamp(rect.y, -distance, distance);
    return {left, top, std::clamp(rect.x + rect.width, -distance, distance) - left,
            std::clamp(rect.y + rect.height, -distance, distance) - top};
}

Rect around(const Point& a, const Point& b) {
    return {std::min(a.x, b.x), std::min(a.y, b.y), std::fabs(a.x - b.x), std::fabs(a.y - b.y)};
}

/** Pixels of the source that one of the surface steps over. */
double stepOf(cairo_matrix_t matrix, const Rect& source, const Rect& target) {
    cairo_matrix_invert(&matrix);
    return std::max((std::fabs(matrix.xx) + std::fabs(matrix.xy)) * source.width / target.width,
                    (std::fabs(matrix.yx) + std::fabs(matrix.yy)) * source.height / target.height);
}

/** Cuts what leaves 0 to limit off a source, and as much off its target. False: nothing is left. */
bool keepWithin(double limit, double& source, double& sourceLength, double& target, double& targetLength) {
    const double start = std::max(source, 0.0), end = std::min(source + sourceLength, limit);
    const double factor = targetLength / sourceLength;
    if (start >= end || !(factor > 1 / kMaxStretch && factor < kMaxStretch))
        return false;
    if (start == source && end == source + sourceLength)
        return true;
    target += (start - source) * factor;
    targetLength = (end - start) * factor;
    source = start;
    sourceLength = end - start;
    return targetLength > 0;
}
}  // namespace

CairoDevice* CairoDevice::create(CairoBitmap* bitmap, double scale) {
    cairo_surface_t* surface = bitmap ? bitmap->getSurface() : nullptr;
    const cairo_matrix_t matrix = {scale, 0, 0, scale, 0, 0};
    if (!surface || rangeUnder(matrix) == 0)
        return nullptr;
    ContextHolder context(cairo_create(surface));
    if (cairo_status(context.get()) != CAIRO_STATUS_SUCCESS)
        return nullptr;
    return new CairoDevice(bitmap, context.release(), matrix);
}

CairoDevice::CairoDevice(CairoBitmap* bitmap, cairo_t* context, const cairo_matrix_t& matrix)
    : bitmap(bitmap), context(context), pixels(bitmap->getSurfacePixels()) {
    state.clip = {0, 0, bitmap->getWidth(), bitmap->getHeight()};
    cairo_set_antialias(context, CAIRO_ANTIALIAS_NONE);
    setMatrix(matrix);
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

int32_t CairoDevice::end(const Rect& drawn) {
    PixelRect pixels = pixelsOf(drawn);
    pixels.intersect(state.clip);
    bitmap->touch(pixels);
    return kResultOk;
}

bool CairoDevice::setMatrix(const cairo_matrix_t& matrix) {
    const double range = rangeUnder(matrix);
    if (range == 0)
        return false;
    penIsApplied = penIsApplied && range == state.range;
    state.matrix = matrix;
    state.range = range;
    cairo_set_matrix(context.get(), &matrix);
    return true;
}

bool CairoDevice::toCairo(const Rect& rect, Rect& result) const {
    if (rect.isEmpty() || !rect.isFinite())
        return false;
    result = limited(rect, state.range);
    return true;
}

Rect CairoDevice::reachOf(const Rect& shape, char mode) const {
    const double room = 1 + (mode & kDrawStroke ? state.penWidth * kMiterReach : 0);
    return {shape.x - room, shape.y - room, shape.width + 2 * room, shape.height + 2 * room};
}

Rect CairoDevice::deviceRect(const Rect& rect) const {
    const cairo_matrix_t& m = state.matrix;
    const auto mapped = [](double x, double y, double width, double height, double offset) {
        const double start = x + y + offset;
        return std::pair(start + std::min(width, 0.0) + std::min(height, 0.0), std::fabs(width) + std::fabs(height));
    };
    const auto [left, width] = mapped(m.xx * rect.x, m.xy * rect.y, m.xx * rect.width, m.xy * rect.height, m.x0);
    const auto [top, height] = mapped(m.yx * rect.x, m.yy * rect.y, m.yx * rect.width, m.yy * rect.height, m.y0);
    return {left, top, width, height};
}

PixelRect CairoDevice::pixelsOf(const Rect& rect) const {
    return outwards(deviceRect(rect));
}

bool CairoDevice::partsOf(const Rect& rect, const Point& parts, PixelRect& pixels) const {
    const Rect device = deviceRect(rect);
    if (!isUpright() || !isWhole(device.x * parts.x) || !isWhole(device.width * parts.x) ||
        !isWhole(device.y * parts.y) || !isWhole(device.height * parts.y))
        return false;
    pixels = {floorOf(device.x), floorOf(device.y), floorOf(device.x + device.width),
              floorOf(device.y + device.height)};
    return true;
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
    cairo_set_line_width(context.get(), std::min(state.penWidth, state.range));
    cairo_set_line_cap(context.get(), rowOf(kCaps, style.cap));
    cairo_set_line_join(context.get(), rowOf(kJoins, style.join));
    const bool isSeen = lengthOf(style) * kRange >= state.range;  // a pixel at least
    cairo_set_dash(context.get(), style.dashLengths, isSeen ? style.dashCount : 0, 0);
    penIsApplied = true;
}

void CairoDevice::finish(char mode) {
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
    if (!(mode & kDrawFillAndStroke))
        cairo_new_path(context.get());
}

int32_t CairoDevice::drawLine(Point from, Point to) {
    if (!isFinite(from) || !isFinite(to))
        return kInvalidArgument;
    if (!begin())
        return kResultFalse;
    from = {within(from.x), within(from.y)};
    to = {within(to.x), within(to.y)};
    if (fillLine(from, to))
        return kResultOk;
    cairo_move_to(context.get(), from.x, from.y);
    cairo_line_to(context.get(), to.x, to.y);
    finish(kDrawStroke);
    return end(reachOf(around(from, to), kDrawStroke));
}

void CairoDevice::beginPixels() {
    cairo_surface_flush(cairo_get_target(context.get()));
}

void CairoDevice::endPixels(const PixelRect& drawn) {
    cairo_surface_mark_dirty_rectangle(cairo_get_target(context.get()), drawn.left, drawn.top, drawn.right - drawn.left,
                                       drawn.bottom - drawn.top);
    bitmap->touch(drawn);
}

bool CairoDevice::fillPixels(PixelRect area, uint32_t color) {
    if (color >> 24 != 0xFF || !state.clipIsWhole)
        return false;
    area.intersect(state.clip);
    if (area.isEmpty())
        return true;
    beginPixels();
    fillRows(pixels.from(area.left, area.top), area.right - area.left, area.bottom - area.top, color);
    endPixels(area);
    return true;
}

bool CairoDevice::fillRect(const Rect& rect) {
    PixelRect area;
    return wholePixelsOf(rect, area) && fillPixels(area, state.brushColor);
}

/** A pixel belongs to a line that passes its middle, so that ends may be there as well as between pixels. */
bool CairoDevice::fillLine(const Point& from, const Point& to) {
    const LineStyle& style = state.lineStyle;
    const bool isPlain = style.dashCount == 0 && rowOf(kCaps, style.cap) == CAIRO_LINE_CAP_BUTT;
    const bool isLevel = from.y == to.y, isPlumb = from.x == to.x;
    if (state.antialiased || !isPlain || isLevel == isPlumb)
        return false;
    const double width = std::min(state.penWidth, state.range);
    const Rect line = around(from, to);
    const Rect level = {line.x, line.y - width / 2, line.width, width};
    const Rect plumb = {line.x - width / 2, line.y, width, line.height};
    PixelRect area;
    return (isLevel ? partsOf(level, {2, 1}, area) : partsOf(plumb, {1, 2}, area)) && fillPixels(area, state.penColor);
}

int32_t CairoDevice::drawRect(Rect rect, char mode) {
    Rect inside;
    if (!toCairo(rect, inside))
        return kInvalidArgument;
    if (!begin())
        return kResultFalse;
    if (mode == kDrawFill && fillRect(inside))
        return kResultOk;
    cairo_rectangle(context.get(), inside.x, inside.y, inside.width, inside.height);
    finish(mode);
    return end(reachOf(inside, mode));
}

int32_t CairoDevice::drawEllipse(Rect rect, char mode) {
    Rect inside;
    if (!toCairo(rect, inside))
        return kInvalidArgument;
    if (!begin())
        return kResultFalse;
    if (inside.width < kMinEllipse || inside.height < kMinEllipse)
        return kResultOk;
    cairo_translate(context.get(), inside.x + inside.width / 2, inside.y + inside.height / 2);
    cairo_scale(context.get(), inside.width / 2, inside.height / 2);
    cairo_arc(context.get(), 0, 0, 1, 0, 2 * std::numbers::pi);
    cairo_close_path(context.get());
    cairo_set_matrix(context.get(), &state.matrix);
    finish(mode);
    return end(reachOf(inside, mode));
}

int32_t CairoDevice::drawPath(IGraphicsPath* path, char mode, const TransformMatrix* matrix) {
    const auto* ours = objectBehind<CairoPath>(path);
    const cairo_matrix_t before = state.matrix;
    const bool usable = ours && (!matrix || setMatrix(combined(before, *matrix)));
    const bool drawn = usable && begin();
    for (const char step : {char(mode & kDrawFill), char(mode & kDrawStroke)})
        if (drawn && step) {
            ours->addTo(context.get(), step == kDrawStroke, state.range);
            finish(step);
        }
    if (matrix)
        setMatrix(before);
    if (drawn)
        return end();
    return usable ? kResultFalse : kInvalidArgument;
}

int32_t CairoDevice::drawString(const tchar* text, Rect rect, IFontFace* face, unsigned colorSpec, unsigned alignment) {
    if (!text || !face || !rect.isFinite())
        return kInvalidArgument;
    if (!begin())
        return kResultFalse;
    useColor(colorSpec);
    return drawText(context.get(), text, rect, face, alignment, state.antialiased) ? end() : int32_t(kInvalidArgument);
}

int32_t CairoDevice::drawBitmap(IBitmap* source, Rect part, Point target, double alpha) {
    return drawBitmapStretched(source, part, {target.x, target.y, part.width, part.height}, alpha);
}

int32_t CairoDevice::drawBitmapStretched(IBitmap* source, Rect part, Rect target, double alpha) {
    CairoBitmap* from = CairoBitmap::behind(source);
    const bool usable = !part.isEmpty() && part.isFinite() && !target.isEmpty() && target.isFinite();
    if (!from || !usable || !std::isfinite(alpha))
        return kInvalidArgument;
    const cairo_filter_t filter =
        part.width == target.width && part.height == target.height ? CAIRO_FILTER_NEAREST : CAIRO_FILTER_GOOD;
    if (!keepWithin(from->getWidth(), part.x, part.width, target.x, target.width) ||
        !keepWithin(from->getHeight(), part.y, part.height, target.y, target.height))
        return kResultOk;
    if (!from->getSurface() || !begin())
        return kResultFalse;
    const Transfer transfer = {from, part, target, uint32_t(std::lround(std::clamp(alpha, 0.0, 1.0) * 255)), filter};
    if (transfer.opacity == 0 || blendPixels(transfer))
        return kResultOk;
    return paint(transfer);
}

bool CairoDevice::blendPixels(const Transfer& transfer) {
    const PixelRect part = outwards(transfer.source);
    PixelRect target;
    const bool whole = isWhole(transfer.source.x) && isWhole(transfer.source.y) && isWhole(transfer.source.width) &&
                       isWhole(transfer.source.height);
    if (!whole || !state.clipIsWhole || state.matrix.xx < 0 || state.matrix.yy < 0 ||
        !wholePixelsOf(transfer.target, target))
        return false;
    const int32_t width = target.right - target.left, height = target.bottom - target.top;
    const bool asIs = transfer.from != bitmap && width == part.right - part.left && height == part.bottom - part.top;
    const StretchedCells::Found found =
        asIs ? StretchedCells::Found{transfer.from->getSurfacePixels().from(part.left, part.top), false}
             : cells->find(transfer.from, part, width, height, transfer.filter);
    if (!found.pixels.first)
        return false;
    PixelRect seen = target;
    seen.intersect(state.clip);
    if (seen.isEmpty())
        return true;
    const auto put = found.isOpaque && transfer.opacity == 255 ? copyRows : blendRows;
    beginPixels();
    put(pixels.from(seen.left, seen.top), found.pixels.from(seen.left - target.left, seen.top - target.top),
        seen.right - seen.left, seen.bottom - seen.top, transfer.opacity);
    endPixels(seen);
    return true;
}

int32_t CairoDevice::paint(const Transfer& transfer) {
    Rect inside;
    if (!toCairo(transfer.target, inside))
        return kInvalidArgument;
    if (stepOf(state.matrix, transfer.source, transfer.target) > kMaxStep)
        return kResultOk;
    PartPattern pattern(transfer.from->getSurfacePixels(), outwards(transfer.source), transfer.from == bitmap);
    pattern.place(transfer.source, transfer.target, transfer.filter);
    cairo_save(context.get());
    cairo_rectangle(context.get(), inside.x, inside.y, inside.width, inside.height);
    cairo_clip(context.get());
    cairo_set_source(context.get(), pattern.get());
    cairo_paint_with_alpha(context.get(), transfer.opacity / 255.0);
    cairo_restore(context.get());
    return end(reachOf(inside, kDrawFill));
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
    return end(reachOf(inside, kDrawFill));
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
    if (!(width >= 0 && width <= kRange))
        return kInvalidArgument;
    penIsApplied = penIsApplied && state.penWidth == width;
    state.penWidth = width;
    return kResultOk;
}

int32_t CairoDevice::setLineStyle(const LineStyle& style) {
    if (style.dashCount < 0 || style.dashCount > LineStyle::kMaxDashes)
        return kInvalidArgument;
    const double* end = style.dashLengths + style.dashCount;
    const auto usable = [](double length) { return length >= 0 && length < kRange; };
    if (!std::all_of(style.dashLengths, end, usable) || (style.dashCount > 0 && lengthOf(style) < kMinDashes))
        return kInvalidArgument;
    penIsApplied = penIsApplied && state.lineStyle == style;
    state.lineStyle = style;
    return kResultOk;
}

int32_t CairoDevice::setBrushColor(unsigned colorSpec) {
    state.brushColor = colorSpec;
    return kResultOk;
}

int32_t CairoDevice::concatTransformMatrix(const TransformMatrix& matrix) {
    return setMatrix(combined(state.matrix, matrix)) ? kResultOk : kInvalidArgument;
}

int32_t CairoDevice::setClip(Rect rect) {
    const bool usable = rect.isFinite();
    clipTo(usable && !rect.isEmpty() ? limited(rect, kFarthest) : Rect());
    return usable ? kResultOk : kInvalidArgument;
}

void CairoDevice::clipTo(const Rect& rect) {
    const PixelRect whole = {0, 0, bitmap->getWidth(), bitmap->getHeight()};
    PixelRect pixels;
    cairo_reset_clip(context.get());
    state.clipIsWhole = rect.isEmpty() || wholePixelsOf(rect, pixels);
    state.clip = rect.isEmpty() ? PixelRect() : pixelsOf(rect);
    state.clip.intersect(whole);
    if (state.clipIsWhole && state.clip == whole)
        return;
    Rect inside;
    if (!toCairo(rect, inside))
        inside = {};
    cairo_rectangle(context.get(), inside.x, inside.y, inside.width, inside.height);
    cairo_clip(context.get());
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
    const auto* ours = objectBehind<CairoFastLines>(lines);
    if (!ours)
        return kInvalidArgument;
    if (!begin())
        return kResultFalse;
    for (const auto& [from, to] : ours->lines) {
        if (!isFinite(from) || !isFinite(to) || fillLine(from, to))
            continue;
        cairo_move_to(context.get(), within(from.x), within(from.y));
        cairo_line_to(context.get(), within(to.x), within(to.y));
    }
    finish(kDrawStroke);
    return end();
}

IFastRects* CairoDevice::createFastRects(int count) {
    auto* rects = new CairoFastRects;
    rects->rects.reserve(size_t(std::clamp(count, 0, 4096)));
    return rects;
}

int32_t CairoDevice::drawFastRects(IFastRects* rects, char mode) {
    const auto* ours = objectBehind<CairoFastRects>(rects);
    if (!ours)
        return kInvalidArgument;
    if (!begin())
        return kResultFalse;
    Rect inside;
    for (const Rect& rect : ours->rects)
        if (toCairo(rect, inside) && !(mode == kDrawFill && fillRect(inside)))
            cairo_rectangle(context.get(), inside.x, inside.y, inside.width, inside.height);
    finish(mode);
    return end();
}

}  // namespace Tessarine::Graphics
