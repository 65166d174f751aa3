#include "storage/fpreset.h"
#include "base/fdefaults.h"
#include "collect/cmarray.h"
#include "storage/ffilesystem.h"
#include "storage/fmstream.h"
#include "storage/fnewarchive.h"
#include "storage/fxmlarchive.h"
#include "tests/frame/source/storage/tempfolder.h"
#include "tests/support/uncounted.h"
#include "tests/support/utf8.h"
#include <gtest/gtest.h>

using namespace Tessarine;

namespace {
namespace fs = std::filesystem;
using Names = std::set<std::string>;

/** A preset with an object of that name. */
int32_t add(FPresetList* list, const tchar* name, const tchar* object, bool canModify = true, int32_t index = -1) {
    return list->addPreset(new FNPath(object, kFilePath), name, canModify, index);
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

class Presets : public testing::Test, protected StandardFolders {
protected:
    ~Presets() override {
        FPresetPool::unuse();
        FDefaultPool::isGuest = false;
    }
    FPresetList* ramList(const tchar* id = u"id", bool ownFile = false) { return pool->getRAMList(id, ownFile); }
    FPresetList* fileList(const tchar* id = u"Files") { return pool->getPresetList(id, FPresetList::kFolder, nullptr); }
    bool store() { return pool->store(user.self()); }
    /** What the pool's files give to a new pool. */
    std::string reloaded(const tchar* id = u"id") {
        const OPtr<FPresetPool> other(new FPresetPool);
        return other->load(user.self()) && other->hasRAMList(id) ? shown(*other->getRAMList(id, false)) : "nothing";
    }
    /** A new pool reads this text of a list. */
    FPresetList* readList(std::string text, const std::string& before = "") {
        text = "<Presets>" + before + "<rootObjects><root name='Pool'><list name='Lists' type='obj'>" +
               "<obj class='FPresetList' ID='2'><string name='ID' value='x'/>" + text +
               "</obj></list></root></rootObjects></Presets>";
        std::ranges::replace(text, '\'', '"');
        user.write("RAMPresets.xml", text);
        pool = new FPresetPool;
        EXPECT_TRUE(pool->load(user.self()));
        return ramList(u"x");
    }

    OPtr<FPresetPool> pool{new FPresetPool};
};

TEST_F(Presets, ListsOfMemoryComeBackWithTheirFlagsAndSubLists) {
    EXPECT_TRUE(store());
    EXPECT_EQ(user.names(), Names{}) << "no lists, no file";
    FPresetList* list = ramList();
    EXPECT_EQ(add(list, u"A \u00e9 <\"", u"a"), 0);
    EXPECT_EQ(add(list, u"B", u"b", false), 1);
    EXPECT_EQ(add(list, u"C", u"c", true, 0), 0);
    add(list->addSubList(u"sub"), u"D", u"d");
    EXPECT_TRUE(list->setPresetName(0, u"C2"));
    EXPECT_FALSE(list->setPresetName(2, u"B2")) << "no modify";
    EXPECT_EQ(add(list, std::u16string(256, u'x').c_str(), u"e"), -1);
    EXPECT_EQ(list->countPresets(true), 4);
    const std::string all = "C2=c?;A \u00e9 <\"=a;B=b!;sub[D=d;]";
    ASSERT_TRUE(store());
    EXPECT_EQ(reloaded(), all);
    EXPECT_TRUE(pool->load(user.self()) && pool->load(user.self()));
    EXPECT_EQ(shown(*list), all) << "merged with itself";
    list->removeNonModifyPresets();
    EXPECT_TRUE(list->removeItem(list->getSubList(0)->getPreset(0), true));
    EXPECT_EQ(shown(*list), "C2=c?;A \u00e9 <\"=a;sub[]");
    add(list, u"New", u"n", true, 0);
    EXPECT_TRUE(pool->load(user.self()));
    EXPECT_EQ(shown(*list), "New=n;C2=c?;A \u00e9 <\"=a;sub[D=d;]B=b!;");
}

TEST_F(Presets, ListsWithFilesOfTheirOwnNeedNamesThatTheDiskKnows) {
    const std::u16string longest(250, u'\u4e2d');
    for (const tchar* id : {u"plain", u"a/b", u"a*b", longest.c_str()})
        add(ramList(id, true), id, u"o");
    ASSERT_TRUE(store() && store());
    const std::string cut = utf8(longest.substr(0, 79).c_str());
    EXPECT_EQ(user.names(), (Names{"RAMPresets.xml", "a_b.pxml", "a_b-01.pxml", "plain.pxml", cut + ".pxml"}));
    for (const tchar* id : {u"plain", u"a/b", u"a*b", longest.c_str()})
        EXPECT_EQ(reloaded(id), utf8(id) + "=o;");
    const OPtr<FPresetPool> other(new FPresetPool);
    other->getRAMList(u"..", true);
    EXPECT_FALSE(other->store(user.self()));

    fs::remove(user.path / "RAMPresets.xml");
    user.write("plain.pxml", "<Presets>");
    EXPECT_EQ(reloaded(u"plain"), "nothing");
    EXPECT_NE(reloaded(u"a/b"), "nothing") << "one that took is enough";
}

TEST_F(Presets, WhatCannotBeStoredIsLeftOutAlone) {
    for (const bool ownFile : {false, true}) {
        FPresetList* list = ramList(ownFile ? u"own" : u"id", ownFile);
        add(list, u"A", u"a", false);
        list->addPreset(new FPresetPointerList, u"gone", true, -1);
        FPresetList* inner = list->addSubList(u"sub");
        inner->addPreset(new FPresetPointerList, u"gone", true, -1);
        for (int32_t depth = 0; depth < FAttributeArchiveBase::kMaxDepth; ++depth)
            inner = inner->addSubList(u"s");
        add(list, u"B", u"b");
    }
    EXPECT_FALSE(store());
    for (const tchar* id : {u"id", u"own"}) {
        const std::string found = reloaded(id);
        EXPECT_TRUE(found.starts_with("A=a!;sub[s[s[") && found.ends_with("]]]B=b;")) << found;
    }
}

constexpr std::pair<const char*, const char*> kTexts[] = {
    {"",                                                                                                              "x:"                },
    {"<string name='Name' value='Shown'/>",                                                                           "Shown:"            },
    {"<list name='SubLists' type='obj'><obj class='FPresetList' ID='3'><string name='ID' value='s'/></obj></list>"
     "<list name='Presets' type='obj'><obj class='FPreset' ID='4'><string name='Name' value='p'/></obj></list>", "x:p=none?;s[]"     },
    {"<list name='Presets' type='obj'><obj class='FPreset' ID='4'><string name='Name' value='old'/></obj></list>"
     "<list name='Items' type='obj'><obj class='FPreset' ID='5'><string name='Name' value='new'/></obj></list>", "x:new=none?;"      },
    {"<list name='Items' type='obj'><item value='2'/>"  // in itself, twice, and around itself
     "<obj class='FPreset' ID='6'><string name='Name' value='p'/><obj name='Object' ID='2'/></obj><item value='6'/>"
     "<obj class='FPreset' ID='7'><string name='Name' value='m'/>"
     "<obj class='FMultiPreset' name='Object' ID='8'><list name='Objects' type='obj'><item value='7'/><item value='8'/>"
     "<obj class='FPreset' ID='9'><obj name='Object' ID='8'/></obj></list></obj></obj></list>",                  "x:p=none?;m=none?;"},
    {"<list name='Items' type='obj'><obj class='FPreset' ID='6'><string name='Name' value='p'/></obj></list></obj>"
     "<obj class='FPresetList' ID='7'><string name='ID' value='x'/>"  // another one of the id, around the first
     "<list name='Items' type='obj'><obj class='FPreset' ID='8'><string name='Name' value='p'/>"
     "<obj name='Object' ID='2'/></obj></list>",                                                                 "x:p=none?;"        },
};

TEST_F(Presets, FilesOfAllKindsAreRead) {
    for (const auto& [text, expected] : kTexts) {
        FPresetList* list = readList(text);
        EXPECT_EQ(utf8(list->getName()) + ":" + shown(*list), expected) << text;
    }
}

/** Each object refers to the one before it, and the file itself is flat. */
TEST_F(Presets, NoChainInAFileCostsStackOrStopsSaving) {
    constexpr int32_t kMany = 20000;
    for (const char* kind :
         {"PresetList' ID='%d'><string name='ID' value='l'/><list name='Items' type='obj'><item value='%d'/></list>",
          "Preset' ID='%d'><obj name='Object' ID='%d'/>",
          "MultiPreset' ID='%d'><list name='Objects' type='obj'><item value='%d'/></list>"}) {
        FString one;
        std::string chain;
        for (int32_t i = 11; i <= kMany; ++i)
            chain += std::string("<obj class='F") + one.printf(kind, i, i - 1).text8() + "</obj>";
        FPresetList* list = readList(
            "<list name='Items' type='obj'><obj class='FPreset' ID='100000'>"
            "<obj name='Object' ID='20000'/></obj></list>",
            chain);
        EXPECT_EQ(list->countPresets(false), 1);
        EXPECT_TRUE(store()) << kind;
        auto* top = classCast<FPresetList>(list->getPresetObject(0));
        EXPECT_LT(top ? top->countItems(true, true, true) : 0, 300);
    }
}

/** The leak checker would tell what holds itself. */
TEST_F(Presets, NoFileMakesAPresetHoldItself) {
    const OPtr<CmArray> array(new CmArray);
    array->_ownsObjects = CmContainer::kShares;
    const OPtr<FPreset> preset(new FPreset(IPtr<CmObject>(array.get()).detach(), u"of what it stands in"));
    array->add(preset);
    FMemoryStream objects, attributes;
    EXPECT_TRUE(FNewArchive(&objects, true).save(array.get()));
    {
        FXmlArchive writer(&attributes, true);
        EXPECT_TRUE(writer.addRoot("root", array) && writer.save("T"));
    }
    preset->setObject(nullptr);
    objects.rewind();
    attributes.rewind();
    FXmlArchive reader(&attributes, false);
    reader.load("T");
    const OPtr<CmObject> read[] = {OPtr<CmObject>(FNewArchive(&objects, false).load("CmArray")),
                                   OPtr<CmObject>(reader.getRoot("root"))};
    for (const OPtr<CmObject>& each : read) {
        const auto* again = classCast<CmArray>(each.get());
        ASSERT_TRUE(again && again->total() == 1);
        EXPECT_FALSE(static_cast<FPreset*>(again->at(0))->getObject());
    }
}

/** Lists of one id in a file: another one each time, one of them again and again, and one within another. */
TEST_F(Presets, ManyListsOfAnIdAreMergedSoon) {
    constexpr int32_t kMany = 20000;
    const auto listOf = [](int32_t id, const std::string& items) {
        return "<obj class='FPresetList' ID='" + std::to_string(id) + "'><string name='ID' value='x'/>" +
               "<list name='Items' type='obj'>" + items + "</list></obj>";
    };
    std::string others = "</obj>", again = others;
    for (int32_t i = 0; i < kMany; ++i) {
        const std::string name = std::to_string(i);
        others += listOf(10 + i, listOf(100000 + i, "<obj class='FPreset' ID='" + std::to_string(200000 + i) +
                                                        "'><string name='Name' value='" + name + "'/></obj>"));
        again += "<item value='2'/>";
    }
    for (std::string* text : {&others, &again})
        *text += "<obj class='FPresetList' ID='7'><string name='ID' value='y'/>";
    EXPECT_EQ(readList(others)->getSubList(0)->countPresets(false), kMany);
    EXPECT_EQ(readList(again)->countItems(true, true, true), 0);
    readList("<list name='Items' type='obj'>" + listOf(3, "") + listOf(4, "") + "</list></obj><item value='3'/>" +
             "<item value='4'/><obj class='FPresetList' ID='7'><string name='ID' value='y'/>");
    EXPECT_EQ(pool->countRAMLists(), 2);
    const std::string q = "'><string name='ID' value='q'/>";
    readList("<list name='Items' type='obj'><obj class='FPresetList' ID='3" + q +
             "</obj></list></obj><item value='3'/>" + "<obj class='FPresetList' ID='7" + q +
             "<list name='Items' type='obj'>" + listOf(8, "") + "</list>");
    EXPECT_EQ(pool->getRAMList(u"q", false)->countSubLists(), 1);
}

TEST_F(Presets, MergingHoldsWhatItNeedsAndNoMore) {
    class Remover : public CmObject {
    public:
        explicit Remover(FPresetList& list) : list(list) { list.addDependent(this); }
        ~Remover() override { list.removeDependent(this); }
        using CmObject::update;
        void update(CmObject* /*changed*/, int32_t /*message*/) override { list.removeAll(true, true); }

    private:
        FPresetList& list;
    };
    const OPtr<FPresetList> mine(new FPresetList(u"mine")), theirs(new FPresetList(u"theirs"));
    const OPtr<FNPath> object(new FNPath(u"o", kFilePath));
    theirs->addPreset(IPtr<CmObject>(object.get()).detach(), u"p", true, -1);
    theirs->addSubList(u"s");
    for (int32_t i = 0; i < 3; ++i)
        mine->adjustTo(theirs);
    EXPECT_EQ(referencesOf(object), 3u);
    const OPtr<Remover> remover(new Remover(*mine));
    mine->adjustTo(theirs);
    EXPECT_EQ(theirs->countItems(true, true, true), 2);
}

TEST_F(Presets, WhatCannotBeTakenInLeavesMemoryAsItWas) {
    add(ramList(), u"A", u"a");
    ASSERT_TRUE(store());
    const std::string good = user.read("RAMPresets.xml");
    ramList()->setPresetName(0, u"B");
    std::vector<std::string> texts = {good};
    texts[0].replace(texts[0].find("\"ID\""), 4, "\"IE\"");
    for (size_t length = 0; length + 1 < good.size(); length += 3)
        texts.push_back(good.substr(0, length));
    for (const std::string& text : texts) {
        user.write("RAMPresets.xml", text);
        EXPECT_FALSE(pool->load(user.self())) << text;
        EXPECT_EQ(shown(*ramList()), "B=a?;") << text;
    }
}

/** Also when others could be read in its place. */
TEST_F(Presets, TheUsersFilesThatCannotBeReadStayAsCopies) {
    for (const bool ownFile : {false, true})
        add(ramList(ownFile ? u"own" : u"id", ownFile), u"A", u"a");
    fs::create_directory(application.path / "Presets");
    ASSERT_TRUE(pool->store(application.at("Presets")));
    const fs::path folder = user.path / "Presets";
    constexpr const char *kFiles[] = {"Presets/RAMPresets.xml", "Presets/own.pxml"},
                         *kInTheWay = "RAMPresets.xml.backup";
    fs::create_directories(folder / kInTheWay);
    for (const char* file : kFiles)
        user.write(file, "mine");
    PostDefLoadFPresetPool();
    ASSERT_EQ(gPresetPool->countRAMLists(), 2);
    PreDefSaveFPresetPool();
    EXPECT_EQ(user.read(kFiles[0]), "mine") << "no copy could be made";
    fs::remove(folder / kInTheWay);
    PreDefSaveFPresetPool();
    PreDefSaveFPresetPool();
    for (const std::string file : kFiles) {
        EXPECT_EQ(user.read(file + ".backup"), "mine");
        EXPECT_NE(user.read(file), "mine");
    }
}

TEST_F(Presets, AFolderHoldsAFileForEachPreset) {
    user.write("outside.xml", "<Presets/>");
    EXPECT_EQ(fileList(u".."), nullptr);
    FPresetList* list = fileList();
    ASSERT_TRUE(list && list == fileList());
    EXPECT_EQ(add(list, u"Take 1.5", u"a"), 0);
    EXPECT_EQ(add(list, u"Take 1.5", u"b"), 1);
    EXPECT_EQ(add(list, u"x/y.xml", u"c", true, 0), 0);
    EXPECT_EQ(add(list, u"..", u"d", true, 0), -1);
    add(list->addSubList(u"sub"), u"E", u"e");
    EXPECT_EQ(user.names("Presets/Files"), (Names{"Take 1.5.xml", "Take 1.5-01.xml", "x_y.xml.xml", "sub"}));

    user.write("Presets/Files/broken.xml", "<Presets>");
    user.write("Presets/Files/other.txt", "");
    fs::create_directory_symlink(user.path / "Presets", user.path / "Presets/Files/loop");
    EXPECT_TRUE(pool->removeFilePreset(static_cast<FFilePresetList*>(list)));
    list = fileList();
    const OPtr<FMultiPreset> group(new FMultiPreset);
    const OPtr<FPresetPointer> pointer(new FPresetPointer(list->getPreset(3)));
    group->addObject(pointer);
    const OPtr<FAttributes> bag(new FAttributes);
    EXPECT_TRUE(group->storeAttributes(*bag));
    EXPECT_EQ(objectName(bag->unqueueObject("Objects")), "c") << "never read";
    EXPECT_EQ(shown(*list), "broken=none?;sub[E=e?;]Take 1.5=a?;Take 1.5-01=b?;x_y.xml=c?;");
    EXPECT_TRUE(list->setPresetName(1, u"broken"));
    EXPECT_TRUE(list->setPresetName(0, u"still broken")) << "never read";
    EXPECT_TRUE(list->removePresetAt(2));
    pointer->setName(u"z");
    EXPECT_EQ(shown(*list), "still broken=none?;sub[E=e?;]broken-01=a?;z=c?;");
    EXPECT_EQ(user.names("Presets/Files"),
              (Names{"still broken.xml", "broken-01.xml", "z.xml", "sub", "other.txt", "loop"}));
    EXPECT_GE(add(list, u".5 gain", u"f"), 0);
    EXPECT_TRUE(fs::exists(user.path / "Presets/Files/_5 gain.xml")) << "hidden ones aren't found again";
}

TEST_F(Presets, TheFirstStartTakesTheApplicationsPresets) {
    add(ramList(), u"A", u"a");
    fs::create_directories(application.path / "Presets/folder");
    ASSERT_TRUE(pool->store(application.at("Presets")));
    application.write("Presets/folder/x.xml", "x");
    for (const bool isGuest : {true, false}) {
        FDefaultPool::isGuest = isGuest;
        PostDefLoadFPresetPool();
        gPresetPool->getRAMList(u"id", false)->setPresetName(0, u"mine");
        PreDefSaveFPresetPool();
        EXPECT_EQ(add(gPresetPool->getPresetList(u"Files", FPresetList::kFolder, nullptr), u"B", u"b"), -isGuest);
        EXPECT_EQ(user.names().empty(), isGuest) << "it only reads";
        FPresetPool::unuse();
    }
    EXPECT_EQ(user.read("Presets/folder/x.xml"), "x");
    PostDefLoadFPresetPool();
    EXPECT_EQ(shown(*gPresetPool->getRAMList(u"id", false)), "mine=a?;");
}

TEST_F(Presets, TheOldBinaryFileGoesOnceItWasRead) {
    add(ramList(), u"A", u"a");
    add(ramList(), u"B", u"b", false);
    add(ramList()->addSubList(u"sub"), u"C", u"c");
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
    const OPtr<CmObject> original(new FNPath(u"a", kFilePath));
    for (const bool isCopy : {false, true}) {
        const OPtr<FMultiPreset> written(new FMultiPreset(isCopy)), read(new FMultiPreset(!isCopy));
        EXPECT_TRUE(written->addObject(original) && read->addObject(original));
        const OPtr<FAttributes> bag(new FAttributes);
        ASSERT_TRUE(written->storeAttributes(*bag) && read->restoreAttributes(*bag));
        EXPECT_TRUE(read->holdsCopies() == isCopy && (read->getObject(0) == original.get()) == !isCopy);
        EXPECT_EQ(read->countObjects(), 1);
    }
}
}  // namespace
