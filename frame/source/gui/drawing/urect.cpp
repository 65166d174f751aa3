#include "gui/drawing/urect.h"
#include <algorithm>

namespace Tessarine {

bool URect::operator==(const URect& other) const {
    return left == other.left && top == other.top && right == other.right && bottom == other.bottom;
}

bool URect::contains(const UPoint& place) const {
    return place.x >= left && place.x < right && place.y >= top && place.y < bottom;
}

URect& URect::offset(const UPoint& by) {
    return *this = URect(UPoint::clip(int64_t(left) + by.x), UPoint::clip(int64_t(top) + by.y),
                         UPoint::clip(int64_t(right) + by.x), UPoint::clip(int64_t(bottom) + by.y));
}

URect& URect::inset(int32_t horizontal, int32_t vertical) {
    return *this = URect(UPoint::clip(int64_t(left) + horizontal), UPoint::clip(int64_t(top) + vertical),
                         UPoint::clip(int64_t(right) - horizontal), UPoint::clip(int64_t(bottom) - vertical));
}

bool URect::intersect(const URect& other) {
    *this = URect(std::max(left, other.left), std::max(top, other.top), std::min(right, other.right),
                  std::min(bottom, other.bottom));
    collapse();
    return !isEmpty();
}

void URect::unite(const URect& other) {
    if (other.isEmpty())
        return;
    if (isEmpty())
        *this = other;
    else
        *this = URect(std::min(left, other.left), std::min(top, other.top), std::max(right, other.right),
                      std::max(bottom, other.bottom));
}

void URect::collapse() {
    right = std::max(left, right);
    bottom = std::max(top, bottom);
}

}  // namespace Tessarine
