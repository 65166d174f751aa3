#pragma once
#include "gui/values/uvalue.h"

namespace Tessarine {

/** An integer in a range, both ends included. A range that is set so that the value falls out moves the value. */
class UIntValue : public UValue {
public:
    DECLARE_CLASS(UIntValue, UValue)
    DECLARE_NEWCOPY(UIntValue)
    static constexpr int32_t kUnlimited = 0x7FFFFFFF;

    /** Starts at the bounded value. */
    explicit UIntValue(int32_t min = 0, int32_t max = kUnlimited, int32_t value = 0);

    void setValue(int32_t newValue) override;
    int32_t getValue() override { return value; }
    int32_t getMin() override { return min; }
    /** Raises a max that would be below. */
    void setMin(int32_t newMin) override;
    int32_t getMax() override { return max; }
    /** Never moves min. */
    void setMax(int32_t newMax) override;
    int32_t bound(int32_t wanted) override;
    float getNormalized() override;
    /** To the nearest integer. */
    void setNormalized(float position) override;
    using UValue::setNormalized;
    void decrement() override;
    void increment() override;
    void setWrapAround(bool state) override { set(kStateWrapAround, state); }
    using UValue::toString;
    void toString(FString& text) override;
    /** A number; with *, +, - or / behind it, it is applied to the value. */
    void fromString(const tchar* text) override;
    int32_t getValueType() override { return kInteger; }

protected:
    int32_t value;
    int32_t min;
    int32_t max;
};

/** An integer that knows its default. */
class UIntDefValue : public UIntValue {
public:
    DECLARE_CLASS(UIntDefValue, UIntValue)
    DECLARE_NEWCOPY(UIntDefValue)

    explicit UIntDefValue(int32_t min = 0, int32_t max = kUnlimited, int32_t defaultValue = 0, int32_t value = 0);

    bool getDefaultValue(int32_t& standard) override;
    bool setDefaultValue(int32_t standard) override;

protected:
    int32_t defaultValue;
};

}  // namespace Tessarine
