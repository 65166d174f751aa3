#pragma once
#include "gui/drawing/udelegatedbitmap.h"

namespace Tessarine {
class UDrawDevice;

/** Draws in a bitmap's place while it plays. */
class IBitmapAnimation {
public:
    /** false: nothing was drawn, and the bitmap is to show itself. */
    virtual bool draw(UDrawDevice& device, const URect& source, const URect& target) = 0;

protected:
    ~IBitmapAnimation() = default;
};

/** A bitmap that an animation may draw. Alpha blending and sections are of the bitmap itself, so that the animation can use
    them. */
class UAnimatedBitmap : public UDelegatedBitmap {
public:
    DECLARE_CLASS(UAnimatedBitmap, UDelegatedBitmap)
    explicit UAnimatedBitmap(UBitmap* target = nullptr) : UDelegatedBitmap(target) {}

    /** Borrowed until another one, or null, takes its place. */
    void setAnimation(IBitmapAnimation* newAnimation) { animation = newAnimation; }

    bool draw(UPhysicalDrawDevice* device, const URect& source, const URect& rect, int16_t mode) override;

private:
    IBitmapAnimation* animation = nullptr;  // borrowed
};

}  // namespace Tessarine
