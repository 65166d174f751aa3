#include "gui/values/ucolorvalue.h"
#include "gui/values/udatevalue.h"
#include "gui/values/ufloatvalue.h"
#include "gui/values/uformatedvalue.h"
#include "gui/values/urationalvalue.h"
#include "tests/support/pieces.h"
#include "valuefixture.h"
#include <limits>

namespace Tessarine {
namespace {

template <class Value, auto... arguments>
UValue* make() {
    return new Value(arguments...);
}

UValue* makeFloat() {
    return new UFloatValue(-100.f, 100.f, 10.f);
}

UValue* makeDate() {
    auto* value = new UDateValue;
    value->setDate(CmDate(2000, 1, 1));
    return value;
}

struct TypingRow {
    const char* name;
    UValue* (*make)();
    const char* typedAndShown;
};

const TypingRow kTyping[] = {
    {"on or off", make<UValue>, "On=On|on=Off|On =Off|1=Off|=Off"},
    {"yes or no", make<UYesNoValue>, "On=Yes|Yes=No"},
    {"integer", make<UIntValue, -100, 100, 10>,
     "-7=-7|3+=13|3 +=13|+3=3|2/=5|0/=10|/=10|-=10|*=0|2,5*=25|2.9=2|1,000,5=1|1,5,7+=11|x7=0|nan=0|=0|-1e30=-100"},
    {"float", makeFloat, "7,5=7.5000|0.5+=10.5000|/=10.0000|nan=10.0000|1e300=100.0000"},
    {"fraction", make<URationalValue>,
     "3/4=3/4|1/2/-4=-1/4|5=5/1|/8=1/8|-6,5/x=-6/1|=1/1|7/0=7/1|-1e30/-1e30=2147483648/2147483648"},
    {"positive fraction", make<URationalValue, 1, 1, URationalValue::kPositiveOnly>, "3/4=3/4|1/-4=1/1|-6=1/1"},
    {"seconds", make<USecondsValue, 60>, "3909=1:05:09|1:05:09=0:00:01|30+=0:01:30|-5=0:00:00"},
    {"date", makeDate, "2451604=2000-02-29|1+=2000-01-02|2026-11-21=1601-01-01|99999999=32767-12-31"},
    {"colour", make<UColorValue>, "gold=gold|no colour=black"},
    {"sample rate", make<UFormatedValue, kSampleRateFormat, 0, 50000>, "44100 Hz=44.100 kHz|none=0.000 kHz"},
    {"file size", make<UFormatedValue, kFileSizeFormat, 0, 50000>, "1.5 K=1.50 KB|1000 G=48.83 KB"},
};

TEST(ValueTexts, OfEachClassAreTakenAndShown) {
    for (const TypingRow& row : kTyping)
        for (const std::string& piece : piecesOf(row.typedAndShown)) {
            SCOPED_TRACE(row.name + (": " + piece));
            const OPtr<UValue> value(row.make());
            const size_t border = piece.find('=');
            value->fromString(String(piece.substr(0, border).c_str()).text16());
            EXPECT_EQ(textOf(value), String(piece.substr(border + 1).c_str()).text16());
        }
}

TEST(ValueTexts, NoDayIsShownAsNothing) {
    const OPtr<UDateValue> value(new UDateValue);
    EXPECT_EQ(value->getState(), 0x8202u);
    EXPECT_LE(std::abs(value->getValue() - CmDate::today().getJulianDay()), 1);
    value->setDate(CmDate());
    EXPECT_EQ(value->getValue(), 0x7FFFFFFF);
    EXPECT_EQ(textOf(value), u"");
}

constexpr int32_t kMin = std::numeric_limits<int32_t>::min();
constexpr int32_t kMax = std::numeric_limits<int32_t>::max();

TEST(URationalValue, PacksAllButOneBitOfItsDenominator) {
    struct Row {
        int32_t numerator, denominator, packed;
        const tchar* unpacked;
    };
    constexpr Row kRows[] = {
        {3,    4,    0x30004,           u"3/4"     },
        {-1,   -4,   -0x10000 | 0xFFFC, u"-1/32764"},
        {-6,   1,    -6 * 65536 + 1,    u"-6/1"    },
        {kMin, kMin, 0,                 u"1/1"     },
    };
    for (const Row& row : kRows) {
        const OPtr<URationalValue> value(new URationalValue(row.numerator, row.denominator));
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

using UColorValueNews = ValueTest;

TEST_F(UColorValueNews, TheOwnerHearsOfTheSameColourToo) {
    const OPtr<UColorValue> value(new UColorValue);
    value->setStraightUpdate(true);
    Owner owner(log);
    Watcher view(log, value);
    value->connect(&owner, 0, false);
    value->fromString(u"gold");
    EXPECT_EQ(take(), (Log{"view 1", "owner 1"}));
    value->setColor(UColor(0xFFFFCC66), true);
    EXPECT_EQ(take(), Log{"owner 1"});
    value->setColorSpec(0xFFFFCC66, false);
    EXPECT_EQ(take(), Log{});
}

TEST(UColorValue, IsTheWholeRangeOfIntegers) {
    const OPtr<UColorValue> value(new UColorValue);
    value->setNormalized(1.f);
    EXPECT_EQ(value->getColorSpec(), 0x7FFFFFFFu);
    EXPECT_EQ(value->getNormalized(), 1.f);
    EXPECT_STREQ(value->getClass()->baseClass->className, "UIntValue");
    EXPECT_FALSE(value->isTypeOf("UIntValue", true));
}

}  // namespace
}  // namespace Tessarine
