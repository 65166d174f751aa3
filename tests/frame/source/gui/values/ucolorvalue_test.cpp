#include "gui/values/ucolorvalue.h"
#include "valuefixture.h"
#include <limits>

namespace Tessarine {
namespace {

using UColorValueNews = ValueTest;

TEST_F(UColorValueNews, TheOwnerHearsOfTheSameColourToo) {
    const OPtr<UColorValue> value(new UColorValue);
    value->setStraightUpdate(true);
    Owner owner(log);
    Watcher view(log, value);
    value->connect(&owner, 0, false);
    EXPECT_EQ(textOf(value), u"black");
    value->fromString(u"gold");
    EXPECT_EQ(take(), (Log{"view 1", "owner 1"}));
    value->setColor(UColor(0xFFFFCC66), true);
    EXPECT_EQ(take(), Log{"owner 1"});
    value->fromString(u"no colour");
    value->setColorSpec(0xFFFFCC66, false);
    EXPECT_EQ(take(), Log{});
}

TEST(UColorValue, IsTheWholeRangeOfIntegers) {
    const OPtr<UColorValue> value(new UColorValue);
    for (const auto& [position, spec] : {
             std::pair(0.f, 0x80000000u), {0.5f, 0xFFFFFFFFu},
               {1.f,  0x7FFFFFFFu}
    }) {
        value->setNormalized(position);
        EXPECT_EQ(value->getColorSpec(), spec);
        EXPECT_EQ(value->getNormalized(), position);
    }
    EXPECT_STREQ(value->getClass()->baseClass->className, "UIntValue");
    EXPECT_FALSE(value->isTypeOf("UIntValue", true));
}

}  // namespace
}  // namespace Tessarine
