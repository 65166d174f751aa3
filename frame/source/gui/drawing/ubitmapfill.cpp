#include "gui/drawing/ubitmapfill.h"
#include "frame/source/gui/drawing/bitmapcells.h"
#include "gui/drawing/uphysicaldrawdevice.h"
#include <algorithm>

namespace Tessarine {

IMPLEMENT_ABSTRACT_CLASS(UBitmapFill, UBitmap)
IMPLEMENT_ABSTRACT_CLASS(USkinBitmapFill, UBitmapFill)

namespace {
/** Tiles begin where the source's place 0, 0 comes to lie. */
bool drawTiled(UBitmap* tile, const URect& source, const URect& target, const URect& visible,
               const DrawBitmapPart& draw) {
    const URect whole(0, 0, tile->getWidth(), tile->getHeight());
    if (whole.isEmpty() || source.isEmpty())
        return false;
    const auto within = [](int32_t place, int32_t length) { return (place % length + length) % length; };
    const UPoint offset(within(source.left, whole.right), within(source.top, whole.bottom));
    return drawBitmapCell(tile, {whole, target, kRepeatCellBoth, offset}, visible, draw);
}

URect clipOf(UPhysicalDrawDevice* device) {
    return device ? UPhysicalDrawDevice::visibleOn(*device) : URect();
}
}  // namespace

UBitmapFill::UBitmapFill(int32_t width, int32_t height, const UColor& color, double opacity)
    : UBitmap(UPoint(width, height), 32) {
    setColor(color);
    setAlphaFactor(opacity > 0 ? std::min(opacity, 1.0) : 0.0);
}

void UBitmapFill::setColor(const UColor& newColor) {
    color = newColor;
    colorFill(color, kFillAll);
}

UBitmap* UBitmapFill::getSection(const URect& rect) {
    OPtr<UBitmap> section(rect.isEmpty() ? nullptr : new UBitmap(rect.getSize(), getBitDepth()));
    const URect target(UPoint(), rect.getSize());
    const auto copy = [&section](UBitmap* tile, const URect& from, const URect& to) {
        return section->copyFrom(tile, from, to, kBitmapPlain);
    };
    if (!section || !section->getBitmap() || !drawTiled(this, rect, target, target, copy))
        return nullptr;
    describe(*section);
    return section.detach();
}

bool UBitmapFill::draw(UPhysicalDrawDevice* device, const URect& source, const URect& target, int16_t mode) {
    return drawTiled(
        this, source, target, clipOf(device), [this, device, mode](UBitmap* tile, const URect& from, const URect& to) {
            return tile == this ? UBitmap::draw(device, from, to, mode) : tile->draw(device, from, to, mode);
        });
}

bool UBitmapFill::drawAlpha(UPhysicalDrawDevice* device, const URect& source, const URect& target, double alpha) {
    return drawTiled(this, source, target, clipOf(device),
                     [this, device, alpha](UBitmap* tile, const URect& from, const URect& to) {
                         return tile == this ? UBitmap::drawAlpha(device, from, to, alpha)
                                             : tile->drawAlpha(device, from, to, alpha);
                     });
}

USkinBitmapFill::USkinBitmapFill(int32_t width, int32_t height, const char* colorName, double opacity)
    : UBitmapFill(width, height, UColor(colorName, UColor()), opacity), colorName(colorName) {}

void USkinBitmapFill::updateSkin() {
    setColor(UColor(colorName.text8(), getColor()));
}

}  // namespace Tessarine
