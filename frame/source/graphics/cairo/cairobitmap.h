#pragma once
#include "base/source/cmobject.h"
#include "frame/source/graphics/cairo/objectbehind.h"
#include "pluginterfaces/graphics/ibitmap.h"
#include <algorithm>
#include <cairo.h>
#include <memory>

namespace Tessarine::Graphics {

/** A rectangle of whole pixels of a surface; right and bottom are outside. */
struct PixelRect {
    int32_t left = 0;
    int32_t top = 0;
    int32_t right = 0;
    int32_t bottom = 0;

    bool isEmpty() const { return right <= left || bottom <= top; }
    void unite(const PixelRect& other);
    void intersect(const PixelRect& other);
    bool operator==(const PixelRect&) const = default;
};

inline void PixelRect::unite(const PixelRect& other) {
    if (other.isEmpty())
        return;
    *this = isEmpty() ? other
                      : PixelRect{std::min(left, other.left), std::min(top, other.top), std::max(right, other.right),
                                  std::max(bottom, other.bottom)};
}

inline void PixelRect::intersect(const PixelRect& other) {
    *this = {std::max(left, other.left), std::max(top, other.top), std::min(right, other.right),
             std::min(bottom, other.bottom)};
}

/** Where rows of pixels begin. */
struct PixelRows {
    uint32_t* first = nullptr;
    ptrdiff_t stride = 0;  // pixels

    uint32_t* at(int32_t x, int32_t y) const { return first + y * stride + x; }
    PixelRows from(int32_t x, int32_t y) const { return {at(x, y), stride}; }
};

struct SurfaceRelease {
    void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
};
using SurfaceHolder = std::unique_ptr<cairo_surface_t, SurfaceRelease>;

/** Pixels with their colours as they are, which is what files and filters want, and beside them, once something draws, the
    surface of multiplied colours that cairo wants. Each side is brought up to date when it is asked for; pixels that drawing
    left alone keep the colours that the surface can't hold. */
class CairoBitmap : public FObject, public IBitmap {
public:
    DECLARE_CLASS_NAME(CairoBitmap, FObject)
    FORWARD_REFCOUNT(FObject)
    /** With a reference for the caller; null: a side below 1, too large, or there is no memory. */
    static CairoBitmap* create(double width, double height);
    /** The bitmap behind a face; null: it is of somebody else. Borrowed. */
    static CairoBitmap* behind(IBitmap* bitmap) { return objectBehind<CairoBitmap>(bitmap); }
    CairoBitmap(const CairoBitmap&) = delete;
    CairoBitmap& operator=(const CairoBitmap&) = delete;

    int32_t queryInterface(const char* iid, void** obj) override;
    Size getSize() override { return {double(width), double(height)}; }
    IBitmapPixelAccessor* lockPixels(unsigned flags) override;

    int32_t getWidth() const { return width; }
    int32_t getHeight() const { return height; }
    /** Up to date, borrowed, the same one each time; null: there is no memory, or it is locked for writing. */
    cairo_surface_t* getSurface();
    /** Of the surface, which is there and was flushed. */
    PixelRows getSurfacePixels() const { return {multipliedPixels.get(), surfaceStride()}; }
    /** Something was drawn onto the surface within these pixels, which are all of the bitmap. */
    void touch(const PixelRect& rect) {
        drawn.unite(rect);
        stamp = newStamp();
    }
    /** Tells these pixels from any others of the process, and from what they were before. */
    uint64_t getStamp() const { return stamp; }

private:
    class Accessor;
    struct PixelsRelease {
        void operator()(uint32_t* pixels) const;
    };

    CairoBitmap(int32_t width, int32_t height, uint32_t* pixels) : width(width), height(height), pixels(pixels) {}
    uint32_t* row(int32_t y) const { return pixels.get() + ptrdiff_t(y) * width; }
    static uint64_t newStamp() { return ++lastStamp; }
    ptrdiff_t surfaceStride() const;
    bool makeSurface();
    void unlock(unsigned flags);
    void multiplyAll();
    void takeDrawn();

    static uint64_t lastStamp;

    const int32_t width;
    const int32_t height;
    const std::unique_ptr<uint32_t, PixelsRelease> pixels;
    std::unique_ptr<uint32_t, PixelsRelease> multipliedPixels;
    SurfaceHolder surface;     // on them
    PixelRect drawn;           // where the surface is newer
    bool surfaceIsOld = true;  // everywhere else the pixels are
    int32_t readers = 0;
    bool isWritten = false;  // locked for writing
    uint64_t stamp = newStamp();
};

/** A colour with its channels multiplied by alpha, rounded, and back; colours of alpha 0 are lost. */
uint32_t multiplied(uint32_t straight);
uint32_t straightened(uint32_t multiplied);

}  // namespace Tessarine::Graphics
