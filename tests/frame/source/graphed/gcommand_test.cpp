#include "graphed/gcommand.h"
#include "base/fdefaults.h"
#include "base/source/updatehandler.h"
#include "graphed/gactionprocessor.h"
#include "graphed/gcommandmanager.h"
#include "graphed/gcommandvalue.h"
#include "graphed/gkeycommandsfile.h"
#include "graphed/hooks.h"
#include "gui/values/uvaluecontainer.h"
#include "storage/fmstream.h"
#include "storage/fnewarchive.h"
#include "storage/fpersistent.h"
#include "storage/fxmlarchive.h"
#include "tests/frame/source/storage/tempfolder.h"
#include "tests/support/uncounted.h"
#include <gtest/gtest.h>

using namespace Tessarine;

namespace {
/** Interprets all but "Nobody", and answers -1 for "Refuse". */
struct Handler final : Uncounted<IActionHandler> {
    int32_t handleAction(const char* category, const char* name, bool perform) override {
        heard += std::string(perform ? "!" : "?") + category + "/" + name + " ";
        return std::string(name) == "Nobody" ? 0 : std::string(name) == "Refuse" ? -1 : 1;
    }
    std::string heard;
};

class CommandTest : public testing::Test {
protected:
    CommandTest() {
        gActionHooks = {};
        shown.clear();
        gActionHooks.showText = [](const tchar* text) { shown = String(text).text8(); };
        manager.addActionHandler(&handler);
        for (const char* name : {"Cut", "Paste", "Undo"})
            add("Edit", name);
        manager.addCommand("File", "Open", u"Open...", kOpenKey);
    }
    ~CommandTest() override { gActionHooks = {}; }

    GCommand* add(const char* category, const char* name, const UKeyCode& key = UKeyCode()) {
        return manager.addCommand(category, name, nullptr, key);
    }
    GCommand* command(const char* category, const char* name) {
        return manager.findCommand(ConstString(category), ConstString(name));
    }
    bool giveKey(tchar key, const char* category, const char* name) {
        return manager.addKeyCommand(UKeyCode(key), ConstString(category), ConstString(name));
    }
    std::string keysOf(const char* category, const char* name) {
        String text;
        if (const GCommand* found = command(category, name))
            manager.getKeyCodesString(*found, text);
        return text.text8();
    }
    GMacroCommand* macro(const char* name) { return manager.findMacro(ConstString(name)); }
    std::string takeHeard() { return std::exchange(handler.heard, {}); }

    GKeyCommandsFile::Result import(const std::string& content) {
        FMemoryStream stream;
        fill(stream, content);
        return GKeyCommandsFile::importFrom(stream, manager);
    }
    bool internalize(const std::string& bytes) {
        FMemoryStream stream;
        fill(stream, bytes);
        FNewArchive reader(&stream, false);
        return manager.internalize(reader);
    }
    static void fill(FMemoryStream& stream, const std::string& bytes) {
        stream.writeRaw(bytes.data(), int64_t(bytes.size()));
        stream.rewind();
    }
    static std::string bytesOf(FMemoryStream& stream) {
        return std::string(stream.getData(), size_t(stream.getSize()));
    }

