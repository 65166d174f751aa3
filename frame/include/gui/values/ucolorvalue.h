#pragma once
#include "gui/values/ucolor.h"
#include "gui/values/uvalue.h"

namespace Tessarine {

/** A colour, as a spec 0xAARRGGBB; as an integer the same 32 bits with a sign, in no narrower range. Typed and shown in
    the colour's text forms.

    Record    names UIntValue as the parent, which isTypeOf doesn't. */
class UColorValue : public UValue {
public:
    DECLARE_CLASS(UColorValue, UValue)
    DECLARE_NEWCOPY(UColorValue)
    static constexpr uint32_t kBlack = 0xFF000000;

    explicit UColorValue(uint32_t spec = kBlack) : spec(spec) {}

    void setValue(int32_t newSpec) override { setColorSpec(uint32_t(newSpec), false); }
    int32_t getValue() override { return int32_t(spec); }
    int32_t getMin() override { return INT32_MIN; }
    int32_t getMax() override { return INT32_MAX; }
    using UValue::toString;
    void toString(FString& text) override;
    /** A text that is no colour leaves the value. */
    void fromString(const tchar* text) override;

    UColor getColor() const { return UColor(spec); }
    uint32_t getColorSpec() const { return spec; }
    /** update: the owner hears of it, of the same colour too. */
    void setColor(const UColor& color, bool update) { setColorSpec(color.toColorSpec(), update); }
    void setColorSpec(uint32_t newSpec, bool update);

protected:
    uint32_t spec;
};

}  // namespace Tessarine
