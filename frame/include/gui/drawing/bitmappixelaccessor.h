#pragma once
#include "pluginterfaces/base/smartpointer.h"
#include "pluginterfaces/graphics/ibitmap.h"
#include <bit>
#include <cstddef>

namespace Tessarine {

/** A bitmap's pixels by rows, while it lives. A pixel is a word of 0xAARRGGBB, its colours not multiplied by alpha. */
class BitmapPixelAccessor {
public:
    /** Where a channel's byte stands within a pixel. */
    static constexpr int32_t kBlue = std::endian::native == std::endian::little ? 0 : 3;
    static constexpr int32_t kGreen = std::endian::native == std::endian::little ? 1 : 2;
    static constexpr int32_t kRed = std::endian::native == std::endian::little ? 2 : 1;
    static constexpr int32_t kAlpha = std::endian::native == std::endian::little ? 3 : 0;

    /** flags of Graphics::PixelLock. A null bitmap has no pixels. */
    BitmapPixelAccessor(Graphics::IBitmap* bitmap, unsigned flags);

    /** There are pixels, in the format above. */
    bool isValid() const { return width > 0; }
    int32_t getWidth() const { return width; }
    int32_t getHeight() const { return height; }
    /** getWidth() pixels. y within the height. */
    uint32_t* row(int32_t y) const { return reinterpret_cast<uint32_t*>(first + y * stride); }

private:
    OPtr<Graphics::IBitmapPixelAccessor> pixels;
    int32_t width = 0;
    int32_t height = 0;
    char* first = nullptr;  // borrowed of the pixels
    ptrdiff_t stride = 0;   // in bytes
};

}  // namespace Tessarine
