#include "gui/values/ufloatvalue.h"
#include "valuefixture.h"
#include <cmath>
#include <limits>

namespace Tessarine {
namespace {

TEST(UFloatValueRange, BoundsOrWrapsByOne) {
    struct Row {
        float min, max, set, clamped, wrapped;
    };
    constexpr Row kRows[] = {
        {0.f,  10.f, 10.f,   10.f, 10.f  },
        {0.f,  10.f, 11.f,   10.f, 0.f   },
        {0.f,  10.f, -1.f,   0.f,  10.f  },
        {0.f,  1.f,  1.25f,  1.f,  -0.75f}, // the seam is 1 wide whatever the range
        {0.f,  1.f,  -0.25f, 0.f,  1.75f },
        {0.f,  10.f, 20.f,   10.f, -1.f  },
        {5.f,  5.f,  9.f,    5.f,  5.f   },
        {-2.f, 2.f,  3.5f,   2.f,  -1.5f },
    };
    for (const Row& row : kRows) {
        SCOPED_TRACE(testing::Message() << row.set << " in " << row.min << " to " << row.max);
        OPtr<UFloatValue> value(new UFloatValue(row.min, row.max));
        EXPECT_EQ(value->boundFloat(row.set), row.clamped);
        value->setWrapAround(true);
        EXPECT_EQ(value->boundFloat(row.set), row.wrapped);
    }
}

TEST(UFloatValueRange, MovesTheValueAndMaxButNeverMin) {
    OPtr<UFloatValue> value(new UFloatValue(0.f, 10.f, 8.f));
    value->setFloatMax(5.5f);
    EXPECT_EQ(value->getFloatValue(), 5.5f);
    value->setMin(20);
    EXPECT_EQ(value->getFloatMax(), 20.f);
    EXPECT_EQ(value->getFloatValue(), 20.f);
    value->setFloatMax(3.f);
    EXPECT_EQ(value->getFloatMin(), 20.f);
    EXPECT_EQ(value->getFloatValue(), 3.f);  // in such a range the max that was set last counts
}

TEST(UFloatValueFace, IntegersTruncate) {
    OPtr<UFloatValue> value(new UFloatValue(-2.9f, 1e20f, -1.9f));
    EXPECT_EQ(value->getValueInt(), -1);
    EXPECT_EQ(value->getMinValue(), -2);
    EXPECT_EQ(value->getMaxValue(), std::numeric_limits<int32_t>::max());
    EXPECT_EQ(value->getValueType(), IValue::kFloat);
    EXPECT_EQ(value->getState(), 0x202u);
    FUnknownPtr<IFloatValue> face(static_cast<IValue*>(value));
    ASSERT_TRUE(face);
    EXPECT_EQ(face->getPrecision(), 4);
    EXPECT_EQ(referencesOf(face), 2u);
}

TEST(UFloatValueTyped, AppliesATrailingOperator) {
    struct Row {
        const char* name;
        const tchar* text;
        float value;  // from 10
    };
    constexpr Row kRows[] = {
        {"plain",          u"7.5",   7.5f },
        {"comma",          u"7,5",   7.5f },
        {"add",            u"0.5+",  10.5f},
        {"divide",         u"2/",    5.f  },
        {"divide by none", u"/",     10.f },
        {"divide by 0",    u"0/",    10.f },
        {"times none",     u"*",     0.f  },
        {"not a number",   u"nan",   10.f },
        {"beyond",         u"1e300", 100.f},
        {"nothing",        u"",      0.f  },
    };
    for (const Row& row : kRows) {
        SCOPED_TRACE(row.name);
        OPtr<UFloatValue> value(new UFloatValue(-100.f, 100.f, 10.f));
        value->fromString(row.text);
        EXPECT_EQ(value->getFloatValue(), row.value);
    }
}

TEST(UFloatValueTyped, ShowsAndStepsByItsPrecision) {
    struct Row {
        int32_t precision;
        float amount, stepped;
        const tchar* text;
    };
    constexpr Row kRows[] = {
        {4,  0.f,   0.5001f, u"0.5001"},
        {1,  0.f,   0.6f,    u"0.6"   },
        {0,  0.f,   1.5f,    u"2"     },
        {2,  0.25f, 0.75f,   u"0.75"  },
        {-1, 0.f,   1.5f,    u"1.5"   },
    };
    for (const Row& row : kRows) {
        SCOPED_TRACE(row.precision);
        OPtr<UFloatValue> value(new UFloatValue(0.f, 2.f, 0.5f));
        value->setPrecision(row.precision);
        value->setIncDecAmount(row.amount);
        value->increment();
        EXPECT_FLOAT_EQ(value->getFloatValue(), row.stepped);
        EXPECT_EQ(textOf(value), row.text);
        value->decrement();
        EXPECT_FLOAT_EQ(value->getFloatValue(), 0.5f);
    }
}

using UFloatValueNews = ValueTest;

TEST_F(UFloatValueNews, ResettingADefaultThatStandsTellsNobody) {
    OPtr<UFloatDefValue> value(new UFloatDefValue(0.f, 10.f, 2.5f, 2.5f));
    Owner owner(log);
    value->connect(&owner, 0, false);
    value->canAutomate(true);
    EXPECT_TRUE(value->resetToDefaultValue());
    EXPECT_EQ(take(), Log{});
    EXPECT_TRUE(value->setDefaultValue(3));
    EXPECT_TRUE(value->resetToDefaultValue());
    EXPECT_EQ(value->getFloatValue(), 3.f);
    EXPECT_EQ(take(), (Log{"owner 1", "owner 1", "owner 1"}));
    OPtr<UFloatValue> plain(new UFloatValue);
    EXPECT_FALSE(plain->resetToDefaultValue());
    EXPECT_FALSE(plain->setDefault(1.f));
}

TEST_F(UFloatValueNews, AssignsFromFloatsWhollyAndFromOthersByInteger) {
    OPtr<UFloatValue> value(new UFloatValue(0.f, 10.f)), fraction(new UFloatValue(0.f, 10.f, 2.75f));
    OPtr<UValue> onOff(new UValue);
    onOff->setValue(1);
    Owner owner(log);
    value->connect(&owner, 0, false);
    value->assignTo(fraction);
    EXPECT_EQ(value->getFloatValue(), 2.75f);
    value->assignTo(onOff);
    EXPECT_EQ(value->getFloatValue(), 1.f);
    EXPECT_EQ(take(), (Log{"owner 1", "owner 1"}));
    OPtr<UValue> truth(new UValue);
    truth->assignTo(fraction);
    EXPECT_EQ(truth->getValue(), 1);
}

TEST(UFloatValuePosition, IsLinear) {
    OPtr<UFloatValue> value(new UFloatValue(-10.f, 30.f));
    value->setNormalized(0.25f, false);
    EXPECT_EQ(value->getFloatValue(), 0.f);
    EXPECT_EQ(value->getNormalized(), 0.25f);
    value->setFloatMin(30.f);
    EXPECT_EQ(value->getNormalized(), 0.f);
}

}  // namespace
}  // namespace Tessarine
