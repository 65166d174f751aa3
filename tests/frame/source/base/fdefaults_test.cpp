#include "base/fdefaults.h"
#include "base/fhostclasses.h"
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
    bool storeAttributes(FAttributes& attributes) const override {
        return (!extra || attributes.setObject("extra", extra)) && attributes.set("n", number);
    }
    bool restoreAttributes(FAttributes& attributes) override {
        steps += "restored ";
        FDefaultPool::removeGlobalAutoSaver(takesAway);
        return attributes.get("n", number);
    }
    int32_t number = 0;
    CmObject *takesAway = nullptr, *extra = nullptr;
};

class Defaults : public testing::Test, protected StandardFolders {
protected:
    Defaults() {
        steps.clear();
        FDefaultPool::use();
    }
    ~Defaults() override {
        FDefaultPool::unuse();
        FDefaultPool::isGuest = false;
    }
    std::string content(const char* name = "Defaults.xml") const { return user.read(name); }
    void write(const std::string& text) const { user.write("Defaults.xml", text); }
    static bool save() { return gDefaults->postInit(), gDefaults->save(true); }
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
};

TEST_F(Defaults, EveryKindComesBackInTheNextRun) {
    FNPath path(u"/a/b", kFilePath), found(kFilePath);
    EXPECT_FALSE(gDefaults->save(true)) << "before postInit";
    FDefaults* group = gDefaults->getDefaults("Some <Group>", 3, true);
    EXPECT_TRUE(group->setLong("long", INT32_MIN) && group->setLongLong("wide", INT64_MAX) &&
                group->setDouble("real", 0.1) && group->setString8("8 & 8", "a \"b\" <c>") &&
                group->setString16("16", u"\u00e9\u4e2d"));
    EXPECT_TRUE(gDefaults->getDefaults("Empty", 0, true));
    EXPECT_TRUE(path.storeAsDefault("here"));
    ASSERT_TRUE(save());
    restart();
    EXPECT_EQ(gDefaults->countDefaults(), 2) << "without the empty one";
    group = gDefaults->getDefaults("Some <Group>", 3, false);
    ASSERT_TRUE(group);
    int32_t number = 0;
    int64_t wide = 0;
    double real = 0;
    String text;
    EXPECT_TRUE(group->getLong("long", number) && number == INT32_MIN);
    EXPECT_TRUE(group->getLongLong("wide", wide) && wide == INT64_MAX);
    EXPECT_TRUE(group->getDouble("real", real) && real == 0.1);
    EXPECT_TRUE(group->getString8("8 & 8", text) && text == ConstString("a \"b\" <c>"));
    EXPECT_TRUE(group->getString("16", text) && text == ConstString(u"\u00e9\u4e2d"));
    EXPECT_TRUE(found.fromDefault("here") && found == path && gDefaults->findDefaults("Default Paths"));
    EXPECT_FALSE(found.fromDefault("there"));
}

/** What a module hands in may not cost the program its settings. */
TEST_F(Defaults, NothingSpoilsTheFile) {
    for (const std::u16string text :
         {u"\u0001", u"\U0001F600", u"\uFFFE", u"\t\r\n", u" a  b ", u"\u0085\u2028<>&'\"", u"x\u0001"}) {
        const String shown(text.c_str());
        SCOPED_TRACE(testing::Message() << std::hex << int32_t(text[0]));
        String narrow(shown), found;
        narrow.toMultiByte();
        const char* name = narrow.text8();
        gDefaults->setLong("good", "k", 5);
        const bool taken[] = {gDefaults->setString16("good", "text", text.c_str()) == kResultOk,
                              gDefaults->setLong("keys", name, 6) == kResultOk,
                              gDefaults->setLong(name, "k", 7) == kResultOk};
        EXPECT_TRUE(save());
        restart();
        EXPECT_EQ(numberOf("good", "k"), 5) << content();
        const FDefaults* good = gDefaults->findDefaults("good");
        EXPECT_TRUE(!taken[0] || (good && good->getString16("text", found) && found == shown)) << content();
        EXPECT_TRUE(!taken[1] || numberOf("keys", name) == 6) << content();
        EXPECT_TRUE(!taken[2] || numberOf(name, "k") == 7) << content();
        FDefaultPool::unuse();
        FDefaultPool::use();
    }
    for (const double number : {HUGE_VAL, std::nan("")})
        gDefaults->setDouble("good", std::to_string(number).c_str(), number);
    gDefaults->setLong("good", "k", 5);
    EXPECT_TRUE(save());
    const OPtr<CmObject> unstorable(new CmObject);
    const OPtr<Saver> saver(new Saver);
    saver->extra = unstorable;
    FDefaultPool::addGlobalAutoSaver(saver);
    gDefaults->setObject("good", "object", unstorable);
    EXPECT_FALSE(save()) << "but for the object";
    restart();
    EXPECT_EQ(numberOf("good", "k"), 5) << content();
}

