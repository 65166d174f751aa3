#include "frame/source/graphics/cairo/cairobitmap.h"
#include "pluginterfaces/base/smartpointer.h"
#include <algorithm>
#include <cstdlib>

namespace Tessarine::Graphics {
namespace {
constexpr int32_t kCrowdedWidth = 256;  // pixels
constexpr int32_t kLineOfCache = 16;
constexpr uint32_t kAlphaBits = 0xFF000000;

uint32_t alphaOf(uint32_t pixel) {
    return pixel >> 24;
}

/** Each channel but alpha by a function. */
template <class Convert>
uint32_t converted(uint32_t pixel, const Convert& convert) {
    return (pixel & kAlphaBits) | convert(pixel >> 16 & 0xFF) << 16 | convert(pixel >> 8 & 0xFF) << 8 |
           convert(pixel & 0xFF);
}
}  // namespace

uint32_t multiplied(uint32_t straight) {
    const uint32_t alpha = alphaOf(straight);
    if (alpha == 255)
        return straight;
    // to the nearest 255th, as cairo does
    return converted(straight, [alpha](uint32_t channel) {
        const uint32_t product = channel * alpha + 0x80;
        return (product + (product >> 8)) >> 8;
    });
}

uint32_t straightened(uint32_t multiplied) {
    const uint32_t alpha = alphaOf(multiplied);
    if (alpha == 255)
        return multiplied;
    if (alpha == 0)
        return 0;
    return converted(
        multiplied, [alpha](uint32_t channel) { return std::min<uint32_t>((channel * 255 + alpha / 2) / alpha, 255); });
}

/** Unlocks with its end. */
class CairoBitmap::Accessor : public FObject, public IBitmapPixelAccessor {
public:
    FORWARD_REFCOUNT(FObject)
    Accessor(CairoBitmap* bitmap, unsigned flags) : bitmap(bitmap), flags(flags) {}
    ~Accessor() override { bitmap->unlock(flags); }
    Accessor(const Accessor&) = delete;
    Accessor& operator=(const Accessor&) = delete;

    int32_t queryInterface(const char* iid, void** obj) override {
        return answerInterface<IBitmapPixelAccessor>(this, iid, obj) ? kResultOk : FObject::queryInterface(iid, obj);
    }
    int32_t getPixelFormat() override { return kPixelFormatARGB32; }
    uint32_t getRowByteCount() override { return uint32_t(bitmap->width) * sizeof(uint32_t); }
    void* getRowAddress(unsigned row) override {
        return row < unsigned(bitmap->height) ? bitmap->row(int32_t(row)) : nullptr;
    }

private:
    const IPtr<CairoBitmap> bitmap;
    const unsigned flags;
};

void CairoBitmap::PixelsRelease::operator()(uint32_t* pixels) const {
    std::free(pixels);
}

CairoBitmap* CairoBitmap::create(double width, double height) {
    const bool fits =
        width >= 1 && height >= 1 && width <= IBitmapFactory::kMaxSide && height <= IBitmapFactory::kMaxSide;
    if (!fits || int64_t(width) * int64_t(height) > IBitmapFactory::kMaxPixels)
        return nullptr;
    auto* pixels = static_cast<uint32_t*>(std::calloc(size_t(width) * size_t(height), sizeof(uint32_t)));
    return pixels ? new CairoBitmap(int32_t(width), int32_t(height), pixels) : nullptr;
}

int32_t CairoBitmap::queryInterface(const char* iid, void** obj) {
    return answerInterface<IBitmap>(this, iid, obj) ? kResultOk : FObject::queryInterface(iid, obj);
}

uint64_t CairoBitmap::lastStamp = 0;

IBitmapPixelAccessor* CairoBitmap::lockPixels(unsigned flags) {
    const bool writes = (flags & kLockWrite) != 0;
    if (isWritten || (writes && readers > 0))
        return nullptr;
    takeDrawn();
    isWritten = writes;
    readers += writes ? 0 : 1;
    return new Accessor(this, flags);
}

void CairoBitmap::unlock(unsigned flags) {
    if ((flags & kLockWrite) == 0) {
        --readers;
        return;
    }
    isWritten = false;
    surfaceIsOld = true;
    stamp = newStamp();
}

/** Rows of some kilobytes exactly would all come to lie in the same few lines of the processor's cache. */
ptrdiff_t CairoBitmap::surfaceStride() const {
    return width % kCrowdedWidth == 0 ? width + kLineOfCache : width;
}

bool CairoBitmap::makeSurface() {
    const size_t count = size_t(surfaceStride()) * size_t(height);
    multipliedPixels.reset(static_cast<uint32_t*>(std::calloc(count, sizeof(uint32_t))));
    if (!multipliedPixels)
        return false;
    surface.reset(cairo_image_surface_create_for_data(reinterpret_cast<unsigned char*>(multipliedPixels.get()),
                                                      CAIRO_FORMAT_ARGB32, width, height,
                                                      int(surfaceStride()) * int(sizeof(uint32_t))));
    if (cairo_surface_status(surface.get()) == CAIRO_STATUS_SUCCESS)
        return true;
    surface.reset();
    multipliedPixels.reset();
    return false;
}

cairo_surface_t* CairoBitmap::getSurface() {
    if (isWritten)
        return nullptr;
    if (!surface && !makeSurface())
        return nullptr;
    if (surfaceIsOld)
        multiplyAll();
    return surface.get();
}

void CairoBitmap::multiplyAll() {
    surfaceIsOld = false;
    drawn = {};
    cairo_surface_flush(surface.get());
    for (int32_t y = 0; y < height; ++y)
        std::transform(row(y), row(y) + width, getSurfacePixels().at(0, y), multiplied);
    cairo_surface_mark_dirty(surface.get());
}

void CairoBitmap::takeDrawn() {
    if (!surface || drawn.isEmpty())
        return;
    cairo_surface_flush(surface.get());
    for (int32_t y = drawn.top; y < drawn.bottom; ++y) {
        const uint32_t* from = getSurfacePixels().at(0, y);
        uint32_t* to = row(y);
        for (int32_t x = drawn.left; x < drawn.right; ++x)
            if (multiplied(to[x]) != from[x])
                to[x] = straightened(from[x]);
    }
    drawn = {};
}

}  // namespace Tessarine::Graphics
