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

/** A factor below 1, in parts of 2^16 and of 2^32. */
struct FactorParts {
    uint16_t high;
    uint16_t low;
};

/** The mean of the channels times a factor, and alpha times another. */
class GrayRows {
public:
    GrayRows(double grayFactor, double alphaFactor);

    void plain(uint32_t* to, const uint32_t* from, int32_t count) const;
    void fast(uint32_t* to, const uint32_t* from, int32_t count) const;

private:
    /** Those that give all bytes of a table; false: there are none. */
    template <size_t size>
    static bool findParts(const std::array<uint8_t, size>& table, double factor, FactorParts& parts);

    std::array<uint8_t, 766> grays;  // by the sum of the channels
    std::array<uint8_t, 256> alphas;
    FactorParts grayParts{};
    FactorParts alphaParts{};
    bool keepsAlpha;
    bool isFast;  // the parts are there
};

/** Moves the colours towards one, each keeping its brightness. */
class TintRows {
public:
    TintRows(uint32_t colorSpec, double factor);

    void plain(uint32_t* to, const uint32_t* from, int32_t count) const;
    void fast(uint32_t* to, const uint32_t* from, int32_t count) const;

private:
    /** What leaves 0 to 1 in a channel goes to the others, so that the brightness stays. */
    void level(float (&channels)[3]) const;

    float tint[3];   // red, green, blue; 0 to 1
    float slope[3];  // of each channel by the brightness
    float brightness;
    float factor;
};

}  // namespace Tessarine::Graphics::BitmapFilterImplementation
