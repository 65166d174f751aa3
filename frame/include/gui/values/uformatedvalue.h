#pragma once
#include "base/ftextutils.h"
#include "gui/values/uintvalue.h"

namespace Tessarine {

/** An integer that is shown and typed in one of the text forms: 44100 as "44.100 kHz". */
class UFormatedValue : public UIntValue {
public:
    DECLARE_CLASS(UFormatedValue, UIntValue)
    DECLARE_NEWCOPY(UFormatedValue)

    explicit UFormatedValue(UTextFormatType format = kPlainFormat, int32_t min = 0, int32_t max = kUnlimited)
        : UIntValue(min, max), format(format) {}

    UTextFormatType getFormat() const { return format; }
    void setFormat(UTextFormatType newFormat);
    using UIntValue::toString;
    void toString(FString& text) override;
    /** A text that can't be scanned leaves the value. */
    void fromString(const tchar* text) override;

protected:
    UTextFormatType format;
};

}  // namespace Tessarine
