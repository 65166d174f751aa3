#include "base/fattributelists.h"
#include "base/source/fstring.h"
#include "storage/farchive.h"
#include "storage/fmstream.h"
#include "storage/fpersistent.h"
#include <gtest/gtest.h>

namespace Tessarine {
namespace {
/** An archive for plain values alone. */
class ValueArchive : public FArchive {
public:
    using FArchive::FArchive;
    bool save(const CmObject*, bool) override { return false; }
    CmObject* load(const char*, bool) override { return nullptr; }
};

TEST(FStringArchive, GoesThroughArchivesAndAttributes) {
    for (const FString& text : {FString("a\x8A"), FString(u"\u00E4\U0001F600"), FString()}) {
        FMemoryStream stream;
        ValueArchive archive(&stream, true);
        EXPECT_TRUE(text.externalize(archive));
        stream.rewind();
        FString loaded("old"), restored("old");
        EXPECT_TRUE(loaded.internalize(archive));
        EXPECT_EQ(loaded, text);
        OPtr<FAttributes> attributes(new FAttributes);
        EXPECT_TRUE(text.toAttributes(attributes.get(), "Key"));
        EXPECT_TRUE(restored.fromAttributes(attributes.get(), "Key"));
        EXPECT_EQ(restored, text);
        EXPECT_FALSE(restored.fromAttributes(attributes.get(), "Other"));
        EXPECT_EQ(restored, text);
    }
    EXPECT_FALSE(FString("x").toAttributes(nullptr, "Key"));
}
}  // namespace
}  // namespace Tessarine
