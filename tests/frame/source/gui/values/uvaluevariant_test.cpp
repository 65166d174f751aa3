#include "collect/cmvariant.h"
#include "gui/values/ufloatvalue.h"
#include "gui/values/ustringvalue.h"
#include <gtest/gtest.h>

namespace Tessarine {
namespace {

TEST(CmVariantToValue, FitsWhateverFormTheValueHas) {
    const std::tuple<CmVariant, int32_t, float, const char*> kRows[] = {
        {CmVariant(7),                               7,    7.f,    "7"            },
        {CmVariant(int64_t(1) << 40),                1000, 1000.f, "1099511627776"},
        {CmVariant(2.75),                            2,    2.75f,  "2.75"         },
        {CmVariant(u"3.5"),                          3,    3.5f,   "3.5"          },
        {CmVariant(),                                5,    5.f,    "before"       },
        {CmVariant(static_cast<FUnknown*>(nullptr)), 5,    5.f,    "before"       },
    };
    for (const auto& [variant, asWhole, asReal, asText] : kRows) {
        UIntValue whole(0, 1000, 5);
        UFloatValue real(0, 1000, 5);
        UStringValue text(u"before");
        for (UValue* value : {static_cast<UValue*>(&whole), static_cast<UValue*>(&real), static_cast<UValue*>(&text)})
            variant.assignTo(*value);
        EXPECT_EQ(whole.getValue(), asWhole);
        EXPECT_EQ(real.getFloatValue(), asReal);
        EXPECT_STREQ(String(text.getStringValue()).text8(), asText);
    }
}

}  // namespace
}  // namespace Tessarine
