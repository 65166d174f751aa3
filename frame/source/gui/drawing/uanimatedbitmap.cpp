#include "gui/drawing/uanimatedbitmap.h"
#include "gui/drawing/uphysicaldrawdevice.h"

namespace Tessarine {

IMPLEMENT_CLASS(UAnimatedBitmap, UDelegatedBitmap)

bool UAnimatedBitmap::draw(UPhysicalDrawDevice* device, const URect& source, const URect& rect, int16_t mode) {
    return (device && animation && animation->draw(*device, source, rect)) ||
           UDelegatedBitmap::draw(device, source, rect, mode);
}

}  // namespace Tessarine
