#include "gui/drawing/utransform2d.h"

namespace Tessarine {
namespace {
int32_t mapped(int32_t value, int32_t scale, int32_t translation) {
    return UPoint::clip(int64_t(value) * scale + translation);
}

int32_t unmapped(int32_t value, int32_t scale, int32_t translation) {
    return UPoint::clip((int64_t(value) - translation) / (scale == 0 ? 1 : scale));
}
}  // namespace

void UTransform2D::scale(const UPoint& by) {
    scaling = {mapped(scaling.x, by.x, 0), mapped(scaling.y, by.y, 0)};
}

UPoint UTransform2D::forward(const UPoint& place) const {
    return {mapped(place.x, scaling.x, translation.x), mapped(place.y, scaling.y, translation.y)};
}

URect UTransform2D::forward(const URect& rect) const {
    const UPoint start = forward(UPoint(rect.left, rect.top)), end = forward(UPoint(rect.right, rect.bottom));
    return {start.x, start.y, end.x, end.y};
}

UPoint UTransform2D::reverse(const UPoint& place) const {
    return {unmapped(place.x, scaling.x, translation.x), unmapped(place.y, scaling.y, translation.y)};
}

URect UTransform2D::reverse(const URect& rect) const {
    const UPoint start = reverse(UPoint(rect.left, rect.top)), end = reverse(UPoint(rect.right, rect.bottom));
    return {start.x, start.y, end.x, end.y};
}

}  // namespace Tessarine