TEST_F(Defaults, AnotherVersionDropsTheGroup) {
    for (const bool create : {false, true}) {
        gDefaults->getDefaults("G", 1, true)->setLong("k", 5);
        EXPECT_EQ(numberOf("G", "k"), 5) << "keyed calls name no version";
        EXPECT_EQ(gDefaults->setLong("G", "k2", 6), kResultOk);
        EXPECT_FALSE(gDefaults->removeDefaults("G", 2));
        const FDefaults* other = gDefaults->getDefaults("G", 2, create);
        EXPECT_EQ(other != nullptr, create);
        EXPECT_EQ(numberOf("G", "k"), -1);
    }
    EXPECT_EQ(gDefaults->setLong("new", "k", 1), kResultOk);
    FDefaults* made = gDefaults->getDefaults("new", 0, false);
    ASSERT_TRUE(made);
    int32_t value = 9;
    EXPECT_TRUE(!made->initLong("init", value) && numberOf("new", "init") == 9);
    EXPECT_STREQ(gDefaults->getDefaults(made->getGroup(), 1, true)->getGroup(), "new");
}

TEST_F(Defaults, AutoSaversAreRestoredBeforeThePostLoaders) {
    static bool active;
    active = true;
    FDefaultPool::addPreSaveFunc([] { steps += active ? "saving " : ""; });
    FDefaultPool::addPostLoadFunc([] { steps += active ? "loaded " : ""; });
    const OPtr<Saver> saver(new Saver), other(new Saver);
    saver->number = 7;
    EXPECT_TRUE(FDefaultPool::addGlobalAutoSaver(saver));
    EXPECT_FALSE(FDefaultPool::addGlobalAutoSaver(saver));
    EXPECT_TRUE(save() && gDefaults->save(false));
    EXPECT_EQ(steps, "loaded saving ");

    steps.clear();
    saver->number = 0;
    restart();
    FDefaultPool::addGlobalAutoSaver(saver);
    FDefaultPool::addGlobalAutoSaver(saver->takesAway = other);
    gDefaults->postInit();
    gDefaults->postInit();
    EXPECT_EQ(steps, "restored loaded ");
    EXPECT_EQ(saver->number, 7);
    active = false;
}

TEST_F(Defaults, WhatCannotBeTakenInLeavesMemoryAndACopyOfTheFile) {
    gDefaults->setLong("A", "k", 1);
    gDefaults->setString16("B", "k", u"text");
    ASSERT_TRUE(save());
    const std::string good = content(), begin = "<Defaults><list name=\"Entries\" type=\"list\">",
                      group = "<item><string name=\"Group\" value=\"A\"/><member name=\"Values\"></member></item>",
                      end = "</list></Defaults>";
    std::vector<std::string> texts = {
        begin + "<item><member name=\"Values\"></member></item>" + end,
        begin + "<item><string name=\"Group\" value=\"A\"/></item>" + end,
        begin + group + group + end,
        "<Defaults><int name=\"Entries\" value=\"3\"/></Defaults>",
        "<Defaults><member name=\"Entries\"></member></Defaults>",
        "<Defaults><list name=\"Entries\" type=\"int\"><item value=\"3\"/></list></Defaults>",
        "<Other></Other>",
    };
    for (size_t length = 0; length + 1 < good.size(); length += 3)
        texts.push_back(good.substr(0, length));
    for (const std::string& text : texts) {
        gDefaults->setLong("A", "k", 2);
        write(text);
        EXPECT_FALSE(gDefaults->load()) << text;
        EXPECT_EQ(numberOf("A", "k"), 2) << text;
        EXPECT_EQ(gDefaults->countDefaults(), 2) << text;
    }
    EXPECT_TRUE(save());
    EXPECT_EQ(content("Defaults.xml.backup"), texts.back());
    std::string endless = good, references;  // that begin in each other take no longer than others
    for (int32_t i = 0; i < 2000000; ++i)
        references += "&#";
    for (const std::string& text : {endless.insert(endless.find("text"), references + ';'), good}) {
        write(text);
        EXPECT_TRUE(gDefaults->load());
        EXPECT_EQ(numberOf("A", "k"), 1);
    }
}

TEST_F(Defaults, AGuestReadsAndNeverWrites) {
    gDefaults->setLong("A", "k", 1);
    ASSERT_TRUE(save());
    const std::string good = content();
    FDefaultPool::isGuest = true;
    EXPECT_EQ(gDefaults->setLong("A", "k", 2), kResultOk);
    EXPECT_FALSE(save() || gDefaults->saveArchive("Other"));
    EXPECT_EQ(content(), good);
    EXPECT_EQ(user.names(), std::set<std::string>{"Defaults.xml"});
}

TEST_F(Defaults, ModulesReachTheProgramsPoolUntilItEnds) {
    const OPtr<FHostClasses> host(new FHostClasses);
    const FInstancePtr<IDefaultPool3> pool(host.get());
    ASSERT_TRUE(pool);
    EXPECT_EQ(pool->setTString("G", "8", u"seven c"), kResultOk);
    char text[8] = "before";
    EXPECT_EQ(pool->getString8("G", "8", text, 7), kResultFalse) << "no place for the terminator";
    EXPECT_STREQ(text, "before");
    EXPECT_EQ(pool->getString8("G", "8", text, 8), kResultOk);
    EXPECT_STREQ(text, "seven c");

    FDefaultPool::unuse();
    int32_t number = 4;
    EXPECT_EQ(pool->setLong("G", "k", 1), kResultFalse);
    EXPECT_EQ(pool->getLong("G", "k", number), kResultFalse);
    EXPECT_FALSE(FInstancePtr<IDefaultPool>(host.get()));
}

IMPLEMENT_ABSTRACT_CLASS(Saver, CmObject)
}  // namespace
