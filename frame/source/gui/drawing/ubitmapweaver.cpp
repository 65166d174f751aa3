#include "gui/drawing/ubitmapweaver.h"
#include "frame/source/gui/drawing/bitmapcells.h"
#include "gui/drawing/bitmappixelaccessor.h"
#include "gui/drawing/uoffscreen.h"
#include "gui/drawing/uphysicaldrawdevice.h"
#include <algorithm>

namespace Tessarine {
namespace {
constexpr int32_t kCells = Marginator::kCells, kMiddle = Marginator::kMiddle;

/** What becomes of one direction. */
enum class Along { kOnce, kTiled, kMarginTiled, kMarginScaled };

struct FormRow {
    WeaveForm form;
    Along across, down;
    bool hasMiddle;
};
constexpr FormRow kForms[] = {
    {kTiledHoriz,       Along::kTiled,        Along::kOnce,         true },
    {kTiledVerti,       Along::kOnce,         Along::kTiled,        true },
    {kTiledMarginHoriz, Along::kMarginTiled,  Along::kOnce,         true },
    {kTiledMarginVerti, Along::kOnce,         Along::kMarginTiled,  true },
    {kTiledArea,        Along::kTiled,        Along::kTiled,        true },
    {kTiledMarginArea,  Along::kMarginTiled,  Along::kMarginTiled,  true },
    {kTiledMarginEdge,  Along::kMarginTiled,  Along::kMarginTiled,  false},
    {kScaledMarginArea, Along::kMarginScaled, Along::kMarginScaled, true },
    {kScaledMarginEdge, Along::kMarginScaled, Along::kMarginScaled, false},
};

bool hasMargins(Along along) {
    return along == Along::kMarginTiled || along == Along::kMarginScaled;
}

URect usedMargins(const FormRow& row, const URect& margins) {
    const bool across = hasMargins(row.across), down = hasMargins(row.down);
    return {across ? margins.left : 0, down ? margins.top : 0, across ? margins.right : 0, down ? margins.bottom : 0};
}

/** A direction that shows the bitmap once ends with it. */
URect usedArea(const FormRow& row, const URect& area, const URect& bitmap) {
    const URect once(area.getOrigin(), bitmap.getSize());
    return {area.left, area.top, row.across == Along::kOnce ? std::min(area.right, once.right) : area.right,
            row.down == Along::kOnce ? std::min(area.bottom, once.bottom) : area.bottom};
}

uint32_t repeatsOf(const FormRow& row, int32_t column, int32_t line) {
    const bool across = column == kMiddle && row.across != Along::kMarginScaled;
    const bool down = line == kMiddle && row.down != Along::kMarginScaled;
    return (across ? kRepeatCellHoriz : kStretchCell) | (down ? kRepeatCellVerti : kStretchCell);
}

void weaveForm(UDrawDevice& device, UBitmap* bitmap, const FormRow& row, const URect& area, const URect& clip,
               const URect& margins) {
    const URect source(0, 0, bitmap->getWidth(), bitmap->getHeight());
    const Marginator cells(source, usedArea(row, area, source), clip, usedMargins(row, margins));
    const auto draw = [&device](UBitmap* part, const URect& from, const URect& to) {
        return device.drawBitmap(part, from, to, kBitmapPlain), true;
    };
    for (int32_t line = 0; line < kCells; ++line)
        for (int32_t column = 0; column < kCells; ++column)
            if (cells.isVisible(column, line) && (row.hasMiddle || column != kMiddle || line != kMiddle))
                drawBitmapCell(
                    bitmap,
                    {cells.source(column, line), cells.target(column, line), repeatsOf(row, column, line), UPoint()},
                    clip, draw);
}

URect centred(const UPoint& size, const URect& rect) {
    const UPoint origin(UPoint::clip(int64_t(rect.left) + (rect.getWidth() - size.x) / 2),
                        UPoint::clip(int64_t(rect.top) + (rect.getHeight() - size.y) / 2));
    return {origin, size};
}
}  // namespace

Marginator::Span Marginator::cut(const Span& whole, int32_t first, int32_t last) {
    const int32_t from = whole.source[0], to = whole.source[3];
    const int64_t sourceLength = std::max<int64_t>(int64_t(to) - from, 0);
    const int64_t targetLength = std::max<int64_t>(int64_t(whole.target[3]) - whole.target[0], 0);
    int64_t before = std::clamp<int64_t>(first, 0, sourceLength);
    int64_t behind = std::clamp<int64_t>(last, 0, sourceLength - before);
    Span span = whole;
    span.source[1] = from + int32_t(before);
    span.source[2] = to - int32_t(behind);
    if (before + behind > targetLength) {
        before = targetLength * before / (before + behind);
        behind = targetLength - before;
    }
    span.target[1] = whole.target[0] + int32_t(before);
    span.target[2] = whole.target[3] - int32_t(behind);
    return span;
}

Marginator::Marginator(const URect& source, const URect& target, const URect& clip, const URect& margins)
    : across(cut(
          {
              {source.left, 0, 0, source.right},
              {target.left, 0, 0, target.right}
},
          margins.left, margins.right)),
      down(cut({{source.top, 0, 0, source.bottom}, {target.top, 0, 0, target.bottom}}, margins.top, margins.bottom)),
      clip(clip) {}

URect Marginator::source(int32_t column, int32_t row) const {
    // outer cells are as large as in the target, from the outside
    const auto from = [](const Span& span, int32_t cell) {
        return cell == 2 ? span.source[3] - (span.target[3] - span.target[2]) : span.source[cell];
    };
    const auto to = [](const Span& span, int32_t cell) {
        return cell == 0 ? span.source[0] + (span.target[1] - span.target[0]) : span.source[cell + 1];
    };
    return {from(across, column), from(down, row), to(across, column), to(down, row)};
}

URect Marginator::target(int32_t column, int32_t row) const {
    return {across.target[column], down.target[row], across.target[column + 1], down.target[row + 1]};
}

bool Marginator::isVisible(int32_t column, int32_t row) const {
    return target(column, row).intersect(clip);
}

void UBitmapWeaver::weave(UDrawDevice& device, UBitmap* bitmap, WeaveForm form, const URect& area, const URect& clip,
                          const URect& margins) {
    const auto* row = std::ranges::find(kForms, form, &FormRow::form);
    URect outer, visible(area);
    device.getClip(outer);
    if (row == std::end(kForms) || !bitmap || !visible.intersect(UPhysicalDrawDevice::visibleOn(device)))
        return;
    const URect drawable(visible);
    if (!visible.intersect(clip))
        return;
    const bool isCut = !(visible == drawable);
    if (isCut)
        device.setClip(visible);
    weaveForm(device, bitmap, *row, area, visible, margins);
    if (isCut)
        device.setClip(outer);
}

void UBitmapWeaver::weave(UBitmap* target, UBitmap* source, WeaveForm form, const URect& margins) {
    if (!target || !source)
        return;
    UOffscreen device(target);
    const URect area(0, 0, target->getWidth(), target->getHeight());
    weave(device, source, form, area, area, margins);
}

void UBitmapWeaver::drawTiledArea(UDrawDevice& device, UBitmap* bitmap, const URect& area, const URect& clip) {
    weave(device, bitmap, kTiledArea, area, clip, URect());
}

void UBitmapWeaver::drawKeepAspectRatio(UDrawDevice& device, UBitmap* bitmap, const URect& rect, bool stretchSmaller) {
    const UPoint whole(bitmap ? bitmap->getWidth() : 0, bitmap ? bitmap->getHeight() : 0), room(rect.getSize());
    if (whole.x < 1 || whole.y < 1 || rect.isEmpty())
        return;
    UPoint size(whole);
    if (stretchSmaller || whole.x > room.x || whole.y > room.y) {
        size = UPoint(room.x, UPoint::clip(int64_t(room.x) * whole.y / whole.x));
        if (size.y > room.y)
            size = UPoint(UPoint::clip(int64_t(room.y) * whole.x / whole.y), room.y);
    }
    device.drawBitmap(bitmap, URect(UPoint(), whole), centred(size, rect), kBitmapPlain);
}

bool UBitmapWeaver::calcVisiblePixelsRect(UBitmap* bitmap, URect& rect, float threshold) {
    constexpr int32_t kFarthest = 0x7FFFFFFF, kNearest = -0x7FFFFFFF, kAlphaShift = 24;
    const BitmapPixelAccessor pixels(bitmap ? bitmap->getBitmap() : nullptr, Graphics::kLockRead);
    const UPoint offset(bitmap ? bitmap->getOffset() : UPoint());
    URect inside(rect), found(kFarthest, kFarthest, kNearest, kNearest);
    inside.intersect(bitmap ? URect(0, 0, bitmap->getWidth(), bitmap->getHeight()) : URect());
    inside.intersect(URect(-offset, UPoint(pixels.getWidth(), pixels.getHeight())));
    const float limit = threshold * 255;
    for (int32_t y = inside.top; y < inside.bottom; ++y) {
        const uint32_t* row = pixels.row(y + offset.y) + offset.x;
        const auto isVisible = [limit](uint32_t pixel) { return float(pixel >> kAlphaShift) > limit; };
        const uint32_t* first = std::find_if(row + inside.left, row + inside.right, isVisible);
        if (first == row + inside.right)
            continue;
        const uint32_t* last = row + inside.right;
        while (!isVisible(last[-1]))
            --last;
        found = URect(std::min(found.left, int32_t(first - row)), std::min(found.top, y),
                      std::max(found.right, int32_t(last - row)), y + 1);
    }
    rect = found;
    return found.left != kFarthest;
}

}  // namespace Tessarine
