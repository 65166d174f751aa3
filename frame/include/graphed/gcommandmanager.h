#pragma once
#include "graphed/gaction.h"
#include "graphed/gactionmanager.h"
#include "graphed/gcommand.h"
#include "graphed/gmacrocommand.h"
#include <map>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

namespace Tessarine {
class FStream;

struct GCommandDesc {
    const char* category;
    const char* name;
    const tchar* title;
    UKeyCode key;
    const char* subCategory;
};

/** All commands, their keys and macros; where their actions are dispatched.

    Owns      commands, categories and keys. What is handed out is borrowed. Handlers are borrowed.
    Keys      one command for a key; a command may have several. Keys of commands that aren't there are kept for them,
              and then stand instead of those that they come with.
    Files     are read wholly before the first key changes: what can't be read changes nothing.
    Threads   main, except performAction. */
class GCommandManager : public CmObject, public IActionDispatcher, public IActionManager2 {
public:
    DECLARE_CLASS(GCommandManager, CmObject)
    FORWARD_REFCOUNT(CmObject)
    enum Flag : int32_t { kKeysStored = 1, kMacrosEnabled = 4 };

    using KeyCommands = std::vector<OPtr<GKeyCommand>>;
    using KeysByCommand = std::unordered_map<const GCommand*, std::vector<const GKeyCommand*>>;

    GCommandManager();
    ~GCommandManager() override;
    int32_t queryInterface(const char* iid, void** obj) override;
    /** "PerformAction" and "MenuSelect". */
    int32_t notify(FMessage* message) override;

    // commands
    /** The command, a new one or that of this name, which then has one key more; null: a name is missing. The key isn't
        taken from another command. A sub-category shows it too. */
    GCommand* addCommand(const char* category, const char* name, const tchar* title, const UKeyCode& key,
                         const char* subCategory = nullptr);
    void addCommands(const GCommandDesc* commands, int32_t count);
    GCommand* findCommand(const ConstString& category, const ConstString& name) const;
    /** Also by a name that it had before. */
    GCommand* findCommandWithHistory(const ConstString& category, const ConstString& name) const;
    void addOldName(const char* oldCategory, const char* oldName, const char* category, const char* name);
    GCommandCategory* findCategory(const ConstString& name) const;
    const CmArray& getCommands() const { return commands; }
    void setLastCommand(const GCommand& command);

    // keys
    /** Null: no command, or one that isn't here. */
    GCommand* findCommand(const UKeyCode& key) const;
    const GKeyCommand* findKeyCommand(const UKeyCode& key) const;
    std::vector<UKeyCode> findKeyCommands(const ConstString& category, const ConstString& name) const;
    /** In the order of the keys; under null those of commands that aren't here. Borrowed. */
    KeysByCommand keysByCommand() const;
    /** The key is taken from whatever command has it, or would have had it. false: no key. */
    bool addKeyCommand(const UKeyCode& key, const ConstString& category, const ConstString& name);
    bool removeKeyCommand(const UKeyCode& key);
    /** Of one command. */
    void removeKeyCommands(const ConstString& category, const ConstString& name);
    void removeAllKeyCommands() { keyCommands.removeAll(); }
    /** These instead of all, as if each was added in turn; those that can't be stored are passed over. Each has a key. */
    void setKeyCommands(const KeyCommands& keys);
    /** Back to the keys that the commands came with, if the user agrees. */
    bool resetAllKeyCommands();
    /** The keys of a command, with commas between. */
    void getKeyCodesString(const GCommand& command, String& text) const;
    int32_t countDormantKeyCommands() const;
    /** Keys are stored with the settings. */
    void enableKeyStorage(bool state) { setFlag(kKeysStored, state); }
    bool isKeyStorageEnabled() const { return managerFlags & kKeysStored; }

    // macros
    /** Whether there may be new ones. */
    void enableMacroCommands(bool state) { setFlag(kMacrosEnabled, state); }
    bool areMacroCommandsEnabled() const { return managerFlags & kMacrosEnabled; }
    /** Null: macros are off, no name, or a macro has it already. */
    GMacroCommand* addMacro(const ConstString& name);
    GMacroCommand* findMacro(const ConstString& name) const;
    /** Also out of the macros that hold it. */
    bool removeMacro(const ConstString& name);
    /** The queue "Macros" alone. Reading replaces what macros of these names hold; the others stay. */
    bool storeMacros(FAttributes& attributes) const;
    void restoreMacros(FAttributes& attributes);

    // IActionDispatcher: the windows, then the handlers, then the application
    int32_t dispatchActionMessage(FMessage* message) override;

