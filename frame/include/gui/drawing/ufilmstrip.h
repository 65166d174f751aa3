#pragma once
#include "gui/drawing/udelegatedbitmap.h"
#include "gui/drawing/utransform2d.h"

namespace Tessarine {
class UDrawDevice;

/** Pictures of one size in a row, of which it shows one: the states of a control, or the frames of an animation. As a bitmap it
    is its default frame.

    Values    0 to 1, clamped; a position in the row. */
class UFilmStrip : public UBitmapForwarder {
public:
    enum Alignment : int32_t { kVertical = 0, kHorizontal = 1 };
    static constexpr int32_t kDefaultInterval = 100;

    DECLARE_CLASS(UFilmStrip, UBitmap)
    /** Shares the bitmap. frames below 1 is one; interval in milliseconds, 0 is the default one. */
    explicit UFilmStrip(UBitmap* bitmap = nullptr, int32_t frames = 1, Alignment alignment = kVertical,
                        int32_t interval = kDefaultInterval);

    int32_t countFrames() const { return frames; }
    Alignment getAlignment() const { return alignment; }
    int32_t getInterval() const { return interval; }
    void setDefaultFrame(int32_t frame);
    int32_t getDefaultFrame() const { return defaultFrame; }

    /** A frame's place in the bitmap. */
    void getRect(URect& rect, int32_t frame);
    void getRect(URect& rect, float value);
    /** From the first frame on, so many as the value is of all. */
    void getStripRect(URect& rect, float value);
    /** mode of UBitmapMode. */
    void drawFrame(UDrawDevice& device, const UPoint& place, int32_t frame, int32_t mode);
    void drawFrame(UDrawDevice& device, const UPoint& place, float value, int32_t mode);
    void drawFrame(UDrawDevice& device, const UPoint& place, const UPoint& scaled, float value, int32_t mode);
    void drawStrip(UDrawDevice& device, const UPoint& place, float value);

    int32_t getWidth() override;
    int32_t getHeight() override;
    UBitmap* getTargetBitmap() override { return bitmap; }
    bool copyFrom(UBitmap* from, const URect& source, const URect& target, int16_t mode) override;
    UBitmap* getSection(const URect& rect) override;
    bool draw(UPhysicalDrawDevice* device, const URect& source, const URect& target, int16_t mode) override;
    UPoint getOffset() override;
    UBitmap* copyScaled(const Graphics::Point& newSize, ScalingAlgorithm algorithm) override;
    bool drawAlpha(UPhysicalDrawDevice* device, const URect& source, const URect& target, double alpha) override;

private:
    UPoint frameOrigin(int32_t frame);
    void drawRect(UDrawDevice& device, const URect& source, const URect& target, int32_t mode);

    IPtr<UBitmap> bitmap;
    int32_t frames;
    Alignment alignment;
    int32_t interval;
    int32_t defaultFrame = 0;
    UTransform2D transform;  // to the default frame
};

}  // namespace Tessarine
