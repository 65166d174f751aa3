#include "base/fattribute.h"
#include "base/fattributelistimp.h"
#include "tests/support/uncounted.h"
#include <cmath>
#include <gtest/gtest.h>
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

using Attributes = FAttributeList<FStringIDAttribute, const char*, CmArray>;

class FAttributeTest : public testing::Test {
protected:
    void TearDown() override { EXPECT_EQ(Held::living, 0) << "objects left behind"; }
};

using Value = FAttributeValue;

struct OwnershipRow {
    const char* name;
    uint16_t flags;
    int32_t listOwnership;
    uint32_t whileHeld, afterwards;  // of an object that starts with two references
};
constexpr OwnershipRow kOwnerships[] = {
    {"borrows",    0,              Attributes::kBorrowed, 2, 2},
    {"takes over", Value::kOwned,  Attributes::kOwned,    2, 1},
    {"shares",     Value::kShared, Attributes::kShared,   3, 2},
};

// the ways in which a value gives up its object, and whether the reference stays
constexpr std::tuple<const char*, void (*)(Value&), bool> kEnds[] = {
    {"empty",  [](Value& value) { value.empty(); },            false},
    {"number", [](Value& value) { value.setLong(1); },         false},
    {"null",   [](Value& value) { value.setObj(nullptr, 0); }, false},
    {"detach", [](Value& value) { value.detachObj(); },        true },
};

/** For objects and for unknowns. */
TEST_F(FAttributeTest, ValuesCountTheirObjectOnce) {
    for (const OwnershipRow& row : kOwnerships)
        for (const auto& [name, end, keepsReference] : kEnds)
            for (const bool asUnknown : {false, true}) {
                SCOPED_TRACE(std::string(row.name) + ", ended by " + name);
                auto* object = new Held;
                object->addRef();
                {
                    Value value;
                    asUnknown ? value.setUnknown(object, row.flags) : value.setObj(object, row.flags);
                    EXPECT_EQ(value.getUnknown(), object);
                    EXPECT_EQ(value.getObj(), asUnknown ? nullptr : object);
                    EXPECT_EQ(Value(value).getUnknown(), object);
                    EXPECT_EQ(referencesOf(object), row.whileHeld);
                    end(value);
                }
                ASSERT_EQ(referencesOf(object), keepsReference && !asUnknown ? row.whileHeld : row.afterwards);
                while (object->release() > 0) {}
            }
}

// the text null: refused
constexpr double kTooLarge = 0x1p63;
constexpr std::tuple<const char*, void (*)(Value&), int64_t, double, const char*> kNumbers[] = {
    {"least integer", [](Value& v) { v.setLong(INT64_MIN); },    INT64_MIN, -kTooLarge, "-9223372036854775808" },
    {"2 to the 63",   [](Value& v) { v.setFloat(kTooLarge); },   INT64_MAX, kTooLarge,  "9223372036854775808.0"},
    {"below all",     [](Value& v) { v.setFloat(-HUGE_VAL); },   INT64_MIN, -HUGE_VAL,  "-inf"                 },
    {"fraction",      [](Value& v) { v.setString8("1,5 dB"); },  1,         1.5,        "1,5 dB"               },
    {"wide text",     [](Value& v) { v.setString16(u"-8.25"); }, -8,        -8.25,      "-8.25"                },
    {"no number",     [](Value& v) { v.setString8("x17"); },     0,         0.0,        "x17"                  },
    {"nothing",       [](Value&) {},                             0,         0.0,        nullptr                },
};

TEST_F(FAttributeTest, NumbersAndTextConvert) {
    for (const auto& [name, set, asLong, asFloat, asText] : kNumbers) {
        SCOPED_TRACE(name);
        Value value;
        set(value);
        EXPECT_EQ(value.getLong(), asLong);
        EXPECT_EQ(value.getFloat(), asFloat);
        String text("before");
        EXPECT_EQ(value.getString(text), asText != nullptr);
        EXPECT_STREQ(text.text8(), asText ? asText : "before");
    }
}

TEST_F(FAttributeTest, BorrowedTextIsTheCallersUntilItIsMadeOwnOrChangesItsWidth) {
    char text[] = "level";
    Value borrowed;
    borrowed.setString8(text, false);
    EXPECT_EQ(borrowed.getString8(), text);
    Value copy(borrowed), wide(borrowed);
    borrowed.makeStringOwner();
    wide.setString8(text, false);
    EXPECT_EQ(std::u16string(wide.getString16()), u"level");
    text[0] = 'X';
    for (Value* each : {&borrowed, &copy, &wide})
        EXPECT_STREQ(each->getString8(), "level");
    copy.setString8(copy.getString8() + 2);
    EXPECT_STREQ(copy.getString8(), "vel") << "from the value itself";
}

