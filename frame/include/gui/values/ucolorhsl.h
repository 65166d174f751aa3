#pragma once
#include <algorithm>
#include <cmath>
#include <cstdint>

namespace Tessarine {

/** A colour by hue, saturation and lightness, each from 0 to 255, hue once around. */
struct UColorHSL {
    double hue = 0;
    double saturation = 0;
    double lightness = 0;

    /** Of three bytes. */
    static UColorHSL fromBytes(int32_t red, int32_t green, int32_t blue);
    /** Rounded to bytes; hue may be out of its range. */
    void toBytes(int32_t& red, int32_t& green, int32_t& blue) const;
};

/** The lightness that a shift by percent gives. */
class UColorLightnessCurve {
public:
    explicit UColorLightnessCurve(double percent);
    /** 0 to 255. */
    double shifted(double lightness) const;

private:
    double exponent;
    double scale = 1;  // of what is missing to white
    double start = 0;
};

/** Saturation times this gives a shift by percent. */
inline double saturationFactor(double percent) {
    return percent < -100 ? 0 : std::min(1.0, percent / 100) + 1;
}

inline UColorHSL UColorHSL::fromBytes(int32_t red, int32_t green, int32_t blue) {
    const int32_t high = std::max({red, green, blue}), low = std::min({red, green, blue});
    const int32_t sum = high + low, range = high - low;
    UColorHSL color{0, 0, sum / 2.0};
    if (range == 0)
        return color;
    color.saturation = 255.0 * range / (sum <= 255 ? sum : 510 - sum);
    const double sixth = 255 / 6.0 / range;
    if (high == red)
        color.hue = (green - blue) * sixth + (green < blue ? 255 : 0);
    else if (high == green)
        color.hue = (blue - red) * sixth + 255 / 3.0;
    else
        color.hue = (red - green) * sixth + 255 * 2 / 3.0;
    return color;
}

inline void UColorHSL::toBytes(int32_t& red, int32_t& green, int32_t& blue) const {
    const double share = saturation / 255;
    const double high = lightness <= 127.5 ? lightness * (1 + share) : lightness + saturation - lightness * share;
    const double low = 2 * lightness - high, range = high - low;
    double place = hue * (6 / 255.0);  // in sixths of a turn
    place -= 6 * int32_t(place * (1 / 6.0));
    place += place < 0 ? 6 : 0;
    // of each channel: rises for one sixth, stays high for two, falls for one
    const auto channel = [&](double sixths) {
        sixths -= sixths >= 6 ? 6 : 0;
        return int32_t(low + range * std::clamp(2 - std::fabs(sixths - 2), 0.0, 1.0) + 0.5);
    };
    red = channel(place + 2);
    green = channel(place);
    blue = channel(place + 4);
}

}  // namespace Tessarine
