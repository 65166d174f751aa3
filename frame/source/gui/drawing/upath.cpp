#include "gui/drawing/upath.h"
#include "gui/drawing/uphysicaldrawdevice.h"
#include "pluginterfaces/base/smartpointer.h"
#include "pluginterfaces/graphics/ifactory.h"
#include <algorithm>
#include <cmath>
#include <numbers>

namespace Tessarine {
using Graphics::IGraphicsPath;
using Graphics::IGraphicsPathAccessor;
using Graphics::Point;
using Graphics::Rect;

namespace {
constexpr double kTurn = 2 * std::numbers::pi;

/** An ellipse, by the angle of its circle. */
struct Ellipse {
    explicit Ellipse(const Rect& rect)
        : middle{rect.x + rect.width / 2, rect.y + rect.height / 2}, across(rect.width / 2), down(rect.height / 2) {}

    Point at(double angle) const { return {middle.x + across * std::cos(angle), middle.y + down * std::sin(angle)}; }
    /** From at(angle), along the outline or, with a negative length, against it. */
    Point control(double angle, double length) const {
        return {middle.x + across * (std::cos(angle) - length * std::sin(angle)),
                middle.y + down * (std::sin(angle) + length * std::cos(angle))};
    }

    Point middle;
    double across;
    double down;
};

/** Curves of a quarter turn at most; each is within 0.03 percent of the radius. */
void addArc(IGraphicsPathAccessor* path, const Ellipse& ellipse, double start, double arc) {
    const int pieces = std::max(1, int(std::ceil(std::fabs(arc) / (kTurn / 4) - 1e-9)));
    const double step = arc / pieces, length = 4.0 / 3 * std::tan(step / 4);
    for (int piece = 0; piece < pieces; ++piece) {
        const double from = start + step * piece, to = from + step;
        path->addCurve(ellipse.control(from, length), ellipse.control(to, -length), ellipse.at(to));
    }
}

using Draw = void (*)(IGraphicsPathAccessor* path, const Rect& rect, double first, double second);

IGraphicsPath* drawn(Draw draw, const Rect& rect, double first, double second) {
    Graphics::IFactory* factory = UPhysicalDrawDevice::getFactory(true);
    if (!factory || !rect.isFinite() || !std::isfinite(first) || !std::isfinite(second))
        return nullptr;
    IGraphicsPath* path = factory->createPath();
    const OPtr<IGraphicsPathAccessor> open = path ? path->open() : nullptr;
    if (open)
        draw(open, rect, first, second);
    return path;
}

double withinTurn(double arc) {
    return std::clamp(arc, -kTurn, kTurn);
}

void drawPie(IGraphicsPathAccessor* path, const Rect& rect, double start, double arc) {
    const Ellipse ellipse(rect);
    path->beginFigure(ellipse.middle, 1);
    path->addLine(ellipse.at(start));
    addArc(path, ellipse, start, withinTurn(arc));
    path->endFigure(1);
}

void drawArc(IGraphicsPathAccessor* path, const Rect& rect, double start, double arc) {
    const Ellipse ellipse(rect);
    path->beginFigure(ellipse.at(start), 1);
    addArc(path, ellipse, start, withinTurn(arc));
    path->endFigure(0);
}

void drawRoundRect(IGraphicsPathAccessor* path, const Rect& rect, double radius, double /*unused*/) {
    const double side = 2 * std::min({radius < 0 ? rect.width / 10 : radius, rect.width / 2, rect.height / 2});
    const double right = rect.x + rect.width - side, bottom = rect.y + rect.height - side;
    const Point corners[] = {
        {rect.x, rect.y},
        {right,  rect.y},
        {right,  bottom},
        {rect.x, bottom}
    };
    for (int corner = 0; corner < 4; ++corner) {
        const Ellipse ellipse({corners[corner].x, corners[corner].y, side, side});
        const double start = kTurn * (corner + 2) / 4;
        if (corner == 0)
            path->beginFigure(ellipse.at(start), 1);
        else
            path->addLine(ellipse.at(start));
        if (side > 0)
            addArc(path, ellipse, start, kTurn / 4);
    }
    path->endFigure(1);
}
}  // namespace

IGraphicsPath* UPath::createPie(const Rect& rect, double startAngle, double arc) {
    return drawn(drawPie, rect, startAngle, arc);
}

IGraphicsPath* UPath::createArc(const Rect& rect, double startAngle, double arc) {
    return drawn(drawArc, rect, startAngle, arc);
}

IGraphicsPath* UPath::createRoundRect(const Rect& rect, double radius) {
    return drawn(drawRoundRect, rect, radius, 0);
}

}  // namespace Tessarine
