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
#include "storage/hooks.h"
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
            manager.addCommand("Edit", name, nullptr, UKeyCode());
        manager.addCommand("File", "Open", u"Open...", UKeyCode(u'o', 0, UKeyCode::kCommand));
    }
    ~CommandTest() override { gActionHooks = {}; }

    std::string keysOf(const char* category, const char* name) {
        const GCommand* command = manager.findCommand(ConstString(category), ConstString(name));
        String text;
        if (command)
            manager.getKeyCodesString(*command, text);
        return text.text8();
    }
    GKeyCommandsFile::Result import(const std::string& content) {
        FMemoryStream stream;
        stream.writeRaw(content.data(), int64_t(content.size()));
        stream.rewind();
        return GKeyCommandsFile::importFrom(stream, manager);
    }
    static std::string bytesOf(FMemoryStream& stream) {
        return std::string(stream.getData(), size_t(stream.getSize()));
    }

    UpdateHandler updates;
    GCommandManager manager;
    Handler handler;
    inline static std::string shown;
};

TEST_F(CommandTest, IsTriggeredByItsValues) {
    OPtr<UValueContainer> values(new UValueContainer);
    EXPECT_EQ(values->newCommandValue("Edit", "None", "none")->getOwner(), nullptr);
    values->newCommandValue("Edit", "Cut", "cut")->setTargetValue(1);
    EXPECT_EQ(std::exchange(handler.heard, {}), "!Edit/Cut ");
    EXPECT_EQ(manager.removeAction("Edit", "Cut"), kResultOk);
    values->toggleValue("cut");  // its command is still its own
    EXPECT_EQ(std::exchange(handler.heard, {}), "!Edit/Cut ");
    GCommandValue value(manager.findCommand(ConstString("Edit"), ConstString("Paste")));
    for (const int32_t touch : {1, 0, 1})  // two presses of a button
        value.setTargetValue(touch);
    EXPECT_EQ(handler.heard, "!Edit/Paste !Edit/Paste ");
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
    };
    for (const Row& row : kRows) {
        SCOPED_TRACE(row.name);
        GCommand* command = manager.addCommand("Test", row.name, nullptr, UKeyCode());
        command->enable(row.enabled);
        EXPECT_EQ(command->fire(0), row.fired);
        EXPECT_EQ(manager.performAction("Test", row.name), row.performed);
        const char *category = nullptr, *name = nullptr;
        EXPECT_EQ(manager.getLastPerformedAction(&category, &name), kResultOk);
        EXPECT_STREQ(name, row.name) << "also when it was disabled";
    }
    EXPECT_EQ(manager.performAction("Test", "Unknown"), kResultOk) << "somebody may know it";
    EXPECT_EQ(manager.canPerformAction("Test", "Nobody"), kResultFalse);
    manager.findCommand(ConstString("Edit"), ConstString("Cut"))->enable(false);
    EXPECT_EQ(manager.performAction("Edit", "Cut"), kResultOk) << "stays enabled";
    manager.addAction("Test", "Plain");
    EXPECT_FALSE(manager.findCommand(ConstString("Test"), ConstString("Plain"))->canDisable());
    manager.addOldName("Old", "Cut It", "Edit", "Cut");
    handler.heard.clear();
    manager.performAction("Old", "Cut It");
    EXPECT_EQ(handler.heard, "!Edit/Cut ");
}

TEST_F(CommandTest, OffTheMainThreadAndDeferredActionsArePosted) {
    gActionHooks.isMainThread = [] { return false; };
    EXPECT_EQ(manager.performAction("Edit", "Cut"), kResultOk);
    EXPECT_EQ(manager.performAction("Test", "Unknown"), kResultOk);
    EXPECT_EQ(handler.heard, "");
    gActionHooks.isMainThread = nullptr;
    gMessenger->deliverMessages();
    EXPECT_EQ(handler.heard, "!Edit/Cut !Test/Unknown ");
    gActionHooks.defersActions = [] { return true; };
    EXPECT_EQ(manager.performAction("Edit", "Paste"), kResultOk);
    gMessenger->deliverMessages();
    EXPECT_EQ(handler.heard, "!Edit/Cut !Test/Unknown !Edit/Paste ");
}

