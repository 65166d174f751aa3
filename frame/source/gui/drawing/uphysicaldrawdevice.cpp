#include "gui/drawing/uphysicaldrawdevice.h"
#include "base/source/finitializer.h"
#include "frame/source/gui/drawing/boundary.h"
#include "gui/drawing/hooks.h"
#include "gui/drawing/irealtimetranslator.h"
#include "gui/drawing/ubitmap.h"
#include "gui/drawing/ufontfacecache.h"
#include "gui/drawing/upath.h"
#include "pluginterfaces/graphics/ifactory.h"
#include <algorithm>
#include <cstring>
#include <memory>

namespace Tessarine {
using Graphics::IDrawDevice;
using Graphics::IFactory;
using Graphics::IGraphicsPath;
using Graphics::Point;
using Graphics::Rect;

bool gPaintOvalUsePen = false;

namespace {
constexpr float kWholeTurn = 6.2831855F;

bool endDrawing() {
    UPhysicalDrawDevice::setFactory(nullptr);
    return true;
}
const OneTimeProcedure DrawingTerminator(false, endDrawing, "UPhysicalDrawDevice", 0);

IPtr<IFactory>& hostFactory() {
    static IPtr<IFactory> factory;
    return factory;
}

/** The middle of a line of one pixel inside of the rectangle. */
Rect outline(const URect& rect) {
    const Rect whole = boundary(rect);
    return {whole.x + 0.5, whole.y + 0.5, whole.width - 1, whole.height - 1};
}

Point boundary(const UPoint& place, double offset) {
    return {place.x + offset, place.y + offset};
}

OPtr<IGraphicsPath> roundRect(const URect& rect, int32_t radius) {
    return UPath::createRoundRect(outline(rect), radius < 0 ? rect.getWidth() / 10.0 : radius);
}

double lineOffset(const UPen& pen) {
    return pen.width % 2 != 0 ? 0.5 : 0.0;
}

const Graphics::LineStyle& lineStyleOf(const UPen& pen) {
    switch (pen.style) {
    case UPen::kDotted:
        return Graphics::kDottedLine;
    case UPen::kCustom:
        return pen.lineStyle;
    default:
        return Graphics::kSolidLine;
    }
}

unsigned alignmentOf(int32_t flags) {
    constexpr struct {
        int32_t flag;
        unsigned alignment;
    } kRows[] = {
        {kTextLeft,   Graphics::kAlignLeft  },
        {kTextRight,  Graphics::kAlignRight },
        {kTextTop,    Graphics::kAlignTop   },
        {kTextBottom, Graphics::kAlignBottom},
    };
    unsigned alignment = 0;
    for (const auto& row : kRows)
        alignment |= flags & row.flag ? row.alignment : 0;
    return alignment;
}

const tchar* translated(const tchar* text) {
    IRealtimeTranslator* translator = IRealtimeTranslator::gInstance;
    return translator && text ? translator->translate(text) : text;
}

enum class Polygon { kOpen, kClosed };

OPtr<IGraphicsPath> pathOf(const UPolygon& polygon, Polygon kind) {
    IFactory* factory = UPhysicalDrawDevice::getFactory(true);
    OPtr<IGraphicsPath> path(factory && polygon.count() > 0 ? factory->createPath() : nullptr);
    const OPtr<Graphics::IGraphicsPathAccessor> open(path ? path->open() : nullptr);
    if (!open)
        return nullptr;
    const auto at = [&polygon](size_t index) { return Point{polygon.at(index).x + 0.5, polygon.at(index).y + 0.5}; };
    open->beginFigure(at(0), 1);
    for (size_t index = 1; index < polygon.count(); ++index)
        open->addLine(at(index));
    open->endFigure(kind == Polygon::kClosed);
    return path;
}

void drawPath(IDrawDevice* device, const OPtr<IGraphicsPath>& path, Graphics::DrawMode mode) {
    if (path)
        device->drawPath(path, mode, nullptr);
}

void drawPolygon(IDrawDevice* device, const UPolygon& polygon, Polygon kind, Graphics::DrawMode mode) {
    if (device)
        drawPath(device, pathOf(polygon, kind), mode);
}
}  // namespace

IFactory* Graphics::createFactory(const char* name) {
    const bool known = name && std::strcmp(name, "default") == 0;
    return known && gDrawingHooks.createFactory ? gDrawingHooks.createFactory() : nullptr;
}

IFactory* Graphics::Meta::createHostIFactory() {
    IFactory* factory = UPhysicalDrawDevice::getFactory(true);
    if (factory)
        factory->addRef();
    return factory;
}

void UPhysicalDrawDevice::setFactory(IFactory* factory) {
    if (factory != hostFactory())
        termUFontFaceCache();
    hostFactory() = factory;
}

IFactory* UPhysicalDrawDevice::getFactory(bool create) {
    if (!hostFactory() && create)
        hostFactory() = OPtr<IFactory>(Graphics::createFactory("default"));
    return hostFactory();
}

UPhysicalDrawDevice::UPhysicalDrawDevice(IDrawDevice* device) : device(device) {
    resetAttributes();
}

void UPhysicalDrawDevice::lineTo(const UPoint& to) {
    const double offset = lineOffset(pen);
    if (device)
        device->drawLine(boundary(location, offset), boundary(to, offset));
    location = to;
}

void UPhysicalDrawDevice::moveTo(const UPoint& to) {
    location = to;
}

void UPhysicalDrawDevice::moveBy(const UPoint& by) {
    location = location + by;
}

void UPhysicalDrawDevice::fastLines(int32_t* coordinates, int32_t count) {
    if (!device || !coordinates || count < 4)
        return;
    const double offset = lineOffset(pen);
    const OPtr<Graphics::IFastLines> lines(device->createFastLines(count / 4));
    for (const int32_t* line = coordinates; line + 4 <= coordinates + count; line += 4) {
        const Point from = {line[0] + offset, line[1] + offset}, to = {line[2] + offset, line[3] + offset};
        if (lines)
            lines->addLine(from, to);
        else
            device->drawLine(from, to);
    }
    if (lines)
        device->drawFastLines(lines);
}

void UPhysicalDrawDevice::eraseRect(const URect& rect) {
    if (device)
        device->clearRect(boundary(rect));
}

void UPhysicalDrawDevice::frameRect(const URect& rect) {
    if (device && !rect.isEmpty())
        device->drawRect(outline(rect), Graphics::kDrawStroke);
}

void UPhysicalDrawDevice::paintRect(const URect& rect) {
    if (device && !rect.isEmpty())
        device->drawRect(boundary(rect), Graphics::kDrawFill);
}

void UPhysicalDrawDevice::frameRoundRect(const URect& rect, int32_t radius) {
    if (device && !rect.isEmpty())
        drawPath(device, roundRect(rect, radius), Graphics::kDrawStroke);
}

void UPhysicalDrawDevice::paintRoundRect(const URect& rect, int32_t radius) {
    if (!device || rect.isEmpty())
        return;
    const UPen before = pen;
    setPen(UPen(brush.color, 1, UPen::kSolid, brush.antialias));
    drawPath(device, roundRect(rect, radius), Graphics::kDrawFillAndStroke);
    setPen(before);
}

void UPhysicalDrawDevice::fastRects(TContainer<URect>& rects, bool filled) {
    if (!device || rects.isEmpty())
        return;
    const char mode = filled ? Graphics::kDrawFill : Graphics::kDrawStroke;
    const OPtr<Graphics::IFastRects> fast(device->createFastRects(rects.total()));
    const std::unique_ptr<TIterator<URect>> walk(rects.newIterator());
    for (; !walk->done(); walk->next()) {
        const URect& rect = walk->current();
        if (rect.isEmpty())
            continue;
        if (fast)
            fast->addRect(filled ? boundary(rect) : outline(rect));
        else
            device->drawRect(boundary(rect), mode);
    }
    if (fast)
        device->drawFastRects(fast, mode);
}

void UPhysicalDrawDevice::frameOval(const URect& rect, float startAngle, float arc) {
    if (!device || arc == 0 || rect.isEmpty())
        return;
    if (arc == kWholeTurn)
        device->drawEllipse(outline(rect), Graphics::kDrawStroke);
    else
        drawPath(device, UPath::createArc(outline(rect), startAngle, arc), Graphics::kDrawStroke);
}

void UPhysicalDrawDevice::paintOval(const URect& rect, float startAngle, float arc) {
    if (!device || arc == 0 || rect.isEmpty())
        return;
    if (arc == kWholeTurn)
        device->drawEllipse(boundary(rect), gPaintOvalUsePen ? Graphics::kDrawFillAndStroke : Graphics::kDrawFill);
    else
        drawPath(device, UPath::createPie(boundary(rect), startAngle, arc), Graphics::kDrawFill);
}

void UPhysicalDrawDevice::framePoly(const UPolygon& polygon) {
    drawPolygon(device, polygon, Polygon::kClosed, Graphics::kDrawStroke);
}

void UPhysicalDrawDevice::paintPoly(const UPolygon& polygon) {
    drawPolygon(device, polygon, Polygon::kClosed, Graphics::kDrawFill);
}

void UPhysicalDrawDevice::polyLine(const UPolygon& polygon) {
    drawPolygon(device, polygon, Polygon::kOpen, Graphics::kDrawStroke);
}

void UPhysicalDrawDevice::setPen(const UPen& newPen) {
    pen = newPen;
    if (!device)
        return;
    device->setPenColor(pen.color.toColorSpec());
    device->setPenWidth(pen.width);
    device->setLineStyle(lineStyleOf(pen));
    device->setDrawAntialiased(pen.antialias);
}

void UPhysicalDrawDevice::setPen(UStandardColor color) {
    setPen(UPen(UColor(color)));
}

void UPhysicalDrawDevice::setBrush(const UBrush& newBrush) {
    brush = newBrush;
    if (!device)
        return;
    device->setBrushColor(brush.color.toColorSpec());
    device->setDrawAntialiased(brush.antialias);
}

void UPhysicalDrawDevice::setBrush(UStandardColor color) {
    setBrush(UBrush(UColor(color)));
}

void UPhysicalDrawDevice::drawString(const tchar* text, const URect& rect, int32_t flags, int32_t inset) {
    Graphics::IFontFace* face = device && text && *text ? font.getGraphicsObject() : nullptr;
    if (!face)
        return;
    Rect place = boundary(rect);
    place.x += inset;
    place.width -= 2.0 * inset;
    device->drawString(translated(text), place, face, font.getColor().toColorSpec(), alignmentOf(flags));
}

void UPhysicalDrawDevice::drawString(const tchar* text, const UPoint& place) {
    Graphics::IFontFace* face = device && text && *text ? font.getGraphicsObject() : nullptr;
    if (!face)
        return;
    UTextMetrics metrics;
    getTextMetrics(metrics);
    const Rect rect = {double(place.x), double(place.y) - metrics.ascent, double(getStringWidth(text)),
                       double(metrics.height)};
    device->drawString(translated(text), rect, face, font.getColor().toColorSpec(),
                       Graphics::kAlignLeft | Graphics::kAlignTop);
}

void UPhysicalDrawDevice::drawChar(int32_t character, const UPoint& place) {
    constexpr int32_t kLastOfOneUnit = 0xFFFF, kLast = 0x10FFFF;
    if (character <= 0 || character > kLast)
        return;
    const int32_t above = character - kLastOfOneUnit - 1;
    const tchar one[] = {tchar(character), 0},
                two[] = {tchar(0xD800 + (above >> 10)), tchar(0xDC00 + (above & 0x3FF)), 0};
    drawString(above < 0 ? one : two, place);
}

int32_t UPhysicalDrawDevice::getStringWidth(const tchar* text) {
    return UDrawDevice::getStringWidth(font, text);
}

void UPhysicalDrawDevice::getTextExtents(const tchar* text, URect& extents) {
    UDrawDevice::getTextExtents(font, text, extents);
}

void UPhysicalDrawDevice::getTextMetrics(UTextMetrics& metrics) {
    UDrawDevice::getTextMetrics(font, metrics);
}

void UPhysicalDrawDevice::drawBitmap(UBitmap* bitmap, const UPoint& place, int32_t mode) {
    if (!bitmap)
        return;
    const UPoint size(bitmap->getWidth(), bitmap->getHeight());
    drawBitmap(bitmap, URect(UPoint(), size), URect(place, size), mode);
}

void UPhysicalDrawDevice::drawBitmap(UBitmap* bitmap, const URect& source, const URect& target, int32_t mode) {
    if (device && bitmap)
        bitmap->draw(this, source, target, int16_t(mode));
}

void UPhysicalDrawDevice::alphaBlend(UBitmap* bitmap, const URect& source, const URect& target, uint8_t alpha) {
    if (device && bitmap)
        bitmap->drawAlpha(this, source, target, alpha / 255.0);
}

void UPhysicalDrawDevice::setClip(const URect& newClip) {
    clip = URect(std::min(newClip.left, newClip.right), std::min(newClip.top, newClip.bottom), newClip.right,
                 newClip.bottom);
    if (device)
        device->setClip(boundary(newClip));
}

URect UPhysicalDrawDevice::visibleOn(UDrawDevice& device) {
    const auto nearest = [](int32_t& from, int32_t& to) {
        if (int64_t(to) - from <= 2 * kFarAway)
            return;
        from = std::clamp(-kFarAway, from, to - 2 * kFarAway);
        to = from + 2 * kFarAway;
    };
    URect visible;
    device.getClip(visible);
    nearest(visible.left, visible.right);
    nearest(visible.top, visible.bottom);
    return visible;
}

void UPhysicalDrawDevice::resetAttributes() {
    setBrush(kWhite);
    setPen(kBlack);
    setClip(URect(-kFarAway, -kFarAway, kFarAway, kFarAway));
}

void UPhysicalDrawDevice::saveState() {
    if (device && device->saveGlobalState() == kResultOk)
        savedClips.push_back(clip);
}

void UPhysicalDrawDevice::restoreState() {
    if (!device || device->restoreGlobalState() != kResultOk || savedClips.empty())
        return;
    clip = savedClips.back();
    savedClips.pop_back();
}

}  // namespace Tessarine
