#pragma once
#include "gui/drawing/ubitmap.h"
#include "tests/frame/source/graphics/cairo/canvas.h"
#include <algorithm>
#include <cstdlib>

namespace Tessarine::Testing {

/** The opaque colour that a letter stands for; a blank is transparent. */
inline uint32_t colorOf(char letter) {
    return letter == ' ' ? 0 : 0xFF004000 | uint32_t(uint8_t(letter));
}

/** Rows of letters; ? for other colours. */
inline Picture lettersOf(Graphics::IBitmap* bitmap) {
    const BitmapPixelAccessor access(bitmap, Graphics::kLockRead);
    Picture result;
    for (int32_t y = 0; y < access.getHeight(); ++y) {
        std::string& text = result.emplace_back();
        std::transform(access.row(y), access.row(y) + access.getWidth(), std::back_inserter(text), [](uint32_t pixel) {
            const char letter = pixel == 0 ? ' ' : char(pixel & 0x7F);
            return pixel == colorOf(letter) ? letter : '?';
        });
    }
    return result;
}
inline Picture lettersOf(UBitmap* bitmap) {
    return lettersOf(bitmap ? bitmap->getBitmap() : nullptr);
}

inline void setPixels(UBitmap* bitmap, const std::vector<uint32_t>& pixels) {
    const BitmapPixelAccessor access(bitmap->getBitmap(), Graphics::kLockWrite);
    for (int32_t y = 0; y < access.getHeight(); ++y)
        std::copy_n(pixels.data() + ptrdiff_t(y) * access.getWidth(), access.getWidth(), access.row(y));
}

inline OPtr<UBitmap> bitmapOf(int32_t width, const std::vector<uint32_t>& pixels) {
    OPtr<UBitmap> bitmap(new UBitmap(UPoint(width, int32_t(pixels.size()) / width), 32));
    setPixels(bitmap, pixels);
    return bitmap;
}

inline OPtr<UBitmap> bitmapOf(const Picture& letters) {
    std::vector<uint32_t> pixels;
    for (const std::string& row : letters)
        std::transform(row.begin(), row.end(), std::back_inserter(pixels), colorOf);
    return bitmapOf(int32_t(letters[0].size()), pixels);
}

inline std::vector<uint32_t> pixelsOf(UBitmap* bitmap) {
    const BitmapPixelAccessor access(bitmap ? bitmap->getBitmap() : nullptr, Graphics::kLockRead);
    std::vector<uint32_t> pixels;
    for (int32_t y = 0; y < access.getHeight(); ++y)
        pixels.insert(pixels.end(), access.row(y), access.row(y) + access.getWidth());
    return pixels;
}

/** The same to within the rounding of one channel. */
inline bool isNear(uint32_t a, uint32_t b) {
    for (int32_t shift = 0; shift < 32; shift += 8)
        if (std::abs(int32_t(a >> shift & 0xFF) - int32_t(b >> shift & 0xFF)) > 1)
            return false;
    return true;
}

}  // namespace Tessarine::Testing
