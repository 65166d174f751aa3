#pragma once
#include "base/source/cmobject.h"
#include "pluginterfaces/graphics/igraphicspath.h"
#include <cairo.h>
#include <vector>

namespace Tessarine::Graphics {

class CairoPath : public FObject, public IGraphicsPath {
public:
    DECLARE_CLASS_NAME(CairoPath, FObject)
    FORWARD_REFCOUNT(FObject)
    CairoPath() = default;

    int32_t queryInterface(const char* iid, void** obj) override;
    IGraphicsPathAccessor* open() override;
    int32_t getBoundingBox(Rect& box) override;

    /** Adds the figures to the current path, those that aren't to be filled only when outlined. Coordinates stop at range. */
    void addTo(cairo_t* context, bool outlined, double range) const;

private:
    class Accessor;
    enum Kind : int32_t { kMove, kMoveUnfilled, kLine, kCurve, kClose };
    struct Element {
        Kind kind;
        Point points[3];
    };
    bool add(const Element& element, int32_t count);

    std::vector<Element> elements;
    bool hasFigure = false;
};

}  // namespace Tessarine::Graphics
