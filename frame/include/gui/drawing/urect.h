#pragma once
#include "gui/drawing/upoint.h"

namespace Tessarine {

/** A rectangle in whole pixels; right and bottom are outside of it. One with a side of 0 or less is empty. */
class URect {
public:
    URect() = default;
    URect(int32_t left, int32_t top, int32_t right, int32_t bottom)
        : left(left), top(top), right(right), bottom(bottom) {}
    URect(const UPoint& origin, const UPoint& size)
        : URect(origin.x, origin.y, UPoint::clip(int64_t(origin.x) + size.x),
                UPoint::clip(int64_t(origin.y) + size.y)) {}
    URect(const URect&) = default;
    URect& operator=(const URect&) = default;
    virtual ~URect() = default;

    bool operator==(const URect& other) const;
    int32_t getWidth() const { return UPoint::clip(int64_t(right) - left); }
    int32_t getHeight() const { return UPoint::clip(int64_t(bottom) - top); }
    UPoint getOrigin() const { return {left, top}; }
    UPoint getSize() const { return {getWidth(), getHeight()}; }
    bool isEmpty() const { return right <= left || bottom <= top; }
    bool contains(const UPoint& place) const;

    URect& offset(const UPoint& by);
    /** Each side moves in, or out by a negative amount. */
    URect& inset(int32_t horizontal, int32_t vertical);
    /** What both have; empty at the nearer corner when that is nothing: false. */
    bool intersect(const URect& other);
    /** The smallest that holds both; an empty one counts for nothing. */
    void unite(const URect& other);
    /** A right side left of the left one comes back to it, and so a bottom above the top: never a negative size. */
    void collapse();

    int32_t left = 0;
    int32_t top = 0;
    int32_t right = 0;
    int32_t bottom = 0;
};

}  // namespace Tessarine
