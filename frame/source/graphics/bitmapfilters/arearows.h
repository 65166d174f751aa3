#pragma once
#include "gui/drawing/bitmappixelaccessor.h"
#include <vector>

namespace Tessarine::Graphics::BitmapFilterImplementation {

/** Which pixels of the input make each pixel of the result, along one direction, by how much each of them covers it. */
class AreaWeights {
public:
    static constexpr uint32_t kBits = 12;
    static constexpr uint32_t kWhole = 1U << kBits;  // the weights of each pixel of the result add up to this

    /** An even number of weights: the last may be a 0 for what isn't there any more. */
    struct Span {
        int32_t first;  // of the input
        const uint16_t* begin;
        const uint16_t* end;
    };

    /** Both above 0. */
    AreaWeights(int32_t from, int32_t to);
    Span at(int32_t index) const {
        return {firsts[size_t(index)], weights.data() + starts[size_t(index)],
                weights.data() + starts[size_t(index) + 1]};
    }

private:
    std::vector<int32_t> firsts;
    std::vector<size_t> starts;
    std::vector<uint16_t> weights;
};

/** Scales by area; colours count by their alpha. Both ways give the same bytes. */
void scaleArea(const BitmapPixelAccessor& from, const BitmapPixelAccessor& to);
void scaleAreaPlain(const BitmapPixelAccessor& from, const BitmapPixelAccessor& to);

}  // namespace Tessarine::Graphics::BitmapFilterImplementation
