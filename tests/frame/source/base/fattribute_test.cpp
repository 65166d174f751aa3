#include "base/fattribute.h"
#include <climits>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <string>

namespace Tessarine {
namespace {

class Held : public CmObject {
public:
    DECLARE_CLASS(Held, CmObject)
    Held() { ++living; }
    ~Held() override { --living; }
    inline static int32_t living = 0;
};
IMPLEMENT_CLASS(Held, CmObject)

uint32_t referencesOf(FObject* object) {
    object->addRef();
    return object->release();
}

class FAttributeTest : public testing::Test {
protected:
    void TearDown() override { EXPECT_EQ(Held::living, 0) << "objects left behind"; }
};

using Attributes = FAttributeList<FStringIDAttribute, const char*, CmArray>;
using NumberedAttributes = FAttributeList<FIntIDAttribute, int32_t, CmArray>;

struct OwnershipRow {
    const char* name;
    uint16_t flags;
    int32_t listOwnership;
    uint32_t whileHeld, afterwards;  // of an object that starts with two references
};
constexpr OwnershipRow kOwnerships[] = {
    {"borrows",    0,                        Attributes::kBorrowed, 2, 2},
    {"takes over", FAttributeValue::kOwned,  Attributes::kOwned,    2, 1},
    {"shares",     FAttributeValue::kShared, Attributes::kShared,   3, 2},
};

struct EndRow {
    const char* name;
    void (*end)(FAttributeValue& value);
};
constexpr EndRow kEnds[] = {
    {"empty",   [](FAttributeValue& value) { value.empty(); }               },
    {"number",  [](FAttributeValue& value) { value.setLong(1); }            },
    {"text",    [](FAttributeValue& value) { value.setString8("text"); }    },
    {"null",    [](FAttributeValue& value) { value.setObj(nullptr, 0); }    },
    {"unknown", [](FAttributeValue& value) { value.setUnknown(nullptr, 0); }},
};

/** The same checks for objects and for unknowns. */
void checkObjectCounts(bool asUnknown) {
    for (const OwnershipRow& row : kOwnerships) {
        for (const EndRow& way : kEnds) {
            SCOPED_TRACE(std::string(row.name) + ", ended by " + way.name);
            auto* object = new Held;
            object->addRef();
            FAttributeValue value;
            if (asUnknown)
                value.setUnknown(object, row.flags);
            else
                value.setObj(object, row.flags);
            EXPECT_EQ(value.getUnknown(), object);
            EXPECT_EQ(value.getObj(), asUnknown ? nullptr : object);
            EXPECT_EQ(referencesOf(object), row.whileHeld);
            {
                const FAttributeValue copy(value);
                EXPECT_EQ(copy.getUnknown(), object);
                EXPECT_EQ(referencesOf(object), row.whileHeld + (row.flags ? 1 : 0));
            }
            EXPECT_EQ(referencesOf(object), row.whileHeld);
            way.end(value);
            EXPECT_FALSE(value.is(FAttributeValue::kObject | FAttributeValue::kUnknown | FAttributeValue::kShared |
                                  FAttributeValue::kOwned));
            ASSERT_EQ(referencesOf(object), row.afterwards);
            while (object->release() > 0) {}
        }
    }
}

TEST_F(FAttributeTest, ValuesCountTheirObjectOnce) {
    checkObjectCounts(false);
    checkObjectCounts(true);
}

TEST_F(FAttributeTest, DetachedObjectKeepsTheReference) {
    for (const OwnershipRow& row : kOwnerships) {
        SCOPED_TRACE(row.name);
        auto* object = new Held;
        object->addRef();
        FAttributeValue value;
        value.setObj(object, row.flags);
        EXPECT_EQ(value.detachObj(), object);
        EXPECT_EQ(value.detachObj(), nullptr);
        EXPECT_EQ(referencesOf(object), row.whileHeld);
        while (object->release() > 0) {}
    }
}

TEST_F(FAttributeTest, SettingKeepsOnlyTheLastingFlags) {
    FAttributeValue value;
    value.keep(0xFFFF);
    EXPECT_EQ(value.getType(), 0x8C0);
    value.setString16(u"wide");
    EXPECT_EQ(value.getType(), 0x8C0 | FAttributeValue::kString | FAttributeValue::kWide);
    value.setString8("narrow", false);
    EXPECT_EQ(value.getType(), 0x8C0 | FAttributeValue::kString | FAttributeValue::kShared);
    value.setFloat(1);
    EXPECT_EQ(value.getType(), 0x8C0 | FAttributeValue::kFloat);
    value.empty();
    EXPECT_EQ(value.getType(), 0x8C0);
}

using Value = FAttributeValue;
struct NumberRow {
    const char* name;
    void (*set)(FAttributeValue& value);
    int64_t asLong;
    double asFloat;
    const char* asText;  // null: refused
};
constexpr double kTooLarge = 0x1p63;
constexpr NumberRow kNumbers[] = {
    {"integer",        [](Value& v) { v.setLong(-42); },          -42,       -42.0,      "-42"                  },
    {"least integer",  [](Value& v) { v.setLong(INT64_MIN); },    INT64_MIN, -kTooLarge, "-9223372036854775808" },
    {"float",          [](Value& v) { v.setFloat(2.75); },        2,         2.75,       "2.75"                 },
    {"negative float", [](Value& v) { v.setFloat(-2.75); },       -2,        -2.75,      "-2.75"                },
    {"2 to the 63",    [](Value& v) { v.setFloat(kTooLarge); },   INT64_MAX, kTooLarge,  "9223372036854775808.0"},
    {"text",           [](Value& v) { v.setString8("17"); },      17,        17.0,       "17"                   },
    {"fraction",       [](Value& v) { v.setString8("1,5 dB"); },  1,         1.5,        "1,5 dB"               },
    {"wide text",      [](Value& v) { v.setString16(u"-8.25"); }, -8,        -8.25,      "-8.25"                },
    {"no number",      [](Value& v) { v.setString8("x17"); },     0,         0.0,        "x17"                  },
    {"empty text",     [](Value& v) { v.setString8(nullptr); },   0,         0.0,        ""                     },
    {"nothing",        [](Value&) {},                             0,         0.0,        nullptr                },
    {"pointer",        [](Value& v) { v.setPointer(&v); },        0,         0.0,        nullptr                },
    {"object",         [](Value& v) { v.setObj(&v, 0); },         0,         0.0,        nullptr                },
};

TEST_F(FAttributeTest, NumbersAndTextConvert) {
    for (const NumberRow& row : kNumbers) {
        SCOPED_TRACE(row.name);
        FAttributeValue value;
        row.set(value);
        EXPECT_EQ(value.getLong(), row.asLong);
        EXPECT_EQ(value.getFloat(), row.asFloat);
        String text("before");
        EXPECT_EQ(value.getString(text), row.asText != nullptr);
        EXPECT_STREQ(text.text8(), row.asText ? row.asText : "before");
    }
}

TEST_F(FAttributeTest, FloatsBeyondAllIntegersStopAtTheBound) {
    FAttributeValue value;
    const double infinity = std::numeric_limits<double>::infinity();
    for (const double number : {1e300, infinity}) {
        value.setFloat(number);
        EXPECT_EQ(value.getLong(), INT64_MAX);
        value.setFloat(-number);
        EXPECT_EQ(value.getLong(), INT64_MIN);
    }
    value.setFloat(std::nan(""));
    EXPECT_EQ(value.getLong(), 0);
}

TEST_F(FAttributeTest, BorrowedTextIsTheCallersUntilItIsMadeOwn) {
    char text[] = "borrowed";
    FAttributeValue borrowed, owned;
    borrowed.setString8(text, false);
    owned.setString8(text);
    EXPECT_EQ(borrowed.getString8(), text);
    EXPECT_NE(owned.getString8(), text);
    FAttributeValue copy(borrowed);
    text[0] = 'B';
    EXPECT_STREQ(borrowed.getString8(), "Borrowed");
    EXPECT_STREQ(owned.getString8(), "borrowed");
    EXPECT_STREQ(copy.getString8(), "borrowed");
    borrowed.makeStringOwner();
    text[0] = 'X';
    EXPECT_STREQ(borrowed.getString8(), "Borrowed");
    EXPECT_FALSE(borrowed.is(FAttributeValue::kShared));
    owned.makeStringOwner();
    EXPECT_STREQ(owned.getString8(), "borrowed");
}

TEST_F(FAttributeTest, TextChangesItsWidthInPlace) {
    FAttributeValue value;
    EXPECT_EQ(value.getString8(), nullptr);
    EXPECT_EQ(value.getString16(), nullptr);
    const char text[] = "level";
    for (const bool copy : {true, false}) {
        value.setString8(text, copy);
        EXPECT_FALSE(value.isWide());
        EXPECT_EQ(std::u16string(value.getString16()), u"level");
        EXPECT_TRUE(value.isWide());
        EXPECT_STREQ(value.getString8(), "level");
    }
    value.setString16(nullptr);
    EXPECT_STREQ(value.getString8(), "");
    EXPECT_EQ(std::u16string(value.getString16()), u"");
    EXPECT_STREQ(text, "level");
}

TEST_F(FAttributeTest, TextMayComeFromTheValueItself) {
    FAttributeValue value;
    value.setString8("some text that is long enough for a block");
    value.setString8(value.getString8() + 5);
    EXPECT_STREQ(value.getString8(), "text that is long enough for a block");
}

TEST_F(FAttributeTest, ListsFindByKeyAndChangeWhatIsThere) {
    Attributes list;
    EXPECT_EQ(list.getAttributeArray(), nullptr);
    EXPECT_EQ(list.getAttribute("gain"), nullptr);
    EXPECT_FALSE(list.removeAttribute("gain"));
    EXPECT_TRUE(list.setLongAttribute("gain", 1));
    EXPECT_TRUE(list.setStringAttribute8("Gain", "other"));
    EXPECT_TRUE(list.setStringAttribute16("name", u"wide"));
    EXPECT_TRUE(list.setFloatAttribute("gain", 2.5));
    EXPECT_TRUE(list.setPointerAttribute("here", &list));
    EXPECT_EQ(list.countAttributes(), 4);
    EXPECT_EQ(list.getAttributeIndex("gain"), 0);
    EXPECT_EQ(list.getAttributeIndex("gai"), -1);
    EXPECT_EQ(list.getAttributeIndex(nullptr), -1);
    EXPECT_EQ(list.getAttribute("gain")->getFloat(), 2.5);
    EXPECT_STREQ(list.getAttribute("Gain")->getString8(), "other");
    EXPECT_TRUE(list.getAttribute("name")->isWide());
    EXPECT_EQ(list.getAttribute("here")->getPointer(), &list);
    EXPECT_TRUE(list.removeAttribute("gain"));
    EXPECT_EQ(list.getAttribute("gain"), nullptr);
    list.removeAllAttributes();
    EXPECT_EQ(list.countAttributes(), 0);

    NumberedAttributes numbered;
    for (const int32_t id : {INT32_MIN, 7, INT32_MAX})
        EXPECT_TRUE(numbered.setLongAttribute(id, id));
    for (const int32_t id : {INT32_MIN, 7, INT32_MAX})
        EXPECT_EQ(numbered.getAttribute(id)->getLong(), id);
    EXPECT_EQ(numbered.getAttribute(8), nullptr);
}

TEST_F(FAttributeTest, KeysAreCopied) {
    Attributes list;
    char key[] = "key";
    list.setLongAttribute(key, 1);
    key[0] = 'K';
    EXPECT_NE(list.getAttribute("key"), nullptr);
}

TEST_F(FAttributeTest, AppendingDoesNotLookForTheKey) {
    Attributes list;
    list.setLongAttribute("a", 1, Attributes::kAppend);
    list.setLongAttribute("a", 2, Attributes::kAppend);
    EXPECT_EQ(list.countAttributes(), 2);
    EXPECT_EQ(list.getAttribute("a")->getLong(), 1);
    EXPECT_FALSE(list.getAttribute("a")->is(FAttributeValue::kFloat)) << "kAppend isn't a flag of the value";
    list.setLongAttribute("a", 3, FAttributeValue::kTransient);
    EXPECT_EQ(list.getAttribute("a")->getLong(), 3);
    EXPECT_TRUE(list.getAttribute("a")->is(FAttributeValue::kTransient));
    EXPECT_EQ(list.countAttributes(), 2);
}

TEST_F(FAttributeTest, ListsCountTheirObjectsOnce) {
    for (const OwnershipRow& row : kOwnerships) {
        SCOPED_TRACE(row.name);
        auto* object = new Held;
        object->addRef();
        {
            Attributes list;
            EXPECT_TRUE(list.setObjAttribute("object", object, row.listOwnership));
            EXPECT_EQ(list.getObjAttribute("object", "Held"), object);
            EXPECT_EQ(list.getObjAttribute("object", "CmObject"), object);
            EXPECT_EQ(list.getObjAttribute("object"), object);
            EXPECT_EQ(list.getObjAttribute("object", "CmArray"), nullptr);
            EXPECT_EQ(list.getObjAttribute("other"), nullptr);
            EXPECT_EQ(referencesOf(object), row.whileHeld);
            const Attributes copy(list);
            EXPECT_EQ(copy.getObjAttribute("object"), object);
            EXPECT_TRUE(list.setObjAttribute("object", nullptr, row.listOwnership)) << "removes it";
            EXPECT_EQ(list.countAttributes(), 0);
            EXPECT_TRUE(list.setObjAttribute("object", nullptr, row.listOwnership)) << "nothing to remove";
            EXPECT_EQ(list.countAttributes(), 0);
        }
        ASSERT_EQ(referencesOf(object), row.afterwards);
        while (object->release() > 0) {}
    }
}

TEST_F(FAttributeTest, AttributesCompareByKeyAmongTheirKind) {
    const FStringIDAttribute a("a"), twin("a"), b("b");
    const FIntIDAttribute one(1), two(2), least(INT32_MIN);
    EXPECT_TRUE(a.isEqual(&twin));
    EXPECT_FALSE(a.isEqual(&b));
    EXPECT_FALSE(a.isEqual(&one));
    EXPECT_FALSE(one.isEqual(&a));
    EXPECT_FALSE(a.isEqual(nullptr));
    EXPECT_EQ(a.compare(&twin), 0);
    EXPECT_LT(a.compare(&b), 0);
    EXPECT_GT(b.compare(&a), 0);
    EXPECT_LT(one.compare(&two), 0);
    EXPECT_GT(two.compare(&least), 0);
}

}  // namespace
}  // namespace Tessarine
