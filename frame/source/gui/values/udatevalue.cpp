#include "gui/values/udatevalue.h"
#include "base/source/fstring.h"
#include "valuenumbers.h"

namespace Tessarine {

IMPLEMENT_CLASS(USecondsValue, UIntValue)
IMPLEMENT_CLASS(UDateValue, UIntValue)

void USecondsValue::setFormat(int32_t newFormat) {
    if (newFormat == format)
        return;
    format = newFormat;
    changed();
}

void USecondsValue::toString(FString& text) {
    if (!representAsText(text))
        CmTime(value).toString(text);
}

void USecondsValue::fromString(const tchar* text) {
    CmTime time;
    if (takeRepresentedText(text))
        return;
    if (time.fromString(text))
        setTargetValue(time.getTotalSeconds());
    else
        setTargetValue(truncated(typedNumber(text, value, 0)));
}

UDateValue::UDateValue()
    : UIntValue(CmDate(1601, 1, 1).getJulianDay(), CmDate(32767, 12, 31).getJulianDay(),
                CmDate::today().getJulianDay()) {
    set(kStateWheelStepwise, true);
}

void UDateValue::setDate(const CmDate& date) {
    if (date.isValid()) {
        setValue(date.getJulianDay());
        return;
    }
    if (value == kNoDay)
        return;
    value = kNoDay;
    changed();
}

void UDateValue::setFormat(int32_t newFormat) {
    if (newFormat == format)
        return;
    format = newFormat;
    changed();
}

void UDateValue::toString(FString& text) {
    if (!representAsText(text))
        getDate().toString(text, format);
}

void UDateValue::fromString(const tchar* text) {
    CmDate date;
    if (takeRepresentedText(text))
        return;
    if (date.fromString(text))
        setTargetValue(date.getJulianDay());
    else
        setTargetValue(truncated(typedNumber(text, value, 0)));
}

}  // namespace Tessarine
