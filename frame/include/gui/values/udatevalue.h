#pragma once
#include "collect/cmdate.h"
#include "gui/values/uintvalue.h"

namespace Tessarine {

/** A time of day or a span, in seconds: shown as 1:05:09, typed as any integer. */
class USecondsValue : public UIntValue {
public:
    DECLARE_CLASS(USecondsValue, UIntValue)
    DECLARE_NEWCOPY(USecondsValue)

    explicit USecondsValue(int32_t seconds = 0) : UIntValue(0, kUnlimited, seconds) {}

    int32_t getFormat() const { return format; }
    void setFormat(int32_t newFormat);
    using UIntValue::toString;
    void toString(FString& text) override;

protected:
    int32_t format = 0;
};

/** A day, as its Julian day number from 1 January 1601 to 31 December 32767; a new one holds today. Shown as a date,
    typed as any integer. */
class UDateValue : public UIntValue {
public:
    DECLARE_CLASS(UDateValue, UIntValue)
    DECLARE_NEWCOPY(UDateValue)
    static constexpr int32_t kNoDay = 0x7FFFFFFF;  // out of the range; shown as nothing

    UDateValue();

    /** No date puts kNoDay. */
    void setDate(const CmDate& date);
    CmDate getDate() const { return CmDate(value); }
    /** One of CmDate::Format. */
    int32_t getFormat() const { return format; }
    void setFormat(int32_t newFormat);
    using UIntValue::toString;
    void toString(FString& text) override;

protected:
    int32_t format = CmDate::kIsoDate;
};

}  // namespace Tessarine
