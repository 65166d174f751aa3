#include "gui/drawing/udynamicbitmap.h"
#include "frame/source/gui/drawing/bitmapcells.h"
#include "gui/drawing/ubitmapweaver.h"
#include "gui/drawing/uphysicaldrawdevice.h"
#include <algorithm>

namespace Tessarine {

IMPLEMENT_CLASS(UDynamicBitmap, UDelegatedBitmap)

namespace {
int32_t length(int64_t from, int64_t to) {
    return UPoint::clip(std::max<int64_t>(to - from, 0));
}

/** Where the cut begins: what begins behind the middle shows more of the middle. */
int32_t beginCut(int32_t source, int32_t middle, int32_t middleEnd, int32_t bitmapEnd) {
    return source < std::min(middleEnd, bitmapEnd) ? source : std::max(middle, 0);
}

/** A tile is all that may be repeated, also where the source begins within it. */
void beginTile(int32_t& cellStart, int32_t& offset, int32_t source, int32_t middle) {
    const int32_t tileStart = std::max(middle, 0);
    offset = length(tileStart, source);
    cellStart = std::min(cellStart, tileStart);
}
}  // namespace

UDynamicBitmap::UDynamicBitmap(UBitmap* target, const UPoint& size, const URect& center, int32_t style)
    : UDelegatedBitmap(target), size(size), center(center), style(style) {}

int32_t UDynamicBitmap::getWidth() {
    return size.x > 0 ? size.x : UDelegatedBitmap::getWidth();
}

int32_t UDynamicBitmap::getHeight() {
    return size.y > 0 ? size.y : UDelegatedBitmap::getHeight();
}

BitmapCell UDynamicBitmap::cellOf(const Marginator& cells, const UPoint& origin, int32_t column, int32_t row) const {
    BitmapCell cell = {cells.source(column, row), cells.target(column, row)};
    if (column == Marginator::kMiddle && (style & kRepeatHoriz) != 0) {
        cell.repeats |= kRepeatCellHoriz;
        beginTile(cell.source.left, cell.offset.x, origin.x, center.left);
    }
    if (row == Marginator::kMiddle && (style & kRepeatVerti) != 0) {
        cell.repeats |= kRepeatCellVerti;
        beginTile(cell.source.top, cell.offset.y, origin.y, center.top);
    }
    return cell;
}

bool UDynamicBitmap::drawCells(UPhysicalDrawDevice* device, const URect& source, const URect& rect,
                               const DrawPart& drawPart) {
    if (!device || !target || source.isEmpty() || rect.isEmpty())
        return false;
    const int32_t width = target->getWidth(), height = target->getHeight();
    const URect whole(beginCut(source.left, center.left, center.right, width),
                      beginCut(source.top, center.top, center.bottom, height), width, height);
    const URect margins(length(whole.left, center.left), length(whole.top, center.top),
                        length(std::min(center.right, source.right), whole.right),
                        length(std::min(center.bottom, source.bottom), whole.bottom));
    const URect visible = UPhysicalDrawDevice::visibleOn(*device);
    const Marginator cells(whole, rect, visible, margins);
    bool drawn = false;
    for (int32_t row = 0; row < Marginator::kCells; ++row)
        for (int32_t column = 0; column < Marginator::kCells; ++column)
            drawn |= drawBitmapCell(target, cellOf(cells, source.getOrigin(), column, row), visible, drawPart);
    return drawn;
}

bool UDynamicBitmap::draw(UPhysicalDrawDevice* device, const URect& source, const URect& rect, int16_t mode) {
    return drawCells(device, source, rect, [device, mode](UBitmap* part, const URect& from, const URect& to) {
        return part->draw(device, from, to, mode);
    });
}

bool UDynamicBitmap::drawAlpha(UPhysicalDrawDevice* device, const URect& source, const URect& rect, double alpha) {
    return drawCells(device, source, rect, [device, alpha](UBitmap* part, const URect& from, const URect& to) {
        return part->drawAlpha(device, from, to, alpha);
    });
}

UBitmap* UDynamicBitmap::getSection(const URect& rect) {
    OPtr<UBitmap> whole(scaledByDrawing(bounds().getSize()));
    return !whole || rect == bounds() ? whole.detach() : whole->getSection(rect);
}

UBitmap* UDynamicBitmap::copyScaled(const Graphics::Point& newSize, ScalingAlgorithm /*algorithm*/) {
    constexpr int32_t kMaxSide = Graphics::IBitmapFactory::kMaxSide;
    const bool fits = newSize.x >= 1 && newSize.y >= 1 && newSize.x <= kMaxSide && newSize.y <= kMaxSide;
    return fits ? scaledByDrawing(UPoint(int32_t(newSize.x), int32_t(newSize.y))) : nullptr;
}

}  // namespace Tessarine
