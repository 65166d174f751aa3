#include "base/cmunknown.h"
#include "base/hooks.h"
#include "pluginterfaces/base/fvariant.h"
#include "pluginterfaces/base/ipersistent.h"
#include "storage/fmstream.h"
#include "storage/fpersistent.h"
#include "storage/fsimplearchive.h"
#include "tests/pluginterfaces/base/countedobject.h"
#include <gtest/gtest.h>

using namespace Tessarine;

namespace {
constexpr uint32_t kWords[] = {0x01234567, 0x89ABCDEF, 0x02468ACE, 0x13579BDF};

/** A component of somebody else: it keeps a number. */
class Component : public Counted<IPersistent> {
public:
    explicit Component(int64_t number = 0) : number(number) {}

    int32_t getClassID(char* cid) override {
        kClass.toTUID(cid);
        return kResultOk;
    }
    int32_t saveAttributes(IAttributes* attributes) override { return attributes->queue("number", FVariant(number)); }
    int32_t loadAttributes(IAttributes* attributes) override {
        FVariant value;
        const int32_t result = attributes->unqueue("number", value);
        number = value.getInteger();
        return result;
    }

    static FUnknown* make(const FUID& uid) { return uid == kClass ? new Component : nullptr; }
    inline static const FUID kClass{1, 2, 3, 0xFFFFFFFF};
    int64_t number;
};
}  // namespace

TEST(CmUID, ShortFormPacksFiveBitsFromTheLowest) {
    char digits[CmUID::kShortLength + 1];
    CmUID(0, 0, 0, 0).toShortString(digits);
    EXPECT_STREQ(digits, "00000000000000000000000000");
    CmUID(~0u, ~0u, ~0u, ~0u).toShortString(digits);
    EXPECT_STREQ(digits, "VVVVVVVVVVVVVVVVVVVVVVVVV7");
    CmUID(0x01800000, 0, 0, 0).toShortString(digits);  // bits 0 and 15
    EXPECT_EQ(std::string(digits, 5), "10010");
    const CmUID uid(kWords[0], kWords[1], kWords[2], kWords[3]);
    uid.toShortString(digits);
    CmUID back;
    back.fromShortString(digits);
    EXPECT_TRUE(back.isEqual(&uid));
    back.fromShortString("V");
    EXPECT_EQ(back.data[0], 31);
}

TEST(CmUID, LongFormTakesWhatIsThere) {
    CmUID uid(kWords[0], kWords[1], kWords[2], kWords[3]);
    char digits[CmUID::kLongLength + 1];
    uid.toLongString(digits);
    EXPECT_STREQ(digits, "0123456789ABCDEF02468ACE13579BDF");
    const std::tuple<const char*, uint8_t, uint8_t> cases[] = {
        {"ab",   0x0B, 0x23},
        {"A",    0x01, 0x23},
        {"FfF",  0xFF, 0x23},
        {"xF0g", 0x0F, 0x00}
    };
    for (const auto& [text, first, second] : cases) {
        CmUID taken(uid);
        EXPECT_TRUE(taken.fromLongString(text));
        EXPECT_EQ(uint8_t(taken.data[0]), first) << text;
        EXPECT_EQ(uint8_t(taken.data[1]), second) << text;
    }
}

TEST(CmDelegatingUnknown, StandsInForTheComponentAndHoldsIt) {
    auto* component = new Component(5);
    {
        const OPtr<CmDelegatingUnknown> wrapper(new CmDelegatingUnknown(component));
        component->release();
        const OPtr<CmObject> copy(wrapper->newCopy());
        EXPECT_EQ(component->count, 2);
        const FUnknownPtr<IPersistent> face(copy.get());
        EXPECT_EQ(face.get(), component);
        EXPECT_TRUE(copy->isEqual(wrapper.get())) << "both are of no module";
    }
    EXPECT_EQ(Component::living, 0);
}

TEST(CmDelegatingUnknown, IsMadeAgain) {
    const ComponentHooks before = gComponentHooks;
    gComponentHooks.createComponent = Component::make;
    {
        FAttributes bag;
        EXPECT_FALSE(CmDelegatingUnknown().storeAttributes(bag));
        const OPtr<Component> component(new Component(5));
        EXPECT_TRUE(CmDelegatingUnknown(component).storeAttributes(bag));
        CmDelegatingUnknown again;
        EXPECT_TRUE(again.restoreAttributes(bag));
        ASSERT_TRUE(again.getObject());
        EXPECT_EQ(static_cast<Component*>(again.getObject())->number, 5);

        FMemoryStream stream;
        FSimpleArchive archive(&stream, true);
        EXPECT_FALSE(CmDelegatingUnknown().externalize(archive));
        for (const int64_t number : {7, 6}) {
            component->number = number;
            EXPECT_TRUE(CmDelegatingUnknown(component).externalize(archive)) << "each with a list of its own";
        }
        stream.seek(0, kFromStart);
        EXPECT_TRUE(again.internalize(archive) && again.internalize(archive));
        stream.reset();
        EXPECT_TRUE(FSimpleArchive(&stream, true).save(&again));
        stream.rewind();
        const OPtr<CmObject> read(FSimpleArchive(&stream, false).load("CmDelegatingUnknown"));
        ASSERT_TRUE(read) << "made without a component";
        EXPECT_EQ(static_cast<Component*>(static_cast<CmDelegatingUnknown*>(read.get())->getObject())->number, 6);
        gComponentHooks.createComponent = nullptr;
        EXPECT_TRUE(again.restoreAttributes(bag));
        EXPECT_FALSE(again.getObject());
    }
    gComponentHooks = before;
    EXPECT_EQ(Component::living, 0);
}
