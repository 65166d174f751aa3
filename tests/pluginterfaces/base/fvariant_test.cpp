#include "pluginterfaces/base/fvariant.h"
#include "countedobject.h"
#include <cmath>
#include <gtest/gtest.h>
#include <string>

using namespace Tessarine;

TEST(Variant, ReadsNumbersOfBothKinds) {
    const std::tuple<FVariant, int64_t, double> rows[] = {
        {FVariant(),           0,         0        },
        {FVariant(int64_t(7)), 7,         7        },
        {FVariant(-2.75),      -2,        -2.75    },
        {FVariant(1e300),      INT64_MAX, 1e300    },
        {FVariant(-HUGE_VAL),  INT64_MIN, -HUGE_VAL},
        {FVariant("7"),        0,         0        },
    };
    for (const auto& [variant, integer, number] : rows) {
        EXPECT_EQ(variant.getInteger(), integer) << number;
        EXPECT_EQ(variant.getFloat(), number);
    }
    EXPECT_EQ(FVariant(std::nan("")).getInteger(), 0);
}

TEST(Variant, ACopyOwnsItsText) {
    char text[] = "gain";
    tchar wide[] = u"gain";
    const FVariant lent(static_cast<const char*>(text)), lentWide(static_cast<const tchar*>(wide));
    FVariant copy(lent), assigned(int64_t{1}), copyWide(lentWide);
    assigned = lent;
    assigned = *&assigned;
    text[0] = wide[0] = 'r';
    EXPECT_FALSE(lent.isOwner());
    for (const FVariant* each : {&copy, &assigned}) {
        EXPECT_TRUE(each->isOwner());
        EXPECT_EQ(each->getType(), FVariant::kString8);
        EXPECT_STREQ(each->getString8(), "gain");
    }
    EXPECT_EQ(std::u16string(copyWide.getString16()), u"gain");
    EXPECT_FALSE(FVariant(FVariant(static_cast<const char*>(nullptr))).isOwner()) << "null is copied as it stands";
}

TEST(Variant, CountsItsObject) {
    auto* object = new CountedObject;
    {
        FVariant lent{static_cast<FUnknown*>(object)};
        FVariant shared = lent;
        FVariant again;
        again = shared;
        EXPECT_EQ(object->count, 3) << "the first one only lends it";
        again.setInteger(1);
        EXPECT_EQ(object->count, 2);
    }
    EXPECT_EQ(object->count, 1);
    {
        FVariant owner{static_cast<FUnknown*>(object)};
        owner.setOwner(true);
    }
    EXPECT_EQ(CountedObject::living, 0);
}
