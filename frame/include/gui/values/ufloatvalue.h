#pragma once
#include "gui/values/uvalue.h"

namespace Tessarine {

/** A number in a range, both ends included; what is no number changes neither. Its integer face truncates. */
class UFloatValue : public UValue, public IFloatValue {
public:
    DECLARE_CLASS(UFloatValue, UValue)
    DECLARE_NEWCOPY(UFloatValue)

    /** Starts at the bounded value. */
    explicit UFloatValue(float min = 0.f, float max = 1.f, float value = 0.f);

    int32_t queryInterface(const char* iid, void** obj) override;
    FORWARD_REFCOUNT(UValue)
    /** The value alone, in both forms; one that is no number leaves it. */
    bool internalize(FArchive& archive) override;
    bool externalize(FArchive& archive) const override;
    bool storeAttributes(FAttributes& attributes) const override;
    bool restoreAttributes(FAttributes& attributes) override;

    void setValue(int32_t newValue) override { setFloatValue(float(newValue)); }
    int32_t getValue() override;
    int32_t getMin() override;
    void setMin(int32_t newMin) override { setFloatMin(float(newMin)); }
    int32_t getMax() override;
    void setMax(int32_t newMax) override { setFloatMax(float(newMax)); }
    float getNormalized() override;
    using UValue::setNormalized;
    void setNormalized(float position) override;
    /** A step is the incDecAmount; when that isn't above 0, one unit of the last shown digit. */
    void decrement() override;
    void increment() override;
    /** A fraction is divided as integers: 1/2 assigns 0. */
    void assignTo(UValue* source) override;
    bool resetToDefaultValue() override;
    bool getDefaultValue(int32_t& standard) override;
    bool setDefaultValue(int32_t standard) override { return setDefaultFloatValue(float(standard)); }
    void setWrapAround(bool state) override { set(kStateWrapAround, state); }
    using UValue::toString;
    void toString(FString& text) override;
    /** A number; with *, +, - or / behind it, it is applied to the value. */
    void fromString(const tchar* text) override;
    int32_t getValueType() override { return kFloat; }
    float getValueFloat() override { return getFloatValue(); }
    void setValueFloat(float newValue, bool update) override;
    float getFloatMin() override { return min; }
    float getFloatMax() override { return max; }
    /** Raises a max that would be below. */
    void setFloatMin(float newMin) override;
    /** Never moves min. */
    void setFloatMax(float newMax) override;
    bool setDefault(float standard) override { return setDefaultFloatValue(standard); }
    bool getDefault(float& standard) override { return getDefaultFloatValue(standard); }

    virtual float getFloatValue() { return value; }
    virtual void setFloatValue(float newValue);
    /** As bound; wrapping steps by 1.0 at the seam, whatever the range. */
    virtual float boundFloat(float wanted);
    virtual void setTargetFloatValue(float newValue);
    virtual bool getDefaultFloatValue(float& /*standard*/) { return false; }
    virtual bool setDefaultFloatValue(float /*standard*/) { return false; }
    void setPrecision(int32_t digits) override;
    int32_t getPrecision() override { return precision; }

    void setIncDecAmount(float amount) { incDecAmount = amount; }
    float getIncDecAmount() const { return incDecAmount; }

protected:
    float value;
    float min;
    float max;
    float incDecAmount = 0.f;
    int32_t precision = 4;  // digits behind the point

private:
    double stepWidth() const;
};

/** A number that knows its default. */
class UFloatDefValue : public UFloatValue {
public:
    DECLARE_CLASS(UFloatDefValue, UFloatValue)
    DECLARE_NEWCOPY(UFloatDefValue)

    explicit UFloatDefValue(float min = 0.f, float max = 1.f, float defaultValue = 0.f, float value = 0.f);

    bool getDefaultFloatValue(float& standard) override;
    bool setDefaultFloatValue(float standard) override;

protected:
    float defaultValue;
};

/** A number whose position in its range isn't linear: a transformer knows both ways, and the ends of the range. */
class UFloatTransformValue : public UFloatDefValue, public IValueTransformTarget {
public:
    DECLARE_CLASS(UFloatTransformValue, UFloatDefValue)
    DECLARE_NEWCOPY(UFloatTransformValue)
    using UFloatDefValue::UFloatDefValue;
    FORWARD_REFCOUNT(UFloatDefValue)

    int32_t queryInterface(const char* iid, void** obj) override;
    float getNormalized() override;
    using UFloatDefValue::setNormalized;
    void setNormalized(float position) override;
    void setTransformer(IValueTransformer* newTransformer) override;

protected:
    IPtr<IValueTransformer> transformer;  // shared; null: the position is linear
};

}  // namespace Tessarine
