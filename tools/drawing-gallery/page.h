#pragma once
#include "gui/drawing/uscheme.h"
#include "pluginterfaces/graphics/ibitmap.h"
#include <span>

namespace Tessarine::Gallery {

/** A picture of one family of what can be drawn, in units. */
struct Page {
    const char* name;
    int32_t width, height;
    void (*draw)(UDrawDevice& device, UScheme& scheme);
};

std::span<const Page> allPages();

/** What makes the pictures; null where nothing draws. */
Graphics::IBitmapFactory* bitmapFactory();
/** The page, drawn with so many pixels to a unit. Null: there is no memory, or nothing that draws. */
OPtr<Graphics::IBitmap> pictureOf(const Page& page, int32_t scale);

inline constexpr float kWholeTurn = 6.2831855F;  // in radians

/** Cells in rows, each with a caption below. */
class Sheet {
public:
    Sheet(UDrawDevice& device, UScheme& scheme, const UPoint& cell, int32_t columns);

    /** The cell's place without the caption. */
    URect next(const char* caption);
    /** A rectangle of this size in the middle of the next cell. */
    URect next(const char* caption, const UPoint& size);

private:
    UDrawDevice& device;
    UScheme& scheme;
    const UPoint cell;
    const int32_t columns;
    int32_t count = 0;
};

void drawShapes(UDrawDevice& device, UScheme& scheme);
void drawDialog(UDrawDevice& device, UScheme& scheme);
void drawLines(UDrawDevice& device, UScheme& scheme);
void drawPolygons(UDrawDevice& device, UScheme& scheme);
void drawAlignments(UDrawDevice& device, UScheme& scheme);
void drawScripts(UDrawDevice& device, UScheme& scheme);
void drawBitmaps(UDrawDevice& device, UScheme& scheme);
void drawWeaver(UDrawDevice& device, UScheme& scheme);
void drawFilters(UDrawDevice& device, UScheme& scheme);
void drawColors(UDrawDevice& device, UScheme& scheme);
}  // namespace Tessarine::Gallery
