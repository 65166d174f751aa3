#pragma once
#include <array>
#include <cstddef>
#include <cstdint>

/** What filters do to a row of pixels, words of 0xAARRGGBB; to and from may be one row. Where there are two ways, a plain one
    and one of four pixels at a time, both give the same bytes. */
namespace Tessarine::Graphics::BitmapFilterImplementation {

inline uint32_t alphaOf(uint32_t pixel) {
    return pixel >> 24;
}
inline uint32_t redOf(uint32_t pixel) {
    return pixel >> 16 & 0xFF;
}
inline uint32_t greenOf(uint32_t pixel) {
    return pixel >> 8 & 0xFF;
}
inline uint32_t blueOf(uint32_t pixel) {
    return pixel & 0xFF;
}
inline uint32_t pixelOf(uint32_t alpha, uint32_t red, uint32_t green, uint32_t blue) {
    return alpha << 24 | red << 16 | green << 8 | blue;
}

/** The mean of the channels times a factor, and alpha times another. */
class GrayRows {
public:
    GrayRows(double grayFactor, double alphaFactor);

    void plain(uint32_t* to, const uint32_t* from, int32_t count) const;
    void fast(uint32_t* to, const uint32_t* from, int32_t count) const;

private:
    /** A number that, multiplied and cut off, gives a table's bytes; 0: there is none. */
    template <size_t size>
    static float scaleOf(const std::array<uint8_t, size>& table, double factor);

    std::array<uint8_t, 766> grays;  // by the sum of the channels
    std::array<uint8_t, 256> alphas;
    float grayScale;
    float alphaScale;
};

/** Moves the colours towards one, each keeping its brightness. */
class TintRows {
public:
    TintRows(uint32_t colorSpec, double factor);

    void plain(uint32_t* to, const uint32_t* from, int32_t count) const;
    void fast(uint32_t* to, const uint32_t* from, int32_t count) const;

private:
    /** What leaves 0 to 1 in a channel goes to the other two, each by share[channel]. */
    void level(float (&channels)[3]) const;

    float tint[3];   // red, green, blue; 0 to 1
    float slope[3];  // of each channel by the brightness
    float brightness;
    float factor;
};

}  // namespace Tessarine::Graphics::BitmapFilterImplementation
