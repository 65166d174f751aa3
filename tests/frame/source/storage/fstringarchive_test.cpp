#include "archiveprobes.h"
#include "base/source/fstring.h"
#include "storage/fpersistent.h"

namespace Tessarine {
namespace {
TEST(FStringArchive, GoesThroughArchivesAndAttributes) {
    for (const FString& text : {FString("a\x8A"), FString(u"\u00E4\U0001F600"), FString()}) {
        FMemoryStream stream;
        ValueArchive archive(stream);
        EXPECT_TRUE(text.externalize(archive));
        stream.rewind();
        FString loaded("old"), restored("old");
        EXPECT_TRUE(loaded.internalize(archive));
        EXPECT_EQ(loaded, text);
        FAttributes bag;
        EXPECT_TRUE(text.toAttributes(&bag, "Key"));
        EXPECT_TRUE(restored.fromAttributes(&bag, "Key"));
        EXPECT_EQ(restored, text);
        EXPECT_FALSE(restored.fromAttributes(&bag, "Other"));
        EXPECT_EQ(restored, text);
    }
    EXPECT_FALSE(FString("x").toAttributes(nullptr, "Key"));
}
}  // namespace
}  // namespace Tessarine
