#include "collect/cmvariant.h"
#include "gui/values/ufloatvalue.h"
#include "gui/values/ustringvalue.h"
#include <gtest/gtest.h>
#include <string>

namespace Tessarine {
namespace {

TEST(CmVariantToValue, FitsWhateverFormTheValueHas) {
    const std::tuple<CmVariant, int32_t, float, const char*> rows[] = {
        {CmVariant(int64_t(1) << 40),                1000, 1000.f, "1099511627776"},
        {CmVariant(2.75),                            2,    2.75f,  "2.75"         },
        {CmVariant("12"),                            12,   12.f,   "12"           },
        {CmVariant(u"3.5"),                          3,    3.5f,   "3.5"          },
        {CmVariant(),                                5,    5.f,    "before"       },
        {CmVariant(static_cast<FUnknown*>(nullptr)), 5,    5.f,    "before"       },
    };
    for (const auto& [variant, whole, real, text] : rows) {
        UIntValue wholeValue(0, 1000, 5);
        UFloatValue realValue(0, 1000, 5);
        UStringValue textValue(u"before");
        variant.assignTo(wholeValue);
        variant.assignTo(realValue);
        variant.assignTo(textValue);
        EXPECT_EQ(wholeValue.getValue(), whole);
        EXPECT_EQ(realValue.getFloatValue(), real);
        EXPECT_STREQ(String(textValue.getStringValue()).text8(), text);
    }
}

}  // namespace
}  // namespace Tessarine
