#pragma once
#include "gui/drawing/urect.h"
#include "pluginterfaces/graphics/graphicstypes.h"

namespace Tessarine {

/** As the boundary has rectangles: a side may be longer than any whole number. */
inline Graphics::Rect boundary(const URect& rect) {
    return {double(rect.left), double(rect.top), double(rect.right) - rect.left, double(rect.bottom) - rect.top};
}

}  // namespace Tessarine
