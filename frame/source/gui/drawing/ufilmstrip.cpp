#include "gui/drawing/ufilmstrip.h"
#include "gui/drawing/udrawdevice.h"
#include <algorithm>
#include <cmath>

namespace Tessarine {

IMPLEMENT_CLASS(UFilmStrip, UBitmap)

namespace {
/** A part of so many, in a float's own precision: 0.7 of 10 is 7. 0 also for what is no number. */
double partOf(int32_t count, float value) {
    const float part = value > 0 ? float(count) * std::min(value, 1.0F) : 0;
    return std::min<double>(part, count);
}
}  // namespace

UFilmStrip::UFilmStrip(UBitmap* bitmap, int32_t frames, Alignment alignment, int32_t interval)
    : bitmap(bitmap), frames(std::max(frames, 1)), alignment(alignment),
      interval(interval == 0 ? kDefaultInterval : interval) {}

void UFilmStrip::setDefaultFrame(int32_t frame) {
    defaultFrame = frame;
    transform.reset();
    transform.translate(frameOrigin(frame));
}

UPoint UFilmStrip::frameOrigin(int32_t frame) {
    return alignment == kHorizontal ? UPoint(UPoint::clip(int64_t(frame) * getWidth()), 0)
                                    : UPoint(0, UPoint::clip(int64_t(frame) * getHeight()));
}

void UFilmStrip::getRect(URect& rect, int32_t frame) {
    rect = URect(frameOrigin(frame), UPoint(getWidth(), getHeight()));
}

void UFilmStrip::getRect(URect& rect, float value) {
    getRect(rect, int32_t(std::floor(partOf(frames - 1, value) + 0.5)));
}

void UFilmStrip::getStripRect(URect& rect, float value) {
    const UPoint end = frameOrigin(int32_t(partOf(frames, value)));
    rect = alignment == kHorizontal ? URect(0, 0, end.x, getHeight()) : URect(0, 0, getWidth(), end.y);
}

void UFilmStrip::drawRect(UDrawDevice& device, const URect& source, const URect& target, int32_t mode) {
    if (bitmap && !source.isEmpty())
        device.drawBitmap(bitmap, source, target, mode);
}

void UFilmStrip::drawFrame(UDrawDevice& device, const UPoint& place, int32_t frame, int32_t mode) {
    URect rect;
    getRect(rect, frame);
    drawRect(device, rect, URect(place, rect.getSize()), mode);
}

void UFilmStrip::drawFrame(UDrawDevice& device, const UPoint& place, float value, int32_t mode) {
    drawFrame(device, place, UPoint(getWidth(), getHeight()), value, mode);
}

void UFilmStrip::drawFrame(UDrawDevice& device, const UPoint& place, const UPoint& scaled, float value, int32_t mode) {
    URect rect;
    getRect(rect, value);
    drawRect(device, rect, URect(place, scaled), mode);
}

void UFilmStrip::drawStrip(UDrawDevice& device, const UPoint& place, float value) {
    URect rect;
    getStripRect(rect, value);
    drawRect(device, rect, URect(place, rect.getSize()), kBitmapPlain);
}

int32_t UFilmStrip::getWidth() {
    return bitmap ? bitmap->getWidth() / (alignment == kHorizontal ? frames : 1) : 0;
}

int32_t UFilmStrip::getHeight() {
    return bitmap ? bitmap->getHeight() / (alignment == kHorizontal ? 1 : frames) : 0;
}

bool UFilmStrip::copyFrom(UBitmap* from, const URect& source, const URect& target, int16_t mode) {
    return UBitmapForwarder::copyFrom(from, source, transform.forward(target), mode);
}

UBitmap* UFilmStrip::getSection(const URect& rect) {
    return UBitmapForwarder::getSection(transform.forward(rect));
}

bool UFilmStrip::draw(UPhysicalDrawDevice* device, const URect& source, const URect& target, int16_t mode) {
    return UBitmapForwarder::draw(device, transform.forward(source), target, mode);
}

UPoint UFilmStrip::getOffset() {
    return UBitmapForwarder::getOffset() + transform.translation;
}

UBitmap* UFilmStrip::copyScaled(const Graphics::Point& newSize, ScalingAlgorithm algorithm) {
    const OPtr<UBitmap> frame(getSection(bounds()));
    return frame ? frame->copyScaled(newSize, algorithm) : nullptr;
}

bool UFilmStrip::drawAlpha(UPhysicalDrawDevice* device, const URect& source, const URect& target, double alpha) {
    return UBitmapForwarder::drawAlpha(device, transform.forward(source), target, alpha);
}

}  // namespace Tessarine
