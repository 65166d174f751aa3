#pragma once
#include "gui/drawing/bitmappixelaccessor.h"
#include "pluginterfaces/graphics/graphicstypes.h"

namespace Tessarine::Graphics::BitmapFilterImplementation {

/** Places of the input that make a row of the result: the first, and the way from each to the next. */
struct SampleLine {
    Point start;
    Point step;
};

/** Takes pixels at places between pixels; a pixel's middle is at one half, what lies outside of the bitmap is 0. */
class Sampler {
public:
    explicit Sampler(const BitmapPixelAccessor& pixels) : pixels(pixels) {}

    void nearest(uint32_t* to, int32_t count, const SampleLine& line) const;
    /** The mean of the four around, by seven bits of each distance. Both ways give the same bytes. */
    void interpolated(uint32_t* to, int32_t count, const SampleLine& line) const;
    void interpolatedPlain(uint32_t* to, int32_t count, const SampleLine& line) const;

private:
    struct Places;  // of a line, from one to the next

    uint32_t at(int64_t x, int64_t y) const;
    void putMeans(uint32_t* to, int32_t count, Places& places) const;
    /** The same where the bitmap has all four pixels around each. */
    void putMeansInside(uint32_t* to, int32_t count, Places& places) const;

    const BitmapPixelAccessor& pixels;
};

}  // namespace Tessarine::Graphics::BitmapFilterImplementation
