#include "frame/source/graphics/bitmapfilters/colorfilters.h"
#include "frame/source/graphics/bitmapfilters/pixelrows.h"
#include "gui/values/ucolorhsl.h"
#include <algorithm>
#include <cmath>
#include <vector>

namespace Tessarine::Graphics::BitmapFilterImplementation {
namespace {
/** Calls each of a bitmap's rows: (to, from, count). */
template <class Row>
void forEachRow(const BitmapPixelAccessor& from, const BitmapPixelAccessor& to, const Row& row) {
    for (int32_t y = 0; y < to.getHeight(); ++y)
        row(to.row(y), from.row(y), to.getWidth());
}

/** What a value is away from the middle, as a part of the range, which stays a number that can be reckoned with. */
double shiftOf(double value, double range) {
    constexpr double kFarAway = 1e9;
    return (std::clamp(value, -kFarAway, kFarAway) - 0.5) * range;
}
}  // namespace

void ReplaceColor::init() {
    FilterBase::init();
    registerColorSpecInputValue("colorToReplace", 0xFF000000);
    registerColorSpecInputValue("replaceColor", 0xFF808080);
}

void ReplaceColor::process(const BitmapPixelAccessor& from, const BitmapPixelAccessor& to) {
    const uint32_t old = getColorSpec("colorToReplace"), other = getColorSpec("replaceColor");
    forEachRow(from, to, [old, other](uint32_t* target, const uint32_t* source, int32_t count) {
        std::replace_copy(source, source + count, target, old, other);
    });
}

void Desaturate::init() {
    FilterBase::init();
    registerFloatInputValue("grayFactor", 1.0);
    registerFloatInputValue("alphaFactor", 1.0);
}

void Desaturate::process(const BitmapPixelAccessor& from, const BitmapPixelAccessor& to) {
    const GrayRows rows(getFloat("grayFactor"), getFloat("alphaFactor"));
    forEachRow(from, to,
               [&rows](uint32_t* target, const uint32_t* source, int32_t count) { rows.fast(target, source, count); });
}

void AdjustHSL::init() {
    FilterBase::init();
    for (const char* name : {"hueOffset", "saturationShift", "luminanceShift"})
        registerFloatInputValue(name, 0.5);
}

int32_t AdjustHSL::setInputValue(const char* name, const FVariant& value) {
    const double before = getFloat("luminanceShift");
    const int32_t result = FilterBase::setInputValue(name, value);
    if (getFloat("luminanceShift") != before)
        tableIsBuilt = false;
    return result;
}

void AdjustHSL::buildTable(double percent) {
    if (tableIsBuilt)
        return;
    const UColorLightnessCurve curve(percent);
    for (size_t sum = 0; sum < lightness.size(); ++sum)
        lightness[sum] = std::clamp(curve.shifted(double(sum) / 2), 0.0, 255.0);
    tableIsBuilt = true;
}

void AdjustHSL::process(const BitmapPixelAccessor& from, const BitmapPixelAccessor& to) {
    const double hue = shiftOf(getFloat("hueOffset"), 360), saturation = shiftOf(getFloat("saturationShift"), 200),
                 luminance = shiftOf(getFloat("luminanceShift"), 200);
    const bool changes = hue != 0 || saturation != 0 || luminance != 0;
    buildTable(luminance);
    const HSLRows rows(std::fmod(std::trunc(hue / 360 * 255), 255), saturationFactor(saturation), lightness);
    forEachRow(from, to, [&](uint32_t* target, const uint32_t* source, int32_t count) {
        if (changes)
            rows.fast(target, source, count);
        else if (target != source)
            std::copy_n(source, count, target);
    });
}

void Tint::init() {
    FilterBase::init();
    registerColorSpecInputValue("color", 0xFFFF0000);
    registerFloatInputValue("factor", 1.0);
}

void Tint::process(const BitmapPixelAccessor& from, const BitmapPixelAccessor& to) {
    const TintRows rows(getColorSpec("color"), getFloat("factor"));
    forEachRow(from, to,
               [&rows](uint32_t* target, const uint32_t* source, int32_t count) { rows.fast(target, source, count); });
}

void Mirror::init() {
    FilterBase::init();
    registerFloatInputValue("horizontal", 1.0);
    registerFloatInputValue("vertical", 0.0);
}

void Mirror::process(const BitmapPixelAccessor& from, const BitmapPixelAccessor& to) {
    const bool horizontal = getFloat("horizontal") != 0, vertical = getFloat("vertical") != 0;
    const int32_t count = to.getWidth(), height = to.getHeight();
    const auto put = [=](const uint32_t* source, uint32_t* target) {
        if (horizontal)
            std::reverse_copy(source, source + count, target);
        else
            std::copy_n(source, count, target);
    };
    if (to.row(0) != from.row(0)) {
        for (int32_t y = 0; y < height; ++y)
            put(from.row(vertical ? height - 1 - y : y), to.row(y));
        return;
    }
    if (!horizontal && !vertical)
        return;
    std::vector<uint32_t> upper(static_cast<size_t>(count)), lower(upper);
    for (int32_t y = 0; y < (vertical ? (height + 1) / 2 : height); ++y) {
        const int32_t other = vertical ? height - 1 - y : y;
        std::copy_n(from.row(y), count, upper.data());
        std::copy_n(from.row(other), count, lower.data());
        put(upper.data(), to.row(other));
        put(lower.data(), to.row(y));
    }
}

}  // namespace Tessarine::Graphics::BitmapFilterImplementation
