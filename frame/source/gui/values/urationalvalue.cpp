#include "gui/values/urationalvalue.h"
#include "base/source/fstring.h"
#include "valuenumbers.h"

namespace Tessarine {
namespace {
unsigned long magnitude(int32_t number) {
    return number < 0 ? 0ul - (unsigned long)(number) : (unsigned long)(number);
}

int32_t typedPart(const ConstString& text, int32_t ifMissing) {
    double number = ifMissing;
    scanTyped(text, number);
    return truncated(number);
}
}  // namespace

IMPLEMENT_CLASS(URationalValue, UValue)

URationalValue::URationalValue(int32_t numerator, int32_t denominator, uint32_t options) : options(options) {
    URationalValue::boundRational(numerator, denominator);
    this->numerator = numerator;
    this->denominator = denominator;
}

void URationalValue::setValue(int32_t packed) {
    setRationalValue(packed >> 16, packed & 0x7FFF);
}

int32_t URationalValue::getValue() {
    return int32_t(uint32_t(numerator) << 16 | (uint32_t(denominator) & 0xFFFF));
}

void URationalValue::decrement() {
    setRationalTargetValue(truncated(double(numerator) - 1), denominator);
}

void URationalValue::increment() {
    setRationalTargetValue(truncated(double(numerator) + 1), denominator);
}

void URationalValue::toString(FString& text) {
    if (representAsText(text))
        return;
    const char* const sign = (numerator < 0) == (denominator < 0) ? "" : "-";
    text.printf("%s%lu/%lu", sign, magnitude(numerator), magnitude(denominator));
}

void URationalValue::fromString(const tchar* typed) {
    if (takeRepresentedText(typed))
        return;
    const ConstString text(typed);
    const int32_t slash = text.findPrev(-1, u'/');
    if (slash < 0)
        setRationalTargetValue(typedPart(text, 0), 1);
    else
        setRationalTargetValue(typedPart(ConstString(typed, slash), 0), typedPart(ConstString(text, slash + 1), 1));
}

void URationalValue::setRationalValue(int32_t newNumerator, int32_t newDenominator) {
    boundRational(newNumerator, newDenominator);
    if (newNumerator == numerator && newDenominator == denominator)
        return;
    numerator = newNumerator;
    denominator = newDenominator;
    changed();
}

void URationalValue::getRationalValue(int32_t& itsNumerator, int32_t& itsDenominator) {
    itsNumerator = numerator;
    itsDenominator = denominator;
}

void URationalValue::setRationalTargetValue(int32_t newNumerator, int32_t newDenominator) {
    setRationalValue(newNumerator, newDenominator);
    updateTarget();
}

void URationalValue::boundRational(int32_t& wantedNumerator, int32_t& wantedDenominator) {
    for (int32_t* part : {&wantedNumerator, &wantedDenominator})
        if (*part == 0 || (*part < 0 && (options & kPositiveOnly)))
            *part = 1;
}

}  // namespace Tessarine
