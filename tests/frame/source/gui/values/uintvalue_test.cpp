#include "gui/values/uintvalue.h"
#include "valuefixture.h"
#include <array>
#include <limits>

namespace Tessarine {
namespace {

constexpr int32_t kMin = std::numeric_limits<int32_t>::min();
constexpr int32_t kMax = std::numeric_limits<int32_t>::max();

TEST(UIntValueRange, BoundsOrWraps) {
    constexpr std::array<int32_t, 5> kRows[] = {
        {0,    10,   11,   10,   0   },
        {0,    10,   -1,   0,    10  },
        {0,    10,   20,   10,   -1  }, // a whole span from min lands outside
        {0,    10,   -10,  0,    -1  },
        {5,    5,    9,    5,    5   }, // nothing to wrap in
        {kMin, kMax, kMax, kMax, kMax},
        {kMin, 0,    kMax, 0,    -2  },
    };
    for (const auto& [min, max, set, clamped, wrapped] : kRows) {
        const OPtr<UIntValue> value(new UIntValue(min, max));
        EXPECT_EQ(value->bound(set), clamped);
        value->setWrapAround(true);
        EXPECT_EQ(value->bound(set), wrapped) << set << " in " << min << " to " << max;
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
    constexpr std::tuple<int32_t, int32_t, float, int32_t> kRows[] = {
        {0,    10,   0.04f, 0   },
        {0,    10,   0.05f, 1   },
        {-15,  15,   0.5f,  0   },
        {3,    3,    0.5f,  3   },
        {kMin, kMax, 1.f,   kMax},
        {0,    10,   1e30f, 10  },
    };
    for (const auto& [min, max, position, expected] : kRows) {
        const OPtr<UIntValue> value(new UIntValue(min, max));
        value->setNormalized(position);
        EXPECT_EQ(value->getValue(), expected) << position << " of " << min << " to " << max;
    }
    const OPtr<UIntValue> widest(new UIntValue(kMin, kMax, kMax));
    widest->increment();
    EXPECT_EQ(widest->getValue(), kMax);
}

TEST(UIntDefValue, DefaultsRoundDownAfterAHalf) {
    constexpr std::pair<float, int32_t> kRows[] = {
        {2.5f,  3   },
        {-2.5f, -2  },
        {-2.6f, -3  },
        {1e20f, kMax},
        {5.f,   5   }
    };
    OPtr<UIntDefValue> value(new UIntDefValue(0, 10));
    for (const auto& [set, expected] : kRows) {
        int32_t kept = 0;
        EXPECT_TRUE(value->setDefault(set) && value->getDefaultValue(kept));
        EXPECT_EQ(kept, expected) << set;
    }
    float position = 0;
    EXPECT_TRUE(value->getDefaultNormalized(position));
    EXPECT_EQ(position, 0.5f);
    value->setMax(0);
    EXPECT_FALSE(value->getDefaultNormalized(position));
}

}  // namespace
}  // namespace Tessarine
