#include "frame/source/graphics/cairo/cairopath.h"
#include "pluginterfaces/base/smartpointer.h"
#include <algorithm>
#include <cmath>

namespace Tessarine::Graphics {
namespace {
constexpr int32_t kPointsOf[] = {1, 1, 1, 3, 0};  // by Kind
}

/** Keeps the path while somebody adds to it. */
class CairoPath::Accessor : public FObject, public IGraphicsPathAccessor {
public:
    FORWARD_REFCOUNT(FObject)
    explicit Accessor(CairoPath* path) : path(path) {}

    int32_t queryInterface(const char* iid, void** obj) override {
        return answerInterface<IGraphicsPathAccessor>(this, iid, obj) ? kResultOk : FObject::queryInterface(iid, obj);
    }
    int32_t beginFigure(Point start, unsigned char filled) override {
        return added({filled ? kMove : kMoveUnfilled, {start}});
    }
    int32_t endFigure(unsigned char closed) override {
        if (!path->hasFigure)
            return kResultFalse;
        const int32_t result = closed ? added({kClose, {}}) : int32_t(kResultOk);
        path->hasFigure = false;
        return result;
    }
    int32_t addLine(Point to) override { return added({kLine, {to}}); }
    int32_t addCurve(Point control1, Point control2, Point to) override {
        return added({
            kCurve, {control1, control2, to}
        });
    }

private:
    int32_t added(const Element& element) {
        const bool begins = element.kind == kMove || element.kind == kMoveUnfilled;
        if (!begins && !path->hasFigure)
            return kResultFalse;
        if (!path->add(element, kPointsOf[element.kind]))
            return kInvalidArgument;
        path->hasFigure = true;
        return kResultOk;
    }

    const IPtr<CairoPath> path;
};

int32_t CairoPath::queryInterface(const char* iid, void** obj) {
    return answerInterface<IGraphicsPath>(this, iid, obj) ? kResultOk : FObject::queryInterface(iid, obj);
}

IGraphicsPathAccessor* CairoPath::open() {
    return new Accessor(this);
}

bool CairoPath::add(const Element& element, int32_t count) {
    const auto finite = [](const Point& point) { return std::isfinite(point.x) && std::isfinite(point.y); };
    if (!std::all_of(element.points, element.points + count, finite))
        return false;
    elements.push_back(element);
    return true;
}

int32_t CairoPath::getBoundingBox(Rect& box) {
    box = {};
    double right = -HUGE_VAL, bottom = -HUGE_VAL;
    Point start = {HUGE_VAL, HUGE_VAL};
    for (const Element& element : elements)
        for (int32_t index = 0; index < kPointsOf[element.kind]; ++index) {
            const Point& point = element.points[index];
            start = {std::min(start.x, point.x), std::min(start.y, point.y)};
            right = std::max(right, point.x);
            bottom = std::max(bottom, point.y);
        }
    if (elements.empty())
        return kResultFalse;
    box = {start.x, start.y, right - start.x, bottom - start.y};
    return kResultOk;
}

void CairoPath::addTo(cairo_t* context, bool outlined, double range) const {
    const auto within = [range](double coordinate) { return std::clamp(coordinate, -range, range); };
    bool shown = true;
    for (const auto& [kind, points] : elements) {
        const bool begins = kind == kMove || kind == kMoveUnfilled;
        shown = begins ? outlined || kind == kMove : shown;
        const double x = within(points[0].x), y = within(points[0].y);
        if (!shown)
            continue;
        if (begins)
            cairo_move_to(context, x, y);
        else if (kind == kLine)
            cairo_line_to(context, x, y);
        else if (kind == kCurve)
            cairo_curve_to(context, x, y, within(points[1].x), within(points[1].y), within(points[2].x),
                           within(points[2].y));
        else
            cairo_close_path(context);
    }
}

}  // namespace Tessarine::Graphics
