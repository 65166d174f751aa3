#include "storage/fpath.h"
#include "storage/fmstream.h"
#include "storage/fnewarchive.h"
#include "storage/fpersistent.h"
#include "storage/hooks.h"
#include "tempfolder.h"
#include <gtest/gtest.h>
#include <vector>

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

struct ExtensionRow {
    const char16_t* name;
    const char16_t* typeExtension;  // null: no type
    int32_t loose, strict;          // the index without and with checkType
};
constexpr ExtensionRow kExtensions[] = {
    {u"a.txt",        nullptr,       2,  2 },
    {u"a.b.txt",      nullptr,       4,  4 },
    {u".hidden",      nullptr,       -1, -1},
    {u".a.b",         nullptr,       3,  3 },
    {u"none",         nullptr,       -1, -1},
    {u"end.",         nullptr,       4,  4 },
    {u"Mr. Smith",    nullptr,       -1, -1},
    {u"Mr. Smith",    u"txt",        3,  -1},
    {u"a.TXT",        u"txt",        2,  2 },
    {u"a.xml",        u"txt",        2,  -1},
    {u"a.txt copy",   u"txt",        2,  -1},
    {u"b.xml.backup", u"xml.backup", 6,  -1},
};

TEST(FPath, FindsExtensionsByNameAndType) {
    for (const ExtensionRow& row : kExtensions) {
        SCOPED_TRACE(testing::PrintToString(std::u16string(row.name)));
        FPath path;
        path.setName(row.name);
        if (row.typeExtension)
            path.setFileType(FFileType(u"Type", nullptr, row.typeExtension));
        EXPECT_EQ(path.getExtensionIndex(false), row.loose);
        EXPECT_EQ(path.getExtensionIndex(true), row.strict);
        FString stem;
        path.getNameWithoutExtension(stem, false);
        EXPECT_EQ(std::u16string(stem.text16()),
                  std::u16string(row.name).substr(0, row.loose < 0 ? 99 : row.loose - 1));
    }
    FPath path;
    path.setName(u"a.xml");
    path.setFileType(FFileType(u"Type", u"txt"));
    EXPECT_TRUE(path.updateExtension(true));
    EXPECT_FALSE(path.updateExtension(true));
    EXPECT_EQ(std::u16string(path.getName()), u"a.txt");
}

TEST(FPath, OrdersAsATree) {
    const std::vector<const char16_t*> sorted = {u"", u"/a", u"/a/b", u"/a/b/c", u"/a b", u"/a.x", u"/aa", u"/b"};
    for (size_t i = 0; i < sorted.size(); ++i)
        for (size_t j = 0; j < sorted.size(); ++j) {
            const int32_t order = FPathCompare::compareTreeStyle(sorted[i], sorted[j]);
            EXPECT_EQ(order < 0, i < j) << i << " " << j;
            EXPECT_EQ(order == 0, i == j) << i << " " << j;
        }
    EXPECT_EQ(FPathCompare::compareTreeStyle(u"/abc", u"/abd", 3), 0);
    EXPECT_LT(FPathCompare::compareTreeStyle(u"/abc", u"/abd", 4), 0);
}

struct RelativeRow {
    const char16_t* base;
    const char16_t* target;
    const char16_t* way;  // null: there is none
    int32_t levels;
};
constexpr RelativeRow kWays[] = {
    {u"/a/b",    u"/a/b/c", u"c",          0},
    {u"/a/b/",   u"/a/c/d", u"../c/d",     1},
    {u"/a/b/c",  u"/x",     u"../../../x", 3},
    {u"/a/b",    u"/a/b",   u".",          0},
    {u"/a/b",    u"/",      u"../..",      2},
    {u"/",       u"/a",     u"a",          0},
    {u"/a",      u"/ab",    u"../ab",      1},
    {u"a",       u"/a",     nullptr,       0},
    {u"/a",      u"a",      nullptr,       0},
    {u"/a/../b", u"/c",     nullptr,       0},
};

TEST(FNPath, FindsTheWayAndBack) {
    for (const RelativeRow& row : kWays) {
        const FNPath base(row.base, kFolderPath), target(row.target, kFolderPath);
        SCOPED_TRACE(testing::PrintToString(textOf(base) + u" " + textOf(target)));
        FNPath way(u"old", kFilePath);
        ASSERT_EQ(way.assignRelative(&base, &target), row.way != nullptr);
        EXPECT_EQ(textOf(way), row.way ? row.way : u"old");
        EXPECT_EQ(way.countAscendLevels(), row.levels);
        if (row.way) {
            EXPECT_EQ(textOf(way.createAbsolutePath(&base)), textOf(target));
        }
    }
    const FNPath deep(u"/a", kFolderPath), above(u"../../../etc/./x", kFilePath);
    EXPECT_EQ(textOf(above.createAbsolutePath(&deep)), u"/etc/x");
}

TEST(FNPath, ComesBackFromBagsAndArchives) {
    FNPath path(u"/a/\u00E4.txt", kLinkPath | kHiddenPath), fromBag, fromArchive;
    path.setFileType(FFileType(u"Text", u"txt"));
    FAttributes bag;
    FNPath::storeAttrFileType = true;
    ASSERT_TRUE(path.storeAttributes(bag) && fromBag.restoreAttributes(bag));
    FNPath::storeAttrFileType = false;
    EXPECT_TRUE(fromBag.getFileType() == path.getFileType());
    FMemoryStream stream;
    {
        FNewArchive archive(&stream, true);
        ASSERT_TRUE(path.externalize(archive));
    }
    stream.rewind();
    FNewArchive archive(&stream, false);
    ASSERT_TRUE(fromArchive.internalize(archive));
    for (const FNPath* each : {&fromBag, &fromArchive}) {
        EXPECT_TRUE(*each == path);
        EXPECT_EQ(each->getKind(), path.getKind());
    }
    bag.set("PathType", 1);
    EXPECT_FALSE(fromBag.restoreAttributes(bag));
}

TEST(FNPath, ShortensToBeShown) {
    const std::pair<uint32_t, const char16_t*> rows[] = {
        {30, u"/home/somebody/deep/file.txt"},
        {20, u"/home/so.../file.txt"        },
        {12, u".../file.txt"                },
        {8,  u"file.txt"                    },
        {6,  u"fil..."                      },
        {0,  u""                            },
    };
    for (const auto& [length, expected] : rows) {
        FFullPathString text(FNPath(u"/home/somebody/deep/file.txt", kFilePath));
        text.wordWrap(length);
        EXPECT_EQ(std::u16string(text.text16()), expected);
    }
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

const FFileType* asksForABang(const char* bytes, int32_t size) {
    static const FFileType type(u"Bang", u"bang");
    return size == 2 && bytes[0] == '!' ? &type : nullptr;
}

TEST(FFileType, IsKnownByItsFirstBytes) {
    FFileType::registerTypeIdentifier([](const char*, int32_t) -> const FFileType* { return nullptr; });
    FFileType::registerTypeIdentifier(asksForABang);
    FMemoryStream stream;
    stream.writeRaw("?!x", 3);
    stream.rewind();
    EXPECT_EQ(FFileType::getTypeByStream(&stream), nullptr);
    stream.seek(1, kFromStart);
    const FFileType* type = FFileType::getTypeByStream(&stream);
    ASSERT_NE(type, nullptr);
    EXPECT_TRUE(type->hasExtension("BANG"));
    EXPECT_EQ(stream.tell(), 1);
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
