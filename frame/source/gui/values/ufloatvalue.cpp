#include "gui/values/ufloatvalue.h"
#include "base/ftextutils.h"
#include "base/source/fstring.h"
#include "valuenumbers.h"

namespace Tessarine {

IMPLEMENT_CLASS(UFloatValue, UValue)
IMPLEMENT_CLASS(UFloatDefValue, UFloatValue)

UFloatValue::UFloatValue(float min, float max, float value) : value(min), min(min), max(max) {
    UValue::setStyle(kNumberStyle);
    this->value = UFloatValue::boundFloat(value);
}

int32_t UFloatValue::queryInterface(const char* iid, void** obj) {
    return answerInterface<IFloatValue>(this, iid, obj) ? kResultOk : UValue::queryInterface(iid, obj);
}

int32_t UFloatValue::getValue() {
    return truncated(getFloatValue());
}

int32_t UFloatValue::getMin() {
    return truncated(getFloatMin());
}

int32_t UFloatValue::getMax() {
    return truncated(getFloatMax());
}

float UFloatValue::getNormalized() {
    return max == min ? 0.f : (value - min) / (max - min);
}

void UFloatValue::setNormalized(float position) {
    setFloatValue(min + position * (max - min));
}

double UFloatValue::stepWidth() const {
    if (incDecAmount > 0)
        return incDecAmount;
    double step = 1.0;
    for (int32_t digit = 0; digit < precision && step > 0; ++digit)
        step /= 10.0;
    return step;
}

void UFloatValue::decrement() {
    setTargetFloatValue(float(value - stepWidth()));
}

void UFloatValue::increment() {
    setTargetFloatValue(float(value + stepWidth()));
}

void UFloatValue::assignTo(UValue* source) {
    if (auto* number = classCast<UFloatValue>(source))
        setTargetFloatValue(number->getFloatValue());
    else
        UValue::assignTo(source);
}

bool UFloatValue::resetToDefaultValue() {
    float standard = 0;
    if (!getDefaultFloatValue(standard))
        return false;
    if (standard != getFloatValue())
        changeInSession([&] { setTargetFloatValue(standard); });
    return true;
}

bool UFloatValue::getDefaultValue(int32_t& standard) {
    float number = 0;
    if (!getDefaultFloatValue(number))
        return false;
    standard = truncated(number);
    return true;
}

void UFloatValue::toString(FString& text) {
    if (!representAsText(text))
        FTextUtils::printFloat(text, value, precision);
}

void UFloatValue::fromString(const tchar* text) {
    if (!takeRepresentedText(text))
        setTargetFloatValue(float(typedNumber(text, getFloatValue())));
}

void UFloatValue::setValueFloat(float newValue, bool update) {
    setFloatValue(newValue);
    if (update)
        updateTarget();
}

void UFloatValue::setFloatMin(float newMin) {
    if (newMin == min)
        return;
    min = newMin;
    if (newMin > max)
        max = newMin;
    if (newMin > value)
        setFloatValue(value);
    else
        changed();
}

void UFloatValue::setFloatMax(float newMax) {
    if (newMax == max)
        return;
    max = newMax;
    if (value > newMax)
        setFloatValue(value);
    else
        changed();
}

void UFloatValue::setFloatValue(float newValue) {
    const float bounded = boundFloat(newValue);
    if (bounded == value)
        return;
    value = bounded;
    changed();
}

float UFloatValue::boundFloat(float wanted) {
    if (wanted >= min && wanted <= max)
        return wanted;
    if (isWrapAround() && min < max)
        return wrapped(wanted, min, max);
    if (wanted < min)
        return min;
    return wanted > max ? getFloatMax() : wanted;
}

void UFloatValue::setTargetFloatValue(float newValue) {
    setFloatValue(newValue);
    updateTarget();
}

void UFloatValue::setPrecision(int32_t digits) {
    if (digits == precision)
        return;
    precision = digits;
    changed();
}

UFloatDefValue::UFloatDefValue(float min, float max, float defaultValue, float value)
    : UFloatValue(min, max, value), defaultValue(defaultValue) {}

bool UFloatDefValue::getDefaultFloatValue(float& standard) {
    standard = defaultValue;
    return true;
}

bool UFloatDefValue::setDefaultFloatValue(float standard) {
    defaultValue = standard;
    return true;
}

}  // namespace Tessarine
