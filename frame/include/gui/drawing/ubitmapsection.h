#pragma once
#include "gui/drawing/udelegatedbitmap.h"

namespace Tessarine {

/** A rectangle of another bitmap, whose pixels it shares. */
class UBitmapSection : public UDelegatedBitmap {
public:
    DECLARE_CLASS(UBitmapSection, UDelegatedBitmap)
    explicit UBitmapSection(UBitmap* target = nullptr, const URect& rect = {}) : UDelegatedBitmap(target), rect(rect) {}

    const URect& getRect() const { return rect; }
    void setRect(const URect& newRect) { rect = newRect; }

    int32_t getWidth() override { return rect.getWidth(); }
    int32_t getHeight() override { return rect.getHeight(); }
    bool copyFrom(UBitmap* from, const URect& source, const URect& target, int16_t mode) override;
    UBitmap* getSection(const URect& part) override;
    /** What is drawn at another size is taken out first, so that the target scales nothing but the part. */
    bool draw(UPhysicalDrawDevice* device, const URect& source, const URect& target, int16_t mode) override;
    UPoint getOffset() override { return UDelegatedBitmap::getOffset() + rect.getOrigin(); }
    UBitmap* copyScaled(const Graphics::Point& newSize, ScalingAlgorithm algorithm) override;
    bool drawAlpha(UPhysicalDrawDevice* device, const URect& source, const URect& target, double alpha) override;

private:
    URect inTarget(const URect& part) const { return URect(part).offset(rect.getOrigin()); }

    URect rect;
};

}  // namespace Tessarine
