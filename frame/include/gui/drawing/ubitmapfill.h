#pragma once
#include "gui/drawing/iskindependent.h"
#include "gui/drawing/ubitmap.h"

namespace Tessarine {

/** A tile of one colour, which covers whatever it is drawn into, and of which any part can be taken. */
class UBitmapFill : public UBitmap {
public:
    DECLARE_ABSTRACT_CLASS(UBitmapFill, UBitmap)
    /** opacity 0 to 1, clamped. */
    UBitmapFill(int32_t width, int32_t height, const UColor& color, double opacity);

    const UColor& getColor() const { return color; }

    UBitmap* getSection(const URect& rect) override;
    bool draw(UPhysicalDrawDevice* device, const URect& source, const URect& target, int16_t mode) override;
    bool drawAlpha(UPhysicalDrawDevice* device, const URect& source, const URect& target, double alpha) override;

protected:
    void setColor(const UColor& newColor);

private:
    UColor color;
};

/** A fill in a colour of the skin; black as long as that has none of the name. */
class USkinBitmapFill : public UBitmapFill, public ISkinDependent {
public:
    DECLARE_ABSTRACT_CLASS(USkinBitmapFill, UBitmapFill)
    USkinBitmapFill(int32_t width, int32_t height, const char* colorName, double opacity);

    void updateSkin() override;

private:
    FString colorName;
    SkinDependence dependence{this};
};

}  // namespace Tessarine
