#include "gui/values/udatevalue.h"
#include "valuefixture.h"

namespace Tessarine {
namespace {

TEST(UDateValue, ShowsADateAndTypesItsNumber) {
    const std::pair<const tchar*, const tchar*> rows[] = {
        {u"2451604",    u"2000-02-29" },
        {u"1+",         u"2000-01-02" },
        {u"2026-11-21", u"1601-01-01" }, // the number is 2026
        {u"99999999",   u"32767-12-31"},
    };
    const OPtr<UDateValue> value(new UDateValue);
    EXPECT_EQ(value->getState(), 0x8202u);
    EXPECT_LE(std::abs(value->getValue() - CmDate::today().getJulianDay()), 1);
    for (const auto& [typed, text] : rows) {
        SCOPED_TRACE(testing::PrintToString(std::u16string(typed)));
        value->setDate(CmDate(2000, 1, 1));
        value->fromString(typed);
        EXPECT_EQ(textOf(value), text);
    }
    value->setDate(CmDate());
    EXPECT_EQ(value->getValue(), 0x7FFFFFFF);
    EXPECT_EQ(textOf(value), u"");
}

TEST(USecondsValue, ShowsATimeAndTypesItsNumber) {
    const std::pair<const tchar*, const tchar*> rows[] = {
        {u"3909",    u"1:05:09"     },
        {u"1:05:09", u"0:00:01"     },
        {u"30+",     u"0:01:30"     },
        {u"-5",      u"0:00:00"     },
        {u"1e30",    u"596523:14:07"},
    };
    for (const auto& [typed, text] : rows) {
        SCOPED_TRACE(testing::PrintToString(std::u16string(typed)));
        const OPtr<USecondsValue> value(new USecondsValue(60));
        value->fromString(typed);
        EXPECT_EQ(textOf(value), text);
    }
}

}  // namespace
}  // namespace Tessarine
