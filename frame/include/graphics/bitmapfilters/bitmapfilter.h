#pragma once
#include "base/source/cmobject.h"
#include "pluginterfaces/graphics/ibitmapfilter.h"

namespace Tessarine::Graphics {

/** Two to four numbers. */
class Vector : public FObject, public IVector {
public:
    static constexpr int32_t kMaxComponents = 4;

    DECLARE_CLASS_NAME(Vector, FObject)
    FORWARD_REFCOUNT(FObject)
    Vector(double x, double y) : components{x, y}, count(2) {}
    Vector(double x, double y, double z) : components{x, y, z}, count(3) {}
    Vector(double x, double y, double z, double w) : components{x, y, z, w}, count(4) {}

    int32_t queryInterface(const char* iid, void** obj) override;
    int32_t countComponents() override { return count; }
    double getComponent(int32_t index) override { return index >= 0 && index < count ? components[index] : 0; }

private:
    double components[kMaxComponents] = {};
    int32_t count;
};

class MatrixObject : public FObject, public ITransformMatrix {
public:
    DECLARE_CLASS_NAME(MatrixObject, FObject)
    FORWARD_REFCOUNT(FObject)
    explicit MatrixObject(const TransformMatrix& matrix) : matrix(matrix) {}

    int32_t queryInterface(const char* iid, void** obj) override;
    int32_t getMatrix(TransformMatrix& result) override { return result = matrix, kResultOk; }

private:
    TransformMatrix matrix;
};

/** Filters with their inputs set, each with a reference for the caller; null: the factory, null or not, doesn't have it. */
namespace BitmapFilter {

struct Mirror {
    static IBitmapFilter* create(IBitmapFilterFactory* factory, bool horizontal, bool vertical);
};

struct AdjustHSL {
    /** Degrees, and percent from -100 to 100. */
    static IBitmapFilter* create(IBitmapFilterFactory* factory, double hue, double saturation, double luminance);
};

struct Desaturate {
    static IBitmapFilter* create(IBitmapFilterFactory* factory, double grayFactor, double alphaFactor);
};

struct Rotate {
    /** angle is a part of a turn, to the left. Null center: the middle. extend: the result holds all of the turned bitmap. */
    static IBitmapFilter* create(IBitmapFilterFactory* factory, double angle, bool interpolation, bool extend,
                                 const Point* center);
};

struct PNMScale {
    static IBitmapFilter* create(IBitmapFilterFactory* factory, const Size& destinationSize);
};

struct Tint {
    static IBitmapFilter* create(IBitmapFilterFactory* factory, uint32_t colorSpec, double factor);
};

}  // namespace BitmapFilter
}  // namespace Tessarine::Graphics
