#pragma once
#include "gui/drawing/udrawdevice.h"
#include <initializer_list>

namespace Tessarine {

/** What shapes of the scheme are put together from. Sides of areas and lines of one unit lie on whole units, so that they are
    sharp at each whole scale; all else is smoothed. */
class SchemePainter {
public:
    explicit SchemePainter(UDrawDevice& device) : device(device) {}

    enum Side : uint32_t { kLeft = 1, kTop = 2, kRight = 4, kBottom = 8, kAllSides = 15 };

    void fill(const URect& rect, const UColor& color);
    /** Lines of one unit along the inside of the rectangle. */
    void edges(const URect& rect, uint32_t sides, const UColor& color);
    /** From the top to the bottom, row by row. */
    void ramp(const URect& rect, const UColor& top, const UColor& bottom);
    void fillRound(const URect& rect, int32_t radius, const UColor& color);
    /** For translucent colours too, which fillRound lays double at the edge. */
    void fillSoft(const URect& rect, int32_t radius, const UColor& color);
    void frameRound(const URect& rect, int32_t radius, const UColor& color);
    /** Corners in units of the edges between pixels. */
    void fillPolygon(std::initializer_list<Graphics::Point> corners, const UColor& color);
    /** With round ends. */
    void stroke(std::initializer_list<Graphics::Point> points, int32_t width, const UColor& color);
    /** Nothing of it leaves the rectangle. */
    void text(const tchar* text, const URect& rect, const UFont& font, const UColor& color, int32_t flags,
              int32_t inset);

    UDrawDevice& device;
};

/** Lets only a part of the device be drawn on, until it goes. */
class ClipWithin {
public:
    ClipWithin(UDrawDevice& device, const URect& rect);
    ~ClipWithin() { device.setClip(before); }
    ClipWithin(const ClipWithin&) = delete;
    ClipWithin& operator=(const ClipWithin&) = delete;

private:
    UDrawDevice& device;
    URect before;
};

/** By part of the way from a to b. */
inline UColor mixed(const UColor& a, const UColor& b, float part) {
    return {a, b, part};
}
/** part: 0 to 1. */
UColor translucent(const UColor& color, double part);
/** Moved in by so many units. */
URect inside(const URect& rect, int32_t by);
/** The largest square, in the middle and on whole units; its side has the parity of the shorter one. */
URect squareIn(const URect& rect);

}  // namespace Tessarine
