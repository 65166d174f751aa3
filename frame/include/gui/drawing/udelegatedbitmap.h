#pragma once
#include "gui/drawing/ubitmap.h"

namespace Tessarine {

/** Has no pixels of its own: all goes to the bitmap that getTargetBitmap() names at the moment, and to nothing without one.
    Copies of it are plain bitmaps of what it shows. */
class UBitmapForwarder : public UBitmap {
public:
    UBitmapForwarder() = default;
    UBitmapForwarder(const UBitmapForwarder&) = delete;
    UBitmapForwarder& operator=(const UBitmapForwarder&) = delete;

    Graphics::IBitmap* getGraphicsObject() override;
    int32_t getWidth() override;
    int32_t getHeight() override;
    uint32_t getBitDepth() override;
    Graphics::IBitmap* getBitmap() override;
    UBitmap* getTargetBitmap() override = 0;
    bool makeColorTransparent(const UColor& color) override;
    bool copyFrom(UBitmap* from, const URect& source, const URect& target, int16_t mode) override;
    UBitmap* getSection(const URect& rect) override;
    bool draw(UPhysicalDrawDevice* device, const URect& source, const URect& target, int16_t mode) override;
    UPoint getOffset() override;
    UBitmap* copyScaled(const Graphics::Point& newSize, ScalingAlgorithm algorithm) override;
    bool drawAlpha(UPhysicalDrawDevice* device, const URect& source, const URect& target, double alpha) override;
};

/** Stands for another bitmap, which can be replaced. */
class UDelegatedBitmap : public UBitmapForwarder {
public:
    DECLARE_CLASS(UDelegatedBitmap, UBitmap)
    /** Shares the target. */
    explicit UDelegatedBitmap(UBitmap* target = nullptr) : target(target) {}

    UBitmap* getTargetBitmap() override { return target; }
    /** Null is allowed; what stands for this one is not, and changes nothing. */
    void delategateTo(UBitmap* newTarget);

protected:
    IPtr<UBitmap> target;
};

}  // namespace Tessarine