TEST_F(FAttributeTest, ListsFindByKeyAndChangeWhatIsThere) {
    Attributes list;
    char key[] = "gain";
    EXPECT_FALSE(list.removeAttribute("gain"));
    EXPECT_TRUE(list.setLongAttribute(key, 1));
    key[0] = 'G';
    EXPECT_TRUE(list.setStringAttribute8(key, "other"));
    EXPECT_TRUE(list.setFloatAttribute("gain", 2.5));
    EXPECT_EQ(list.getAttributeIndex("gai"), -1);
    EXPECT_EQ(list.getAttributeIndex(nullptr), -1);
    EXPECT_EQ(list.getAttribute("gain")->getFloat(), 2.5);
    EXPECT_STREQ(list.getAttribute("Gain")->getString8(), "other");
    list.setLongAttribute("Gain", 1, Attributes::kAppend);
    EXPECT_EQ(list.countAttributes(), 3);
    EXPECT_FALSE(list.getAttribute("Gain")->is(Value::kLong)) << "appending doesn't look for the key";
    EXPECT_TRUE(list.removeAttribute("gain"));
    EXPECT_EQ(list.getAttribute("gain"), nullptr);
}

TEST_F(FAttributeTest, ListsCountTheirObjectsOnce) {
    for (const OwnershipRow& row : kOwnerships) {
        SCOPED_TRACE(row.name);
        auto* object = new Held;
        object->addRef();
        {
            Attributes list;
            EXPECT_TRUE(list.setObjAttribute("object", object, row.listOwnership));
            EXPECT_EQ(list.getObjAttribute("object", "CmArray"), nullptr);
            const Attributes copy(list);
            EXPECT_EQ(copy.getObjAttribute("object", "CmObject"), object);
            for (int32_t repeat = 0; repeat < 2; ++repeat)
                EXPECT_TRUE(list.setObjAttribute("object", nullptr, row.listOwnership)) << "removes it";
            EXPECT_EQ(list.countAttributes(), 0);
        }
        ASSERT_EQ(referencesOf(object), row.afterwards);
        while (object->release() > 0) {}
    }
}

TEST_F(FAttributeTest, OrderedListsSearchByHalves) {
    FAttributeList<FIntIDAttribute, int32_t, CmOrderedArray> list;
    for (int32_t i = 0; i < 1000; ++i)
        list.setLongAttribute(i * 7919 % 1000, i, i % 3 ? 0 : list.kAppend);
    list.setLongAttribute(500, -1, list.kAppend);
    for (int32_t key = 0; key < 1000; ++key)
        EXPECT_EQ(list.getAttribute(key)->getLong() * 7919 % 1000, key) << "the first of equal keys";
    EXPECT_EQ(list.getAttributeIndex(-1), -1);
    EXPECT_EQ(list.getAttributeIndex(1000), -1);
}

TEST_F(FAttributeTest, ListsPassAsComponents) {
    const OPtr<FAttributeListImp> list(new FAttributeListImp), other(new FAttributeListImp);
    const FUnknownPtr<IAttributeList> face(static_cast<CmObject*>(list.get()));
    ASSERT_TRUE(face && face->isEmpty() == kResultOk);
    const OPtr<Held> held(new Held);
    face->setBinaryAttribute("bytes", "ab", 2);
    face->setObjectAttribute("object", static_cast<CmObject*>(held.get()));
    face->setFloatAttribute("float", 2.5);
    face->setStringAttribute("text", u"17 m");
    EXPECT_EQ(face->addAllTo(other), kResultOk);
    const void* bytes = nullptr;
    uint32_t size = 0;
    FUnknown* object = nullptr;
    int64_t number = 0;
    const tchar* text = nullptr;
    EXPECT_TRUE(other->getBinaryAttribute("bytes", bytes, size) == kResultOk && size == 2);
    EXPECT_TRUE(other->getObjectAttribute("object", object) == kResultOk && commonObject(object) == held.get());
    EXPECT_TRUE(other->getLongAttribute("text", number) == kResultOk && number == 17);
    EXPECT_TRUE(other->getStringAttribute("text", text) == kResultOk && ConstString(text) == ConstString(u"17 m"));
    EXPECT_EQ(other->getStringAttribute("float", text), kResultFalse);
    EXPECT_EQ(other->getLongAttribute("object", number), kResultFalse);
    EXPECT_EQ(referencesOf(held.get()), 3u);
}

TEST_F(FAttributeTest, ObjectsOutliveTheirPool) {
    OPtr<FStringIDAttribute> kept;
    const std::string longKey(100, 'k');
    for (int32_t round = 0; round < 1000; ++round) {
        const FObjectPool outer, inner;
        const OPtr<FStringIDAttribute> other(new FStringIDAttribute(longKey));
        kept = new FStringIDAttribute(other->getID());
        kept->setString8(longKey.c_str());
    }
    EXPECT_EQ(kept->getID(), longKey);
    EXPECT_STREQ(kept->getString8(), longKey.c_str());
}

}  // namespace
}  // namespace Tessarine
