#include "storage/fresourcearchive.h"
#include "archiveprobes.h"
#include "base/source/finitializer.h"
#include "pathprobes.h"
#include "storage/fvfilesystem.h"
#include <map>

namespace Tessarine {
namespace {
const std::string kHeader = "Tessarine Resource File\r\n";
using Content = std::map<std::string, std::string>;

/** Of each path, "/" for folders, through the calls that all file systems have. */
Content contentOf(FResourceArchive& archive) {
    Content content;
    const FFileArchiveNode* root = archive.getTree();
    for (const FFileArchiveNode* node = root->getFirstChild(); node; node = node->getNextBelow(root)) {
        FPath path;
        node->getPath(path);
        std::string& bytes = content[utf8(path)];
        bytes = node->isFolder() ? "/" : archive.getFileSize(&path) == 0 ? "" : contentOf(archive, &path);
    }
    return content;
}

std::string goldenOf(const std::string& version) {
    return goldenFile("resources-" + version + ".srf");
}

Content goldenContent() {
    std::string noise, back, text = "<skin>";
    for (int32_t i = 0; i < 300; ++i)
        noise += char(i * i * 7 + i / 3);
    back.assign(noise.rbegin(), noise.rend());
    for (int32_t i = 0; i < 40; ++i)
        text += "<item gain=\"-12\"/>";
    return {
        {"bitmaps",                  "/"               },
        {"bitmaps/Häkchen ✓.png", back              },
        {"bitmaps/back.png",         noise             },
        {"bitmaps/empty",            "/"               },
        {"nothing.txt",              ""                },
        {"skin.xml",                 text + "</skin>\n"},
    };
}

class ResourceArchive : public testing::Test {
protected:
    static void SetUpTestSuite() {
        OneTimeProcedure::initialize(UINT32_MAX);
        FResourceArchive::doInits();
    }
    /** In the test's stream. */
    OPtr<FResourceArchive> openBytes(const std::string& bytes) {
        memory.setSize(0);
        memory.writeRaw(bytes.data(), int64_t(bytes.size()));
        OPtr<FResourceArchive> archive(new FResourceArchive(&memory));
        return archive->open() ? archive : OPtr<FResourceArchive>();
    }
    OPtr<FResourceArchive> openFile(const char* name, int32_t flags = 0) {
        OPtr<FResourceArchive> archive(new FResourceArchive(folder.at(name), flags));
        EXPECT_TRUE(archive->open());
        return archive;
    }
    bool pack(const char* tree, const char* name, int32_t flags, UProgressHook* hook = nullptr) {
        const OPtr<FResourceArchive> made(new FResourceArchive(folder.at(name)));
        return made->create(folder.at(tree), int16_t(flags), hook, nullptr);
    }

