#pragma once
#include "gui/drawing/udelegatedbitmap.h"
#include <functional>

namespace Tessarine {
class Marginator;
struct BitmapCell;

/** A bitmap that is drawn at any size around fixed margins: the corners stay as they are, the edges and the middle are
    stretched or repeated. */
class UDynamicBitmap : public UDelegatedBitmap {
public:
    enum Style : int32_t { kRepeatHoriz = 1, kRepeatVerti = 2 };

    DECLARE_CLASS(UDynamicBitmap, UDelegatedBitmap)
    UDynamicBitmap() = default;
    /** An empty size is the target's. center is what may be stretched, in the target; style of Style. */
    UDynamicBitmap(UBitmap* target, const UPoint& size, const URect& center, int32_t style = 0);

    const URect& getCenter() const { return center; }
    int32_t getStyle() const { return style; }

    int32_t getWidth() override;
    int32_t getHeight() override;
    UBitmap* getSection(const URect& rect) override;
    bool draw(UPhysicalDrawDevice* device, const URect& source, const URect& rect, int16_t mode) override;
    /** The margins stay. */
    UBitmap* copyScaled(const Graphics::Point& newSize, ScalingAlgorithm algorithm) override;
    bool drawAlpha(UPhysicalDrawDevice* device, const URect& source, const URect& rect, double alpha) override;

private:
    using DrawPart = std::function<bool(UBitmap* bitmap, const URect& source, const URect& rect)>;
    BitmapCell cellOf(const Marginator& cells, const UPoint& origin, int32_t column, int32_t row) const;
    bool drawCells(UPhysicalDrawDevice* device, const URect& source, const URect& rect, const DrawPart& drawPart);

    UPoint size;  // 0: the target's
    URect center;
    int32_t style = 0;
};

}  // namespace Tessarine
