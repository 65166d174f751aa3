#include "frame/source/gui/drawing/schemepainter.h"
#include "gui/drawing/uphysicaldrawdevice.h"
#include <algorithm>
#include <cmath>
#include <numbers>

namespace Tessarine {
namespace {
constexpr int32_t kStepsOfCorner = 8;
constexpr Graphics::LineStyle kRoundLine = {Graphics::kCapRound, Graphics::kJoinRound, 0, {}};

UPen smoothPen(const UColor& color, int32_t width = 1) {
    return UPen(color, width, UPen::kSolid, true);
}

/** Devices move the points of polygons to the middles of pixels. */
UPolygon onEdges(std::initializer_list<Graphics::Point> corners) {
    UPolygon polygon;
    for (const Graphics::Point& corner : corners)
        polygon.lineTo({corner.x - 0.5, corner.y - 0.5});
    return polygon;
}
}  // namespace

void SchemePainter::fill(const URect& rect, const UColor& color) {
    device.setBrush(UBrush(color, true));
    device.paintRect(rect);
}

void SchemePainter::edges(const URect& rect, uint32_t sides, const UColor& color) {
    if (rect.isEmpty())
        return;
    // nothing twice, or translucent colours would show it: corners, nor the other side of what is one unit wide
    const int32_t left = rect.left + (sides & kLeft ? 1 : 0), top = rect.top + (sides & kTop ? 1 : 0),
                  bottom = rect.bottom - (sides & kBottom ? 1 : 0);
    const struct {
        uint32_t side;
        URect line;
    } kLines[] = {
        {kTop,    {rect.left, rect.top, rect.right, rect.top + 1}                     },
        {kBottom, {rect.left, std::max(rect.bottom - 1, top), rect.right, rect.bottom}},
        {kLeft,   {rect.left, top, rect.left + 1, bottom}                             },
        {kRight,  {std::max(rect.right - 1, left), top, rect.right, bottom}           },
    };
    device.setBrush(UBrush(color, true));
    for (const auto& [side, line] : kLines)
        if (sides & side)
            device.paintRect(line);
}

void SchemePainter::ramp(const URect& rect, const UColor& top, const UColor& bottom) {
    const URect shown = UPhysicalDrawDevice::visibleOn(device);
    const double last = std::max(rect.getHeight() - 1, 1);
    for (int32_t y = std::max(rect.top, shown.top); y < std::min(rect.bottom, shown.bottom); ++y)
        fill({rect.left, y, rect.right, y + 1}, mixed(top, bottom, float((double(y) - rect.top) / last)));
}

void SchemePainter::fillRound(const URect& rect, int32_t radius, const UColor& color) {
    device.setBrush(UBrush(color, true));
    device.paintRoundRect(rect, radius);
}

void SchemePainter::fillSoft(const URect& rect, int32_t radius, const UColor& color) {
    if (rect.isEmpty())
        return;
    const double round = std::min({double(radius), rect.getWidth() / 2.0, rect.getHeight() / 2.0});
    const double left = rect.left + round, right = rect.right - round, top = rect.top + round,
                 bottom = rect.bottom - round;
    const Graphics::Point middles[] = {
        {right, bottom},
        {left,  bottom},
        {left,  top   },
        {right, top   }
    };
    UPolygon polygon;
    for (int32_t corner = 0; corner < 4; ++corner)
        for (int32_t step = 0; step <= kStepsOfCorner; ++step) {
            const double angle = (corner + double(step) / kStepsOfCorner) * std::numbers::pi / 2;
            polygon.lineTo(
                {middles[corner].x + round * std::cos(angle) - 0.5, middles[corner].y + round * std::sin(angle) - 0.5});
        }
    device.setBrush(UBrush(color, true));
    device.paintPoly(polygon);
}

void SchemePainter::frameRound(const URect& rect, int32_t radius, const UColor& color) {
    device.setPen(smoothPen(color));
    device.frameRoundRect(rect, radius);
}

void SchemePainter::fillPolygon(std::initializer_list<Graphics::Point> corners, const UColor& color) {
    device.setBrush(UBrush(color, true));
    device.paintPoly(onEdges(corners));
}

void SchemePainter::stroke(std::initializer_list<Graphics::Point> points, int32_t width, const UColor& color) {
    UPen pen = smoothPen(color, width);
    pen.style = UPen::kCustom;
    pen.lineStyle = kRoundLine;
    device.setPen(pen);
    device.polyLine(onEdges(points));
}

void SchemePainter::text(const tchar* text, const URect& rect, const UFont& font, const UColor& color, int32_t flags,
                         int32_t inset) {
    if (!text || !*text || rect.isEmpty())
        return;
    UFont colored(font);
    colored.setColor(color);
    device.setFont(colored);
    device.setPen(smoothPen(color));  // smooths the text
    const ClipWithin clip(device, rect);
    device.drawString(text, rect, flags, inset);
}

ClipWithin::ClipWithin(UDrawDevice& device, const URect& rect) : device(device) {
    device.getClip(before);
    URect part(rect);
    part.intersect(before);
    device.setClip(part);
}

UColor translucent(const UColor& color, double part) {
    return {color.red, color.green, color.blue, uint16_t(std::clamp(part, 0.0, 1.0) * UColor::kOpaque)};
}

URect inside(const URect& rect, int32_t by) {
    return URect(rect).inset(by, by);
}

URect squareIn(const URect& rect) {
    const int32_t side = std::min(rect.getWidth(), rect.getHeight());
    const UPoint origin(rect.left + (rect.getWidth() - side) / 2, rect.top + (rect.getHeight() - side) / 2);
    return {origin, UPoint(side, side)};
}

}  // namespace Tessarine
