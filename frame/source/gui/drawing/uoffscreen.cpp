#include "gui/drawing/uoffscreen.h"
#include "gui/drawing/ubitmap.h"
#include "pluginterfaces/graphics/ifactory.h"
#include <utility>

namespace Tessarine {
namespace {
bool moveTo(Graphics::IDrawDevice* device, const UPoint& origin) {
    return origin == UPoint() ||
           device->concatTransformMatrix({1, 0, 0, 1, double(origin.x), double(origin.y)}) == kResultOk;
}

OPtr<Graphics::IDrawDevice> deviceOf(UBitmap* bitmap) {
    Graphics::IBitmap* pixels = bitmap ? bitmap->getBitmap() : nullptr;
    Graphics::IFactory* factory = pixels ? UPhysicalDrawDevice::getFactory(true) : nullptr;
    OPtr<Graphics::IDrawDevice> device(factory ? factory->createDrawDeviceForBitmap(pixels) : nullptr);
    return device && moveTo(device, bitmap->getOffset()) ? std::move(device) : nullptr;
}

/** No larger than the pixels that there are, whatever size the bitmap says it has. */
URect boundsOf(UBitmap* bitmap) {
    Graphics::IBitmap* pixels = bitmap ? bitmap->getBitmap() : nullptr;
    if (!pixels)
        return {};
    const Graphics::Size size = pixels->getSize();
    URect bounds(0, 0, bitmap->getWidth(), bitmap->getHeight());
    bounds.intersect(URect(-bitmap->getOffset(), UPoint(int32_t(size.width), int32_t(size.height))));
    return bounds;
}
}  // namespace

UOffscreen::UOffscreen(UBitmap* bitmap)
    : UPhysicalDrawDevice(deviceOf(bitmap)), bitmap(bitmap), bounds(boundsOf(bitmap)) {
    UOffscreen::setClip(bounds);
}

UOffscreen::~UOffscreen() = default;

void UOffscreen::setClip(const URect& newClip) {
    URect within(newClip);
    within.intersect(bounds);
    UPhysicalDrawDevice::setClip(within);
}

}  // namespace Tessarine
