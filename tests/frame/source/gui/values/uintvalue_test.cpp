#include "gui/values/uintvalue.h"
#include "gui/values/uformatedvalue.h"
#include "valuefixture.h"
#include <limits>

namespace Tessarine {
namespace {

constexpr int32_t kMin = std::numeric_limits<int32_t>::min();
constexpr int32_t kMax = std::numeric_limits<int32_t>::max();

TEST(UIntValueRange, BoundsOrWraps) {
    struct Row {
        int32_t min, max, set, clamped, wrapped;
    };
    constexpr Row kRows[] = {
        {0,    10,   11,   10,   0   },
        {0,    10,   -1,   0,    10  },
        {0,    10,   20,   10,   -1  }, // a whole span from min lands outside
        {0,    10,   -10,  0,    -1  },
        {-3,   5,    6,    5,    -3  },
        {5,    5,    9,    5,    5   }, // nothing to wrap in
        {kMin, kMax, kMax, kMax, kMax},
        {kMin, 0,    kMax, 0,    -2  },
    };
    for (const Row& row : kRows) {
        SCOPED_TRACE(testing::Message() << row.set << " in " << row.min << " to " << row.max);
        OPtr<UIntValue> value(new UIntValue(row.min, row.max));
        EXPECT_EQ(value->bound(row.set), row.clamped);
        value->setWrapAround(true);
        EXPECT_EQ(value->bound(row.set), row.wrapped);
    }
}

using UIntValueNews = ValueTest;

TEST_F(UIntValueNews, OneForEachRealChangeOfRangeOrValue) {
    OPtr<UIntValue> value(new UIntValue(0, 10, 8));
    value->setStraightUpdate(true);
    Watcher view(log, value);
    struct Row {
        const char* name;
        void (*act)(UIntValue&);
        size_t told;
        int32_t min, max, value;
    };
    const Row rows[] = {
        {"same min",           [](UIntValue& v) { v.setMin(0); },   0, 0,  10, 8 },
        {"wider",              [](UIntValue& v) { v.setMax(20); },  1, 0,  20, 8 },
        {"value moves",        [](UIntValue& v) { v.setMax(5); },   1, 0,  5,  5 },
        {"bounded away",       [](UIntValue& v) { v.setValue(9); }, 0, 0,  5,  5 },
        {"min raises max",     [](UIntValue& v) { v.setMin(20); },  1, 20, 20, 20},
        {"max leaves min",     [](UIntValue& v) { v.setMax(3); },   0, 20, 3,  20}, // below min counts first
        {"max above it again", [](UIntValue& v) { v.setMax(30); },  1, 20, 30, 20},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        row.act(*value);
        EXPECT_EQ(take().size(), row.told);
        EXPECT_EQ(value->getMin(), row.min);
        EXPECT_EQ(value->getMax(), row.max);
        EXPECT_EQ(value->getValue(), row.value);
    }
}

TEST(UIntValuePosition, RoundsAndSurvivesTheWidestRange) {
    struct Row {
        int32_t min, max;
        float position;
        int32_t value;
    };
    constexpr Row kRows[] = {
        {0,    10,   0.04f, 0   },
        {0,    10,   0.05f, 1   },
        {-15,  15,   0.5f,  0   },
        {3,    3,    0.5f,  3   },
        {kMin, kMax, 1.f,   kMax},
        {0,    10,   1e30f, 10  },
    };
    for (const Row& row : kRows) {
        SCOPED_TRACE(testing::Message() << row.position << " of " << row.min << " to " << row.max);
        OPtr<UIntValue> value(new UIntValue(row.min, row.max));
        value->setNormalized(row.position);
        EXPECT_EQ(value->getValue(), row.value);
    }
    OPtr<UIntValue> value(new UIntValue(10, 20, 15));
    EXPECT_EQ(value->getNormalized(), 0.5f);
    value->setMin(20);
    EXPECT_EQ(value->getNormalized(), 0.f);
}

TEST(UIntValueTyped, AppliesATrailingOperator) {
    const std::pair<const tchar*, int32_t>
        rows
            [] =
                {
                    {u"-7",      -7  },
                    {u"3+",      13  },
                    {u"2/",      5   },
                    {u"0/",      10  },
                    {u"/",       10  },
                    {u"2,5*",    25  },
                    {u"2.9",     2   },
                    {u"3 +",     13  },
                    {u"+3",      3   },
                    {u"*",       0   },
                    {u"-",       10  },
                    {u"1,000,5", 1   }, // a comma that is no decimal mark ends the number
                    {u"1,5,7+",  11  },
                    {u"x7",      0   },
                    {u"nan",     0   },
                    {u"",        0   },
                    {u"-1e30",   -100},
    };
    for (const auto& [text, expected] : rows) {
        SCOPED_TRACE(testing::PrintToString(std::u16string(text)));
        OPtr<UIntValue> value(new UIntValue(-100, 100, 10));
        value->fromString(text);
        EXPECT_EQ(value->getValue(), expected);
    }
    OPtr<UIntValue> widest(new UIntValue(kMin, kMax, kMax));
    widest->increment();
    EXPECT_EQ(widest->getValue(), kMax);
    widest->setValue(kMin);
    widest->decrement();
    EXPECT_EQ(widest->getValue(), kMin);
}

TEST(UIntDefValue, DefaultsRoundDownAfterAHalf) {
    OPtr<UIntDefValue> value(new UIntDefValue);
    int32_t kept = 0;
    for (const auto& [set, expected] : {
             std::pair(2.5f, 3), {-2.5f, -2  },
               {-2.6f, -3  },
               {1e20f, kMax},
               {5.f,   5   }
    }) {
        SCOPED_TRACE(set);
        EXPECT_TRUE(value->setDefault(set));
        EXPECT_TRUE(value->getDefaultValue(kept));
        EXPECT_EQ(kept, expected);
        EXPECT_EQ(value->getValue(), 0);
    }
    float position = 0;
    value->setMax(10);
    EXPECT_TRUE(value->getDefaultNormalized(position));
    EXPECT_EQ(position, 0.5f);
    value->setMax(0);
    EXPECT_FALSE(value->getDefaultNormalized(position));
}

TEST(UFormatedValue, ShowsAndTakesItsForm) {
    struct Row {
        UTextFormatType format;
        int32_t value;
        const tchar *text, *typed;
        int32_t result;
    };
    constexpr Row kRows[] = {
        {kSampleRateFormat, 48000, u"48.000 kHz", u"44100 Hz", 44100},
        {kFileSizeFormat,   2048,  u"2.00 KB",    u"1.5 K",    1536 },
        {kFileSizeFormat,   2048,  u"2.00 KB",    u"1000 G",   50000}, // bounded
        {kPlainFormat,      7,     u"7",          u"none",     7    },
    };
    for (const Row& row : kRows) {
        const OPtr<UFormatedValue> value(new UFormatedValue(row.format, 0, 50000));
        value->setValue(row.value);
        EXPECT_EQ(textOf(value), row.text);
        value->fromString(row.typed);
        EXPECT_EQ(value->getValue(), row.result);
    }
}

}  // namespace
}  // namespace Tessarine
