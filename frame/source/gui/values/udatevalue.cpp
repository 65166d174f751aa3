#include "gui/values/udatevalue.h"
#include "base/source/fstring.h"

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

}  // namespace Tessarine
