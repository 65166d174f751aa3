#include "storage/fpreset.h"
#include "base/fdefaults.h"
#include "collect/cmstring.h"
#include "storage/ffilesystem.h"
#include "storage/fmstream.h"
#include "storage/fnewarchive.h"
#include "storage/fxmlarchive.h"
#include "storage/hooks.h"
#include "tests/frame/source/storage/tempfolder.h"
#include <gtest/gtest.h>

using namespace Tessarine;

namespace {
namespace fs = std::filesystem;
using Names = std::set<std::string>;

FPath* object(const tchar* name) {
    auto* path = new FNPath(kFilePath);
    path->setName(name);
    return path;
}

std::string utf8(const tchar* text) {
    FString name(text);
    name.toMultiByte(65001);
    return name.text8();
}

std::string objectName(CmObject* object) {
    const auto* path = classCast<FNPath>(object);
    return path ? utf8(path->getName()) : "none";
}

/** "name=object;" in order, a mark for each clear flag; sub-lists in brackets. */
std::string shown(FPresetList& list) {
    std::string text;
    int32_t preset = 0;
    for (int32_t i = 0; FPresetItem* item = list.getItemAt(i, true, true); ++i) {
        text += utf8(item->getName());
        if (FPresetList* inner = item->toList()) {
            text += '[' + shown(*inner) + ']';
            continue;
        }
        text += '=' + objectName(list.getPresetObject(preset));
        text += list.canModifiyPreset(preset) ? "" : "!";
        text += list.presetRenamed(preset++) ? "?;" : ";";
    }
    return text;
}

class Presets : public testing::Test {
protected:
    Presets() : before(gStorageHooks), pool(new FPresetPool) {
        folders[0] = &user;
        folders[1] = &application;
        gStorageHooks.standardFolder = [](int32_t number, FNPath& path) {
            if (number == kUserFolder || number == kApplicationFolder)
                path = folders[number == kApplicationFolder]->self();
            return number == kUserFolder || number == kApplicationFolder;
        };
    }
    ~Presets() override {
        FPresetPool::unuse();
        FDefaultPool::isGuest = false;
        gStorageHooks = before;
    }
    /** What the pool's files give to a new pool. */
    std::string reloaded(const tchar* id) {
        const OPtr<FPresetPool> other(new FPresetPool);
        return other->load(user.self()) && other->hasRAMList(id) ? shown(*other->getRAMList(id, false)) : "nothing";
    }
    FFilePresetList* fileList(const tchar* id = u"Files") {
        return static_cast<FFilePresetList*>(pool->getPresetList(id, FPresetList::kFolder, nullptr));
    }
    Names filesIn(const char* folder) const {
        Names names;
        for (const auto& entry : fs::directory_iterator(user.path / folder))
            names.insert(entry.path().filename());
        return names;
    }

