#pragma once
#include "pluginterfaces/graphics/graphicstypes.h"
#include <cstddef>
#include <vector>

namespace Tessarine {

/** Points in a row, and the rectangle around them. */
class UPolygon {
public:
    UPolygon() = default;
    UPolygon(const UPolygon&) = default;
    UPolygon& operator=(const UPolygon&) = default;
    virtual ~UPolygon() = default;

    /** Starts anew. */
    void moveTo(const Graphics::Point& point);
    void lineTo(const Graphics::Point& point);
    /** Moves all points. */
    void offset(double x, double y);
    void removeAll();
    size_t count() const { return points.size(); }
    const Graphics::Point& at(size_t index) const { return points[index]; }
    /** Without a point: all 0. */
    const Graphics::Rect& getBounds() const { return bounds; }

private:
    std::vector<Graphics::Point> points;
    Graphics::Rect bounds;
};

}  // namespace Tessarine
