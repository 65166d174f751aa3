#pragma once
#include <array>
#include <cstdint>

namespace Tessarine::Graphics::BitmapFilterImplementation {

/** Moves the hue, multiplies the saturation and puts the lightness through a curve. Both ways give the same bytes. */
class HSLRows {
public:
    /** The lightness, 0 to 255, that becomes of each sum of the highest and the lowest channel. */
    using Lightness = std::array<double, 511>;

    /** turn: 0 to 255 around, either way. Borrows the lightness. */
    HSLRows(double turn, double saturation, const Lightness& lightness)
        : turn(turn), saturation(saturation), lightness(lightness) {}

    void plain(uint32_t* to, const uint32_t* from, int32_t count) const;
    void fast(uint32_t* to, const uint32_t* from, int32_t count) const;

private:
    const double turn;
    const double saturation;
    const Lightness& lightness;
};

}  // namespace Tessarine::Graphics::BitmapFilterImplementation
