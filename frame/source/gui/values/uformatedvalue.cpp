#include "gui/values/uformatedvalue.h"
#include "base/source/fstring.h"
#include "valuenumbers.h"

namespace Tessarine {

IMPLEMENT_CLASS(UFormatedValue, UIntValue)

void UFormatedValue::setFormat(UTextFormatType newFormat) {
    if (newFormat == format)
        return;
    format = newFormat;
    changed();
}

void UFormatedValue::toString(FString& text) {
    if (!representAsText(text))
        FTextUtils::printInt(text, value, format);
}

void UFormatedValue::fromString(const tchar* text) {
    int64_t number;
    if (!takeRepresentedText(text) && FTextUtils::scanInt(ConstString(text), number, format))
        setTargetValue(truncated(double(number)));
}

}  // namespace Tessarine
