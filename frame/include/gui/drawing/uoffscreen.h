#pragma once
#include "gui/drawing/uphysicaldrawdevice.h"

namespace Tessarine {

/** Draws onto what a bitmap shows, and never beyond: of one that stands for a part of another, onto that part. Without pixels,
    and while they are locked, nothing is drawn. */
class UOffscreen : public UPhysicalDrawDevice {
public:
    DECLARE_CLASS_NAME(UOffscreen, UPhysicalDrawDevice)
    explicit UOffscreen(UBitmap* bitmap);
    ~UOffscreen() override;
    UOffscreen(const UOffscreen&) = delete;
    UOffscreen& operator=(const UOffscreen&) = delete;

    void setClip(const URect& newClip) override;

    UBitmap* getBitmap() const { return bitmap; }

private:
    const IPtr<UBitmap> bitmap;
    const URect bounds;
};

}  // namespace Tessarine
