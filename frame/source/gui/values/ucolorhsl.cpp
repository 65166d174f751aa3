#include "gui/values/ucolorhsl.h"

namespace Tessarine {

UColorLightnessCurve::UColorLightnessCurve(double percent) {
    const double half = 1 + std::clamp(std::fabs(percent) / 100, 0.0, 1.0) / 2;
    exponent = percent < 0 ? 1 / (half * half) : half * half;
    if (percent < 0) {
        scale = 0.9;
        start = 0.1;
    }
}

double UColorLightnessCurve::shifted(double lightness) const {
    const double base = (1 - lightness / 255) * scale + start;
    return lightness + (base - std::pow(base, exponent)) * 255;
}

}  // namespace Tessarine
