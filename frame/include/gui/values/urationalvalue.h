#pragma once
#include "gui/values/uvalue.h"

namespace Tessarine {

/** A fraction. As an integer it is the numerator in the upper 16 bits and the denominator in the lower; of these the
    top bit is lost on the way back. Neither part is ever 0: that becomes 1. */
class URationalValue : public UValue {
public:
    DECLARE_CLASS(URationalValue, UValue)
    DECLARE_NEWCOPY(URationalValue)
    enum Option : uint32_t { kPositiveOnly = 1 };  // a part below 0 becomes 1

    explicit URationalValue(int32_t numerator = 1, int32_t denominator = 1, uint32_t options = 0);

    void setValue(int32_t packed) override;
    int32_t getValue() override;
    void decrement() override;
    /** Steps of the numerator. */
    void increment() override;
    using UValue::toString;
    void toString(FString& text) override;
    /** "3/4"; a number that is missing is a numerator of 0 or a denominator of 1. */
    void fromString(const tchar* text) override;

    virtual void setNumerator(int32_t newNumerator) { setRationalValue(newNumerator, denominator); }
    virtual void setDenominator(int32_t newDenominator) { setRationalValue(numerator, newDenominator); }
    virtual int32_t getNumerator() { return numerator; }
    virtual int32_t getDenominator() { return denominator; }
    virtual void setRationalValue(int32_t newNumerator, int32_t newDenominator);
    virtual void getRationalValue(int32_t& itsNumerator, int32_t& itsDenominator);
    virtual void setRationalTargetValue(int32_t newNumerator, int32_t newDenominator);
    /** What a setter makes of the two. */
    virtual void boundRational(int32_t& wantedNumerator, int32_t& wantedDenominator);

protected:
    int32_t numerator = 1;
    int32_t denominator = 1;
    uint32_t options;
};

}  // namespace Tessarine
