#pragma once
#include "base/source/cmobject.h"
#include "pluginterfaces/graphics/idrawdevice.h"
#include <vector>

namespace Tessarine::Graphics {

class CairoFastLines : public FObject, public IFastLines {
public:
    struct Line {
        Point from;
        Point to;
    };

    DECLARE_CLASS_NAME(CairoFastLines, FObject)
    FORWARD_REFCOUNT(FObject)
    int32_t queryInterface(const char* iid, void** obj) override;
    int32_t addLine(Point from, Point to) override { return lines.push_back({from, to}), kResultOk; }

    std::vector<Line> lines;
};

class CairoFastRects : public FObject, public IFastRects {
public:
    DECLARE_CLASS_NAME(CairoFastRects, FObject)
    FORWARD_REFCOUNT(FObject)
    int32_t queryInterface(const char* iid, void** obj) override;
    int32_t addRect(Rect rect) override { return rects.push_back(rect), kResultOk; }

    std::vector<Rect> rects;
};

}  // namespace Tessarine::Graphics
