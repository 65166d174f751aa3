#include "gui/drawing/udelegatedbitmap.h"

namespace Tessarine {

IMPLEMENT_CLASS(UDelegatedBitmap, UBitmap)

Graphics::IBitmap* UBitmapForwarder::getGraphicsObject() {
    UBitmap* target = getTargetBitmap();
    return target ? target->getGraphicsObject() : nullptr;
}

int32_t UBitmapForwarder::getWidth() {
    UBitmap* target = getTargetBitmap();
    return target ? target->getWidth() : 0;
}

int32_t UBitmapForwarder::getHeight() {
    UBitmap* target = getTargetBitmap();
    return target ? target->getHeight() : 0;
}

uint32_t UBitmapForwarder::getBitDepth() {
    UBitmap* target = getTargetBitmap();
    return target ? target->getBitDepth() : 0;
}

Graphics::IBitmap* UBitmapForwarder::getBitmap() {
    UBitmap* target = getTargetBitmap();
    return target ? target->getBitmap() : nullptr;
}

bool UBitmapForwarder::makeColorTransparent(const UColor& color) {
    UBitmap* target = getTargetBitmap();
    return target && target->makeColorTransparent(color);
}

bool UBitmapForwarder::copyFrom(UBitmap* from, const URect& source, const URect& rect, int16_t mode) {
    UBitmap* target = getTargetBitmap();
    return target && target->copyFrom(from, source, rect, mode);
}

UBitmap* UBitmapForwarder::getSection(const URect& rect) {
    UBitmap* target = getTargetBitmap();
    return target ? target->getSection(rect) : nullptr;
}

bool UBitmapForwarder::draw(UPhysicalDrawDevice* device, const URect& source, const URect& rect, int16_t mode) {
    UBitmap* target = getTargetBitmap();
    return target && target->draw(device, source, rect, mode);
}

UPoint UBitmapForwarder::getOffset() {
    UBitmap* target = getTargetBitmap();
    return target ? target->getOffset() : UPoint();
}

UBitmap* UBitmapForwarder::copyScaled(const Graphics::Point& newSize, ScalingAlgorithm algorithm) {
    UBitmap* target = getTargetBitmap();
    return target ? target->copyScaled(newSize, algorithm) : nullptr;
}

bool UBitmapForwarder::drawAlpha(UPhysicalDrawDevice* device, const URect& source, const URect& rect, double alpha) {
    UBitmap* target = getTargetBitmap();
    return target && target->drawAlpha(device, source, rect, alpha);
}

void UDelegatedBitmap::delategateTo(UBitmap* newTarget) {
    if (!isBehind(newTarget))
        target = newTarget;
}

}  // namespace Tessarine