    // IActionManager2
    int32_t addAction(const char* category, const char* name) override;
    int32_t removeAction(const char* category, const char* name) override;
    int32_t performAction(const char* category, const char* name) override;
    int32_t canPerformAction(const char* category, const char* name) override;
    int32_t addActionHandler(IActionHandler* handler) override;
    int32_t removeActionHandler(IActionHandler* handler) override;
    int32_t countCategories() override { return categories.total(); }
    const char* getCategoryName(int32_t category) override;
    const tchar* getCategoryTitle(int32_t category) override;
    const char* getCategoryTitle8(int32_t category) override { return getCategoryName(category); }
    int32_t countActionsOfCategory(int32_t category) override;
    const char* getActionName(int32_t category, int32_t action) override;
    const tchar* getActionTitle(int32_t category, int32_t action) override;
    const char* getActionTitle8(int32_t category, int32_t action) override;
    int32_t getCategoryIndex(const char* category) override;
    int32_t getActionIndex(int32_t category, const char* name) override;
    int32_t getLastPerformedAction(const char** category, const char** name) override;

    // persistence
    /** An int32 count, and for each record category and name as stored texts, then the low byte of the character, the
        virtual key and the modifiers; with bit 7 of these the second byte is the high one of the character. A record
        without a key takes all keys from its command; one whose character is none is passed over. */
    bool internalize(FArchive& archive) override;
    bool externalize(FArchive& archive) const override;
    /** "Categories", each with "Name" and "Commands", each with "Name" and "Key"; "Macros", each with "Name" and
        "Commands", each with "Category" and "Name". */
    bool storeAttributes(FAttributes& attributes) const override;
    bool restoreAttributes(FAttributes& attributes) override;

private:
    struct OldName {
        FString oldCategory, oldName, category, name;
    };
    static constexpr uint32_t kLongestName = 255;  // characters, of what files hold

    void setFlag(int32_t flag, bool state) { managerFlags = state ? managerFlags | flag : managerFlags & ~flag; }
    GCommandCategory* categoryAt(int32_t index) const { return static_cast<GCommandCategory*>(categories.at(index)); }
    GCommand* commandAt(int32_t category, int32_t action) const;
    GCommandCategory& categoryFor(const ConstString& name);
    /** Takes over the reference. */
    void takeCommand(GCommand* command);
    /** A new command doesn't even come with a key that another one has. */
    void addDefaultKey(GCommand& command, const UKeyCode& key, bool isNew);
    void assignKey(const UKeyCode& key, const GCommand& command);
    /** Instead of the one of this key; takes over the reference. */
    bool putKeyCommand(GKeyCommand* added);
    /** What was stored for a command that has come, under whichever of its names. */
    void wakeDormant(GCommand& command);
    /** The reverse, of one that goes. */
    void keepDormant(const GCommand& command);
    /** Takes over the reference. */
    void keepDormant(GKeyCommand* record);
    void removeCommand(GCommand* command);
    /** Null: there is a command of this name. */
    GMacroCommand* newMacro(const ConstString& name);
    /** In their order, of commands that are here; no key takes all that the command has. However many there are, each
        costs little. */
    void giveKeys(const KeyCommands& records);
    /** The same, in one pass over all keys that there are. */
    void giveManyKeys(const KeyCommands& records);
    int32_t tellHandlers(FMessage* message);
    int32_t fireNamed(const ConstString& category, const ConstString& name);
    /** Texts to hand out. */
    const char* shown8(const FString& text);
    const tchar* shown16(const FString& text);
    /** All that is to be stored: no key for each command, then those that it has, then those of unknown commands. Names
        and keys that aren't storable are left out. */
    KeyCommands keyRecords() const;
    /** A known command gets its keys, for another one they are kept. */
    void takeKeys(const KeyCommands& records);
    bool storeKeys(FAttributes& attributes) const;
    void restoreMacro(GMacroCommand& macro, const FAttributes& attributes) const;
    /** Not empty, not too long for one of the files, and without what can't be written as text. */
    static bool isStorable(const ConstString& name);
    static bool isStorable(const UKeyCode& key);
    static bool isStorable(const ConstString& category, const ConstString& name) {
        return isStorable(category) && isStorable(name);
    }

    CmArray commands{0, -1};
    std::unordered_map<std::u16string, GCommand*> byName;  // each of the commands
    CmArray categories{0, -1};
    std::map<std::u16string, KeyCommands> dormantKeyCommands;  // by the full names of their commands
    CmOrderedArray keyCommands{0, -1};
    int32_t managerFlags = kKeysStored;
    std::vector<IActionHandler*> handlers;
    std::vector<OldName> oldNames;
    FString lastCategory, lastName;
    std::set<std::string> shownTexts8;  // all that were handed out
    std::set<std::u16string> shownTexts16;
};

/** The manager of this copy of the framework, borrowed. */
extern GCommandManager* gCommandManager;

/** Around the settings of the program: the keys that were stored come back, and are stored. */
void PostDefLoadGCommandManager();
void PreDefSaveGCommandManager();

}  // namespace Tessarine
