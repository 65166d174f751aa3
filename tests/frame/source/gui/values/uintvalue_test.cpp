#include "gui/values/uintvalue.h"
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
        {0,    10,   10,   10,   10  },
        {0,    10,   11,   10,   0   },
        {0,    10,   -1,   0,    10  },
        {0,    10,   12,   10,   1   },
        {0,    10,   20,   10,   -1  }, // a whole span above min lands outside
        {0,    10,   -10,  0,    -1  },
        {-3,   5,    6,    5,    -3  },
        {-3,   5,    -4,   -3,   5   },
        {5,    5,    9,    5,    5   }, // nothing to wrap in
        {kMin, kMax, kMax, kMax, kMax},
        {kMin, 0,    kMax, 0,    -2  },
        {1,    2,    kMin, 1,    0   },
    };
    for (const Row& row : kRows) {
        SCOPED_TRACE(testing::Message() << row.set << " in " << row.min << " to " << row.max);
        OPtr<UIntValue> value(new UIntValue(row.min, row.max));
        EXPECT_EQ(value->bound(row.set), row.clamped);
        value->setWrapAround(true);
        EXPECT_EQ(value->bound(row.set), row.wrapped);
    }
}

TEST(UIntValueRange, MovesTheValueAndMaxButNeverMin) {
    OPtr<UIntValue> value(new UIntValue(0, 10, 8));
    value->setMax(5);
    EXPECT_EQ(value->getValue(), 5);
    value->setMin(20);
    EXPECT_EQ(value->getMax(), 20);
    EXPECT_EQ(value->getValue(), 20);
    value->setMax(3);
    EXPECT_EQ(value->getMin(), 20);
    EXPECT_EQ(value->getValue(), 20);  // below min counts first
}

using UIntValueNews = ValueTest;

TEST_F(UIntValueNews, OneForEachRealChangeOfRangeOrValue) {
    OPtr<UIntValue> value(new UIntValue(0, 10, 8));
    value->setStraightUpdate(true);
    Watcher view(log);
    value->addDependent(&view);
    struct Row {
        const char* name;
        void (*act)(UIntValue&);
        size_t told;
    };
    const Row rows[] = {
        {"same min",       [](UIntValue& v) { v.setMin(0); },   0},
        {"wider",          [](UIntValue& v) { v.setMax(20); },  1},
        {"value moves",    [](UIntValue& v) { v.setMax(5); },   1},
        {"bounded away",   [](UIntValue& v) { v.setValue(9); }, 0},
        {"min raises max", [](UIntValue& v) { v.setMin(7); },   1},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        row.act(*value);
        EXPECT_EQ(take().size(), row.told);
    }
    value->removeDependent(&view);
}

TEST(UIntValuePosition, RoundsAndSurvivesTheWidestRange) {
    struct Row {
        int32_t min, max;
        float position;
        int32_t value;
    };
    constexpr Row kRows[] = {
        {0,    10,   0.f,   0   },
        {0,    10,   0.04f, 0   },
        {0,    10,   0.05f, 1   },
        {0,    10,   1.f,   10  },
        {-15,  15,   0.5f,  0   },
        {0,    10,   7.f,   10  },
        {0,    10,   -7.f,  0   },
        {3,    3,    0.5f,  3   },
        {kMin, kMax, 0.f,   kMin},
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
    struct Row {
        const tchar* text;
        int32_t value;  // from 10
    };
    constexpr Row kRows[] = {
        {u"7",            7   },
        {u"-7",           -7  },
        {u"3+",           13  },
        {u"3-",           7   },
        {u"3*",           30  },
        {u"2/",           5   },
        {u"0/",           10  },
        {u"/",            10  },
        {u"+",            10  },
        {u"*",            0   },
        {u"2,5*",         25  },
        {u"2.9",          2   },
        {u"+3",           3   },
        {u"3 +",          13  },
        {u"",             0   },
        {u"none",         0   },
        {u"1e30",         100 },
        {u"-1e30",        -100},
        {u"99999999999",  100 },
        {u"\u00e9\u4e2d", 0   },
    };
    for (const Row& row : kRows) {
        SCOPED_TRACE(std::string(row.text, row.text + std::char_traits<char16_t>::length(row.text)));
        OPtr<UIntValue> value(new UIntValue(-100, 100, 10));
        value->fromString(row.text);
        EXPECT_EQ(value->getValue(), row.value);
    }
}

TEST(UIntValueTyped, StepsStayInRange) {
    OPtr<UIntValue> value(new UIntValue(kMin, kMax, kMax));
    value->increment();
    EXPECT_EQ(value->getValue(), kMax);
    value->setValue(kMin);
    value->decrement();
    EXPECT_EQ(value->getValue(), kMin);
    value->increment();
    EXPECT_EQ(value->getValue(), kMin + 1);
}

TEST(UIntDefValue, DefaultsRoundDownAfterAHalf) {
    struct Row {
        float set;
        int32_t kept;
    };
    constexpr Row kRows[] = {
        {72.f,  72  },
        {2.5f,  3   },
        {-2.5f, -2  },
        {-2.6f, -3  },
        {1e20f, kMax},
    };
    OPtr<UIntDefValue> value(new UIntDefValue);
    for (const Row& row : kRows) {
        SCOPED_TRACE(row.set);
        EXPECT_TRUE(value->setDefault(row.set));
        int32_t kept = 0;
        EXPECT_TRUE(value->getDefaultValue(kept));
        EXPECT_EQ(kept, row.kept);
        EXPECT_EQ(value->getValue(), 0);
    }
    value->setMax(10);
    value->setDefault(5.f);
    float position = 0;
    EXPECT_TRUE(value->getDefaultNormalized(position));
    EXPECT_EQ(position, 0.5f);
    value->setMax(0);
    EXPECT_FALSE(value->getDefaultNormalized(position));
}

}  // namespace
}  // namespace Tessarine
