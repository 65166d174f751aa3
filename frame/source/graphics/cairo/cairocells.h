#pragma once
#include "frame/source/graphics/cairo/cairobitmap.h"
#include "pluginterfaces/base/smartpointer.h"
#include <vector>

namespace Tessarine::Graphics {

/** Pixels of multiplied colours laid over others; from keeps opacity 255ths of itself. */
void blendRows(const PixelRows& to, const PixelRows& from, int32_t width, int32_t height, uint32_t opacity);
/** Of pixels that are opaque, at full opacity. */
void copyRows(const PixelRows& to, const PixelRows& from, int32_t width, int32_t height, uint32_t opacity);
void fillRows(const PixelRows& to, int32_t width, int32_t height, uint32_t pixel);
/** The same bytes as by blendRows(), one by one. */
void blendRowPlain(uint32_t* to, const uint32_t* from, int32_t count, uint32_t opacity);

/** A part of a surface's pixels as a source, which is sampled up to its edges and no further. They must outlive it. */
class PartPattern {
public:
    /** copied: what is drawn on the surface meanwhile doesn't show. */
    PartPattern(const PixelRows& pixels, const PixelRect& part, bool copied);
    ~PartPattern() { cairo_pattern_destroy(pattern); }
    PartPattern(const PartPattern&) = delete;
    PartPattern& operator=(const PartPattern&) = delete;

    /** Both rectangles as they are drawn: source within the surface. */
    void place(const Rect& source, const Rect& target, cairo_filter_t filter);
    cairo_pattern_t* get() const { return pattern; }

private:
    const PixelRect part;
    std::vector<uint32_t> copy;
    SurfaceHolder view;
    cairo_pattern_t* pattern;
};

/** Parts of bitmaps in the sizes they were last drawn in, so that frames and buttons made of cells are stretched once. Main
    thread. */
class StretchedCells : public FObject {
public:
    /** The one that is in use, or a new one. */
    static IPtr<StretchedCells> shared();
    ~StretchedCells() override;
    StretchedCells(const StretchedCells&) = delete;
    StretchedCells& operator=(const StretchedCells&) = delete;

    struct Found {
        PixelRows pixels;  // none: too large to keep
        bool isOpaque = false;
    };
    /** Until the next call. */
    Found find(CairoBitmap* bitmap, const PixelRect& source, int32_t width, int32_t height, cairo_filter_t filter);

private:
    struct Key {
        uint64_t stamp = 0;  // of the bitmap's pixels
        PixelRect source;
        int32_t width = 0;
        int32_t height = 0;
        cairo_filter_t filter = CAIRO_FILTER_NEAREST;

        bool operator==(const Key&) const = default;
        size_t hash() const;
    };
    struct Cell {
        Key key;
        std::vector<uint32_t> pixels;
        bool isOpaque = false;
        uint64_t lastUse = 0;
    };

    StretchedCells();
    /** The cell of the key, or the one to give up for it. */
    Cell& placeOf(const Key& key);
    static Cell stretched(const Key& key, CairoBitmap* bitmap);
    void empty();

    std::vector<Cell> cells;  // each in one of a few places by the key's hash
    size_t total = 0;         // pixels
    uint64_t uses = 0;
};

}  // namespace Tessarine::Graphics
