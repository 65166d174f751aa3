#pragma once
#include "pluginterfaces/base/funknown.h"
#include "pluginterfaces/graphics/graphicstypes.h"

namespace Tessarine::Graphics {

/** Adds figures to a path until it is released. */
class IGraphicsPathAccessor : public FUnknown {
public:
    /** filled: the figure takes part when the path is filled. A figure that is open ends as it stands. */
    virtual int32_t beginFigure(Point start, unsigned char filled) = 0;
    virtual int32_t endFigure(unsigned char closed) = 0;
    /** kResultFalse, as addCurve: no figure has begun. */
    virtual int32_t addLine(Point to) = 0;
    virtual int32_t addCurve(Point control1, Point control2, Point to) = 0;

    DECLARE_INTERFACE(IGraphicsPathAccessor)
};

class IGraphicsPath : public FUnknown {
public:
    /** With a reference for the caller. What is added follows what is there. */
    virtual IGraphicsPathAccessor* open() = 0;
    /** Of all points of lines and curves, without the pen's width. kResultFalse, and an empty rectangle: no points. */
    virtual int32_t getBoundingBox(Rect& box) = 0;

    DECLARE_INTERFACE(IGraphicsPath)
};

}  // namespace Tessarine::Graphics