    const StorageHooks before;
    TempFolder user, application;
    OPtr<FPresetPool> pool;
    inline static const TempFolder* folders[2];
};

TEST_F(Presets, ListsOfMemoryComeBackWithTheirFlagsAndSubLists) {
    EXPECT_TRUE(pool->store(user.self()));
    EXPECT_EQ(user.names(), Names{}) << "no lists, no file";
    FPresetList* list = pool->getRAMList(u"id", false);
    EXPECT_EQ(list->addPreset(object(u"a"), u"A \u00e9 <\"", true, -1), 0);
    EXPECT_EQ(list->addPreset(object(u"b"), u"B", false, -1), 1);
    EXPECT_EQ(list->addPreset(object(u"c"), u"C", true, 0), 0);
    list->addSubList(u"sub")->addPreset(object(u"d"), u"D", true, -1);
    EXPECT_TRUE(list->setPresetName(0, u"C2"));
    EXPECT_FALSE(list->setPresetName(2, u"B2")) << "no modify";
    EXPECT_EQ(list->addPreset(object(u"e"), std::u16string(256, u'x').c_str(), true, -1), -1);
    EXPECT_EQ(list->countPresets(true), 4);
    const std::string all = "C2=c?;A \u00e9 <\"=a;B=b!;sub[D=d;]";
    EXPECT_EQ(shown(*list), all);
    ASSERT_TRUE(pool->store(user.self()));
    EXPECT_EQ(reloaded(u"id"), all);
    for (int32_t twice = 0; twice < 2; ++twice) {
        EXPECT_TRUE(pool->load(user.self()));
        EXPECT_EQ(shown(*list), all) << "merged with itself";
    }
    list->resetRenameState(0);
    list->removeNonModifyPresets();
    EXPECT_TRUE(list->removeItem(list->getSubList(0)->getPreset(0), true));
    EXPECT_EQ(shown(*list), "C2=c;A \u00e9 <\"=a;sub[]");
    list->addPreset(object(u"n"), u"New", true, 0);
    EXPECT_TRUE(pool->load(user.self()));
    EXPECT_EQ(shown(*list), "New=n;C2=c?;A \u00e9 <\"=a;sub[D=d;]B=b!;");
}

TEST_F(Presets, ListsWithFilesOfTheirOwnNeedNamesThatTheDiskKnows) {
    const std::u16string longest(250, u'\u4e2d');
    for (const tchar* id : {u"plain", u"a/b", u"a*b", longest.c_str()})
        pool->getRAMList(id, true)->addPreset(object(id), u"P", true, -1);
    ASSERT_TRUE(pool->store(user.self()) && pool->store(user.self()));
    std::string cut;
    for (int32_t i = 0; i < 79; ++i)
        cut += "\u4e2d";
    EXPECT_EQ(user.names(), (Names{"RAMPresets.xml", "a_b.pxml", "a_b-01.pxml", "plain.pxml", cut + ".pxml"}));
    for (const tchar* id : {u"plain", u"a/b", u"a*b", longest.c_str()})
        EXPECT_EQ(reloaded(id), "P=" + utf8(id) + ";");
    const OPtr<FPresetPool> other(new FPresetPool);
    other->getRAMList(u"..", true);
    EXPECT_FALSE(other->store(user.self()));

    fs::remove(user.path / "RAMPresets.xml");
    user.write("plain.pxml", "<Presets>");
    EXPECT_EQ(reloaded(u"plain"), "nothing");
    EXPECT_NE(reloaded(u"a/b"), "nothing") << "one that took is enough";
}

struct TextRow {
    const char *name, *list, *shown;
};
constexpr TextRow kTexts[] = {
    {"without a name",                      "<string name='ID' value='x'/>",                                     "x:"                },
    {"with a name",                         "<string name='ID' value='x'/><string name='Name' value='Shown'/>",  "Shown:"            },
    {"of old",
     "<string name='ID' value='x'/>"
     "<list name='SubLists' type='obj'><obj class='FPresetList' ID='3'><string name='ID' value='s'/></obj></list>"
     "<list name='Presets' type='obj'><obj class='FPreset' ID='4'><string name='Name' value='p'/></obj></list>", "x:p=none?;s[]"     },
    {"of both",
     "<list name='Presets' type='obj'><obj class='FPreset' ID='4'><string name='Name' value='old'/></obj></list>"
     "<list name='Items' type='obj'><obj class='FPreset' ID='5'><string name='Name' value='new'/></obj></list>"
     "<string name='ID' value='x'/>",                                                                            "x:new=none?;"      },
    {"in itself, twice, and around itself",
     "<string name='ID' value='x'/><list name='Items' type='obj'><item value='2'/>"
     "<obj class='FPreset' ID='6'><string name='Name' value='p'/><obj name='Object' ID='2'/></obj><item value='6'/>"
     "<obj class='FPreset' ID='7'><string name='Name' value='m'/>"
     "<obj class='FMultiPreset' name='Object' ID='8'><list name='Objects' type='obj'><item value='7'/><item value='8'/>"
     "</list></obj></obj></list>",                                                                               "x:p=none?;m=none?;"},
};

TEST_F(Presets, FilesOfAllKindsAreRead) {
    for (const TextRow& row : kTexts) {
        SCOPED_TRACE(row.name);
        std::string text =
            "<Presets><rootObjects><root name='Pool'><list name='Lists' type='obj'>"
            "<obj class='FPresetList' ID='2'>" +
            std::string(row.list) + "</obj></list></root></rootObjects></Presets>";
        std::ranges::replace(text, '\'', '"');
        user.write("RAMPresets.xml", text);
        pool = new FPresetPool;
        ASSERT_TRUE(pool->load(user.self()));
        FPresetList* list = pool->getRAMList(u"x", false);
        EXPECT_EQ(utf8(list->getName()) + ":" + shown(*list), row.shown);
    }
}

/** Each object refers to the one before it, and the file itself is flat. */
TEST_F(Presets, NoChainInAFileCostsStack) {
    constexpr int32_t kMany = 50000;
    for (const char* kind :
         {"PresetList' ID='%d'><string name='ID' value='l'/><list name='Items' type='obj'><item value='%d'/></list>",
          "Preset' ID='%d'><obj name='Object' ID='%d'/>",
          "MultiPreset' ID='%d'><list name='Objects' type='obj'><item value='%d'/></list>"}) {
        FString one;
        std::string text = "<Presets>";
        for (int32_t i = 1; i <= kMany; ++i)
            text += std::string("<obj class='F") + one.printf(kind, i, i - 1).text8() + "</obj>";
        text +=
            "<rootObjects><root name='Pool'><list name='Lists' type='obj'><obj class='FPresetList' ID='0'>"
            "<string name='ID' value='x'/><list name='Items' type='obj'><obj class='FPreset' ID='100000'>"
            "<obj name='Object' ID='50000'/></obj></list></obj></list></root></rootObjects></Presets>";
        std::ranges::replace(text, '\'', '"');
        user.write("RAMPresets.xml", text);
        pool = new FPresetPool;
        ASSERT_TRUE(pool->load(user.self()));
        auto* list = classCast<FPresetList>(pool->getRAMList(u"x", false)->getPresetObject(0));
        EXPECT_EQ(list != nullptr, std::string(kind).starts_with("PresetList"));
        EXPECT_LT(list ? list->countItems(true, true, true) : 0, 1000);
    }
}

TEST_F(Presets, WhatCannotBeTakenInLeavesMemoryAndACopyOfTheFile) {
    pool->getRAMList(u"id", false)->addPreset(object(u"a"), u"A", true, -1);
    ASSERT_TRUE(pool->store(user.self()));
    const std::string good = user.read("RAMPresets.xml");
    pool->getRAMList(u"id", false)->setPresetName(0, u"B");
    std::vector<std::string> texts = {good + "more", good};
    texts[1].replace(texts[1].find("\"ID\""), 4, "\"IE\"");
    texts.erase(texts.begin());
    for (size_t length = 0; length + 1 < good.size(); length += 3)
        texts.push_back(good.substr(0, length));
    for (const std::string& text : texts) {
        SCOPED_TRACE(text);
        user.write("RAMPresets.xml", text);
        EXPECT_FALSE(pool->load(user.self()));
        EXPECT_EQ(shown(*pool->getRAMList(u"id", false)), "B=a?;");
    }
    ASSERT_TRUE(pool->store(user.self()));
    EXPECT_EQ(user.read("RAMPresets.xml.backup"), texts.back());
    EXPECT_EQ(reloaded(u"id"), "B=a?;");
}

/** Also when others could be read in its place. */
TEST_F(Presets, TheUsersFilesThatCannotBeReadStayAsCopies) {
    for (const bool ownFile : {false, true})
        pool->getRAMList(ownFile ? u"own" : u"id", ownFile)->addPreset(object(u"a"), u"A", true, -1);
    for (const TempFolder* folder : folders) {
        fs::create_directory(folder->path / "Presets");
        ASSERT_TRUE(pool->store(folder->at("Presets")));
    }
    user.write("Presets/RAMPresets.xml", "mine");
    user.write("Presets/own.pxml", "mine too");
    for (const char* copy : {"RAMPresets.xml.backup", "own.pxml.backup"})
        fs::create_directory(user.path / "Presets" / copy);
    PostDefLoadFPresetPool();
    ASSERT_EQ(gPresetPool->countRAMLists(), 2);
    PreDefSaveFPresetPool();
    EXPECT_EQ(user.read("Presets/RAMPresets.xml"), "mine") << "no copy could be made";
    for (const char* copy : {"RAMPresets.xml.backup", "own.pxml.backup"})
        fs::remove(user.path / "Presets" / copy);
    for (int32_t twice = 0; twice < 2; ++twice)
        PreDefSaveFPresetPool();
    EXPECT_EQ(user.read("Presets/RAMPresets.xml.backup"), "mine");
    EXPECT_EQ(user.read("Presets/own.pxml.backup"), "mine too");
    EXPECT_NE(user.read("Presets/own.pxml"), "mine too");
}

TEST_F(Presets, AFolderHoldsAFileForEachPreset) {
    user.write("outside.xml", "<Presets/>");
    FFilePresetList* list = fileList();
    ASSERT_TRUE(list);
    EXPECT_EQ(fileList(), list);
    EXPECT_EQ(list->countUsers(), 2);
    EXPECT_EQ(fileList(u".."), nullptr);
    EXPECT_EQ(list->addPreset(object(u"a"), u"Take 1.5", true, -1), 0);
    EXPECT_EQ(list->addPreset(object(u"b"), u"Take 1.5", true, -1), 1);
    EXPECT_EQ(list->addPreset(object(u"c"), u"x/y.xml", true, 0), 0);
    EXPECT_EQ(list->addPreset(object(u"d"), u"..", true, 0), -1);
    list->addSubList(u"sub")->addPreset(object(u"e"), u"E", true, -1);
    EXPECT_EQ(filesIn("Presets/Files"), (Names{"Take 1.5.xml", "Take 1.5-01.xml", "x_y.xml.xml", "sub"}));

    user.write("Presets/Files/broken.xml", "<Presets>");
    user.write("Presets/Files/other.txt", "");
    fs::create_directory_symlink(user.path / "Presets", user.path / "Presets/Files/loop");
    EXPECT_TRUE(pool->removeFilePreset(list));
    list = fileList();
    EXPECT_EQ(shown(*list), "broken=none?;sub[E=e?;]Take 1.5=a?;Take 1.5-01=b?;x_y.xml=c?;");
    EXPECT_TRUE(list->setPresetName(1, u"broken"));
    EXPECT_TRUE(list->setPresetName(0, u"still broken")) << "never read";
    EXPECT_TRUE(list->removePresetAt(2));
    EXPECT_EQ(shown(*list), "still broken=none?;sub[E=e?;]broken-01=a?;x_y.xml=c?;");
    EXPECT_EQ(filesIn("Presets/Files"),
              (Names{"still broken.xml", "broken-01.xml", "x_y.xml.xml", "sub", "other.txt", "loop"}));
    EXPECT_GE(list->addPreset(object(u"f"), u".5 gain", true, -1), 0);
    EXPECT_TRUE(fs::exists(user.path / "Presets/Files/_5 gain.xml")) << "hidden ones aren't found again";
}

TEST_F(Presets, TheFirstStartTakesTheApplicationsPresets) {
    pool->getRAMList(u"id", false)->addPreset(object(u"a"), u"A", true, -1);
    fs::create_directories(application.path / "Presets/folder");
    FNPath source = application.at("Presets");
    ASSERT_TRUE(pool->store(source));
    application.write("Presets/folder/x.xml", "x");

    FDefaultPool::isGuest = true;
    PostDefLoadFPresetPool();
    PreDefSaveFPresetPool();
    EXPECT_EQ(user.names(), Names{}) << "a guest only reads";
    EXPECT_TRUE(gPresetPool->hasRAMList(u"id"));
    auto* guests = gPresetPool->getPresetList(u"Files", FPresetList::kFolder, nullptr);
    EXPECT_EQ(guests->addPreset(object(u"a"), u"A", true, -1), -1);
    EXPECT_EQ(user.names(), Names{});
    FPresetPool::unuse();

    FDefaultPool::isGuest = false;
    PostDefLoadFPresetPool();
    EXPECT_EQ(user.names(), Names{"Presets"});
    EXPECT_EQ(user.read("Presets/folder/x.xml"), "x");
    gPresetPool->getRAMList(u"id", false)->setPresetName(0, u"mine");
    PreDefSaveFPresetPool();
    FPresetPool::unuse();
    PostDefLoadFPresetPool();
    EXPECT_EQ(shown(*gPresetPool->getRAMList(u"id", false)), "mine=a?;");
}

TEST_F(Presets, TheOldBinaryFileGoesOnceItWasRead) {
    FPresetList* list = pool->getRAMList(u"id", false);
    list->addPreset(object(u"a"), u"A", true, -1);
    list->addPreset(object(u"b"), u"B", false, -1);
    list->addSubList(u"sub")->addPreset(object(u"c"), u"C", true, -1);
    FMemoryStream stream;
    FNewArchive archive(&stream, true);
    ASSERT_TRUE(pool->externalize(archive));
    const std::string whole(stream.getData(), size_t(stream.getSize()));
    for (size_t length = 0; length < whole.size(); length += 7) {
        application.write("Presets2.bin", whole.substr(0, length));
        PostDefLoadFPresetPool();
        EXPECT_EQ(application.names(), Names{"Presets2.bin"}) << length;
        EXPECT_EQ(gPresetPool->countRAMLists(), 0) << length;
    }
    application.write("Presets2.bin", whole);
    PostDefLoadFPresetPool();
    EXPECT_EQ(application.names(), Names{});
    EXPECT_EQ(shown(*gPresetPool->getRAMList(u"id", false)), "A=a?;sub[C=c?;]");
}

TEST_F(Presets, SeveralObjectsAreCopiedOrShared) {
    const OPtr<CmObject> original(object(u"a"));
    for (const bool isCopy : {false, true}) {
        const OPtr<FMultiPreset> written(new FMultiPreset(isCopy)), read(new FMultiPreset(!isCopy));
        const OPtr<FPreset> preset(new FPreset(object(u"b"), u"B"));
        written->addObject(original);
        EXPECT_EQ(written->getObject(0) == original.get(), !isCopy);
        if (!isCopy)
            written->addObject(OPtr<CmObject>(new FPresetPointer(preset)));
        read->addObject(original);
        FMemoryStream stream;
        FXmlArchive writer(&stream, true);
        ASSERT_TRUE(writer.addRoot("r", written) && writer.save("T"));
        stream.rewind();
        FXmlArchive reader(&stream, false);
        ASSERT_TRUE(reader.load("T"));
        const OPtr<CmObject> root(reader.getRoot("r"));
        OPtr<FAttributes> bag(new FAttributes);
        ASSERT_TRUE(root->storeAttributes(*bag) && read->restoreAttributes(*bag));
        EXPECT_EQ(read->holdsCopies(), isCopy);
        EXPECT_EQ(read->countObjects(), isCopy ? 1 : 2);
        EXPECT_EQ(objectName(read->getObject(isCopy ? 0 : 1)), isCopy ? "a" : "b");
        read->updateDone(0);
    }
}
}  // namespace