TEST_F(CommandTest, DefaultKeysAreNotTakenFromOthers) {
    const UKeyCode key(u'O', 0, UKeyCode::kCommand);
    GCommand* other = manager.addCommand("Test", "Other", nullptr, key, "Test|More");
    EXPECT_TRUE(other->defaultKeys.isEmpty());
    EXPECT_EQ(manager.findCommand(key)->name.compare("Open"), 0);
    EXPECT_EQ(manager.countActionsOfCategory(manager.getCategoryIndex("Test|More")), 1);
    EXPECT_TRUE(manager.addKeyCommand(key, other->category, other->name));
    EXPECT_EQ(manager.findCommand(key), other);
    EXPECT_EQ(keysOf("File", "Open"), "");
    gActionHooks.ask = [](const tchar* text) {
        shown = String(text).text8();
        return false;
    };
    EXPECT_FALSE(manager.resetAllKeyCommands());
    EXPECT_EQ(std::exchange(shown, {}), "Do you want to reset all key commands?");
    EXPECT_EQ(keysOf("File", "Open"), "");
    gActionHooks.ask = nullptr;
    EXPECT_TRUE(manager.resetAllKeyCommands());
    EXPECT_EQ(keysOf("File", "Open"), "Ctrl+O");
    for (const tchar one : {u'k', u'O'})
        manager.addCommand("Test", "Other", nullptr, UKeyCode(one, 0, UKeyCode::kCommand));
    EXPECT_EQ(keysOf("Test", "Other"), "Ctrl+K");
    EXPECT_EQ(other->defaultKeys.total(), 2) << "one may become free";
    manager.addCommand("Other", "Other", nullptr, UKeyCode(), "Test|More");
    EXPECT_EQ(manager.addCommand("", "x", nullptr, key), nullptr);
    const char *edit = manager.getCategoryName(0), *cut = manager.getActionName(0, 0);
    EXPECT_TRUE(std::string(edit) == "Edit" && std::string(cut) == "Cut") << "one beside the other";
    EXPECT_EQ(manager.getCategoryName(99), nullptr);
    EXPECT_EQ(manager.removeAction("Other", "Other"), kResultOk);
    const GCommandCategory* more = manager.findCategory(ConstString("Test|More"));
    ASSERT_EQ(more->countCommands(), 1);
    EXPECT_EQ(more->commandAt(0)->category, ConstString("Test")) << "the other one of this name";
}

/** A command comes after its keys were read, or goes and comes again. */
TEST_F(CommandTest, KeysOfCommandsThatComeLaterAreThoseThatWereStored) {
    const ConstString edit("Edit"), late("Late");
    const auto addLate = [&] {
        for (const tchar key : {u'1', u'2'})
            manager.addCommand("Edit", "Late", nullptr, UKeyCode(key));
        return keysOf("Edit", "Late");
    };
    EXPECT_EQ(addLate(), "1, 2");
    manager.removeKeyCommand(UKeyCode(u'2'));
    manager.addKeyCommand(UKeyCode(u'3'), edit, late);
    FAttributes bag;
    ASSERT_TRUE(manager.storeAttributes(bag));
    manager.removeAction("Edit", "Late");
    EXPECT_EQ(manager.findKeyCommand(UKeyCode(u'3')), nullptr);
    EXPECT_EQ(addLate(), "1, 3") << "went and came";
    manager.removeAction("Edit", "Late");
    ASSERT_TRUE(manager.restoreAttributes(bag));
    manager.addKeyCommand(UKeyCode(u'3'), edit, ConstString("Cut"));
    EXPECT_EQ(addLate(), "1") << "a key that was given to another one since";
    manager.resetAllKeyCommands();
    EXPECT_EQ(keysOf("Edit", "Late"), "1, 2");
    manager.removeAction("Edit", "Late");
    manager.addOldName("Edit", "Late", "Edit", "New");
    manager.addCommand("Edit", "New", nullptr, UKeyCode());
    EXPECT_EQ(keysOf("Edit", "New"), "1, 2") << "under its old name";
    manager.removeAction("Edit", "New");
    manager.addCommand("Edit", "Newer", nullptr, UKeyCode(u'9'));
    manager.addOldName("Edit", "New", "Edit", "Newer");
    EXPECT_EQ(keysOf("Edit", "Newer"), "1, 2") << "that is told later";
}

