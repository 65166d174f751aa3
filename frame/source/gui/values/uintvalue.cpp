#include "gui/values/uintvalue.h"
#include "base/source/fstring.h"
#include "valuenumbers.h"
#include <cmath>

namespace Tessarine {

IMPLEMENT_CLASS(UIntValue, UValue)
IMPLEMENT_CLASS(UIntDefValue, UIntValue)

UIntValue::UIntValue(int32_t min, int32_t max, int32_t value) : value(min), min(min), max(max) {
    UValue::setStyle(kNumberStyle);
    this->value = UIntValue::bound(value);
}

void UIntValue::setValue(int32_t newValue) {
    const int32_t bounded = bound(newValue);
    if (bounded == value)
        return;
    value = bounded;
    changed();
}

void UIntValue::setMin(int32_t newMin) {
    if (newMin == min)
        return;
    min = newMin;
    if (max < newMin)
        max = newMin;
    if (value < newMin)
        setValue(newMin);
    else
        changed();
}

void UIntValue::setMax(int32_t newMax) {
    if (newMax == max)
        return;
    max = newMax;
    if (value > newMax)
        setValue(newMax);
    else
        changed();
}

int32_t UIntValue::bound(int32_t wanted) {
    if (wanted >= min && wanted <= max)
        return wanted;
    if (isWrapAround() && min < max)
        return wrapped(wanted, min, max);
    return wanted < min ? min : getMax();
}

float UIntValue::getNormalized() {
    return max == min ? 0.f : float(int64_t(value) - min) / float(int64_t(max) - min);
}

void UIntValue::setNormalized(float position) {
    const float place = float(int64_t(max) - min) * position;
    setValue(truncated(std::trunc(place + 0.5) + min));
}

void UIntValue::decrement() {
    setTargetValue(truncated(double(getValue()) - 1));
}

void UIntValue::increment() {
    setTargetValue(truncated(double(getValue()) + 1));
}

void UIntValue::toString(FString& text) {
    if (!representAsText(text))
        text.printf("%d", value);
}

void UIntValue::fromString(const tchar* text) {
    if (!takeRepresentedText(text))
        setTargetValue(truncated(typedNumber(text, getValue(), 0)));
}

UIntDefValue::UIntDefValue(int32_t min, int32_t max, int32_t defaultValue, int32_t value)
    : UIntValue(min, max, value), defaultValue(defaultValue) {}

bool UIntDefValue::getDefaultValue(int32_t& standard) {
    standard = defaultValue;
    return true;
}

bool UIntDefValue::setDefaultValue(int32_t standard) {
    defaultValue = standard;
    return true;
}

}  // namespace Tessarine
