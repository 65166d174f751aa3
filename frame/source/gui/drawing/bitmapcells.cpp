#include "frame/source/gui/drawing/bitmapcells.h"
#include "gui/drawing/bitmappixelaccessor.h"
#include "gui/drawing/uanimatedbitmap.h"
#include <algorithm>

namespace Tessarine {
namespace {
constexpr int64_t kManyTiles = 64;
constexpr int64_t kMostTiles = 1 << 16;  // one by one
constexpr int32_t kPatternSide = 256;

/** One direction of a cell. */
struct Span {
    int32_t source, sourceLength, target, targetLength;
    int32_t offset;
    bool repeats;
    int64_t from, to;  // visible

    int64_t countTiles() const { return repeats ? (to - from + sourceLength - 1) / sourceLength : 1; }
    /** How many go into a larger tile. */
    int32_t countGathered() const { return int32_t(std::clamp<int64_t>(kPatternSide / sourceLength, 1, countTiles())); }
};

Span across(const BitmapCell& cell, const URect& visible) {
    return {cell.source.left,       cell.source.getWidth(), cell.target.left,
            cell.target.getWidth(), cell.offset.x,          (cell.repeats & kRepeatCellHoriz) != 0,
            int64_t(visible.left),  int64_t(visible.right)};
}

Span down(const BitmapCell& cell, const URect& visible) {
    return {cell.source.top,         cell.source.getHeight(), cell.target.top,
            cell.target.getHeight(), cell.offset.y,           (cell.repeats & kRepeatCellVerti) != 0,
            int64_t(visible.top),    int64_t(visible.bottom)};
}

/** Shows each piece of the span: source, its length, target, its length. */
template <class Show>
void eachPiece(const Span& span, const Show& show) {
    if (!span.repeats)
        return show(span.source, span.sourceLength, span.target, span.targetLength);
    const int64_t first = int64_t(span.target) - span.offset % span.sourceLength;
    for (int64_t tile = span.from - (span.from - first) % span.sourceLength; tile < span.to;
         tile += span.sourceLength) {
        const int64_t from = std::max(tile, span.from), to = std::min(tile + span.sourceLength, span.to);
        const auto length = int32_t(to - from);
        show(span.source + int32_t(from - tile), length, int32_t(from), length);
    }
}

/** Tiles put together. It is drawn again and again and never changes: what disabled modes show is made once. */
class Pattern : public UBitmap {
public:
    explicit Pattern(const UPoint& size) : UBitmap(size, 32) {}

    bool draw(UPhysicalDrawDevice* device, const URect& source, const URect& target, int16_t mode) override {
        if (!showsDisabled(mode))
            return UBitmap::draw(device, source, target, mode);
        becomeShown(mode);
        if (!disabled)
            disabled = disabledSection(bounds());
        return disabled && disabled->drawAlpha(device, source, target, disabled->getAlphaFactor());
    }

private:
    OPtr<UBitmap> disabled;  // of the one mode that it is drawn in
};

/** The part so many times in both directions. */
OPtr<UBitmap> patternOf(UBitmap* bitmap, const URect& source, int32_t columns, int32_t rows) {
    const OPtr<UBitmap> part(bitmap->getSection(source));
    if (!part)
        return nullptr;
    OPtr<UBitmap> pattern(new Pattern(UPoint(source.getWidth() * columns, source.getHeight() * rows)));
    const BitmapPixelAccessor in(part->getBitmap(), Graphics::kLockRead);
    const BitmapPixelAccessor out(pattern->getBitmap(), Graphics::kLockWrite);
    if (!out.isValid() || UPoint(in.getWidth(), in.getHeight()) != source.getSize())
        return nullptr;
    for (int32_t y = 0; y < out.getHeight(); ++y)
        for (int32_t x = 0; x < out.getWidth(); x += in.getWidth())
            std::copy_n(in.row(y % in.getHeight()), in.getWidth(), out.row(y) + x);
    part->describe(*pattern);
    return pattern;
}

/** What it shows isn't its pixels alone. */
bool drawsItself(UBitmap* bitmap) {
    for (UBitmap *each = bitmap, *next = nullptr; each; each = next == each ? nullptr : next) {
        if (each->isTypeOf(UAnimatedBitmap::className(), true))
            return true;
        next = each->getTargetBitmap();
    }
    return false;
}

bool drawPieces(UBitmap* bitmap, const Span& columns, const Span& rows, const DrawBitmapPart& draw) {
    bool drawn = false;
    eachPiece(rows, [&](int32_t fromY, int32_t fromHeight, int32_t y, int32_t height) {
        eachPiece(columns, [&](int32_t fromX, int32_t fromWidth, int32_t x, int32_t width) {
            drawn |= draw(bitmap, URect(UPoint(fromX, fromY), UPoint(fromWidth, fromHeight)),
                          URect(UPoint(x, y), UPoint(width, height)));
        });
    });
    return drawn;
}
}  // namespace

bool drawBitmapCell(UBitmap* bitmap, const BitmapCell& cell, const URect& visible, const DrawBitmapPart& draw) {
    URect seen(cell.target);
    if (!bitmap || cell.source.isEmpty() || !seen.intersect(visible))
        return false;
    if (cell.repeats == kStretchCell)
        return draw(bitmap, cell.source, cell.target);
    const Span columns = across(cell, seen), rows = down(cell, seen);
    const int64_t tiles = columns.countTiles() * rows.countTiles();
    if (tiles <= kManyTiles || (tiles <= kMostTiles && drawsItself(bitmap)))
        return drawPieces(bitmap, columns, rows, draw);
    const int32_t timesX = columns.countGathered(), timesY = rows.countGathered();
    const OPtr<UBitmap> pattern(patternOf(bitmap, cell.source, timesX, timesY));
    if (!pattern)
        return tiles <= kMostTiles && drawPieces(bitmap, columns, rows, draw);
    const BitmapCell larger = {URect(0, 0, pattern->getWidth(), pattern->getHeight()), cell.target, cell.repeats,
                               cell.offset};
    const bool drawn = drawPieces(pattern, across(larger, seen), down(larger, seen), draw);
    bitmap->keepUpWith(*pattern);
    return drawn;
}

}  // namespace Tessarine
