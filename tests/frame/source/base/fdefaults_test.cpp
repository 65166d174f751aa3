#include "base/fdefaults.h"
#include "base/fhostclasses.h"
#include "storage/fmstream.h"
#include "storage/fxmlarchive.h"
#include "storage/hooks.h"
#include "tests/frame/source/storage/tempfolder.h"
#include <cmath>
#include <gtest/gtest.h>

using namespace Tessarine;

namespace {
std::string steps;

/** Keeps a number from run to run. */
class Saver : public CmObject {
public:
    DECLARE_ABSTRACT_CLASS(Saver, CmObject)
    bool storeAttributes(FAttributes& attributes) const override { return attributes.set("n", number); }
    bool restoreAttributes(FAttributes& attributes) override {
        steps += "restored ";
        FDefaultPool::removeGlobalAutoSaver(takesAway);
        return attributes.get("n", number);
    }
    int32_t number = 0;
    CmObject* takesAway = nullptr;
};

class Defaults : public testing::Test {
protected:
    Defaults() : before(gStorageHooks) {
        steps.clear();
        user = &folder;
        gStorageHooks.standardFolder = [](int32_t number, FNPath& path) {
            String text;
            if (number != kUserFolder || !text.fromUTF8(user->path.c_str()))
                return false;
            path.fromString(text.text16(), kFolderPath);
            return true;
        };
        FDefaultPool::use();
    }
    ~Defaults() override {
        FDefaultPool::unuse();
        FDefaultPool::isGuest = false;
        gStorageHooks = before;
    }
    std::string content(const char* name = "Defaults.xml") const { return folder.read(name); }
    void write(const std::string& text) const { folder.write("Defaults.xml", text); }
    /** As a new program would find it. */
    static void restart() {
        FDefaultPool::unuse();
        FDefaultPool::use()->load();
    }
    static int32_t numberOf(const char* group, const char* key) {
        int32_t number = -1;
        gDefaults->getLong(group, key, number);
        return number;
    }

