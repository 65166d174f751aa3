#include "gui/values/ufloatvalue.h"
#include "base/ftextutils.h"
#include "base/source/fstring.h"
#include "gui/values/urationalvalue.h"
#include "storage/farchive.h"
#include "storage/fbstream.h"
#include "storage/fpersistent.h"
#include "valuenumbers.h"
#include <cmath>

namespace Tessarine {

IMPLEMENT_CLASS(UFloatValue, UValue)
IMPLEMENT_CLASS(UFloatDefValue, UFloatValue)
IMPLEMENT_CLASS(UFloatTransformValue, UFloatDefValue)

UFloatValue::UFloatValue(float min, float max, float value) : value(min), min(min), max(max) {
    UValue::setStyle(kNumberStyle);
    this->value = UFloatValue::boundFloat(value);
}

int32_t UFloatValue::queryInterface(const char* iid, void** obj) {
    return answerInterface<IFloatValue>(this, iid, obj) ? kResultOk : UValue::queryInterface(iid, obj);
}

bool UFloatValue::internalize(FArchive& archive) {
    float number;
    const bool done = archive.getStream().readFloat(number);
    if (done)
        setFloatValue(number);
    return done;
}

bool UFloatValue::externalize(FArchive& archive) const {
    return archive.getStream().writeFloat(const_cast<UFloatValue*>(this)->getFloatValue());
}

bool UFloatValue::storeAttributes(FAttributes& attributes) const {
    return attributes.set(kValueKey, double(const_cast<UFloatValue*>(this)->getFloatValue()));
}

bool UFloatValue::restoreAttributes(FAttributes& attributes) {
    float number;
    const bool hasValue = attributes.get(kValueKey, number);
    if (hasValue)
        setFloatValue(number);
    return hasValue;
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
    else if (auto* fraction = classCast<URationalValue>(source)) {
        const int64_t whole = int64_t(fraction->getNumerator()) / fraction->getDenominator();
        setTargetFloatValue(float(whole));
    } else
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
        setTargetFloatValue(float(typedNumber(text, getFloatValue(), getFloatValue())));
}

void UFloatValue::setValueFloat(float newValue, bool update) {
    setFloatValue(newValue);
    if (update)
        updateTarget();
}

void UFloatValue::setFloatMin(float newMin) {
    if (newMin == min || std::isnan(newMin))
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
    if (newMax == max || std::isnan(newMax))
        return;
    max = newMax;
    if (value > newMax)
        setFloatValue(value);
    else
        changed();
}

void UFloatValue::setFloatValue(float newValue) {
    const float bounded = boundFloat(newValue);
    if (bounded == value || std::isnan(bounded))
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

int32_t UFloatTransformValue::queryInterface(const char* iid, void** obj) {
    return answerInterface<IValueTransformTarget>(this, iid, obj) ? kResultOk
                                                                  : UFloatDefValue::queryInterface(iid, obj);
}

float UFloatTransformValue::getNormalized() {
    return transformer ? transformer->valueToNormalized(getFloatValue()) : UFloatDefValue::getNormalized();
}

void UFloatTransformValue::setNormalized(float position) {
    if (transformer)
        setFloatValue(transformer->normalizedToValue(position));
    else
        UFloatDefValue::setNormalized(position);
}

void UFloatTransformValue::setTransformer(IValueTransformer* newTransformer) {
    const IPtr<IValueTransformer> scale(newTransformer);  // who hears of the range may exchange it
    transformer = scale;
    if (!scale)
        return;
    setFloatMin(scale->normalizedToValue(0.f));
    if (transformer == scale)
        setFloatMax(scale->normalizedToValue(1.f));
}

}  // namespace Tessarine
