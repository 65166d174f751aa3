#include "gui/drawing/upolygon.h"
#include <algorithm>

namespace Tessarine {

void UPolygon::moveTo(const Graphics::Point& point) {
    removeAll();
    lineTo(point);
}

void UPolygon::lineTo(const Graphics::Point& point) {
    if (points.empty())
        bounds = {point.x, point.y, 0, 0};
    points.push_back(point);
    const double right = std::max(bounds.x + bounds.width, point.x),
                 bottom = std::max(bounds.y + bounds.height, point.y);
    bounds.x = std::min(bounds.x, point.x);
    bounds.y = std::min(bounds.y, point.y);
    bounds.width = right - bounds.x;
    bounds.height = bottom - bounds.y;
}

void UPolygon::offset(double x, double y) {
    for (Graphics::Point& point : points)
        point = {point.x + x, point.y + y};
    bounds.x += x;
    bounds.y += y;
}

void UPolygon::removeAll() {
    points.clear();
    bounds = {};
}

}  // namespace Tessarine
