#include "gui/values/ufloatvalue.h"
#include "gui/values/urationalvalue.h"
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
        {0.f,  10.f, 11.f,   10.f, 0.f   },
        {0.f,  1.f,  1.25f,  1.f,  -0.75f}, // the seam is 1 wide whatever the range
        {0.f,  1.f,  -0.25f, 0.f,  1.75f },
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
    OPtr<UFloatValue> value(new UFloatValue(-10.f, 30.f));
    value->setNormalized(0.5f, false);
    EXPECT_EQ(value->getFloatValue(), 10.f);
    value->setFloatMax(5.5f);
    EXPECT_EQ(value->getFloatValue(), 5.5f);
    value->setMin(20);
    EXPECT_EQ(value->getFloatMax(), 20.f);
    EXPECT_EQ(value->getFloatValue(), 20.f);
    EXPECT_EQ(value->getNormalized(), 0.f);
    value->setFloatMax(3.f);
    EXPECT_EQ(value->getFloatMin(), 20.f);
    EXPECT_EQ(value->getFloatValue(), 3.f);  // in such a range the max that was set last counts
    value->setFloatMin(NAN);
    value->setFloatMax(NAN);
    EXPECT_EQ(value->getFloatMin(), 20.f);
    EXPECT_EQ(value->getFloatMax(), 3.f);
}

TEST(UFloatValueFace, IntegersTruncate) {
    OPtr<UFloatValue> value(new UFloatValue(-2.9f, 1e20f, -1.9f));
    EXPECT_EQ(value->getValueInt(), -1);
    EXPECT_EQ(value->getMinValue(), -2);
    EXPECT_EQ(value->getMaxValue(), std::numeric_limits<int32_t>::max());
    EXPECT_EQ(value->getState(), 0x202u);
    FUnknownPtr<IFloatValue> face(static_cast<IValue*>(value));
    ASSERT_TRUE(face);
    EXPECT_EQ(face->getPrecision(), 4);
}

TEST(UFloatValueTyped, AppliesATrailingOperator) {
    const std::pair<const tchar*, float> rows[] = {
        {u"7,5",   7.5f },
        {u"0.5+",  10.5f},
        {u"/",     10.f },
        {u"nan",   10.f },
        {u"1e300", 100.f},
    };
    for (const auto& [text, expected] : rows) {
        SCOPED_TRACE(testing::PrintToString(std::u16string(text)));
        OPtr<UFloatValue> value(new UFloatValue(-100.f, 100.f, 10.f));
        value->fromString(text);
        EXPECT_EQ(value->getFloatValue(), expected);
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
    EXPECT_EQ(take().size(), 3u);
    OPtr<UFloatValue> plain(new UFloatValue(0.f, 10.f, 2.75f));
    EXPECT_FALSE(plain->setDefault(1.f));
    EXPECT_FALSE(plain->resetToDefaultValue());
    value->assignTo(plain);
    EXPECT_EQ(value->getFloatValue(), 2.75f);
    EXPECT_EQ(take(), Log{"owner 1"});
    for (const auto& [numerator, expected] : {
             std::pair(1, 0.f), {5, 2.f}
    }) {
        const OPtr<URationalValue> fraction(new URationalValue(numerator, 2));
        value->assignTo(fraction);
        EXPECT_EQ(value->getFloatValue(), expected);
    }
    value->setFloatValue(std::numeric_limits<float>::quiet_NaN());
    EXPECT_EQ(value->getFloatValue(), 2.f);
}

/** A place is the square root of the number's share of 400. */
class Squares : public Uncounted<IValueTransformer> {
public:
    float valueToNormalized(float value) override { return std::sqrt(value / 400.f); }
    float normalizedToValue(float position) override { return position * position * 400.f; }
};

using UFloatTransformNews = ValueTest;

TEST_F(UFloatTransformNews, TakesItsRangeAndPlacesFromTheTransformer) {
    Squares squares;
    {
        const OPtr<UFloatTransformValue> value(new UFloatTransformValue(-1.f, 1.f));
        value->setNormalized(0.75f);
        EXPECT_EQ(value->getFloatValue(), 0.5f);
        const FUnknownPtr<IValueTransformTarget> target(static_cast<IValue*>(value));
        ASSERT_TRUE(target);
        target->setTransformer(&squares);
        EXPECT_EQ(value->getFloatMin(), 0.f);
        EXPECT_EQ(value->getFloatMax(), 400.f);
        value->setNormalized(0.5f);
        EXPECT_EQ(value->getFloatValue(), 100.f);
        EXPECT_EQ(value->getNormalized(), 0.5f);
        const OPtr<CmObject> copy(value->newCopy());
        target->setTransformer(nullptr);
        EXPECT_EQ(value->getNormalized(), 0.25f);
        EXPECT_EQ(squares.references, 1);  // the copy's
        struct View : FObject {
            void update(FUnknown*, int32_t) override { value->setTransformer(nullptr); }
            UFloatTransformValue* value;
        } view;
        const OPtr<UFloatTransformValue> watched(new UFloatTransformValue(-1.f, 1.f));
        view.value = watched;
        watched->setStraightUpdate(true);
        watched->addDependent(&view);
        watched->setTransformer(&squares);
        watched->removeDependent(&view);
        EXPECT_EQ(squares.references, 1);
        EXPECT_EQ(watched->getFloatMax(), 1.f);  // not of a transformer that is gone
    }
    EXPECT_EQ(squares.references, 0);
}

}  // namespace
}  // namespace Tessarine
