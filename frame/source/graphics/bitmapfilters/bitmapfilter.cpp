#include "graphics/bitmapfilters/bitmapfilter.h"
#include "pluginterfaces/base/smartpointer.h"

namespace Tessarine::Graphics {

int32_t Vector::queryInterface(const char* iid, void** obj) {
    return answerInterface<IVector>(this, iid, obj) ? kResultOk : FObject::queryInterface(iid, obj);
}

int32_t MatrixObject::queryInterface(const char* iid, void** obj) {
    return answerInterface<ITransformMatrix>(this, iid, obj) ? kResultOk : FObject::queryInterface(iid, obj);
}

namespace BitmapFilter {
namespace {
struct Input {
    const char* name;
    FVariant value;
};

template <size_t count>
IBitmapFilter* made(IBitmapFilterFactory* factory, const char* name, const Input (&inputs)[count]) {
    IBitmapFilter* filter = factory ? factory->createBitmapFilter(name) : nullptr;
    if (!filter)
        return nullptr;
    for (const Input& input : inputs)
        filter->setInputValue(input.name, input.value);
    return filter;
}

FVariant flag(bool value) {
    return FVariant(value ? 1.0 : 0.0);
}

/** From -range to range, with 0.5 in the middle. */
FVariant centred(double value, double range) {
    return FVariant(0.5 + value / (2 * range));
}
}  // namespace

IBitmapFilter* Mirror::create(IBitmapFilterFactory* factory, bool horizontal, bool vertical) {
    const Input inputs[] = {
        {"horizontal", flag(horizontal)},
        {"vertical",   flag(vertical)  }
    };
    return made(factory, "Mirror", inputs);
}

IBitmapFilter* AdjustHSL::create(IBitmapFilterFactory* factory, double hue, double saturation, double luminance) {
    const Input inputs[] = {
        {"hueOffset",       centred(hue,        180)},
        {"saturationShift", centred(saturation, 100)},
        {"luminanceShift",  centred(luminance,  100)}
    };
    return made(factory, "AdjustHSL", inputs);
}

IBitmapFilter* Desaturate::create(IBitmapFilterFactory* factory, double grayFactor, double alphaFactor) {
    const Input inputs[] = {
        {"grayFactor",  FVariant(grayFactor) },
        {"alphaFactor", FVariant(alphaFactor)}
    };
    return made(factory, "Desaturate", inputs);
}

IBitmapFilter* Rotate::create(IBitmapFilterFactory* factory, double angle, bool interpolation, bool extend,
                              const Point* center) {
    const Input inputs[] = {
        {"angle",         FVariant(angle)    },
        {"interpolation", flag(interpolation)},
        {"extend",        flag(extend)       }
    };
    IBitmapFilter* filter = made(factory, "Rotate", inputs);
    if (filter && center) {
        OPtr<Vector> place(new Vector(center->x, center->y));
        filter->setInputValue("center", FVariant(static_cast<IVector*>(place)));
    }
    return filter;
}

IBitmapFilter* PNMScale::create(IBitmapFilterFactory* factory, const Size& destinationSize) {
    OPtr<Vector> size(new Vector(destinationSize.width, destinationSize.height));
    const Input inputs[] = {
        {"destinationSize", FVariant(static_cast<IVector*>(size))}
    };
    return made(factory, "PNMScale", inputs);
}

IBitmapFilter* Tint::create(IBitmapFilterFactory* factory, uint32_t colorSpec, double factor) {
    const Input inputs[] = {
        {"color",  FVariant(int64_t(colorSpec))},
        {"factor", FVariant(factor)            }
    };
    return made(factory, "Tint", inputs);
}

}  // namespace BitmapFilter
}  // namespace Tessarine::Graphics