    inline static const UKeyCode kOpenKey{u'o', 0, UKeyCode::kCommand};
    UpdateHandler updates;
    GCommandManager manager;
    Handler handler;
    inline static std::string shown;
};

TEST_F(CommandTest, IsTriggeredByItsValues) {
    OPtr<UValueContainer> values(new UValueContainer);
    EXPECT_EQ(values->newCommandValue("Edit", "None", "none")->getOwner(), nullptr);
    UValue* value = values->newCommandValue("Edit", "Cut", "cut");
    value->setTargetValue(1);
    manager.removeAction("Edit", "Cut");  // its command is still its own
    for (const int32_t touch : {0, 1})
        value->setTargetValue(touch);
    EXPECT_EQ(takeHeard(), "!Edit/Cut !Edit/Cut ");
}

TEST_F(CommandTest, FiresAndMapsTheAnswer) {
    struct Row {
        const char* name;
        bool enabled;
        int32_t fired, performed;
    };
    constexpr Row kRows[] = {
        {"Act",    true,  1,  kResultOk   },
        {"Nobody", true,  0,  kResultFalse},
        {"Act",    false, -1, kWrongState },
        {"Cut",    false, 1,  kResultOk   }, // stays enabled
    };
    for (const Row& row : kRows) {
        SCOPED_TRACE(row.name);
        GCommand* tested = add("Edit", row.name);
        tested->enable(row.enabled);
        EXPECT_EQ(tested->fire(0), row.fired);
        EXPECT_EQ(manager.performAction("Edit", row.name), row.performed);
        const char *category = nullptr, *name = nullptr;
        EXPECT_EQ(manager.getLastPerformedAction(&category, &name), kResultOk);
        EXPECT_STREQ(name, row.name) << "also when it was disabled";
    }
    EXPECT_EQ(manager.canPerformAction("Edit", "Nobody"), kResultFalse);
    manager.addAction("Test", "Plain");
    EXPECT_FALSE(command("Test", "Plain")->canDisable());
    manager.addOldName("Old", "Cut It", "Edit", "Cut");
    takeHeard();
    manager.performAction("Old", "Cut It");
    EXPECT_EQ(takeHeard(), "!Edit/Cut ");
}

TEST_F(CommandTest, OffTheMainThreadAndDeferredActionsArePosted) {
    gActionHooks.isMainThread = [] { return false; };
    EXPECT_EQ(manager.performAction("Edit", "Unknown"), kResultOk);
    gActionHooks.isMainThread = nullptr;
    gActionHooks.defersActions = [] { return true; };
    EXPECT_EQ(manager.performAction("Edit", "Paste"), kResultOk);
    EXPECT_EQ(takeHeard(), "");
    for (int32_t i = 0; i < 2; ++i)
        gMessenger->deliverMessages();
    EXPECT_EQ(takeHeard(), "!Edit/Paste !Edit/Unknown ") << "the other one is deferred too";
}

TEST_F(CommandTest, DefaultKeysAreNotTakenFromOthers) {
    GCommand* other = manager.addCommand("Test", "Other", nullptr, kOpenKey, "Test|More");
    EXPECT_TRUE(other->defaultKeys.isEmpty());
    EXPECT_EQ(manager.findCommand(kOpenKey), command("File", "Open"));
    EXPECT_TRUE(manager.addKeyCommand(kOpenKey, other->category, other->name));
    EXPECT_EQ(manager.findCommand(kOpenKey), other);
    for (const bool agrees : {false, true}) {
        static bool agreed;
        agreed = agrees;
        gActionHooks.ask = [](const tchar* text) {
            return agreed && String(text) == u"Do you want to reset all key commands?";
        };
        EXPECT_EQ(manager.resetAllKeyCommands(), agrees);
        EXPECT_EQ(keysOf("File", "Open"), agrees ? "Ctrl+O" : "");
    }
    for (const tchar one : {u'k', u'O'})
        add("Test", "Other", UKeyCode(one, 0, UKeyCode::kCommand));
    EXPECT_EQ(keysOf("Test", "Other"), "Ctrl+K");
    EXPECT_EQ(other->defaultKeys.total(), 2) << "one may become free";
    const char *edit = manager.getCategoryName(0), *cut = manager.getActionName(0, 0);
    EXPECT_TRUE(std::string(edit) == "Edit" && std::string(cut) == "Cut") << "one beside the other";
    manager.addCommand("Other", "Other", nullptr, UKeyCode(), "Test|More");
    EXPECT_EQ(manager.removeAction("Other", "Other"), kResultOk);
    const GCommandCategory* more = manager.findCategory(ConstString("Test|More"));
    ASSERT_EQ(more->countCommands(), 1);
    EXPECT_EQ(more->commandAt(0)->category, ConstString("Test")) << "the other one of this name";
}

/** A command comes after its keys were read, or goes and comes again. */
TEST_F(CommandTest, KeysOfCommandsThatComeLaterAreThoseThatWereStored) {
    const auto addLate = [&] {
        for (const tchar key : {u'1', u'2'})
            add("Edit", "Late", UKeyCode(key));
        return keysOf("Edit", "Late");
    };
    EXPECT_EQ(addLate(), "1, 2");
    manager.removeKeyCommand(UKeyCode(u'2'));
    giveKey(u'3', "Edit", "Late");
    FAttributes bag;
    ASSERT_TRUE(manager.storeAttributes(bag));
    manager.removeAction("Edit", "Late");
    EXPECT_EQ(manager.findKeyCommand(UKeyCode(u'3')), nullptr);
    EXPECT_EQ(addLate(), "1, 3") << "went and came";
    manager.removeAction("Edit", "Late");
    ASSERT_TRUE(manager.restoreAttributes(bag));
    giveKey(u'3', "Edit", "Cut");
    EXPECT_EQ(addLate(), "1") << "a key that was given to another one since";
    manager.resetAllKeyCommands();
    manager.removeAction("Edit", "Late");
    manager.addOldName("Edit", "Late", "Edit", "New");
    add("Edit", "New");
    EXPECT_EQ(keysOf("Edit", "New"), "1, 2") << "under its old name";
    manager.removeAction("Edit", "New");
    add("Edit", "Newer", UKeyCode(u'9'));
    manager.addOldName("Edit", "New", "Edit", "Newer");
    EXPECT_EQ(keysOf("Edit", "Newer"), "1, 2") << "that is told later";
}

/** What is to go may be named by its own texts. */
TEST_F(CommandTest, NamesOfWhatGoesStayToTheEnd) {
    for (const tchar key : {u'1', u'2', u'3'})
        giveKey(key, "Edit", "Cut");
    const auto last = [&] { return manager.findKeyCommand(UKeyCode(u'3')); };
    EXPECT_TRUE(manager.addKeyCommand(UKeyCode(u'3'), last()->category, last()->name));
    EXPECT_EQ(keysOf("Edit", "Cut"), "1, 2, 3");
    manager.removeKeyCommands(last()->category, last()->name);
    EXPECT_EQ(keysOf("Edit", "Cut"), "");
}

TEST_F(CommandTest, MacrosAreOneStepAndEnd) {
    EXPECT_EQ(manager.addMacro(ConstString("off")), nullptr);
    manager.enableMacroCommands(true);
    GMacroCommand* both = manager.addMacro(ConstString("Both"));
    EXPECT_EQ(manager.addMacro(ConstString("Both")), nullptr);
    EXPECT_FALSE(both->addCommand(command("Edit", "Undo")));
    EXPECT_EQ(std::exchange(shown, {}), "This command is not allowed to be used in a macro!");
    for (const char* name : {"Back", "Cut", "Refuse", "Paste"})
        both->addCommand(add("Edit", name));
    FAttributes bag;
    ASSERT_TRUE(manager.storeMacros(bag));
    manager.removeAction("Edit", "Back");
    manager.addOldName("Edit", "Back", "Edit", "Undo");
    EXPECT_FALSE(both->canPerform(nullptr)) << "known by its older name";
    EXPECT_EQ(both->fire(0), -1);
    EXPECT_EQ(takeHeard(), "!Edit/Cut !Edit/Refuse ");
    manager.restoreMacros(bag);
    EXPECT_EQ(both->getCommands().total(), 3);
    EXPECT_EQ(shown, "") << "nobody is asked while a file is read";
    both->removeAllCommands();
    EXPECT_EQ(both->fire(0), 0);
    both->addCommand(both);
    EXPECT_EQ(both->fire(0), 0);
    EXPECT_FALSE(both->canPerform(nullptr));
    EXPECT_FALSE(GActionProcessor::gRunningGlobalMacro);
    EXPECT_TRUE(manager.removeMacro(ConstString("Both")));
}

TEST_F(CommandTest, MacrosInMacrosEndBeforeTheStackDoes) {
    std::vector<OPtr<GMacroCommand>> chain{new GMacroCommand(ConstString("last"))};
    chain.back()->addCommand(command("Edit", "Cut"));
    while (chain.size() < 200'000) {
        auto* outer = new GMacroCommand(ConstString("outer"));
        outer->addCommand(chain.back());
        chain.emplace_back(outer);
    }
    EXPECT_EQ(chain.back()->fire(0), 0);
    EXPECT_FALSE(chain.back()->canPerform(nullptr));
    EXPECT_EQ(chain[GMacroCommand::kDeepest - 1]->fire(0), 1);
    EXPECT_EQ(takeHeard(), "!Edit/Cut ");
    for (size_t i = 1; i < GMacroCommand::kDeepest; ++i)
        chain[i]->addCommand(chain[i - 1]);  // each fires the next one twice
    chain[GMacroCommand::kDeepest - 1]->fire(0);
    EXPECT_LE(std::ranges::count(takeHeard(), '!'), GMacroCommand::kMostFired);
    EXPECT_EQ(chain[2]->fire(0), 1);
    EXPECT_EQ(std::ranges::count(takeHeard(), '!'), 4) << "counted anew";
    while (!chain.empty())
        chain.pop_back();  // from the outside
}

/** Read before the commands are there and macros are on, with a name beyond 8 bits. */
TEST_F(CommandTest, MacroFilesKeepWhatComesLater) {
    manager.enableMacroCommands(true);
    const ConstString name(u"\u65e5\u672c");
    GMacroCommand* inner = manager.addMacro(name);
    manager.addMacro(ConstString("Outer"))->addCommand(inner);
    inner->addCommand(add("Late", "Act"));
    FMemoryStream file;
    ASSERT_TRUE(GKeyCommandsFile::exportMacros(file, manager));
    FAttributes bag;
    ASSERT_TRUE(manager.storeMacros(bag));
    EXPECT_TRUE(manager.removeMacro(name));
    EXPECT_TRUE(macro("Outer")->getCommands().isEmpty());
    manager.removeAction("Macro", "Outer");
    manager.removeAction("Late", "Act");

    manager.enableMacroCommands(false);
    EXPECT_FALSE(GKeyCommandsFile::importMacros(file, manager));
    manager.restoreMacros(bag);
    ASSERT_TRUE(manager.findMacro(name));
    EXPECT_EQ(macro("Outer")->fire(0), 1);
    EXPECT_EQ(takeHeard(), "!Late/Act ");
    add("Late", "Act")->enable(false);
    EXPECT_EQ(manager.findMacro(name)->fire(0), -1) << "now it is the command";
    manager.enableMacroCommands(true);
    file.rewind();
    EXPECT_TRUE(GKeyCommandsFile::importMacros(file, manager));
    EXPECT_EQ(manager.findMacro(name)->getCommands().total(), 1);
}

TEST_F(CommandTest, ImportsTextOnlyWhenAllOfItIsGood) {
    using enum GKeyCommandsFile::Result;
    struct Row {
        const char* name;
        std::string content;  // ' for "
        GKeyCommandsFile::Result result;
        const char *cut, *open;
    };
    const std::string head = "# Key Commands File\n# Version: ", large(4 << 20, '\n');
    const Row rows[] = {
        {"assigns",               head + "1.1\n'Edit' 'Cut' 'Alt+X'\n",                       kRead,                "Alt+X",          ""      },
        {"two keys, no line end", head + "1.1\r\n'Edit' 'Cut' 'X'\r\n'Edit' 'Cut' '/'",       kRead,                "/, X",           ""      },
        {"old pad",               head + "1.0\n# '\n'Edit' 'Cut' '/'\n",                      kRead,                "Pad /",          ""      },
        {"old arrow",             head + "1\n'Edit' 'Cut' 'Shift+Up Arrow'\n",                kRead,                "",               ""      },
        {"arrow",                 head + "1.1\n'Edit' 'Cut' 'Shift+Up Arrow'\n",              kRead,                "Shift+Up Arrow", ""      },
        {"an empty key clears",   head + "1.1\n'Edit' 'Cut' ''",                              kRead,                "",               ""      },
        {"unknown only",          head + "1.1\n'No' 'Cut' 'X'\n",                             kRead,                "",               "Ctrl+O"},
        {"scanned like a number", "# Key Commands File\n#Version:\t1.1\n\n'Edit''Cut' 'X'\n", kRead,                "",               "Ctrl+O"},
        {"a later version",       head + "1.2\n'Edit' 'Cut' 'X'\n",                           kWrongVersion,        "",               "Ctrl+O"},
        {"version 0",             head + "0\n",                                               kWrongVersion,        "",               "Ctrl+O"},
        {"no version",            "# Key Commands File",                                      kWrongVersion,        "",               "Ctrl+O"},
        {"a mark in front",       "\xEF\xBB\xBF" + head,                                      kNotAKeyCommandsFile, "",               "Ctrl+O"},
        {"too large",             head + "1.1\n'Edit' 'Cut' 'X'\n" + large,                   kNotAKeyCommandsFile, "",               "Ctrl+O"},
        {"cut off",               head + "1.1\n'Edit' 'Cut' 'X'\n'File' 'Op",                 kMalformed,           "",               "Ctrl+O"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        manager.resetAllKeyCommands();
        shown.clear();
        std::string content(row.content);
        std::ranges::replace(content, '\'', '"');
        EXPECT_EQ(import(content), row.result);
        EXPECT_EQ(keysOf("Edit", "Cut"), row.cut);
        EXPECT_EQ(keysOf("File", "Open"), row.open);
        EXPECT_EQ(shown.empty(), row.result == kRead);
    }
}

/** A state with each kind of key, and what each format makes of it in another manager. */
TEST_F(CommandTest, EachFormatBringsKeysBack) {
    const ConstString edit("Edit"), cut("Cut"), macros("Macro"), twice("Twice");
    const std::string tooLong(5000, 'n');
    manager.enableMacroCommands(true);
    manager.addMacro(twice)->addCommand(command("Edit", "Cut"));
    macro("Twice")->addCommand(add("Edit", tooLong.c_str()));
    manager.removeAllKeyCommands();
    for (const UKeyCode& key : {UKeyCode(u'\u20ac', 0, 3), UKeyCode(u'!'), UKeyCode(0, 35), UKeyCode(0, 200, 8)})
        manager.addKeyCommand(key, edit, cut);
    giveKey(u'\u00e4', "Macro", "Twice");
    giveKey(u'y', "Nobody's", "Yet");
    const auto all = [&](const GCommandManager& from) {
        return std::pair(from.findKeyCommands(edit, cut), from.findKeyCommands(macros, twice));
    };
    const auto expected = all(manager);
    FMemoryStream text, binary, xml;
    ASSERT_TRUE(GKeyCommandsFile::exportTo(text, manager));
    for (const tchar none : {u'\1', tchar(0xD800), tchar(0xFFFF)})  // no text of these could be read
        giveKey(none, "Edit", "Cut");
    FNewArchive writer(&binary, true), reader(&binary, false);
    FAttributes bag;
    ASSERT_TRUE(manager.externalize(writer) && manager.storeAttributes(bag));
    ASSERT_TRUE(FXmlArchive(&xml, true).saveAttributes("KeyCommands", bag));
    EXPECT_NE(bytesOf(text).find("# Version: 1.1\n\"Edit\" \"Cut\" \"!\"\n"), std::string::npos) << bytesOf(text);
    EXPECT_NE(bytesOf(binary).find(std::string("\xac\x20\x83", 3)), std::string::npos);

    for (FMemoryStream* format : {&text, &binary, &xml}) {
        SCOPED_TRACE(bytesOf(*format));
        GCommandManager other;
        other.enableMacroCommands(true);
        other.addCommand("File", "Open", nullptr, kOpenKey);
        if (format != &binary)
            other.addCommand("Edit", "Cut", nullptr, UKeyCode());
        if (format != &xml)
            other.addMacro(twice);
        format->rewind();
        EXPECT_TRUE(format == &binary ? other.internalize(reader)
                    : format == &xml  ? FXmlArchive::restoreObject(&xml, "KeyCommands", &other)
                                      : GKeyCommandsFile::importFrom(text, other) == GKeyCommandsFile::kRead);
        EXPECT_EQ(other.countDormantKeyCommands(), format == &text  ? 0
                                                   : format == &xml ? 3
                                                                    : 3 + 5)
            << "all but the long one";
        other.addCommand("Edit", "Cut", nullptr, UKeyCode());  // its keys come back with it
        other.addCommand("Nobody's", "Yet", nullptr, UKeyCode());
        EXPECT_EQ(other.findCommand(UKeyCode(u'y')) != nullptr, format != &text);
        EXPECT_EQ(all(other), expected);
        EXPECT_TRUE(other.findKeyCommands(ConstString("File"), ConstString("Open")).empty());
        ASSERT_TRUE(other.findMacro(twice));
        EXPECT_EQ(other.findMacro(twice)->getCommands().total(), format == &xml ? 1 : 0);
    }
}

/** A binary file of the category Edit: after each name the three bytes of a key. */
std::string binaryFile(const std::vector<std::pair<std::string, std::string>>& records, uint32_t more = 0) {
    const auto stored = [](const auto& text) { return std::string{char(text.size()), 0, 0, 0} + text; };
    const uint32_t count = uint32_t(records.size()) + more;
    std::string bytes(reinterpret_cast<const char*>(&count), sizeof count);
    for (const auto& [name, key] : records)
        bytes += stored(std::string("Edit")) + stored(name) + key;
    return bytes;
}

TEST_F(CommandTest, BinaryFilesAreTakenInOrder) {
    using namespace std::string_literals;
    const std::string none = "\0\0\0"s, one = "1\0\0"s, two = "2\0\0"s;
    struct {
        const char* name;
        std::vector<std::pair<std::string, std::string>> records;
        const char *cut, *paste;
    } rows[] = {
        {"the last one has it", {{"Cut", one}, {"Cut", two}, {"Paste", one}},  "2",      "1"},
        {"emptied between",     {{"Cut", one}, {"Cut", none}, {"Cut", two}},   "2",      "" },
        {"of another one",      {{"Cut", one}, {"Paste", one}, {"Cut", none}}, "",       "1"},
        {"unknown modifiers",   {{"Cut", "!\0\x74"s}},                         "Ctrl+!", "" },
        {"a control",           {{"Cut", one}, {"Cut", "\1\0\0"s}},            "1",      "" },
        {"half a pair",         {{"Cut", one}, {"Cut", "\0\xD8\x80"s}},        "1",      "" },
        {"no character",        {{"Cut", one}, {"Cut", "\xFF\xFF\x80"s}},      "1",      "" },
    };
    for (auto& row : rows)
        for (const size_t more : {0, 20}) {
            SCOPED_TRACE(row.name);
            row.records.resize(row.records.size() + more, {"Undo", none});
            manager.removeAllKeyCommands();
            EXPECT_TRUE(internalize(binaryFile(row.records)));
            EXPECT_EQ(keysOf("Edit", "Cut"), row.cut);
            EXPECT_EQ(keysOf("Edit", "Paste"), row.paste);
        }
    std::vector<std::pair<std::string, std::string>> many(40'000, {"Late", none});
    for (size_t i = 0; i < many.size() / 2; ++i)
        many[i].second = {char(i), char(1 + i / 256), char(0x80)};
    many.emplace_back("Late", one);
    EXPECT_TRUE(internalize(binaryFile(many))) << "in time";
    add("Edit", "Late");
    EXPECT_EQ(keysOf("Edit", "Late"), "1");
    EXPECT_FALSE(internalize(binaryFile(
        {
            {"Late", two}
    },
        0x7FFFFFF0)));
    const std::string whole = binaryFile({
        {"Late", two}
    });
    for (size_t length = 0; length < whole.size(); ++length) {
        shown.clear();
        EXPECT_FALSE(internalize(whole.substr(0, length))) << length;
        EXPECT_FALSE(shown.empty());
        EXPECT_EQ(keysOf("Edit", "Late"), "1");
    }
}

/** A file of commands with long names. */
TEST_F(CommandTest, WhatIsExportedCanBeImported) {
    const auto addMany = [&](int32_t from, int32_t to) {
        for (int32_t i = from; i < to; ++i)
            add("Many", (std::string(240, 'n') + std::to_string(i)).c_str());
    };
    FMemoryStream file, larger;
    addMany(0, 8'000);  // 2 MB
    EXPECT_TRUE(GKeyCommandsFile::exportTo(file, manager));
    EXPECT_EQ(import(bytesOf(file)), GKeyCommandsFile::kRead);
    addMany(8'000, 18'000);
    EXPECT_FALSE(GKeyCommandsFile::exportTo(larger, manager));
    EXPECT_EQ(larger.getSize(), 0);
}

/** A program's files, as its defaults load and save. */
TEST_F(CommandTest, KeysComeAndGoWithTheDefaults) {
    const StandardFolders folders;
    const TempFolder& folder = folders.user;
    const auto restart = [](bool isGuest) {
        FDefaultPool::unuse();
        FDefaultPool::isGuest = isGuest;
        FDefaultPool::use()->load();
        gDefaults->postInit();
    };
    folder.write("Key Commands.bin", "bad");
    folder.write("Key Commands.xml", "<KeyCommands>");
    restart(true);
    giveKey(u'x', "Edit", "Cut");
    PreDefSaveGCommandManager();
    EXPECT_EQ(folder.names().size(), 2u) << "a guest only reads";
    EXPECT_EQ(folder.read("Key Commands.xml"), "<KeyCommands>");
    restart(false);
    EXPECT_EQ(folder.names(), (std::set<std::string>{"Key Commands.xml", "Key Commands.xml.backup"}));
    EXPECT_TRUE(gDefaults->save(true));
    manager.removeAllKeyCommands();
    restart(false);
    EXPECT_EQ(keysOf("Edit", "Cut"), "X");
    FDefaultPool::unuse();
}
}  // namespace