/** What is to go may be named by its own texts. */
TEST_F(CommandTest, NamesOfWhatGoesStayToTheEnd) {
    const ConstString edit("Edit"), cut("Cut");
    for (const tchar key : {u'1', u'2', u'3'})
        manager.addKeyCommand(UKeyCode(key), edit, cut);
    const GKeyCommand* last = manager.findKeyCommand(UKeyCode(u'3'));
    EXPECT_TRUE(manager.addKeyCommand(UKeyCode(u'3'), last->category, last->name));
    EXPECT_EQ(keysOf("Edit", "Cut"), "1, 2, 3");
    last = manager.findKeyCommand(UKeyCode(u'3'));
    manager.addCommand("Edit", "Cut", nullptr, last->keyCode);
    EXPECT_EQ(keysOf("Edit", "Cut"), "1, 2, 3");
    last = manager.findKeyCommand(UKeyCode(u'3'));
    manager.removeKeyCommands(last->category, last->name);
    EXPECT_EQ(keysOf("Edit", "Cut"), "");
    GMacroCommand macro;
    for (int32_t i = 0; i < 3; ++i)
        macro.addCommand(OPtr<GCommand>(new GCommand(edit, cut)));
    const auto* held = static_cast<GCommand*>(macro.getCommands().at(2));
    macro.removeCommands(held->category, held->name);
    EXPECT_TRUE(macro.getCommands().isEmpty());
}

TEST_F(CommandTest, MacrosAreOneStepAndEnd) {
    EXPECT_EQ(manager.addMacro(ConstString("off")), nullptr);
    manager.enableMacroCommands(true);
    GMacroCommand* macro = manager.addMacro(ConstString("Both"));
    EXPECT_EQ(manager.addMacro(ConstString("Both")), nullptr);
    EXPECT_EQ(macro->fire(0), 0);
    EXPECT_FALSE(macro->addCommand(manager.findCommand(ConstString("Edit"), ConstString("Undo"))));
    EXPECT_EQ(shown, "This command is not allowed to be used in a macro!");
    for (const char* name : {"Cut", "Refuse", "Paste"})
        macro->addCommand(manager.addCommand("Edit", name, nullptr, UKeyCode()));
    EXPECT_EQ(macro->fire(0), -1);
    EXPECT_EQ(handler.heard, "!Edit/Cut !Edit/Refuse ");
    macro->removeAllCommands();
    macro->addCommand(macro);
    EXPECT_EQ(macro->fire(0), 0);
    EXPECT_FALSE(macro->canPerform(nullptr));
    EXPECT_FALSE(GActionProcessor::gRunningGlobalMacro);
    EXPECT_TRUE(manager.removeMacro(ConstString("Both")));
    EXPECT_FALSE(manager.findMacro(ConstString("Both")));
}

TEST_F(CommandTest, MacrosInMacrosEndBeforeTheStackDoes) {
    std::vector<OPtr<GMacroCommand>> chain{new GMacroCommand(ConstString("last"))};
    chain.back()->addCommand(manager.findCommand(ConstString("Edit"), ConstString("Cut")));
    while (chain.size() < 200'000) {
        auto* outer = new GMacroCommand(ConstString("outer"));
        outer->addCommand(chain.back());
        chain.emplace_back(outer);
    }
    EXPECT_EQ(chain.back()->fire(0), 0);
    EXPECT_FALSE(chain.back()->canPerform(nullptr));
    EXPECT_EQ(chain[GMacroCommand::kDeepest - 1]->fire(0), 1);
    EXPECT_EQ(std::exchange(handler.heard, {}), "!Edit/Cut ");
    for (size_t i = 1; i < GMacroCommand::kDeepest; ++i)
        chain[i]->addCommand(chain[i - 1]);  // each fires the next one twice
    chain[GMacroCommand::kDeepest - 1]->fire(0);
    EXPECT_LE(std::ranges::count(std::exchange(handler.heard, {}), '!'), GMacroCommand::kMostFired);
    EXPECT_EQ(chain[2]->fire(0), 1);
    EXPECT_EQ(std::ranges::count(handler.heard, '!'), 4) << "counted anew";
    while (!chain.empty())
        chain.pop_back();  // from the outside
}

