#include "gui/drawing/uskinbitmap.h"

namespace Tessarine {

IMPLEMENT_ABSTRACT_CLASS(USkinBitmap, UDelegatedBitmap)

USkinBitmap::USkinBitmap(const char* name) : name(name) {
    USkinBitmap::updateSkin();
}

void USkinBitmap::updateSkin() {
    UBitmap* found = gDrawingHooks.skinBitmap ? gDrawingHooks.skinBitmap(name.text8()) : nullptr;
    if (!found || !found->getGraphicsObject())
        return;
    delategateTo(found);
    setAlphaFactor(found->getAlphaFactor());
}

}  // namespace Tessarine