    FMemoryStream memory;
    TempFolder folder;
};

std::string little(uint64_t number, size_t width) {
    std::string bytes;
    for (size_t i = 0; i < width; ++i)
        bytes += char(number >> (8 * i));
    return bytes;
}

/** Of version 1. */
std::string entry(uint32_t flags, uint32_t offset, uint32_t size, const std::string& name) {
    return little(flags, 4) + little(offset, 4) + little(size, 4) + name + '\0';
}

struct Numbers {
    uint32_t count;
    int64_t tableSize = -1;  // below 0: what it is
    uint32_t endingSize = 16;
    std::string magic = "SRFF";
};
std::string fileOf(const std::string& data, const std::string& table, const Numbers& numbers) {
    const uint64_t tableSize = numbers.tableSize < 0 ? table.size() : uint64_t(numbers.tableSize);
    return kHeader + data + table + little(tableSize, 4) + little(numbers.count, 4) + little(numbers.endingSize, 4) +
           numbers.magic;
}

TEST_F(ResourceArchive, ReadsWhatOthersWroteToTheByte) {
    for (const char* version : {"v1", "v2", "v2plain", "v3"}) {
        SCOPED_TRACE(version);
        const auto archive = openBytes(goldenOf(version));
        ASSERT_TRUE(archive);
        EXPECT_TRUE(archive->isTableWhole());
        EXPECT_EQ(contentOf(*archive), goldenContent());
        const OPtr<FStream> stream(archive->openFile(At("skin.xml"), kOpenRead));
        EXPECT_EQ(archive->getFileSize(stream), 734);
        EXPECT_EQ(archive->getFileSize(At("skin.xml")), 734);
    }
}

TEST_F(ResourceArchive, WritesTheFormatToTheByteAndReadsItThroughTheDisk) {
    ASSERT_TRUE(openBytes(goldenOf("v1"))->extractAll(folder.at("tree"), nullptr));
    ASSERT_TRUE(pack("tree", "made.srf", FResourceArchive::kSubFolders));
    EXPECT_EQ(folder.read("made.srf"), goldenOf("v1"));
    for (const int32_t flags : {1, 3})  // the second is shorter
        ASSERT_TRUE(pack("tree", "packed.srf", flags));
    EXPECT_TRUE(folder.read("packed.srf").ends_with("SRF3"));
    const OPtr<FVFileSystem> disk(new FVFileSystem(folder.at("packed.srf")));
    EXPECT_EQ(contentOf(*disk, At("skin.xml")), goldenContent()["skin.xml"]);
    const OPtr<FStream> bytes(gFileSystem->openFile(folder.at("made.srf"), kOpenRead));
    EXPECT_EQ(FFileType::getTypeByStream(bytes), &srfFileType);
}

TEST_F(ResourceArchive, FlagsAndFilterChooseWhatIsPacked) {
    struct NoNotes final : IResourceArchivePathFilter {
        bool includes(FPath* path) override { return !path->getFileName().endsWith(u".txt"); }
    } noNotes;
    for (const char* name : {"sub", "hollow/deeper"})
        std::filesystem::create_directories(folder / name);
    for (const char* name : {"a", "notes.txt", "sub/.hidden"})
        folder.write(name, name);
    std::filesystem::create_symlink("a", folder / "link");
    std::filesystem::create_directory_symlink("..", folder / "sub/loop");
    ASSERT_TRUE(openBytes(goldenOf("v3")));
    const std::tuple<int32_t, IResourceArchivePathFilter*, std::string> rows[] = {
        {0, nullptr,  "a=a link=a notes.txt=notes.txt "                                   },
        {5, &noNotes, "a=a link=a sub=/ sub/.hidden=sub/.hidden "                         },
        {1, &noNotes, "a=a hollow=/ hollow/deeper=/ link=a sub=/ sub/.hidden=sub/.hidden "},
    };
    for (const auto& [flags, filter, expected] : rows) {
        const OPtr<FResourceArchive> archive(new FResourceArchive(&memory)), written(new FResourceArchive(&memory));
        archive->setPathFilter(filter);
        ASSERT_TRUE(archive->create(folder.self(), int16_t(flags), nullptr, nullptr) && written->open());
        std::string content;
        for (const auto& [name, bytes] : contentOf(*written))  // and nothing that the stream held before
            content += name + "=" + bytes + " ";
        EXPECT_EQ(content, expected);
    }
}

TEST_F(ResourceArchive, ReplacesInPlaceAndClosesUp) {
    for (const char* version : {"v1", "v2", "v3"})
        for (const std::string& input : {std::string(), std::string("short"), std::string(5000, 'x')})
            for (const char* member : {"bitmaps/Häkchen ✓.png", "nothing.txt", "skin.xml"}) {
                SCOPED_TRACE(std::string(version) + " " + member + " " + std::to_string(input.size()));
                folder.write("x.srf", goldenOf(version));
                folder.write("new", input);
                ASSERT_TRUE(FResourceArchive::replaceFileInArchive(folder.at("x.srf"), At(member), folder.at("new")));
                const auto archive = openFile("x.srf");
                Content expected = goldenContent();
                expected[member] = input;
                EXPECT_EQ(contentOf(*archive), expected);
                EXPECT_LE(archive->lookupNode(At("nothing.txt"))->getDataOffset(), archive->getTableOffset());
                const std::string closedUp = folder.read("x.srf");
                ASSERT_TRUE(archive->compact(archive->getEngine() ? 2 : 0, nullptr, nullptr));
                EXPECT_EQ(contentOf(*archive), expected);
                EXPECT_EQ(folder.read("x.srf").size(), closedUp.size()) << "there was a gap";
                EXPECT_EQ(folder.names(), (std::set<std::string>{"new", "x.srf"}));
            }
}

TEST_F(ResourceArchive, CompactTakesTheCacheIn) {
    folder.write("x.srf", goldenOf("v3"));
    std::filesystem::create_symlink("x.srf", folder / "link.srf");
    const auto archive = openFile("x.srf", FFileArchive::kWriteCached);
    Content expected = goldenContent();
    expected["skin.xml"] += "more";
    expected["more"] = "/";
    expected["more/added.txt"] = "added";
    EXPECT_TRUE(append(*archive, At("more/added.txt"), "added", kOpenCreate));
    EXPECT_TRUE(append(*archive, At("skin.xml"), "more"));
    ASSERT_TRUE(archive->compact(FResourceArchive::kCompress, folder.at("link.srf"), nullptr)) << "onto itself";
    EXPECT_EQ(contentOf(*archive), expected);
    EXPECT_EQ(folder.names(), (std::set<std::string>{"link.srf", "x.srf"}));
    ASSERT_TRUE(archive->compact(0, folder.at("plain.srf"), nullptr));
    EXPECT_TRUE(folder.read("plain.srf").ends_with("SRFF"));
    EXPECT_EQ(contentOf(*openFile("plain.srf")), expected);
}

TEST_F(ResourceArchive, WhatFailsLeavesNoFileAndRemovesNone) {
    FUID unknown;
    unknown.generate();
    const OPtr<StopAfter> stop(new StopAfter(0));
    const std::string large(1 << 17, 'a');
    std::filesystem::create_directory(folder / "t");
    folder.write("t/a", large);
    folder.write("x.srf", goldenOf("v3"));
    At tree = folder.at("t"), file = folder.at("x.srf"), member = folder.at("t/a");
    EXPECT_FALSE(pack("t", "made.srf", 0, stop));
    EXPECT_EQ(stop->told, "Adding File: a...");
    EXPECT_FALSE(pack("t", "t/made.srf", 0)) << "it would be its own member";
    EXPECT_FALSE(OPtr<FResourceArchive>(new FResourceArchive(member))->create(tree, 2, nullptr, &unknown));
    const auto archive = openFile("x.srf");
    EXPECT_FALSE(archive->create(tree, 0, nullptr, nullptr)) << "it is open";
    EXPECT_FALSE(FResourceArchive::replaceFileInArchive(file, At("skin.xml"), file));
    EXPECT_EQ(contentOf(*archive), goldenContent());
    EXPECT_EQ(folder.names(), (std::set<std::string>{"t", "x.srf"}));
    EXPECT_TRUE(folder.read("t/a") == large && folder.read("x.srf") == goldenOf("v3"));
    EXPECT_FALSE(std::filesystem::exists(folder / "t/made.srf"));
}

TEST_F(ResourceArchive, WhatIsMarkedAsCompressedIsCopiedAsItIs) {
    for (const bool marked : {false, true}) {
        FMemoryStream source;
        source.setSize(1000);
        const OPtr<FResourceArchive> archive(new FResourceArchive(&memory));
        ASSERT_TRUE(archive->create(FResourceArchive::kCompress, nullptr));
        const OPtr<FResourceEntry> entry(new FResourceEntry(FResourceEntry::kFileEntry));
        entry->setCompressed(marked);
        ASSERT_TRUE(archive->copyInto(&source, &memory, entry, nullptr));
        EXPECT_TRUE(entry->isCompressed());
        EXPECT_EQ(entry->getDataSize() == 1000, marked);
        EXPECT_EQ(entry->getUncompressedSize(), 1000);
    }
}

TEST_F(ResourceArchive, WritesTheVersionThatCanHoldItOnceItsFormIsKnown) {
    constexpr uint32_t kReadOnly = 0x38465253, kWritable = 0x39465253;  // SRF8, SRF9
    FResourceArchive::registerArchiveFormat(kReadOnly, 9, false);
    const std::tuple<int32_t, int32_t, int64_t, bool> rows[] = {
        {0, 3, 1LL << 31, false}, // plain: version 1, whose numbers are small
        {2, 3, 1LL << 31, true }, // compressed: version 3
        {0, 9, 25,        false},
        {0, 9, 1LL << 31, true }, // from there on it is known
    };
    for (const auto& [flags, version, offset, written] : rows) {
        if (version == 9 && written)
            FResourceArchive::registerArchiveFormat(kWritable, 9, true);
        const OPtr<FResourceArchive> archive(new FResourceArchive(&memory)), read(new FResourceArchive(&memory));
        ASSERT_TRUE(archive->create(flags, nullptr));
        static_cast<FResourceEntry*>(archive->createNode(At("large")))->setData(offset, 1, 1);
        FResourceArchive::gFormatVersion = version;
        EXPECT_EQ(archive->writeContent(), written);
        FResourceArchive::gFormatVersion = 3;
        EXPECT_EQ(read->open(), written);
    }
    EXPECT_EQ(FResourceArchive::getFormatVersion(kReadOnly), 9);
}

TEST_F(ResourceArchive, HostileTablesAreBoundedBeforeTheyAreBelieved) {
    const std::string file = entry(10, 25, 3, "a"), closing = entry(9, 0, 0, "..");
    std::string deep, closed;
    for (int32_t i = 0; i < 10000; ++i)
        deep += entry(9, 0, 0, "f");
    closed = deep;
    for (int32_t i = 0; i < 10000; ++i)
        closed += closing;
    const struct {
        const char* name;
        std::string bytes;
        bool opens, whole;
    } rows[] = {
        {"as it should be", fileOf("abc", file, {1}), true, true},
        {"empty", fileOf("", "", {0}), true, true},
        {"deep", fileOf("", closed, {20000}), true, true},
        {"deep and open", fileOf("", deep, {10000}), true, false},
        {"closes the root", fileOf("", closing + file, {2}), true, false},
        {"too few entries", fileOf("", file + file, {1}), true, false},
        {"too many entries", fileOf("", file, {2}), false, false},
        {"two billion entries", fileOf("", file, {0x7FFFFFFF}), false, false},
        {"negative count", fileOf("", file, {0x80000000}), false, false},
        {"table larger than the file", fileOf("", file, {1, 0x7FFFFFFF}), false, false},
        {"table in the header", fileOf("", file, {1, 15}), false, false},
        {"negative table", fileOf("", file, {1, 0xFFFFFFF0}), false, false},
        {"another ending", fileOf("", file, {1, -1, 48}), false, false},
        {"another magic", fileOf("", file, {1, -1, 16, "SRF4"}), false, false},
        {"version 3 with the numbers of 1", fileOf("", file, {1, -1, 16, "SRF3"}), false, false},
        {"no end of the name", fileOf("", file.substr(0, file.size() - 1) + "bbb", {1}), false, false},
        {"another header", "Tesselate" + fileOf("", file, {1}), false, false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const auto archive = openBytes(row.bytes);
        ASSERT_EQ(bool(archive), row.opens);
        EXPECT_EQ(archive && archive->isTableWhole(), row.whole);
    }
}

TEST_F(ResourceArchive, HostileNamesAreCutOrNone) {
    const std::string table =
        entry(10, 25, 1, "../up") + entry(10, 25, 2, "\xEF\xBB\xBF\xFF\xFE") + entry(10, 25, 1, std::string(300, 'n'));
    const auto archive = openBytes(fileOf("abc", table, {3}));
    ASSERT_TRUE(archive);
    const Content expected = {
        {"", "(none)"},
        {"../up", "(none)"},
        {std::string(256, 'n'), "a"}
    };
    EXPECT_EQ(contentOf(*archive), expected);
}

TEST_F(ResourceArchive, DamageAtAnyByteIsNoMoreThanAMiss) {
    for (const char* version : {"v1", "v3"}) {
        const std::string golden = goldenOf(version);
        for (size_t at = 0; at < golden.size(); ++at) {
            EXPECT_FALSE(openBytes(golden.substr(0, at))) << "cut at " << at;
            for (const int32_t bit : {0, 7}) {
                std::string bytes = golden;
                bytes[at] = char(bytes[at] ^ 1 << bit);
                const auto archive = openBytes(bytes);
                for (const auto& [path, content] : archive ? contentOf(*archive) : Content())
                    EXPECT_LT(content.size(), 100'000u) << path << " at " << at;
            }
        }
    }
}
}  // namespace
}  // namespace Tessarine
