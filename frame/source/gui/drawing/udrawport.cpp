#include "gui/drawing/udrawport.h"
#include "gui/drawing/uphysicaldrawdevice.h"
#include <memory>

namespace Tessarine {
namespace {
template <class Attribute>
const Attribute& none() {
    static const Attribute attribute;
    return attribute;
}
}  // namespace

UDrawPort::UDrawPort(UDrawDevice* device, const UPoint& origin, const URect& clip) : device(device), clip(clip) {
    transform.translate(origin);
    if (!device)
        return;
    device->getClip(savedClip);
    this->clip.intersect(transform.reverse(UPhysicalDrawDevice::visibleOn(*device)));
    device->setClip(transform.forward(this->clip));
}

UDrawPort::~UDrawPort() {
    if (device)
        device->setClip(savedClip);
}

void UDrawPort::lineTo(const UPoint& to) {
    if (device)
        device->lineTo(transform.forward(to));
}

void UDrawPort::moveTo(const UPoint& to) {
    if (device)
        device->moveTo(transform.forward(to));
}

void UDrawPort::moveBy(const UPoint& by) {
    if (device)
        device->moveBy(UPoint(UPoint::clip(int64_t(by.x) * transform.scaling.x),
                              UPoint::clip(int64_t(by.y) * transform.scaling.y)));
}

void UDrawPort::fastLines(int32_t* coordinates, int32_t count) {
    if (!device || !coordinates)
        return;
    for (int32_t index = 0; index + 2 <= count; index += 2) {
        const UPoint place = transform.forward(UPoint(coordinates[index], coordinates[index + 1]));
        coordinates[index] = place.x;
        coordinates[index + 1] = place.y;
    }
    device->fastLines(coordinates, count);
}

void UDrawPort::eraseRect(const URect& rect) {
    if (device)
        device->eraseRect(transform.forward(rect));
}

void UDrawPort::frameRect(const URect& rect) {
    if (device)
        device->frameRect(transform.forward(rect));
}

void UDrawPort::paintRect(const URect& rect) {
    if (device)
        device->paintRect(transform.forward(rect));
}

void UDrawPort::frameRoundRect(const URect& rect, int32_t radius) {
    if (device)
        device->frameRoundRect(transform.forward(rect), radius);
}

void UDrawPort::paintRoundRect(const URect& rect, int32_t radius) {
    if (device)
        device->paintRoundRect(transform.forward(rect), radius);
}

void UDrawPort::fastRects(TContainer<URect>& rects, bool filled) {
    if (!device)
        return;
    const std::unique_ptr<TIterator<URect>> walk(rects.newIterator());
    for (; !walk->done(); walk->next())
        walk->current() = transform.forward(walk->current());
    device->fastRects(rects, filled);
}

void UDrawPort::frameOval(const URect& rect, float startAngle, float arc) {
    if (device)
        device->frameOval(transform.forward(rect), startAngle, arc);
}

void UDrawPort::paintOval(const URect& rect, float startAngle, float arc) {
    if (device)
        device->paintOval(transform.forward(rect), startAngle, arc);
}

UPolygon UDrawPort::mapped(const UPolygon& polygon) const {
    UPolygon result;
    for (size_t index = 0; index < polygon.count(); ++index)
        result.lineTo({polygon.at(index).x * transform.scaling.x + transform.translation.x,
                       polygon.at(index).y * transform.scaling.y + transform.translation.y});
    return result;
}

void UDrawPort::framePoly(const UPolygon& polygon) {
    if (device)
        device->framePoly(mapped(polygon));
}

void UDrawPort::paintPoly(const UPolygon& polygon) {
    if (device)
        device->paintPoly(mapped(polygon));
}

void UDrawPort::polyLine(const UPolygon& polygon) {
    if (device)
        device->polyLine(mapped(polygon));
}

void UDrawPort::setPen(const UPen& pen) {
    if (device)
        device->setPen(pen);
}

void UDrawPort::setPen(UStandardColor color) {
    if (device)
        device->setPen(color);
}

const UPen& UDrawPort::getPen() {
    return device ? device->getPen() : none<UPen>();
}

void UDrawPort::setBrush(const UBrush& brush) {
    if (device)
        device->setBrush(brush);
}

void UDrawPort::setBrush(UStandardColor color) {
    if (device)
        device->setBrush(color);
}

const UBrush& UDrawPort::getBrush() {
    return device ? device->getBrush() : none<UBrush>();
}

void UDrawPort::setFont(const UFont& font) {
    if (device)
        device->setFont(font);
}

const UFont& UDrawPort::getFont() {
    return device ? device->getFont() : none<UFont>();
}

void UDrawPort::drawString(const tchar* text, const URect& rect, int32_t flags, int32_t inset) {
    if (device)
        device->drawString(text, transform.forward(rect), flags, inset);
}

void UDrawPort::drawString(const tchar* text, const UPoint& place) {
    if (device)
        device->drawString(text, transform.forward(place));
}

void UDrawPort::drawChar(int32_t character, const UPoint& place) {
    if (device)
        device->drawChar(character, transform.forward(place));
}

int32_t UDrawPort::getStringWidth(const tchar* text) {
    return device ? device->getStringWidth(text) : 0;
}

void UDrawPort::getTextExtents(const tchar* text, URect& extents) {
    extents = URect();
    if (device)
        device->getTextExtents(text, extents);
}

void UDrawPort::getTextMetrics(UTextMetrics& metrics) {
    metrics = UTextMetrics();
    if (device)
        device->getTextMetrics(metrics);
}

void UDrawPort::drawBitmap(UBitmap* bitmap, const UPoint& place, int32_t mode) {
    if (device)
        device->drawBitmap(bitmap, transform.forward(place), mode);
}

void UDrawPort::drawBitmap(UBitmap* bitmap, const URect& source, const URect& target, int32_t mode) {
    if (device)
        device->drawBitmap(bitmap, source, transform.forward(target), mode);
}

void UDrawPort::alphaBlend(UBitmap* bitmap, const URect& source, const URect& target, uint8_t alpha) {
    if (device)
        device->alphaBlend(bitmap, source, transform.forward(target), alpha);
}

void UDrawPort::setClip(const URect& newClip) {
    if (!device)
        return;
    URect within(newClip);
    within.intersect(clip);
    device->setClip(transform.forward(within));
}

void UDrawPort::getClip(URect& result) {
    result = URect();
    if (!device)
        return;
    device->getClip(result);
    result = transform.reverse(result);
}

void UDrawPort::resetAttributes() {
    if (!device)
        return;
    device->resetAttributes();
    device->setClip(transform.forward(clip));
}

UView* UDrawPort::getConnectedView() {
    return device ? device->getConnectedView() : nullptr;
}

void UDrawPort::saveState() {
    if (device)
        device->saveState();
}

void UDrawPort::restoreState() {
    if (device)
        device->restoreState();
}

}  // namespace Tessarine
