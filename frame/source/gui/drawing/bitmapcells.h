#pragma once
#include "gui/drawing/ubitmap.h"
#include <functional>

namespace Tessarine {

/** Directions in which a cell is repeated; otherwise it is stretched. */
enum CellRepeat : uint32_t { kStretchCell = 0, kRepeatCellHoriz = 1, kRepeatCellVerti = 2, kRepeatCellBoth = 3 };

struct BitmapCell {
    URect source;
    URect target;
    uint32_t repeats = kStretchCell;
    UPoint offset = {};  // 0 and up: where in the first tile it begins
};

/** Draws a part of a bitmap. false: nothing was drawn. */
using DrawBitmapPart = std::function<bool(UBitmap* bitmap, const URect& source, const URect& target)>;

/** Draws what is visible of a cell. Tiles are cut to that, and small ones in large number are put together to larger ones
    first. false: nothing was drawn. */
bool drawBitmapCell(UBitmap* bitmap, const BitmapCell& cell, const URect& visible, const DrawBitmapPart& draw);

}  // namespace Tessarine
