#include "storage/fpersistent.h"
#include "collect/cmstring.h"
#include <gtest/gtest.h>

using namespace Tessarine;

namespace {
/** Stores its number, and counts its living. */
class Member : public CmObject {
public:
    explicit Member(int32_t number = 0) : number(number) { ++living; }
    ~Member() override { --living; }
    bool storeAttributes(FAttributes& attributes) const override { return attributes.set("number", number); }
    bool restoreAttributes(FAttributes& attributes) override { return attributes.get("number", number); }

    int32_t number;
    inline static int32_t living = 0;
};

class Bag : public testing::Test {
protected:
    void TearDown() override {
        bag.removeAll();
        EXPECT_EQ(Member::living, 0);
    }
    FAttributes bag;
};
}  // namespace

TEST_F(Bag, ConvertsNumbersAndTexts) {
    bag.set("whole", 300);
    bag.set("real", 2.75);
    bag.set("text", ConstString("42.5 m"));
    int8_t small = 0;
    uint64_t large = 0;
    float real = 0;
    String text;
    EXPECT_TRUE(bag.get("whole", small) && small == 300 - 256);
    EXPECT_TRUE(bag.get("real", large) && large == 2);
    EXPECT_TRUE(bag.get("text", real) && real == 42.5f);
    EXPECT_TRUE(bag.get("real", text));
    EXPECT_STREQ(text.text8(), "2.75");
    EXPECT_FALSE(bag.get("missing", real) || bag.get(nullptr, real));
}

TEST_F(Bag, ListsAreReadOnFromTheirCursor) {
    for (int32_t i = 1; i <= 3; ++i) {
        EXPECT_EQ(bag.queue("ints", FVariant(int64_t(i))), kResultOk);
        EXPECT_EQ(bag.queue("reals", FVariant(double(i))), kResultOk);
        EXPECT_EQ(bag.queue("texts", FVariant(u"\u00e9")), kResultOk);
    }
    int64_t number = 0;
    for (int32_t round = 0; round < 2; ++round) {
        for (int32_t i = 1; i <= 3; ++i)
            EXPECT_TRUE(bag.unqueueInt("ints", number) && number == i);
        EXPECT_FALSE(bag.unqueueInt("ints", number) || bag.unqueueInt("reals", number));
        EXPECT_EQ(number, 3);
        bag.resetAllLists();
    }
    FVariant value;
    String text;
    EXPECT_TRUE(bag.unqueue("reals", value) == kResultOk && value.getFloat() == 1);
    EXPECT_TRUE(bag.unqueueString("texts", text) && text.text16()[0] == 0xe9);
    EXPECT_EQ(bag.countQueueItems("texts"), 3);
}

TEST_F(Bag, HoldsObjectsInTheWayTheyWereGiven) {
    auto* member = new Member(7);
    EXPECT_TRUE(bag.setObject("shared", member));
    EXPECT_TRUE(bag.queueObject("owned", member, true));  // the maker's reference
    EXPECT_FALSE(bag.queueObject("owned", member, false));
    EXPECT_EQ(bag.queue("owned", FVariant(member)), kResultOk) << "with a reference more";
    EXPECT_EQ(bag.unqueueObject("owned"), member);
    EXPECT_EQ(bag.unqueueObject("owned", "FMessage"), nullptr);
    EXPECT_TRUE(bag.setObject("shared", nullptr));
    EXPECT_TRUE(bag.setMember("copy", *member));
    bag.removeAttribute("owned");
    EXPECT_EQ(Member::living, 0);
    Member again;
    EXPECT_TRUE(bag.getMember("copy", again) && again.number == 7);
    EXPECT_TRUE(bag.queueMember("copies", again) && bag.queueMember("copies", again));
    EXPECT_TRUE(bag.unqueueMember("copies", again) && bag.unqueueAttributes("copies"));
}

TEST_F(Bag, ReadsByPathAndCopiesItsOwnParts) {
    const OPtr<FAttributes> inner(new FAttributes), innermost(new FAttributes);
    innermost->set("c", 5);
    inner->setAttributes("b", innermost.get());
    bag.setAttributes("a", inner.get());
    bag.queueInt("list", 1);
    FVariant value;
    EXPECT_TRUE(bag.extractValue("a.b.c", value) && value.getInteger() == 5);
    EXPECT_EQ(bag.extractAttributes("a.b"), innermost.get());
    for (const char* path : {"a.x.c", "a.b.c.d", ".", "", "a.b."})
        EXPECT_FALSE(bag.extractValue(path, value)) << path;

    const OPtr<FAttributes> copy(static_cast<FAttributes*>(bag.newCopy()));
    copy->getAttributes("a")->getAttributes("b")->set("c", 6);
    copy->queueInt("list", 2);
    EXPECT_EQ(innermost->getInt("c"), 5);
    EXPECT_EQ(bag.countQueueItems("list"), 1);
    EXPECT_EQ(copy->countQueueItems("list"), 2);
}

TEST_F(Bag, BytesAreCutToTheRoom) {
    EXPECT_TRUE(bag.setBinary("bytes", "abcdef", 6));
    for (const auto& [size, read] : {std::pair(3, "abc----"), std::pair(8, "abcdef-")}) {
        char room[8] = "-------";
        EXPECT_TRUE(bag.getBinary("bytes", room, uint32_t(size)));
        EXPECT_STREQ(room, read);
    }
}
