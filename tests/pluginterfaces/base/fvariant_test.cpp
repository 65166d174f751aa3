#include "pluginterfaces/base/fvariant.h"
#include "countedobject.h"
#include <gtest/gtest.h>
#include <string>

using namespace Tessarine;

namespace {
char* newText(const char* text) {
    return std::strcpy(new char[std::strlen(text) + 1], text);
}
}  // namespace

TEST(Variant, HoldsOneKindAtATime) {
    const struct {
        const char* name;
        FVariant variant;
        uint16_t type;
        int64_t integer;
        double number;
    } rows[] = {
        {"empty",   FVariant(),                                FVariant::kEmpty,    0,  0   },
        {"integer", FVariant(int64_t{-7}),                     FVariant::kInteger,  -7, -7  },
        {"float",   FVariant(2.75),                            FVariant::kFloat,    2,  2.75},
        {"text",    FVariant("7"),                             FVariant::kString8,  0,  0   },
        {"wide",    FVariant(u"7"),                            FVariant::kString16, 0,  0   },
        {"object",  FVariant(static_cast<FUnknown*>(nullptr)), FVariant::kObject,   0,  0   },
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(row.variant.getType(), row.type);
        EXPECT_EQ(row.variant.getInteger(), row.integer);
        EXPECT_EQ(row.variant.getFloat(), row.number);
        EXPECT_EQ(row.variant.getString8() != nullptr, row.type == FVariant::kString8);
        EXPECT_EQ(row.variant.getString16() != nullptr, row.type == FVariant::kString16);
        const FVariant copy = row.variant;  // a copied text has become the copy's own
        EXPECT_EQ(copy.getType(), row.type) << "the owner's flag is no kind";
        EXPECT_EQ(copy.isOwner(), row.variant.isString());
    }
}

TEST(Variant, ACopyOwnsItsText) {
    char text[] = "gain";
    tchar wide[] = u"gain";
    const FVariant lent(static_cast<const char*>(text)), lentWide(static_cast<const tchar*>(wide));
    FVariant copy(lent), assigned(int64_t{1}), copyWide(lentWide);
    assigned = lent;
    text[0] = wide[0] = 'r';
    EXPECT_FALSE(lent.isOwner());
    for (const FVariant* each : {&copy, &assigned}) {
        EXPECT_TRUE(each->isOwner());
        EXPECT_STREQ(each->getString8(), "gain");
    }
    EXPECT_EQ(std::u16string(copyWide.getString16()), u"gain");
}

TEST(Variant, FreesTheTextItWasGiven) {
    FVariant variant;
    for (const char* text : {"first", "second"}) {
        variant.setString8(newText(text));
        variant.setOwner(true);
    }
    variant = *&variant;  // itself
    EXPECT_STREQ(variant.getString8(), "second");
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
    const FVariant none(static_cast<const char*>(nullptr));
    EXPECT_FALSE(FVariant(none).isOwner()) << "null is copied as it stands";
}
