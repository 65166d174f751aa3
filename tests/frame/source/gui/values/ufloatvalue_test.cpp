#include "gui/values/ufloatvalue.h"
#include "gui/values/urationalvalue.h"
#include "valuefixture.h"
#include <cmath>
#include <limits>

namespace Tessarine {
namespace {

TEST(UFloatValueRange, BoundsOrWrapsByOne) {
    constexpr std::tuple<float, float, float, float, float> kRows[] = {
        {0.f,  10.f, 11.f,   10.f, 0.f   },
        {0.f,  1.f,  1.25f,  1.f,  -0.75f}, // the seam is 1 wide whatever the range
        {0.f,  1.f,  -0.25f, 0.f,  1.75f },
        {-2.f, 2.f,  3.5f,   2.f,  -1.5f },
    };
    for (const auto& [min, max, set, clamped, wrapped] : kRows) {
        const OPtr<UFloatValue> value(new UFloatValue(min, max));
        EXPECT_EQ(value->boundFloat(set), clamped);
        value->setWrapAround(true);
        EXPECT_EQ(value->boundFloat(set), wrapped);
    }
}

TEST(UFloatValueRange, MovesTheValueAndMaxButNeverMin) {
    OPtr<UFloatValue> value(new UFloatValue(-10.f, 30.9f));
    value->setFloatValue(10.9f);
    EXPECT_EQ(value->getValueInt() + value->getMaxValue(), 40);  // truncated
    value->setFloatMax(5.5f);
    EXPECT_EQ(value->getFloatValue(), 5.5f);
    value->setMin(20);
    EXPECT_EQ(value->getFloatMax(), 20.f);
    EXPECT_EQ(value->getFloatValue(), 20.f);
    EXPECT_EQ(value->getNormalized(), 0.f);
    value->setFloatMax(3.f);
    value->setFloatMin(NAN);
    value->setFloatMax(NAN);
    EXPECT_EQ(value->getFloatMin(), 20.f);
    EXPECT_EQ(value->getFloatValue(), 3.f);  // in such a range the max that was set last counts
}

TEST(UFloatValueTyped, ShowsAndStepsByItsPrecision) {
    constexpr std::tuple<int32_t, float, float, const tchar*> kRows[] = {
        {4,  0.f,   0.5001f, u"0.5001"},
        {0,  0.f,   1.5f,    u"2"     },
        {2,  0.25f, 0.75f,   u"0.75"  },
        {-1, 0.f,   1.5f,    u"1.5"   },
    };
    for (const auto& [precision, amount, stepped, text] : kRows) {
        const OPtr<UFloatValue> value(new UFloatValue(0.f, 2.f, 0.5f));
        value->setPrecision(precision);
        value->setIncDecAmount(amount);
        value->increment();
        EXPECT_FLOAT_EQ(value->getFloatValue(), stepped);
        EXPECT_EQ(textOf(value), text);
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
    value->assignTo(OPtr<URationalValue>(new URationalValue(5, 2)));  // in whole numbers
    EXPECT_EQ(value->getFloatValue(), 2.f);
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
    OPtr<UFloatTransformValue> value(new UFloatTransformValue(-1.f, 1.f));
    value->setTransformer(&squares);
    EXPECT_EQ(value->getFloatMin(), 0.f);
    EXPECT_EQ(value->getFloatMax(), 400.f);
    value->setNormalized(0.5f);
    EXPECT_EQ(value->getFloatValue(), 100.f);
    EXPECT_EQ(value->getNormalized(), 0.5f);
    const OPtr<CmObject> copy(value->newCopy());
    value->setTransformer(nullptr);
    EXPECT_EQ(value->getNormalized(), 0.25f);
    EXPECT_EQ(squares.references, 1);  // the copy's
}

}  // namespace
}  // namespace Tessarine
