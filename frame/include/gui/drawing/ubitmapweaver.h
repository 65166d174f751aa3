#pragma once
#include "gui/drawing/urect.h"

namespace Tessarine {
class UBitmap;
class UDrawDevice;

/** How a bitmap covers an area. Margins stay as they are, at the sides of the area. 7 and 8 draw nothing. */
enum WeaveForm : int32_t {
    kTiledHoriz = 0,  // along the top, as high as the bitmap
    kTiledVerti = 1,  // along the left side
    kTiledMarginHoriz = 2,
    kTiledMarginVerti = 3,
    kTiledArea = 4,
    kTiledMarginArea = 5,
    kTiledMarginEdge = 6,  // without the middle
    kScaledMarginArea = 9,
    kScaledMarginEdge = 10,
};

/** Cuts a source and a target into nine cells: columns and rows 0 to 2. The outer ones are equally large on both sides. Where
    margins don't fit, the middle is lost first, and then each of the two a share of itself, from the inside. */
class Marginator {
public:
    static constexpr int32_t kCells = 3, kMiddle = 1;  // in each direction

    /** margins are widths in the source; below 0 is 0. Cells outside of the clip are empty. */
    Marginator(const URect& source, const URect& target, const URect& clip, const URect& margins);

    URect source(int32_t column, int32_t row) const;
    URect target(int32_t column, int32_t row) const;
    bool isVisible(int32_t column, int32_t row) const;

private:
    struct Span {
        int32_t source[4];
        int32_t target[4];
    };
    static Span cut(const Span& whole, int32_t first, int32_t last);

    Span across, down;
    URect clip;
};

/** Paints bitmaps over areas of another size. Nothing outside of the clip is drawn, nor is time spent on it. */
class UBitmapWeaver {
public:
    /** The four numbers of margins are widths of the bitmap's sides. */
    static void weave(UDrawDevice& device, UBitmap* bitmap, WeaveForm form, const URect& area, const URect& clip,
                      const URect& margins);
    /** Over all of the target. */
    static void weave(UBitmap* target, UBitmap* source, WeaveForm form, const URect& margins);
    static void drawTiledArea(UDrawDevice& device, UBitmap* bitmap, const URect& area, const URect& clip);
    /** As large as the rectangle allows, in its middle; stretchSmaller: also a bitmap that fits as it is. */
    static void drawKeepAspectRatio(UDrawDevice& device, UBitmap* bitmap, const URect& rect, bool stretchSmaller);
    /** Narrows the rectangle to the pixels in it with more alpha than threshold, 0 to 1. false: there are none, and the rectangle
        is from 0x7fffffff to 0x80000001. */
    static bool calcVisiblePixelsRect(UBitmap* bitmap, URect& rect, float threshold);
};

}  // namespace Tessarine
