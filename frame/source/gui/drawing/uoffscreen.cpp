#include "gui/drawing/uoffscreen.h"
#include "gui/drawing/ubitmap.h"
#include "pluginterfaces/graphics/ifactory.h"

namespace Tessarine {
namespace {
OPtr<Graphics::IDrawDevice> deviceOf(UBitmap* bitmap) {
    Graphics::IBitmap* pixels = bitmap ? bitmap->getBitmap() : nullptr;
    Graphics::IFactory* factory = pixels ? UPhysicalDrawDevice::getFactory(true) : nullptr;
    return factory ? factory->createDrawDeviceForBitmap(pixels) : nullptr;
}

URect boundsOf(UBitmap* bitmap) {
    Graphics::IBitmap* pixels = bitmap ? bitmap->getBitmap() : nullptr;
    const Graphics::Size size = pixels ? pixels->getSize() : Graphics::Size();
    return {0, 0, int32_t(size.width), int32_t(size.height)};
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
