#pragma once
#include "pluginterfaces/graphics/igraphicspath.h"

namespace Tessarine {

/** Paths of the platform for common shapes, with a reference for the caller; null: there is no platform. */
struct UPath {
    /** Angles in radians, from the right and downwards; the sides meet in the middle. */
    static Graphics::IGraphicsPath* createPie(const Graphics::Rect& rect, double startAngle, double arc);
    /** The outline of the same, without the sides. */
    static Graphics::IGraphicsPath* createArc(const Graphics::Rect& rect, double startAngle, double arc);
    /** A negative radius is a tenth of the width; none is more than half of a side. */
    static Graphics::IGraphicsPath* createRoundRect(const Graphics::Rect& rect, double radius);
};

}  // namespace Tessarine