    const StorageHooks before;
    TempFolder folder;
    inline static const TempFolder* user = nullptr;
};

TEST_F(Defaults, EveryKindComesBackInTheNextRun) {
    const std::u16string longest(100000, u'"');
    FNPath path(u"/a/b", kFilePath);
    EXPECT_FALSE(gDefaults->save(true)) << "before postInit";
    EXPECT_EQ(content(), "");
    FDefaults* group = gDefaults->getDefaults("Some <Group>", 3, true);
    EXPECT_TRUE(group->setLong("long", INT32_MIN) && group->setLongLong("wide", INT64_MAX) &&
                group->setDouble("real", 0.1) && group->setString8("8 & 8", "a \"b\" <c>") &&
                group->setString16("16", u"\u00e9\u4e2d") && group->setString16("longest", longest.c_str()));
    EXPECT_FALSE(group->setLong("", 1));
    EXPECT_TRUE(gDefaults->getDefaults("Empty", 0, true));
    EXPECT_TRUE(path.storeAsDefault("here"));
    gDefaults->postInit();
    ASSERT_TRUE(gDefaults->save(true));
    EXPECT_NE(content().find("<string name=\"Group\" value=\"Default Paths\"/>"), std::string::npos) << content();
    EXPECT_EQ(content().find("Empty"), std::string::npos);

    restart();
    EXPECT_EQ(gDefaults->countDefaults(), 2);
    group = gDefaults->getDefaults("Some <Group>", 3, false);
    ASSERT_TRUE(group);
    int32_t number = 0;
    int64_t wide = 0;
    double real = 0;
    String narrow, text;
    FNPath found(kFilePath);
    EXPECT_TRUE(group->getLong("long", number) && group->getLongLong("wide", wide) && group->getDouble("real", real));
    EXPECT_TRUE(number == INT32_MIN && wide == INT64_MAX && real == 0.1);
    EXPECT_TRUE(group->getString8("8 & 8", narrow) && narrow == ConstString("a \"b\" <c>"));
    EXPECT_TRUE(group->getString("16", text) && text == ConstString(u"\u00e9\u4e2d"));
    EXPECT_TRUE(group->getString16("longest", text) && text.length() == longest.size());
    EXPECT_TRUE(found.fromDefault("here") && found == path);
    EXPECT_FALSE(found.fromDefault("there"));
}

/** What a module hands in may not cost the program its settings. */
TEST_F(Defaults, NoTextSpoilsTheFile) {
    const std::u16string lowest = u"\u0001", paired = u"\U0001F600", none = u"\uFFFE";
    for (const std::u16string& text : {lowest, paired, none, std::u16string(u"\t\r\n"), std::u16string(u" a  b "),
                                       std::u16string(u"\u0085\u2028<>&'\""), u"x" + lowest}) {
        const String shown(text.c_str());
        SCOPED_TRACE(testing::Message() << std::hex << int32_t(text[0]));
        String narrow(shown), found;
        narrow.toMultiByte();
        const char* name = narrow.text8();
        gDefaults->setLong("good", "k", 5);
        const bool taken = gDefaults->setString16("texts", "k", text.c_str()) == kResultOk;
        const bool takenKey = gDefaults->setLong("keys", name, 6) == kResultOk;
        const bool takenGroup = gDefaults->setLong(name, "k", 7) == kResultOk;
        gDefaults->postInit();
        EXPECT_TRUE(gDefaults->save(false));
        restart();
        EXPECT_EQ(numberOf("good", "k"), 5) << content();
        const FDefaults* texts = gDefaults->findDefaults("texts");
        EXPECT_TRUE(!taken || (texts && texts->getString16("k", found) && found == shown)) << content();
        EXPECT_TRUE(!takenKey || numberOf("keys", name) == 6) << content();
        EXPECT_TRUE(!takenGroup || numberOf(name, "k") == 7) << content();
        FDefaultPool::unuse();
        FDefaultPool::use();
    }
    std::u16string place(3000, u'x');
    place[0] = u'/';
    FNPath longest(place.c_str(), kFilePath);
    gDefaults->setLong("good", "k", 5);
    EXPECT_TRUE(longest.storeAsDefault("path"));
    for (const double number : {HUGE_VAL, std::nan(""), 1e-310})
        gDefaults->setDouble("numbers", std::to_string(number).c_str(), number);
    gDefaults->postInit();
    EXPECT_TRUE(gDefaults->save(false));
    restart();
    FNPath again;
    EXPECT_TRUE(again.fromDefault("path") && again == longest);
    EXPECT_EQ(numberOf("good", "k"), 5) << content();
    double number = 0;
    EXPECT_TRUE(gDefaults->getDouble("numbers", "inf", number) == kResultFalse || number == HUGE_VAL) << number;
    EXPECT_EQ(gDefaults->getDouble("numbers", std::to_string(1e-310).c_str(), number), kResultOk);
    EXPECT_EQ(number, 1e-310);
}

TEST_F(Defaults, AnotherVersionDropsTheGroup) {
    for (const bool create : {false, true}) {
        gDefaults->getDefaults("G", 1, true)->setLong("k", 5);
        EXPECT_EQ(numberOf("G", "k"), 5) << "keyed calls name no version";
        EXPECT_EQ(gDefaults->setLong("G", "k2", 6), kResultOk);
        EXPECT_EQ(gDefaults->getDefaults("G", 1, false)->getVersion(), 1);
        EXPECT_FALSE(gDefaults->removeDefaults("G", 2));
        const FDefaults* other = gDefaults->getDefaults("G", 2, create);
        EXPECT_EQ(other != nullptr, create);
        EXPECT_TRUE(!other || other->isEmpty());
        EXPECT_EQ(numberOf("G", "k"), -1);
    }
    EXPECT_EQ(gDefaults->getDefaults("", 0, true), nullptr);
    EXPECT_EQ(gDefaults->setLong("new", "k", 1), kResultOk);
    EXPECT_TRUE(gDefaults->getDefaults("new", 0, false)) << "made with version 0";
    int32_t value = 9;
    EXPECT_FALSE(gDefaults->findDefaults("new")->initLong("init", value));
    EXPECT_EQ(numberOf("new", "init"), 9);
    EXPECT_STREQ(gDefaults->getDefaults(gDefaults->findDefaults("new")->getGroup(), 1, true)->getGroup(), "new");
}

TEST_F(Defaults, AutoSaversAreRestoredBeforeThePostLoaders) {
    static bool active;
    active = true;
    FDefaultPool::addPreSaveFunc([] { steps += active ? "saving " : ""; });
    FDefaultPool::addPostLoadFunc([] { steps += active ? "loaded " : ""; });
    const OPtr<Saver> saver(new Saver);
    saver->number = 7;
    EXPECT_TRUE(FDefaultPool::addGlobalAutoSaver(saver));
    EXPECT_FALSE(FDefaultPool::addGlobalAutoSaver(saver));
    gDefaults->postInit();
    EXPECT_TRUE(gDefaults->save(true) && gDefaults->save(false));
    EXPECT_EQ(steps, "loaded saving ");

    steps.clear();
    saver->number = 0;
    restart();
    FDefaultPool::addGlobalAutoSaver(saver);
    FDefaultPool::addGlobalAutoSaver(saver->takesAway = OPtr<CmObject>(new Saver));
    gDefaults->postInit();
    gDefaults->postInit();
    EXPECT_EQ(steps, "restored loaded ");
    EXPECT_EQ(saver->number, 7);
    active = false;
}

TEST_F(Defaults, WhatCannotBeTakenInLeavesMemoryAndACopyOfTheFile) {
    gDefaults->setLong("A", "k", 1);
    gDefaults->setString16("B", "k", u"text");
    gDefaults->postInit();
    ASSERT_TRUE(gDefaults->save(false));
    const std::string good = content(), group =
                                            "<item>\r<string name=\"Group\" value=\"A\"/>\r<member name=\"Values\">"
                                            "</member></item>";
    std::vector<std::string> texts = {
        "<Defaults><list name=\"Entries\" type=\"list\"><item><int name=\"Version\" value=\"1\"/></item></list></Defaults>",
        "<Defaults><list name=\"Entries\" type=\"list\"><item><string name=\"Group\" value=\"A\"/></item></list></Defaults>",
        "<Defaults><list name=\"Entries\" type=\"list\">" + group + group + "</list></Defaults>",
        "<Other></Other>",
    };
    for (size_t length = 0; length + 1 < good.size(); length += 3)
        texts.push_back(good.substr(0, length));
    for (const std::string& text : texts) {
        SCOPED_TRACE(text);
        gDefaults->setLong("A", "k", 2);
        write(text);
        EXPECT_FALSE(gDefaults->load());
        EXPECT_EQ(numberOf("A", "k"), 2);
        EXPECT_EQ(gDefaults->countDefaults(), 2);
    }
    const std::string bad = content();
    EXPECT_TRUE(gDefaults->save(false));
    EXPECT_EQ(content("Defaults.xml.backup"), bad);
    std::string endless = good, references;  // that begin in each other take no longer than others
    for (int32_t i = 0; i < 2000000; ++i)
        references += "&#";
    write(endless.insert(endless.find("text"), references + ';'));
    EXPECT_TRUE(gDefaults->load());
    write(good);
    EXPECT_TRUE(gDefaults->load());
    EXPECT_EQ(numberOf("A", "k"), 1);
}

TEST_F(Defaults, AGuestReadsAndNeverWrites) {
    gDefaults->setLong("A", "k", 1);
    gDefaults->postInit();
    ASSERT_TRUE(gDefaults->save(false));
    const std::string good = content();
    restart();
    FDefaultPool::isGuest = true;
    EXPECT_EQ(gDefaults->setLong("A", "k", 2), kResultOk);
    gDefaults->postInit();
    EXPECT_FALSE(gDefaults->save(true) || gDefaults->saveArchive("Other"));
    EXPECT_EQ(content(), good);
    EXPECT_EQ(folder.names(), std::set<std::string>{"Defaults.xml"});
}

TEST_F(Defaults, ModulesReachTheProgramsPoolUntilItEnds) {
    const OPtr<FHostClasses> host(new FHostClasses);
    const FInstancePtr<IDefaultPool3> pool(host.get());
    ASSERT_TRUE(pool);
    EXPECT_EQ(pool->setTString("G", "t", u"\u4e2d text"), kResultOk);
    EXPECT_EQ(pool->setString8("G", "8", "seven c"), kResultOk);
    char text[8] = "before";
    tchar wide[8] = u"before";
    EXPECT_EQ(pool->getString8("G", "8", text, 7), kResultFalse) << "no place for the terminator";
    EXPECT_STREQ(text, "before");
    EXPECT_EQ(pool->getString8("G", "8", text, 8), kResultOk);
    EXPECT_STREQ(text, "seven c");
    EXPECT_EQ(pool->getString16("G", "t", wide, 8), kResultOk);
    EXPECT_EQ(std::u16string(wide), u"\u4e2d text");
    EXPECT_EQ(pool->getString16("G", "missing", wide, 8), kResultFalse);

    FDefaultPool::unuse();
    EXPECT_EQ(pool->setLong("G", "k", 1), kResultFalse);
    int32_t number = 4;
    EXPECT_EQ(pool->getLong("G", "k", number), kResultFalse);
    EXPECT_EQ(number, 4);
    EXPECT_FALSE(FInstancePtr<IDefaultPool>(host.get()));
}

IMPLEMENT_ABSTRACT_CLASS(Saver, CmObject)
}  // namespace
