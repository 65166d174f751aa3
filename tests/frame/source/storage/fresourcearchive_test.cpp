#include "storage/fresourcearchive.h"
#include "archiveprobes.h"
#include "base/fconsole.h"
#include "base/source/finitializer.h"
#include "base/uprogresshook.h"
#include "storage/fcstream.h"
#include "storage/fvfilesystem.h"
#include "storage/hooks.h"
#include "tempfolder.h"
#include <functional>
#include <map>

namespace Tessarine {
namespace {
const std::string kHeader = "Tessarine Resource File\r\n";

class ResourceArchive : public testing::Test {
protected:
    static void SetUpTestSuite() {
        OneTimeProcedure::initialize(UINT32_MAX);
        FResourceArchive::doInits();
    }
};

std::string utf8(const FString& text) {
    FString bytes(text);
    bytes.toMultiByte(kCodePageUTF8);
    return bytes.text8();
}

FPath pathOf(const std::string& name, int32_t kind = kFilePath) {
    FString text;
    text.fromUTF8(name.c_str());
    FPath path;
    path.fromString(text.text16(), kind);
    return path;
}

std::string readAll(FStream* stream) {
    std::string bytes;
    char block[1000];
    for (int64_t size; stream && (size = stream->readRaw(block, sizeof block)) > 0;)
        bytes.append(block, size_t(size));
    return bytes;
}

/** Path -> content, "/" for folders, through the calls that all file systems have. */
std::map<std::string, std::string> contentOf(FResourceArchive& archive) {
    std::map<std::string, std::string> content;
    const FFileArchiveNode* root = archive.getTree();
    for (const FFileArchiveNode* node = root->getFirstChild(); node; node = node->getNextBelow(root)) {
        FPath path;
        FString text;
        node->getPath(path);
        path.getFullPath(text);
        FStream* stream = archive.openFile(&path, kOpenRead);
        content[utf8(text)] = node->isFolder() ? "/" : readAll(stream);
        archive.closeFile(stream);
    }
    return content;
}

OPtr<FResourceArchive> openBytes(const std::string& bytes, FMemoryStream& memory) {
    memory.setSize(0);
    memory.writeRaw(bytes.data(), int64_t(bytes.size()));
    OPtr<FResourceArchive> archive(new FResourceArchive(&memory));
    return archive->open() ? archive : OPtr<FResourceArchive>();
}

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
const std::string kClosing = entry(9, 0, 0, "..");

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

std::map<std::string, std::string> goldenContent() {
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

TEST_F(ResourceArchive, ReadsWhatOthersWroteToTheByte) {
    for (const char* name : {"v1", "v2", "v2plain", "v3"}) {
        SCOPED_TRACE(name);
        FMemoryStream memory;
        const auto archive = openBytes(goldenFile(std::string("resources-") + name + ".srf"), memory);
        ASSERT_TRUE(archive);
        EXPECT_TRUE(archive->isTableWhole());
        EXPECT_EQ(contentOf(*archive), goldenContent());
        FPath path = pathOf("skin.xml");
        const OPtr<FStream> stream(archive->openFile(&path, kOpenRead));
        EXPECT_EQ(archive->getFileSize(stream), 734);
        EXPECT_EQ(archive->getFileSize(&path), 734);
    }
}

TEST_F(ResourceArchive, WritesTheFormatToTheByteAndReadsItThroughTheDisk) {
    const std::string golden = goldenFile("resources-v1.srf");
    TempFolder folder;
    FMemoryStream memory;
    FNPath tree = folder.at("tree"), file = folder.at("made.srf"), packed = folder.at("packed.srf");
    ASSERT_TRUE(openBytes(golden, memory)->extractAll(&tree, nullptr));
    const int16_t all = FResourceArchive::kSubFolders;
    ASSERT_TRUE(OPtr<FResourceArchive>(new FResourceArchive(&file))->create(&tree, all, nullptr, nullptr));
    EXPECT_EQ(folder.read("made.srf"), golden);
    const OPtr<FResourceArchive> again(new FResourceArchive(&packed));  // the second is shorter
    for (const int16_t flags : {all, int16_t(all | FResourceArchive::kCompress)})
        ASSERT_TRUE(again->create(&tree, flags, nullptr, nullptr));
    EXPECT_TRUE(folder.read("packed.srf").ends_with("SRF3"));
    const OPtr<FVFileSystem> disk(new FVFileSystem(&packed));
    FPath member = pathOf("skin.xml");
    ASSERT_TRUE(disk->isValid());
    FStream* stream = disk->openFile(&member, kOpenRead);
    EXPECT_EQ(readAll(stream), goldenContent()["skin.xml"]);
    disk->closeFile(stream);
    const OPtr<FStream> bytes(gFileSystem->openFile(&file, kOpenRead));
    EXPECT_EQ(FFileType::getTypeByStream(bytes), &srfFileType);
}

TEST_F(ResourceArchive, AStreamWithOldBytesHoldsOnlyTheNewOne) {
    struct Lines : FConsole {
        void deferWrite(const ConstString& line) override { text += utf8(line); }
        std::string text;
    };
    TempFolder folder;
    folder.write("a", "a");
    FNPath tree = folder.self();
    FMemoryStream memory;
    ASSERT_TRUE(openBytes(goldenFile("resources-v3.srf"), memory));
    ASSERT_TRUE(OPtr<FResourceArchive>(new FResourceArchive(&memory))->create(&tree, 0, nullptr, nullptr));
    const OPtr<FResourceArchive> archive(new FResourceArchive(&memory));
    const OPtr<Lines> console(new Lines);
    ASSERT_TRUE(archive->open());
    archive->dumpContent(console);
    EXPECT_EQ(console->text, "root\n  \"a(0000)\" size = 1 Bytes, offset = 25\n");
}

TEST_F(ResourceArchive, FlagsAndFilterChooseWhatIsPacked) {
    struct NoNotes final : IResourceArchivePathFilter {
        bool includes(FPath* path) override { return !path->getFileName().endsWith(u".txt"); }
    } noNotes;
    TempFolder folder;
    for (const char* name : {"t", "t/sub", "t/hollow", "t/hollow/deeper"})
        std::filesystem::create_directory(folder / name);
    folder.write("t/a", "a");
    folder.write("t/notes.txt", "n");
    folder.write("t/sub/.hidden", "h");
    std::filesystem::create_symlink("a", folder / "t/link");
    std::filesystem::create_directory_symlink("..", folder / "t/sub/loop");
    using Names = std::map<std::string, std::string>;
    const struct {
        int32_t flags;
        IResourceArchivePathFilter* filter;
        Names expected;
    } rows[] = {
        {0, nullptr,  {{"a", "a"}, {"link", "a"}, {"notes.txt", "n"}}                                            },
        {5, &noNotes, {{"a", "a"}, {"link", "a"}, {"sub", "/"}, {"sub/.hidden", "h"}}                            },
        {1,
         &noNotes,
         {{"a", "a"}, {"hollow", "/"}, {"hollow/deeper", "/"}, {"link", "a"}, {"sub", "/"}, {"sub/.hidden", "h"}}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.flags);
        FMemoryStream memory;
        const OPtr<FResourceArchive> archive(new FResourceArchive(&memory));
        archive->setPathFilter(row.filter);
        FNPath tree = folder.at("t");
        ASSERT_TRUE(archive->create(&tree, int16_t(row.flags), nullptr, nullptr));
        EXPECT_EQ(contentOf(*archive), row.expected);
    }
}

TEST_F(ResourceArchive, AStoppedOneLeavesNoFile) {
    struct Stop : UProgressHook {
        bool setProgress(int32_t) override { return false; }
        void setText(const ConstString& text) override { told = text; }
        FString told;
    };
    TempFolder folder;
    std::filesystem::create_directory(folder / "t");
    folder.write("t/a", "a");
    FNPath tree = folder.at("t"), file = folder.at("made.srf");
    const OPtr<Stop> stop(new Stop);
    EXPECT_FALSE(OPtr<FResourceArchive>(new FResourceArchive(&file))->create(&tree, 0, stop, nullptr));
    EXPECT_EQ(utf8(stop->told), "Adding File: a...");
    EXPECT_EQ(folder.names(), std::set<std::string>{"t"});
}

TEST_F(ResourceArchive, ReplacesInPlaceAndClosesUp) {
    const std::string inputs[] = {"", "short", std::string(5000, 'x')};
    for (const char* name : {"v1", "v2", "v3"})
        for (const std::string& input : inputs)
            for (const char* member : {"bitmaps/Häkchen ✓.png", "nothing.txt", "skin.xml"}) {
                SCOPED_TRACE(std::string(name) + " " + member + " " + std::to_string(input.size()));
                TempFolder folder;
                folder.write("x.srf", goldenFile(std::string("resources-") + name + ".srf"));
                folder.write("new", input);
                FNPath file = folder.at("x.srf"), content = folder.at("new");
                FPath inner = pathOf(member);
                ASSERT_TRUE(FResourceArchive::replaceFileInArchive(&file, &inner, &content));
                const OPtr<FResourceArchive> archive(new FResourceArchive(&file));
                ASSERT_TRUE(archive->open());
                auto expected = goldenContent();
                expected[member] = input;
                EXPECT_EQ(contentOf(*archive), expected);
                FPath empty = pathOf("nothing.txt");
                EXPECT_LE(archive->lookupNode(&empty)->getDataOffset(), archive->getTableOffset());
                const int64_t size = int64_t(folder.read("x.srf").size());
                ASSERT_TRUE(archive->compact(archive->getEngine() ? 2 : 0, nullptr, nullptr));
                EXPECT_EQ(contentOf(*archive), expected);
                EXPECT_EQ(int64_t(folder.read("x.srf").size()), size) << "there was a gap";
                EXPECT_EQ(folder.names(), (std::set<std::string>{"new", "x.srf"}));
            }
}

TEST_F(ResourceArchive, CompactTakesTheCacheIn) {
    TempFolder folder;
    folder.write("x.srf", goldenFile("resources-v3.srf"));
    FNPath file = folder.at("x.srf"), plain = folder.at("plain.srf");
    const OPtr<FResourceArchive> archive(new FResourceArchive(&file, FFileArchive::kWriteCached));
    ASSERT_TRUE(archive->open());
    FPath added = pathOf("more/added.txt"), changed = pathOf("skin.xml");
    FStream* stream = archive->createFile(&added, kOpenWrite);
    stream->writeString8("added", false);
    archive->closeFile(stream);
    stream = archive->openFile(&changed, kOpenRead | kOpenWrite);
    stream->writeString8("<SKIN>", false);
    archive->closeFile(stream);
    auto expected = goldenContent();
    expected["skin.xml"].replace(0, 6, "<SKIN>");
    expected["more"] = "/";
    expected["more/added.txt"] = "added";
    ASSERT_TRUE(archive->compact(FResourceArchive::kCompress, nullptr, nullptr));
    EXPECT_EQ(contentOf(*archive), expected);
    EXPECT_EQ(folder.names(), std::set<std::string>{"x.srf"});
    ASSERT_TRUE(archive->compact(0, &plain, nullptr));
    EXPECT_TRUE(folder.read("plain.srf").ends_with("SRFF"));
}

TEST_F(ResourceArchive, ItIsNeitherItsOwnMemberNorLostUnderAnotherName) {
    TempFolder folder;
    folder.write("a", std::string(1 << 17, 'a'));
    FNPath here = folder.self(), file = folder.at("made.srf"), link = folder.at("link.srf");
    EXPECT_FALSE(OPtr<FResourceArchive>(new FResourceArchive(&file))->create(&here, 0, nullptr, nullptr));
    EXPECT_EQ(folder.names(), std::set<std::string>{"a"});

    folder.write("made.srf", goldenFile("resources-v3.srf"));
    std::filesystem::create_symlink("made.srf", folder / "link.srf");
    const OPtr<FResourceArchive> archive(new FResourceArchive(&file));
    ASSERT_TRUE(archive->open() && archive->compact(FResourceArchive::kCompress, &link, nullptr));
    EXPECT_EQ(contentOf(*archive), goldenContent());
}

TEST_F(ResourceArchive, WhatIsNotWrittenIsNotRemoved) {
    TempFolder folder;
    const std::string golden = goldenFile("resources-v3.srf");
    std::filesystem::create_directory(folder / "t");
    folder.write("x.srf", golden);
    folder.write("old", "old");
    FNPath tree = folder.at("t"), file = folder.at("x.srf"), old = folder.at("old");
    FPath inner = pathOf("skin.xml");
    FUID unknown;
    unknown.generate();
    EXPECT_FALSE(OPtr<FResourceArchive>(new FResourceArchive(&old))->create(&tree, 2, nullptr, &unknown));
    const OPtr<FResourceArchive> archive(new FResourceArchive(&file));
    ASSERT_TRUE(archive->open());
    EXPECT_FALSE(archive->create(&tree, 0, nullptr, nullptr));
    EXPECT_FALSE(FResourceArchive::replaceFileInArchive(&file, &inner, &file));
    EXPECT_EQ(contentOf(*archive), goldenContent());
    EXPECT_EQ(folder.read("x.srf"), golden);
    EXPECT_EQ(folder.read("old"), "old");
}

TEST_F(ResourceArchive, WhatIsMarkedAsCompressedIsCopiedAsItIs) {
    for (const bool marked : {false, true}) {
        FMemoryStream memory, source;
        source.setSize(1000);
        const OPtr<FResourceArchive> archive(new FResourceArchive(&memory));
        ASSERT_TRUE(archive->create(FResourceArchive::kCompress, nullptr));
        const OPtr<FResourceEntry> entry(static_cast<FResourceEntry*>(archive->newNode(false)));
        entry->setCompressed(marked);
        ASSERT_TRUE(archive->copyInto(&source, &memory, entry, nullptr));
        EXPECT_TRUE(entry->isCompressed());
        EXPECT_EQ(entry->getDataSize() == 1000, marked);
        EXPECT_EQ(entry->getUncompressedSize(), 1000);
    }
}

TEST_F(ResourceArchive, NumbersThatVersion1CantHoldAreRefused) {
    for (const bool compresses : {false, true}) {
        FMemoryStream memory;
        const OPtr<FResourceArchive> archive(new FResourceArchive(&memory));
        ASSERT_TRUE(archive->create(compresses ? 2 : 0, nullptr));
        auto* large = static_cast<FResourceEntry*>(archive->newNode(false));
        large->setFileName(u"large");
        large->setData(int64_t(1) << 31, 1, 1);
        archive->getTree()->addChild(large);
        EXPECT_EQ(archive->writeContent(), compresses);
    }
}

TEST_F(ResourceArchive, LaterVersionsAreWrittenOnceTheirFormIsKnown) {
    constexpr uint32_t kReadOnly = 0x38465253, kWritable = 0x39465253;  // SRF8, SRF9
    FResourceArchive::registerArchiveFormat(kReadOnly, 9, false);
    for (const bool known : {false, true}) {
        FMemoryStream memory;
        const OPtr<FResourceArchive> archive(new FResourceArchive(&memory)), read(new FResourceArchive(&memory));
        ASSERT_TRUE(archive->create(0, nullptr));
        FResourceArchive::gFormatVersion = 9;
        EXPECT_EQ(archive->writeContent(), known);
        FResourceArchive::gFormatVersion = 3;
        EXPECT_EQ(read->open(), known);
        FResourceArchive::registerArchiveFormat(kWritable, 9, true);
    }
    EXPECT_EQ(FResourceArchive::getFormatVersion(kReadOnly), 9);
}

TEST_F(ResourceArchive, AnUnknownEngineClosesItWithAWarning) {
    static std::string warning;
    std::string bytes = goldenFile("resources-v3.srf");
    bytes[bytes.size() - 48] = '5';
    gStorageHooks.showError = [](const FString& text) { warning = utf8(text); };
    for (const bool shows : {false, true}) {
        FFileArchive::displayWarnings(shows);
        FMemoryStream memory;
        EXPECT_FALSE(openBytes(bytes, memory));
        EXPECT_EQ(warning, shows ? "Resource File Error: Compression not supported!" : "");
    }
    FFileArchive::displayWarnings(false);
    gStorageHooks.showError = nullptr;
}

struct HostileRow {
    const char* name;
    std::string bytes;
    bool opens, whole;
};

TEST_F(ResourceArchive, HostileTablesAreBoundedBeforeTheyAreBelieved) {
    const std::string file = entry(10, 25, 3, "a"), folder = entry(9, 0, 0, "f");
    std::string deep;
    for (int32_t i = 0; i < 10000; ++i)
        deep += folder;
    std::string closed = deep;
    for (int32_t i = 0; i < 10000; ++i)
        closed += kClosing;
    const HostileRow rows[] = {
        {"as it should be", fileOf("abc", file, {1}), true, true},
        {"empty", fileOf("", "", {0}), true, true},
        {"deep", fileOf("", closed, {20000}), true, true},
        {"deep and open", fileOf("", deep, {10000}), true, false},
        {"closes the root", fileOf("", kClosing + file, {2}), true, false},
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
    for (const HostileRow& row : rows) {
        SCOPED_TRACE(row.name);
        FMemoryStream memory;
        const auto archive = openBytes(row.bytes, memory);
        ASSERT_EQ(bool(archive), row.opens);
        EXPECT_EQ(archive && archive->isTableWhole(), row.whole);
    }
}

TEST_F(ResourceArchive, HostileMembersAreNoPathsAndNoMoreThanTheirBytes) {
    const std::string table = entry(10, 25, 1, "../up") + entry(10, 25, 1, "..") + entry(10, 25, 1, "/root") +
                              entry(10, 25, 0x7FFFFFFF, "long") + entry(10, 0xFFFFFFFF, 1, "before") +
                              entry(10, 25, 0x80000000, "negative") + entry(10, 25, 1, "\xEF\xBB\xBF\xFF\xFE") +
                              entry(10, 25, 1, std::string(300, 'n'));
    const std::string bytes = fileOf("abc", table, {8});
    FMemoryStream memory;
    const auto archive = openBytes(bytes, memory);
    ASSERT_TRUE(archive);
    const auto content = contentOf(*archive);
    EXPECT_EQ(content.at("long"), bytes.substr(25));
    EXPECT_EQ(content.at("before") + content.at("negative"), "");
    EXPECT_EQ(content.at(std::string(256, 'n')), "a");
    TempFolder folder;
    FNPath target = folder.at("out");
    EXPECT_FALSE(archive->extractAll(&target, nullptr));
    EXPECT_EQ(folder.names(), std::set<std::string>{"out"});
    EXPECT_TRUE(std::filesystem::is_empty(folder / "out"));
}

TEST_F(ResourceArchive, DamageAtAnyByteIsNoMoreThanAMiss) {
    for (const char* name : {"resources-v1.srf", "resources-v3.srf"}) {
        const std::string golden = goldenFile(name);
        for (size_t at = 0; at < golden.size(); ++at) {
            FMemoryStream memory;
            EXPECT_FALSE(openBytes(golden.substr(0, at), memory)) << "cut at " << at;
            for (const int32_t bit : {0, 7}) {
                std::string bytes = golden;
                bytes[at] = char(bytes[at] ^ 1 << bit);
                const auto archive = openBytes(bytes, memory);
                for (const auto& [path, content] : archive ? contentOf(*archive) : goldenContent())
                    EXPECT_LT(content.size(), 100'000u) << path << " at " << at;
            }
        }
    }
}
}  // namespace
}  // namespace Tessarine
