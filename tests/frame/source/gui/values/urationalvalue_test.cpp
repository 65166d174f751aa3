#include "gui/values/urationalvalue.h"
#include "valuefixture.h"
#include <limits>

namespace Tessarine {
namespace {

constexpr int32_t kMin = std::numeric_limits<int32_t>::min();
constexpr int32_t kMax = std::numeric_limits<int32_t>::max();

TEST(URationalValue, TypesShowsAndPacks) {
    struct Row {
        const tchar *typed, *text, *positiveText;
        int32_t packed;
        const tchar* unpacked;
    };
    constexpr Row kRows[] = {
        {u"3/4",         u"3/4",                   u"3/4", 0x30004,        u"3/4"    },
        {u"1/2/-4",      u"-1/4",                  u"1/1", 0x1FFFC,        u"1/32764"}, // the last slash parts
        {u"5",           u"5/1",                   u"5/1", 0x50001,        u"5/1"    },
        {u"/8",          u"1/8",                   u"1/8", 0x10008,        u"1/8"    },
        {u"-6,5/x",      u"-6/1",                  u"1/1", -6 * 65536 + 1, u"-6/1"   },
        {u"",            u"1/1",                   u"1/1", 0x10001,        u"1/1"    },
        {u"7/0",         u"7/1",                   u"7/1", 0x70001,        u"7/1"    },
        {u"-1e30/-1e30", u"2147483648/2147483648", u"1/1", 0,              u"1/1"    },
    };
    for (const Row& row : kRows) {
        SCOPED_TRACE(testing::PrintToString(std::u16string(row.typed)));
        const OPtr<URationalValue> value(new URationalValue),
            positive(new URationalValue(1, 1, URationalValue::kPositiveOnly));
        value->fromString(row.typed);
        positive->fromString(row.typed);
        EXPECT_EQ(textOf(value), row.text);
        EXPECT_EQ(textOf(positive), row.positiveText);
        EXPECT_EQ(value->getValue(), row.packed);
        value->setValue(row.packed);
        EXPECT_EQ(textOf(value), row.unpacked);
    }
}

using URationalValueNews = ValueTest;

TEST_F(URationalValueNews, StepsPassOverZeroAndStopAtTheEnds) {
    const OPtr<URationalValue> value(new URationalValue(-1, 2));
    Owner owner(log);
    value->connect(&owner, 0, false);
    value->increment();
    EXPECT_EQ(textOf(value), u"1/2");
    for (int32_t end : {kMin, kMax}) {
        value->setNumerator(end);
        end < 0 ? value->decrement() : value->increment();
        EXPECT_EQ(value->getNumerator(), end);
    }
    EXPECT_EQ(take(), Log(3, "owner 1"));
}

}  // namespace
}  // namespace Tessarine
