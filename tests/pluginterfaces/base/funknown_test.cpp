#include "pluginterfaces/base/funknown.h"
#include "pluginterfaces/base/ibstream.h"
#include "pluginterfaces/base/identifiers.h"
#include "pluginterfaces/base/imessage.h"
#include "pluginterfaces/base/imodulebundle.h"
#include "pluginterfaces/base/ipersistent.h"
#include "pluginterfaces/base/ipluginbase.h"
#include "pluginterfaces/base/istringresult.h"
#include "pluginterfaces/base/iupdatehandler.h"
#include <gtest/gtest.h>
#include <set>
#include <string>
#include <thread>

using namespace Tessarine;

namespace {
const FUID kSample(0x00112233, 0x8899AABB, 0xCCDDEEFF, 0x01020304);

std::string stringOf(const FUID& id) {
    char text[33];
    id.toString(text);
    return text;
}

}  // namespace

TEST(Fuid, StandsMostSignificantByteFirst) {
    const char bytes[] = "\x00\x11\x22\x33\x88\x99\xAA\xBB\xCC\xDD\xEE\xFF\x01\x02\x03\x04";
    EXPECT_EQ(kSample, FUID(bytes));
    EXPECT_EQ(kSample.getLong2(), 0x8899AABBu);
    EXPECT_TRUE(FUID::same(kSample, kSample.data)) << "the conversion gives the bytes, not the object's address";
}

TEST(Fuid, IsValidOnceAByteIsSet) {
    const char* none = nullptr;
    EXPECT_FALSE(FUID(none).isValid());
    std::set<std::string> seen;
    for (int32_t i = 0; i < FUID::kSize; ++i) {
        FUID id;
        id.data[i] = char(0x80);
        EXPECT_TRUE(id.isValid()) << i;
        ASSERT_TRUE(id.generate());
        EXPECT_TRUE((id.data[6] & 0xF0) == 0x40 && (id.data[8] & 0xC0) == 0x80);
        EXPECT_TRUE(seen.insert(stringOf(id)).second);
    }
}

TEST(Fuid, IsPrintedInEachStyle) {
    const std::pair<int32_t, std::string> rows[] = {
        {FUID::kInlineUID,  "INLINE_UID ("                  },
        {FUID::kDeclareUID, "DECLARE_UID ("                 },
        {FUID::kFUID,       "FUID ("                        },
        {-1,                "DECLARE_CLASS_IID (Interface, "},
    };
    for (const auto& [style, prefix] : rows) {
        char line[128];
        kSample.print(line, style);
        EXPECT_EQ(line, prefix + "0x00112233, 0x8899AABB, 0xCCDDEEFF, 0x01020304)");
    }
}

TEST(Fuid, TextFormsGoThereAndBackInTheirLengthOnly) {
    const std::string string = "001122338899AABBCCDDEEFF01020304", registry = "{00112233-8899-AABB-CCDD-EEFF01020304}";
    EXPECT_EQ(stringOf(kSample), string);
    char shown[39];
    kSample.toRegistryString(shown);
    EXPECT_EQ(shown, registry);
    FUID id;
    EXPECT_TRUE(id.fromString("001122338899aabbccddeeff01020304"));
    EXPECT_EQ(id, kSample);
    EXPECT_TRUE(id.fromRegistryString("*F0112233 8899_aabb.CCDD+eeff01020304*")) << "separators aren't looked at";
    EXPECT_EQ(stringOf(id), "F01122338899AABBCCDDEEFF01020304");
    id = kSample;
    for (const std::string& text : {std::string(), string.substr(1), string + "0", registry + "}"})
        EXPECT_FALSE(id.fromString(text.c_str()) || id.fromRegistryString(text.c_str())) << text;
    EXPECT_FALSE(id.fromString(nullptr) || id.fromRegistryString(nullptr));
    EXPECT_EQ(id, kSample);
}

TEST(Identifiers, AreThoseThatModulesKnow) {
    const std::pair<FUID, const char*> rows[] = {
        {FUnknown::iid,             "0000000000000000C000000000000046"},
        {IString::iid,              "F99DB7A30FC14821800B0CF98E348EDF"},
        {IStringResult::iid,        "550798BC872049DB84920A153B50B7A8"},
        {IDependent::iid,           "F52B7AAEDE72416D8AF18ACE9DD7BD5E"},
        {IUpdateHandler::iid,       "F5246D5686544D60B026AFB57B697B37"},
        {IPersistent::iid,          "BA1A46373C9F46D0A65DBA0EB85DA829"},
        {IAttributes::iid,          "FA1E32F9CA6D46F5A982F956B1191B58"},
        {IAttributes2::iid,         "1382126AFECA487197D52A45B042AE99"},
        {IPluginBase::iid,          "22888DDB156E45AE8358B34808190625"},
        {IPluginFactory::iid,       "7A4D811C52114A1FAED9D2EE0B43BF9F"},
        {IPluginFactory2::iid,      "0007B650F24B4C0BA464EDB9F00B2ABB"},
        {IPluginFactory3::iid,      "4555A2ABC1234E579B12291036878931"},
        {IBStream::iid,             "C3BF6EA2309947529B6BF9901EE33E9B"},
        {ISizeableStream::iid,      "04F9549EE02F4E6E87E86A8747F4E17F"},
        {FUID(kICloneableID),       "D45406B93A2D44439DAD9BA985A1454B"},
        {FUID(kIErrorContextID),    "12BCD07B7C694336B7DA77C3444A0CD0"},
        {FUID(kIPersistentChunkID), "7041A824FC9A488A8F07DAC05061E933"},
    };
    for (const auto& [iid, text] : rows)
        EXPECT_EQ(stringOf(iid), text);
    std::set<std::string> different;
    for (const FUID& own : {IUpdateManager::iid, IMessage::iid, IMessage2::iid, IMessageReceiver::iid, IMessenger::iid,
                            IModuleBundle::iid})
        EXPECT_TRUE(own.isValid() && different.insert(stringOf(own)).second) << stringOf(own);
}

TEST(AtomicAdd, GivesTheNewValueAndLosesNoneBetweenThreads) {
    int32_t value = 5;
    EXPECT_EQ(FUnknown::atomicAdd(value, -5), 0);  // still alone, perhaps
    constexpr int32_t kRounds = 20'000;
    const auto work = [&value] {
        for (int32_t round = 0; round < kRounds; ++round)
            FUnknown::atomicAdd(value, 1);
    };
    { const std::jthread threads[] = {std::jthread(work), std::jthread(work), std::jthread(work)}; }
    EXPECT_EQ(FUnknown::atomicAdd(value, 1), 3 * kRounds + 1);
}
