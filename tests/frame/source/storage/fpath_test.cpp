#include "storage/fpath.h"
#include "storage/hooks.h"
#include "tempfolder.h"
#include <gtest/gtest.h>

namespace Tessarine {
namespace {

// null: nothing above
constexpr std::tuple<const char16_t*, const char16_t*, const char16_t*, bool, const char16_t*> kPaths[] = {
    {u"/a/b.txt", u"/a/", u"b.txt", false, u"/a"  },
    {u"/a/b/",    u"/a/", u"b",     true,  u"/a"  },
    {u"/a/b///",  u"/a/", u"b",     true,  u"/a"  },
    {u"/a",       u"/",   u"a",     false, u"/"   },
    {u"/",        u"/",   u"",      true,  nullptr},
    {u"a/b",      u"a/",  u"b",     false, u"a"   },
    {u"a",        u"",    u"a",     false, nullptr},
    {u"",         u"",    u"",      false, nullptr},
};

std::u16string textOf(const FPath& path) {
    FString text;
    path.getFullPath(text);
    return text.text16();
}

TEST(FPath, SplitsAndAscends) {
    for (const auto& [text, folders, name, folder, above] : kPaths) {
        SCOPED_TRACE(testing::PrintToString(std::u16string(text)));
        FPath path;
        path.fromString(text, kFilePath);
        EXPECT_EQ(std::u16string(path.getPathName()), folders);
        EXPECT_EQ(std::u16string(path.getName()), name);
        EXPECT_EQ(path.isFolder(), folder);
        const std::u16string before = textOf(path);
        ASSERT_EQ(path.ascend(), above != nullptr);
        EXPECT_EQ(textOf(path), above ? above : before);
        EXPECT_EQ(path.isFolder(), above || folder);
    }
}

TEST(FPath, DescendsFromFoldersAndTheRoot) {
    FNPath path(u"/", kFolderPath);
    path.descend(u"house", kFolderPath);
    path.descend(u"Setup.xml", kFilePath);
    EXPECT_EQ(textOf(path), u"/house/Setup.xml");
    EXPECT_TRUE(path.isFile());
}

class StandardFolder : public testing::Test {
protected:
    ~StandardFolder() override { gStorageHooks = {}; }
    static bool folderOf(int32_t number, FNPath& folder) {
        folder = *userFolder;
        folder.descend(u"deep/down", kFolderPath);
        return number == kUserFolder;
    }

    TempFolder temp;
    FNPath top = temp.self();
    static inline const FNPath* userFolder;
};

TEST_F(StandardFolder, IsMadeWhenAskedForAndUnknownGivesNoPathAtAll) {
    userFolder = &top;
    EXPECT_TRUE(FNPath(u"Setup.xml", kUserFolder, kFilePath, nullptr, true).isEmpty());
    gStorageHooks.standardFolder = folderOf;
    EXPECT_TRUE(FNPath(u"Setup.xml", kApplicationFolder, kFilePath, nullptr, true).isEmpty());
    const FNPath looked(u"Setup.xml", kUserFolder, kFilePath, nullptr, false);
    EXPECT_EQ(temp.names().size(), 0u);
    const FNPath made(u"Setup.xml", kUserFolder, kFilePath, u"sub", true);
    EXPECT_EQ(textOf(looked), textOf(top) + u"/deep/down/Setup.xml");
    EXPECT_EQ(textOf(made), textOf(top) + u"/deep/down/sub/Setup.xml");
    EXPECT_TRUE(std::filesystem::is_directory(temp / "deep/down/sub"));
}

TEST(FFileType, EqualByTheMarksBothHave) {
    const FFileType xml(u"XML File", u"xml", u"xml", 0, u"text/xml");
    EXPECT_TRUE(xml == FFileType(u"Something", u"XML"));
    EXPECT_FALSE(xml == FFileType(u"XML File", u"xml", nullptr, 0, u"text/plain"));
    EXPECT_FALSE(xml == FFileType(u"XML File"));
    EXPECT_FALSE(FFileType(u"Name").isValid());
}

}  // namespace
}  // namespace Tessarine