/** Read before the commands are there and macros are on, with a name beyond 8 bits and a command that isn't allowed. */
TEST_F(CommandTest, MacroFilesKeepWhatComesLater) {
    manager.enableMacroCommands(true);
    const ConstString name(u"\u65e5\u672c");
    GMacroCommand* macro = manager.addMacro(name);
    manager.addMacro(ConstString("Outer"))->addCommand(macro);
    macro->addCommand(manager.addCommand("Late", "Act", nullptr, UKeyCode()));
    GCommand undo(ConstString("Late"), ConstString("Act")), later(ConstString("Macro"), ConstString("Later"));
    macro->addCommand(&undo);
    macro->addCommand(&later);
    manager.addMacro(ConstString("Later"));
    EXPECT_TRUE(manager.removeMacro(ConstString("Later")));  // also where only its name is
    undo.category = "Edit";
    undo.name = "Undo";
    FMemoryStream file;
    ASSERT_TRUE(GKeyCommandsFile::exportMacros(file, manager));
    FAttributes bag, again;
    ASSERT_TRUE(manager.storeMacros(bag));
    EXPECT_TRUE(manager.removeMacro(name));
    EXPECT_TRUE(manager.findMacro(ConstString("Outer"))->getCommands().isEmpty());
    EXPECT_EQ(manager.removeAction("Macro", "Outer"), kResultOk);
    EXPECT_EQ(manager.removeAction("Late", "Act"), kResultOk);

    manager.enableMacroCommands(false);
    EXPECT_FALSE(GKeyCommandsFile::importMacros(file, manager));
    manager.restoreMacros(bag);
    EXPECT_EQ(shown, "") << "nobody is asked while a file is read";
    ASSERT_TRUE(manager.findMacro(name));
    EXPECT_EQ(manager.findMacro(name)->getCommands().total(), 1);
    EXPECT_EQ(manager.findMacro(ConstString("Outer"))->fire(0), 1);
    EXPECT_EQ(handler.heard, "!Late/Act ");
    manager.addCommand("Late", "Act", nullptr, UKeyCode())->enable(false);
    EXPECT_EQ(manager.findMacro(name)->fire(0), -1) << "now it is the command";
    EXPECT_TRUE(manager.storeMacros(again));
    EXPECT_TRUE(again.unqueueAttributes("Macros") && again.unqueueAttributes("Macros")) << "also while macros are off";
    manager.enableMacroCommands(true);
    file.rewind();
    EXPECT_TRUE(GKeyCommandsFile::importMacros(file, manager));
    EXPECT_EQ(manager.findMacro(name)->getCommands().total(), 1);
}

