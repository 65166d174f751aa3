#include "storage/fpath.h"
#include "pathprobes.h"
#include "storage/fmstream.h"
#include "storage/fnewarchive.h"
#include "storage/fpersistent.h"
#include "storage/hooks.h"

namespace Tessarine {
namespace {

// null: nothing above
constexpr std::tuple<const char*, const char*, const char*, bool, const char*> kPaths[] = {
    {"/a/b.txt", "/a/", "b.txt", false, "/a"   },
    {"/a/b//",   "/a/", "b",     true,  "/a"   },
    {"/a",       "/",   "a",     false, "/"    },
    {"/",        "/",   "",      true,  nullptr},
    {"a/b",      "a/",  "b",     false, "a"    },
    {"a",        "",    "a",     false, nullptr},
    {"",         "",    "",      false, nullptr},
};

TEST(FPath, SplitsAscendsAndDescends) {
    for (const auto& [text, folders, name, folder, above] : kPaths) {
        SCOPED_TRACE(text);
        FPath path = At(text);
        EXPECT_EQ(utf8(path.getPathName()), folders);
        EXPECT_EQ(utf8(path.getName()), name);
        EXPECT_EQ(path.isFolder(), folder);
        const std::string before = utf8(path);
        ASSERT_EQ(path.ascend(), above != nullptr);
        EXPECT_EQ(utf8(path), above ? above : before);
        EXPECT_EQ(path.isFolder(), above || folder);
        if (!above)
            continue;
        path.descend(FString(name).text16(), kFilePath);
        EXPECT_EQ(utf8(path), before);
        EXPECT_TRUE(path.isFile());
    }
}

// name, extension of the type (null: no type), the index without and with checkType
constexpr std::tuple<const char16_t*, const char16_t*, int32_t, int32_t> kExtensions[] = {
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
    FPath path;
    for (const auto& [name, typeExtension, loose, strict] : kExtensions) {
        SCOPED_TRACE(utf8(name));
        path.setName(name);
        path.setFileType(FFileType(u"Type", nullptr, typeExtension));
        EXPECT_EQ(path.getExtensionIndex(false), loose);
        EXPECT_EQ(path.getExtensionIndex(true), strict);
        FString stem;
        path.getNameWithoutExtension(stem, false);
        EXPECT_EQ(utf8(stem), utf8(name).substr(0, loose < 0 ? 99 : size_t(loose - 1)));
    }
    path.setName(u"a.xml");
    path.setFileType(FFileType(u"Type", u"txt"));
    EXPECT_TRUE(path.updateExtension(true));
    EXPECT_FALSE(path.updateExtension(true));
    EXPECT_EQ(utf8(path.getName()), "a.txt");
}

TEST(FPath, OrdersAsATree) {
    const char16_t* const sorted[] = {u"", u"/a", u"/a/b", u"/a/b/c", u"/a b", u"/a.x", u"/aa", u"/b"};
    for (const auto& a : sorted)
        for (const auto& b : sorted) {
            const int32_t order = FPathCompare::compareTreeStyle(a, b);
            EXPECT_EQ(order <=> 0, &a <=> &b) << utf8(a) << " " << utf8(b);
        }
    EXPECT_EQ(FPathCompare::compareTreeStyle(u"/abc", u"/abd", 3), 0);
    EXPECT_LT(FPathCompare::compareTreeStyle(u"/abc", u"/abd", 4), 0);
}

// base, target, the way (null: there is none), its levels
constexpr std::tuple<const char*, const char*, const char*, int32_t> kWays[] = {
    {"/a/b",    "/a/b/c", "c",          0},
    {"/a/b/",   "/a/c/d", "../c/d",     1},
    {"/a/b/c",  "/x",     "../../../x", 3},
    {"/a/b",    "/a/b",   ".",          0},
    {"/a/b",    "/",      "../..",      2},
    {"/",       "/a",     "a",          0},
    {"/a",      "/ab",    "../ab",      1},
    {"a",       "/a",     nullptr,      0},
    {"/a",      "a",      nullptr,      0},
    {"/a/../b", "/c",     nullptr,      0},
};

TEST(FNPath, FindsTheWayAndBack) {
    for (const auto& [from, to, expected, levels] : kWays) {
        SCOPED_TRACE(std::string(from) + " " + to);
        At base(from), target(to), way("old");
        ASSERT_EQ(way.assignRelative(base, target), expected != nullptr);
        EXPECT_EQ(utf8(way), expected ? expected : "old");
        EXPECT_EQ(way.countAscendLevels(), levels);
        EXPECT_TRUE(!expected || way.createAbsolutePath(base) == target);
    }
    EXPECT_EQ(utf8(At("../../../etc/./x").createAbsolutePath(At("/a"))), "/etc/x");
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
    FNewArchive writing(&stream, true), reading(&stream, false);
    ASSERT_TRUE(path.externalize(writing));
    stream.rewind();
    ASSERT_TRUE(fromArchive.internalize(reading));
    for (const FNPath* each : {&fromBag, &fromArchive}) {
        EXPECT_TRUE(*each == path);
        EXPECT_EQ(each->getKind(), path.getKind());
    }
    bag.set("PathType", 1);
    EXPECT_FALSE(fromBag.restoreAttributes(bag));
}

TEST(FNPath, ShortensToBeShown) {
    for (const std::string expected :
         {"/home/somebody/deep/file.txt", "/home/so.../file.txt", ".../file.txt", "file.txt", "fil...", ""}) {
        FFullPathString text(At("/home/somebody/deep/file.txt"));
        text.wordWrap(uint32_t(expected.size()));
        EXPECT_EQ(utf8(text), expected);
    }
}

TEST(FNPath, StandardFoldersAreMadeWhenAskedForAndUnknownOnesGiveNoPathAtAll) {
    static FNPath deep;
    const TempFolder temp;
    deep = temp.at("deep/down");
    EXPECT_TRUE(FNPath(u"Setup.xml", kUserFolder, kFilePath, nullptr, true).isEmpty());
    gStorageHooks.standardFolder = [](int32_t number, FNPath& folder) {
        folder = deep;
        return number == kUserFolder;
    };
    EXPECT_TRUE(FNPath(u"Setup.xml", kApplicationFolder, kFilePath, nullptr, true).isEmpty());
    EXPECT_EQ(utf8(FNPath(u"Setup.xml", kUserFolder, kFilePath, nullptr, false)), temp / "deep/down/Setup.xml");
    EXPECT_EQ(temp.names().size(), 0u);
    EXPECT_EQ(utf8(FNPath(u"Setup.xml", kUserFolder, kFilePath, u"sub", true)), temp / "deep/down/sub/Setup.xml");
    EXPECT_TRUE(std::filesystem::is_directory(temp / "deep/down/sub"));
    gStorageHooks = {};
}

TEST(FFileType, IsKnownByItsMarksAndFirstBytes) {
    const FFileType xml(u"XML File", u"xml", u"xml", 0, u"text/xml");
    EXPECT_TRUE(xml == FFileType(u"Something", u"XML"));
    EXPECT_FALSE(xml == FFileType(u"XML File", u"xml", nullptr, 0, u"text/plain") || xml == FFileType(u"XML File"));
    static const FFileType bang(u"Bang", u"bang");
    FFileType::registerTypeIdentifier([](const char*, int32_t) -> const FFileType* { return nullptr; });
    FFileType::registerTypeIdentifier([](const char* bytes, int32_t size) -> const FFileType* {
        return size == 2 && bytes[0] == '!' ? &bang : nullptr;
    });
    FMemoryStream stream;
    stream.writeRaw("?!x", 3);
    stream.rewind();
    EXPECT_EQ(FFileType::getTypeByStream(&stream), nullptr);
    stream.seek(1, kFromStart);
    EXPECT_EQ(FFileType::getTypeByStream(&stream), &bang);
    EXPECT_EQ(stream.tell(), 1);
}

}  // namespace
}  // namespace Tessarine
