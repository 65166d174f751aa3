#include "frame/source/graphics/bitmapfilters/transformfilters.h"
#include "frame/source/graphics/bitmapfilters/samplerows.h"
#include <algorithm>
#include <cmath>
#include <numbers>

namespace Tessarine::Graphics::BitmapFilterImplementation {
namespace {
/** False: it can't be inverted. */
bool invert(const TransformMatrix& m, TransformMatrix& inverse) {
    const double determinant = m.xx * m.yy - m.xy * m.yx;
    if (!std::isnormal(determinant))
        return false;
    inverse = {m.yy / determinant,
               -m.yx / determinant,
               -m.xy / determinant,
               m.xx / determinant,
               (m.xy * m.y0 - m.yy * m.x0) / determinant,
               (m.yx * m.x0 - m.xx * m.y0) / determinant};
    return true;
}

Point mapped(const TransformMatrix& m, double x, double y) {
    return {m.xx * x + m.xy * y + m.x0, m.yx * x + m.yy * y + m.y0};
}

/** A whole number that rounding has missed by a hair is meant. */
double wholeSide(double length) {
    return std::ceil(length - 1e-6);
}

/** Whole sides that hold the mapped corners in their middle. */
Rect boundsOf(const TransformMatrix& matrix, const Size& size) {
    const Point corners[] = {mapped(matrix, 0, 0), mapped(matrix, size.width, 0), mapped(matrix, 0, size.height),
                             mapped(matrix, size.width, size.height)};
    const auto [left, right] = std::minmax({corners[0].x, corners[1].x, corners[2].x, corners[3].x});
    const auto [top, bottom] = std::minmax({corners[0].y, corners[1].y, corners[2].y, corners[3].y});
    const double width = wholeSide(right - left), height = wholeSide(bottom - top);
    return {(left + right - width) / 2, (top + bottom - height) / 2, width, height};
}
}  // namespace

void MatrixTransform::init() {
    FilterBase::init();
    registerTransformMatrixInputValue("TransformMatrix");
}

TransformMatrix MatrixTransform::getMatrix(const Size& /*input*/) const {
    TransformMatrix matrix;
    if (ITransformMatrix* set = getTransformMatrix("TransformMatrix"))
        set->getMatrix(matrix);
    return matrix;
}

void MatrixTransform::process(const BitmapPixelAccessor& from, const BitmapPixelAccessor& to) {
    TransformMatrix inverse;
    const bool usable = invert(getMatrix({double(from.getWidth()), double(from.getHeight())}), inverse);
    const Sampler sampler(from);
    for (int32_t y = 0; y < to.getHeight(); ++y) {
        const Point start = mapped(inverse, 0.5, y + 0.5);
        const SampleLine line{
            start, {inverse.xx, inverse.yx}
        };
        if (!usable)
            std::fill_n(to.row(y), to.getWidth(), 0);
        else if (interpolates())
            sampler.interpolated(to.row(y), to.getWidth(), line);
        else
            sampler.nearest(to.row(y), to.getWidth(), line);
    }
}

void Rotate::init() {
    MatrixTransform::init();
    registerFloatInputValue("angle", 0.0);
    registerVectorInputValue("center");
    registerFloatInputValue("interpolation", 0.0);
    registerFloatInputValue("extend", 0.0);
}

bool Rotate::interpolates() const {
    return getFloat("interpolation") != 0;
}

/** Around the centre. */
TransformMatrix Rotate::turn(const Size& input) const {
    IVector* center = getVector("center");
    const Point middle =
        center ? Point{center->getComponent(0), center->getComponent(1)} : Point{input.width / 2, input.height / 2};
    const double radians = std::fmod(getFloat("angle"), 1.0) * -360 * std::numbers::pi / 180;
    const double cosine = std::cos(radians), sine = std::sin(radians);
    TransformMatrix matrix{cosine, sine, -sine, cosine, 0, 0};
    const Point moved = mapped(matrix, middle.x, middle.y);
    matrix.x0 = middle.x - moved.x;
    matrix.y0 = middle.y - moved.y;
    return matrix;
}

bool Rotate::resultSize(const Size& input, Size& result) {
    if (getFloat("extend") == 0)
        return false;
    const Rect bounds = boundsOf(turn(input), input);
    result = {bounds.width, bounds.height};
    return true;
}

TransformMatrix Rotate::getMatrix(const Size& input) const {
    TransformMatrix matrix = turn(input);
    if (getFloat("extend") != 0) {
        const Rect bounds = boundsOf(matrix, input);
        matrix.x0 -= bounds.x;
        matrix.y0 -= bounds.y;
    }
    return matrix;
}

}  // namespace Tessarine::Graphics::BitmapFilterImplementation