TEST_F(CommandTest, ImportsTextOnlyWhenAllOfItIsGood) {
    const std::string head = "# Key Commands File\n# Version: ";
    struct Row {
        const char* name;
        std::string content;
        GKeyCommandsFile::Result result;
        const char *cut, *open;
    };
    const Row rows[] = {
        {"assigns", head + "1.1\n\"Edit\" \"Cut\" \"Alt+X\"\n", GKeyCommandsFile::kRead, "Alt+X", ""},
        {"two keys, no line end", head + "1.1\r\n\"Edit\" \"Cut\" \"X\"\r\n\"Edit\" \"Cut\" \"/\"",
         GKeyCommandsFile::kRead, "/, X", ""},
        {"old pad", head + "1.0\n# \"\n\"Edit\" \"Cut\" \"/\"\n", GKeyCommandsFile::kRead, "Pad /", ""},
        {"old arrow", head + "1\n\"Edit\" \"Cut\" \"Shift+Up Arrow\"\n", GKeyCommandsFile::kRead, "", ""},
        {"arrow", head + "1.1\n\"Edit\" \"Cut\" \"Shift+Up Arrow\"\n", GKeyCommandsFile::kRead, "Shift+Up Arrow", ""},
        {"an empty key clears", head + "1.1\n\"Edit\" \"Cut\" \"\"", GKeyCommandsFile::kRead, "", ""},
        {"an empty key on a line", head + "1.1\n\"Edit\" \"Cut\" \"\"\n", GKeyCommandsFile::kRead, "", ""},
        {"unknown only", head + "1.1\n\"No\" \"Cut\" \"X\"\n", GKeyCommandsFile::kRead, "", "Ctrl+O"},
        {"a later version", head + "1.2\n\"Edit\" \"Cut\" \"X\"\n", GKeyCommandsFile::kWrongVersion, "", "Ctrl+O"},
        {"version 0", head + "0\n", GKeyCommandsFile::kWrongVersion, "", "Ctrl+O"},
        {"not a number", head + "nan\n", GKeyCommandsFile::kWrongVersion, "", "Ctrl+O"},
        {"no version", "# Key Commands File", GKeyCommandsFile::kWrongVersion, "", "Ctrl+O"},
        {"a mark in front", "\xEF\xBB\xBF" + head, GKeyCommandsFile::kNotAKeyCommandsFile, "", "Ctrl+O"},
        {"empty", "", GKeyCommandsFile::kNotAKeyCommandsFile, "", "Ctrl+O"},
        {"scanned like a number", "# Key Commands File\n#Version:\t1.1\n\n\"Edit\"\"Cut\" \"X\"\n",
         GKeyCommandsFile::kRead, "", "Ctrl+O"},
        {"too large", head + "1.1\n\"Edit\" \"Cut\" \"X\"\n" + std::string(2 << 20, '\n'),
         GKeyCommandsFile::kNotAKeyCommandsFile, "", "Ctrl+O"},
        {"cut off", head + "1.1\n\"Edit\" \"Cut\" \"X\"\n\"File\" \"Op", GKeyCommandsFile::kMalformed, "", "Ctrl+O"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        manager.resetAllKeyCommands();
        shown.clear();
        EXPECT_EQ(import(row.content), row.result);
        EXPECT_EQ(keysOf("Edit", "Cut"), row.cut);
        EXPECT_EQ(keysOf("File", "Open"), row.open);
        EXPECT_EQ(shown.empty(), row.result == GKeyCommandsFile::kRead);
    }
}

/** A state with each kind of key, and what each format makes of it in another manager. */
TEST_F(CommandTest, EachFormatBringsKeysBack) {
    manager.enableMacroCommands(true);
    manager.addMacro(ConstString("Twice"))->addCommand(manager.findCommand(ConstString("Edit"), ConstString("Cut")));
    manager.removeAllKeyCommands();
    for (const UKeyCode& key : {UKeyCode(u'\u20ac', 0, 3), UKeyCode(u'!'), UKeyCode(0, 35), UKeyCode(0, 200, 8)})
        manager.addKeyCommand(key, ConstString("Edit"), ConstString("Cut"));
    manager.addKeyCommand(UKeyCode(u'\u00e4'), ConstString("Macro"), ConstString("Twice"));
    FMemoryStream binary, text, xml;
    FNewArchive writer(&binary, true);
    const std::string name(5000, 'n');  // too long for a file
    manager.findMacro(ConstString("Twice"))->addCommand(manager.addCommand("Edit", name.c_str(), nullptr, UKeyCode()));
    manager.addKeyCommand(UKeyCode(u'y'), ConstString("Nobody's"), ConstString("Yet"));
    ASSERT_TRUE(manager.externalize(writer));
    FAttributes bag;
    ASSERT_TRUE(manager.storeAttributes(bag) && FXmlArchive(&xml, true).saveAttributes("KeyCommands", bag));
    ASSERT_TRUE(GKeyCommandsFile::exportTo(text, manager));
    EXPECT_NE(bytesOf(text).find("# Version: 1.1\n\"Edit\" \"Cut\" \"!\"\n"), std::string::npos) << bytesOf(text);
    EXPECT_NE(bytesOf(binary).find(std::string("\xac\x20\x83", 3)), std::string::npos);

    const auto all = [](const GCommandManager& from) {
        return std::pair(from.findKeyCommands(ConstString("Edit"), ConstString("Cut")),
                         from.findKeyCommands(ConstString("Macro"), ConstString("Twice")));
    };
    const auto expected = all(manager);
    ASSERT_EQ(expected.first.size(), 4u);
    for (const char* format : {"binary", "attributes", "text"}) {
        SCOPED_TRACE(format);
        GCommandManager other;
        other.enableMacroCommands(true);
        other.addCommand("File", "Open", nullptr, UKeyCode(u'o', 0, UKeyCode::kCommand));
        if (*format != 'b')
            other.addCommand("Edit", "Cut", nullptr, UKeyCode());
        if (*format != 'a')
            other.addMacro(ConstString("Twice"));
        binary.rewind();
        text.rewind();
        xml.rewind();
        FNewArchive reader(&binary, false);
        EXPECT_TRUE(*format == 'b'   ? other.internalize(reader)
                    : *format == 'a' ? FXmlArchive::restoreObject(&xml, "KeyCommands", &other)
                                     : GKeyCommandsFile::importFrom(text, other) == GKeyCommandsFile::kRead);
        if (*format == 'b') {
            EXPECT_EQ(other.countDormantKeyCommands(), 3 + 4 + 1) << "all but the long one";
            other.addCommand("Edit", "Cut", nullptr, UKeyCode());  // its keys come back with it
            EXPECT_EQ(other.countDormantKeyCommands(), 2 + 1);
        }
        if (*format != 't') {
            other.addCommand("Nobody's", "Yet", nullptr, UKeyCode());
            EXPECT_TRUE(other.findCommand(UKeyCode(u'y')));
        }
        EXPECT_EQ(all(other), expected);
        EXPECT_TRUE(other.findKeyCommands(ConstString("File"), ConstString("Open")).empty());
        const GMacroCommand* macro = other.findMacro(ConstString("Twice"));
        ASSERT_TRUE(macro);
        EXPECT_EQ(macro->getCommands().total(), *format == 'a' ? 1 : 0);
    }
}

TEST_F(CommandTest, BinaryFilesThatAreCutOffChangeNothing) {
    FMemoryStream whole;
    FNewArchive writer(&whole, true);
    ASSERT_TRUE(manager.externalize(writer));
    const std::string bytes = bytesOf(whole);
    manager.addKeyCommand(UKeyCode(u'x'), ConstString("Edit"), ConstString("Cut"));
    for (size_t length = 0; length < bytes.size(); ++length) {
        FMemoryStream cut;
        cut.writeRaw(bytes.data(), int64_t(length));
        cut.rewind();
        FNewArchive reader(&cut, false);
        shown.clear();
        EXPECT_FALSE(manager.internalize(reader)) << length;
        EXPECT_FALSE(shown.empty());
        EXPECT_EQ(keysOf("Edit", "Cut"), "X");
    }
    const int32_t huge = 0x7FFFFFFF;
    whole.rewind();
    whole.writeRaw(&huge, sizeof huge);
    whole.rewind();
    FNewArchive reader(&whole, false);
    EXPECT_FALSE(manager.internalize(reader));
}

/** A program's files, as its defaults load and save. */
TEST_F(CommandTest, KeysComeAndGoWithTheDefaults) {
    static const TempFolder* user;
    const TempFolder folder;
    const StorageHooks before = gStorageHooks;
    user = &folder;
    gStorageHooks.standardFolder = [](int32_t number, FNPath& path) {
        path = user->self();
        return number == kUserFolder;
    };
    const auto restart = [](bool isGuest) {
        FDefaultPool::unuse();
        FDefaultPool::isGuest = isGuest;
        FDefaultPool::use()->load();
        gDefaults->postInit();
    };
    folder.write("Key Commands.bin", "bad");
    folder.write("Key Commands.xml", "<KeyCommands>");
    restart(true);
    manager.addKeyCommand(UKeyCode(u'x'), ConstString("Edit"), ConstString("Cut"));
    PreDefSaveGCommandManager();
    EXPECT_EQ(folder.names(), (std::set<std::string>{"Key Commands.bin", "Key Commands.xml"})) << "a guest only reads";
    EXPECT_EQ(folder.read("Key Commands.xml"), "<KeyCommands>");
    restart(false);
    EXPECT_EQ(folder.names(), (std::set<std::string>{"Key Commands.xml", "Key Commands.xml.backup"}));
    EXPECT_TRUE(gDefaults->save(true));
    manager.removeAllKeyCommands();
    restart(false);
    EXPECT_EQ(keysOf("Edit", "Cut"), "X");
    FDefaultPool::unuse();
    gStorageHooks = before;
}
}  // namespace
