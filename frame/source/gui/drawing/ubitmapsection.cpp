#include "gui/drawing/ubitmapsection.h"

namespace Tessarine {

IMPLEMENT_CLASS(UBitmapSection, UDelegatedBitmap)

bool UBitmapSection::copyFrom(UBitmap* from, const URect& source, const URect& drawn, int16_t mode) {
    return UDelegatedBitmap::copyFrom(from, source, inTarget(drawn), mode);
}

UBitmap* UBitmapSection::getSection(const URect& part) {
    return UDelegatedBitmap::getSection(inTarget(part));
}

bool UBitmapSection::draw(UPhysicalDrawDevice* device, const URect& source, const URect& drawn, int16_t mode) {
    if (source.getSize() == drawn.getSize())
        return UDelegatedBitmap::draw(device, inTarget(source), drawn, mode);
    const OPtr<UBitmap> part(getSection(source));
    return part && part->draw(device, URect(UPoint(), source.getSize()), drawn, mode);
}

bool UBitmapSection::drawAlpha(UPhysicalDrawDevice* device, const URect& source, const URect& drawn, double alpha) {
    if (source.getSize() == drawn.getSize())
        return UDelegatedBitmap::drawAlpha(device, inTarget(source), drawn, alpha);
    const OPtr<UBitmap> part(getSection(source));
    return part && part->drawAlpha(device, URect(UPoint(), source.getSize()), drawn, alpha);
}

UBitmap* UBitmapSection::copyScaled(const Graphics::Point& newSize, ScalingAlgorithm algorithm) {
    const OPtr<UBitmap> part(getSection(bounds()));
    return part ? part->copyScaled(newSize, algorithm) : nullptr;
}

}  // namespace Tessarine
