#pragma once
#include "gui/drawing/urect.h"

namespace Tessarine {

/** From coordinates of a view to those of its device: times a whole scale, 1 or -1 as a rule, and then moved. */
class UTransform2D {
public:
    UTransform2D() = default;
    UTransform2D(const UTransform2D&) = default;
    UTransform2D& operator=(const UTransform2D&) = default;
    virtual ~UTransform2D() = default;

    void translate(const UPoint& by) { translation = translation + by; }
    void scale(const UPoint& by);
    void reset() { *this = UTransform2D(); }

    UPoint forward(const UPoint& place) const;
    /** The corners are mapped as they are: a negative scale gives a rectangle of negative size. */
    URect forward(const URect& rect) const;
    /** Whole numbers: what a scale has cut off stays lost. A scale of 0 counts as 1. */
    UPoint reverse(const UPoint& place) const;
    URect reverse(const URect& rect) const;

    UPoint translation;
    UPoint scaling = {1, 1};
};

}  // namespace Tessarine
