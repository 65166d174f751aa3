#include "graphed/gcommandmanager.h"
#include "graphed/hooks.h"
#include "gui/values/hooks.h"
#include "pluginterfaces/base/identifiers.h"
#include <algorithm>
#include <initializer_list>
#include <ranges>
#include <string_view>
#include <unordered_set>

namespace Tessarine {
DEFINE_IID_ROW(IActionHandler, kIActionHandlerID);
DEFINE_IID_ROW(IActionManager, kIActionManagerID);
DEFINE_IID_ROW(IActionManager2, kIActionManager2ID);
IMPLEMENT_CLASS(GCommandManager, CmObject)

constinit GCommandManager* gCommandManager = nullptr;

namespace {
constexpr size_t kFewKeys = 8;
constexpr tchar kFirstNoCharacter = 0xFFFE;
constexpr tchar kResetQuestion[] = u"Do you want to reset all key commands?";

/** The same for names that are the same, whether they have 8 or 16 bits. */
std::u16string fullName(const ConstString& category, const ConstString& name) {
    std::u16string full(String(category).text16());
    full.push_back(0);
    return full.append(String(name).text16());
}

uint32_t keyValueOf(const OPtr<GKeyCommand>& key) {
    return key->keyValue;
}

/** Of characters that every file can hold: no controls, no halves of pairs, none that are no characters. */
bool isText(const String& wide) {
    const std::u16string_view units(wide.text16());
    String copy(wide);
    return std::ranges::none_of(units, [](tchar unit) { return unit < ' ' || unit >= kFirstNoCharacter; }) &&
           (units.empty() || (copy.toMultiByte(kCodePageUTF8) && copy.toWideString(kCodePageUTF8) && copy == wide));
}

CmObject* namedCommand(const char* category, const char* name) {
    return gCommandManager ? gCommandManager->findCommand(ConstString(category), ConstString(name)) : nullptr;
}
}  // namespace

GCommandManager::GCommandManager() {
    for (CmContainer* list : std::initializer_list<CmContainer*>{&commands, &categories, &keyCommands})
        list->_ownsObjects = CmContainer::kTakesOver;
    if (gCommandManager)
        return;
    gCommandManager = this;
    GAction::dispatcher = this;
    gValueHooks.commandByName = namedCommand;
}

GCommandManager::~GCommandManager() {
    gMessenger->killMessages(this);
    for (CmObject* command : commands)
        if (auto* macro = classCast<GMacroCommand>(command))
            macro->removeAllCommands();  // they may hold each other
    if (GAction::dispatcher == this)
        GAction::dispatcher = nullptr;
    if (gCommandManager == this)
        gCommandManager = nullptr;
}

int32_t GCommandManager::queryInterface(const char* iid, void** obj) {
    if (answerInterface<IActionDispatcher>(this, iid, obj) || answerInterface<IActionManager>(this, iid, obj) ||
        answerInterface<IActionManager2>(this, iid, obj))
        return kResultOk;
    return CmObject::queryInterface(iid, obj);
}

int32_t GCommandManager::notify(FMessage* message) {
    if (message->isType("PerformAction")) {
        auto* action = classCast<GAction>(message->get("Action"));
        return action ? action->dispatch(true) : 0;
    }
    if (message->isType("MenuSelect")) {
        const auto* command = classCast<GCommand>(message->get("Command"));
        return command ? fireNamed(command->category, command->name) : 0;
    }
    return CmObject::notify(message);
}

// --- commands

GCommand* GCommandManager::addCommand(const char* category, const char* name, const tchar* title, const UKeyCode& key,
                                      const char* subCategory) {
    if (!category || !name || !*category || !*name)
        return nullptr;
    GCommand* command = findCommand(ConstString(category), ConstString(name));
    const bool isNew = !command;
    if (isNew) {
        command = new GCommand(ConstString(category), ConstString(name), title);
        command->subCategory.assign(subCategory);
        takeCommand(command);
    }
    if (key.toLong() != 0)
        addDefaultKey(*command, key, isNew);
    return command;
}

void GCommandManager::takeCommand(GCommand* command) {
    commands.add(command);
    byName.emplace(fullName(command->category, command->name), command);
    categoryFor(command->category).commands.add(command);
    if (!command->subCategory.isEmpty()) {
        const OPtr<CmObject> copy(command->newCopy());
        categoryFor(command->subCategory).commands.add(copy);
    }
    wakeDormant(*command);
}

void GCommandManager::addDefaultKey(GCommand& command, const UKeyCode& key, bool isNew) {
    const bool wasStored = command.commandFlags & GCommand::kKeysWereStored;
    const GKeyCommand* present = findKeyCommand(key);
    const bool isTaken = present && !present->isOf(command.category, command.name);
    if (isNew && isTaken && !wasStored)
        return;
    if (!command.defaultKeys.contains(key))
        command.defaultKeys.add(key);
    if (!isTaken && !wasStored)
        assignKey(key, command);
}

void GCommandManager::addCommands(const GCommandDesc* descriptions, int32_t count) {
    for (int32_t i = 0; i < count; ++i) {
        const GCommandDesc& each = descriptions[i];
        addCommand(each.category, each.name, each.title, each.key, each.subCategory);
    }
}

GCommand* GCommandManager::findCommand(const ConstString& category, const ConstString& name) const {
    const auto found = byName.find(fullName(category, name));
    return found == byName.end() ? nullptr : found->second;
}

GCommand* GCommandManager::findCommandWithHistory(const ConstString& category, const ConstString& name) const {
    if (GCommand* command = findCommand(category, name))
        return command;
    for (const OldName& old : oldNames)
        if (old.oldName.compare(name) == 0 && old.oldCategory.compare(category) == 0)
            if (GCommand* command = findCommand(old.category, old.name))
                return command;
    return nullptr;
}

void GCommandManager::addOldName(const char* oldCategory, const char* oldName, const char* category, const char* name) {
    oldNames.push_back({oldCategory, oldName, category, name});
    if (GCommand* command = findCommand(ConstString(category), ConstString(name)))
        wakeDormant(*command);
}

GCommandCategory* GCommandManager::findCategory(const ConstString& name) const {
    for (CmObject* each : categories)
        if (auto* category = static_cast<GCommandCategory*>(each); category->name.compare(name) == 0)
            return category;
    return nullptr;
}

GCommandCategory& GCommandManager::categoryFor(const ConstString& name) {
    GCommandCategory* category = findCategory(name);
    if (!category) {
        category = new GCommandCategory(name);
        categories.add(category);
    }
    return *category;
}

void GCommandManager::setLastCommand(const GCommand& command) {
    lastCategory = command.category;
    lastName = command.name;
}

// --- keys

GCommand* GCommandManager::findCommand(const UKeyCode& key) const {
    const GKeyCommand* found = findKeyCommand(key);
    return found ? findCommand(found->category, found->name) : nullptr;
}

const GKeyCommand* GCommandManager::findKeyCommand(const UKeyCode& key) const {
    const GKeyCommand wanted(key.toLong());
    return static_cast<GKeyCommand*>(keyCommands.lookup(&wanted));
}

std::vector<UKeyCode> GCommandManager::findKeyCommands(const ConstString& category, const ConstString& name) const {
    std::vector<UKeyCode> keys;
    for (CmObject* each : keyCommands)
        if (const auto* key = static_cast<GKeyCommand*>(each); key->isOf(category, name))
            keys.push_back(key->keyCode);
    return keys;
}

bool GCommandManager::addKeyCommand(const UKeyCode& key, const ConstString& category, const ConstString& name) {
    if (key.toLong() == 0)
        return false;
    OPtr<GKeyCommand> added(new GKeyCommand(key, category, name));  // first: the names may be those of one that goes
    for (auto& [command, records] : dormantKeyCommands)
        std::erase_if(records, [&](const OPtr<GKeyCommand>& each) { return each->keyValue == added->keyValue; });
    return putKeyCommand(added.detach());
}

void GCommandManager::setKeyCommands(const KeyCommands& keys) {
    removeAllKeyCommands();
    giveKeys(keys);
    for (auto& [command, records] : dormantKeyCommands)
        std::erase_if(records, [this](const OPtr<GKeyCommand>& each) { return findKeyCommand(each->keyCode); });
}

void GCommandManager::assignKey(const UKeyCode& key, const GCommand& command) {
    putKeyCommand(new GKeyCommand(key, command.category, command.name));
}

bool GCommandManager::putKeyCommand(GKeyCommand* added) {
    removeKeyCommand(added->keyCode);
    return keyCommands.add(added);
}

bool GCommandManager::removeKeyCommand(const UKeyCode& key) {
    const GKeyCommand wanted(key.toLong());
    return keyCommands.removeAt(keyCommands.index(&wanted));
}

void GCommandManager::removeKeyCommands(const ConstString& category, const ConstString& name) {
    const FString ofCategory(category), ofName(name);  // copies: they may be the names of one that goes
    for (int32_t i = keyCommands.total() - 1; i >= 0; --i)
        if (static_cast<GKeyCommand*>(keyCommands.at(i))->isOf(ofCategory, ofName))
            keyCommands.removeAt(i);
}

bool GCommandManager::resetAllKeyCommands() {
    if (gActionHooks.ask && !gActionHooks.ask(kResetQuestion))
        return false;
    removeAllKeyCommands();
    dormantKeyCommands.clear();
    for (CmObject* each : commands) {
        auto* command = static_cast<GCommand*>(each);
        command->commandFlags &= ~GCommand::kKeysWereStored;
        for (const UKeyCode& key : command->defaultKeys)
            if (!findKeyCommand(key))
                assignKey(key, *command);
    }
    return true;
}

void GCommandManager::getKeyCodesString(const GCommand& command, String& text) const {
    text.assign(u"");
    for (const UKeyCode& key : findKeyCommands(command.category, command.name)) {
        String one;
        key.keyCode2String(one);
        if (!text.isEmpty())
            text.append(u", ");
        text.append(one);
    }
}

void GCommandManager::wakeDormant(GCommand& command) {
    KeyCommands woken;
    const auto wake = [&](const ConstString& category, const ConstString& name) {
        if (const auto found = dormantKeyCommands.extract(fullName(category, name)))
            for (const OPtr<GKeyCommand>& each : found.mapped())
                woken.emplace_back(new GKeyCommand(each->keyCode, command.category, command.name));
    };
    for (const OldName& old : oldNames)
        if (command.isNamed(old.category, old.name))
            wake(old.oldCategory, old.oldName);
    wake(command.category, command.name);
    if (woken.empty())
        return;
    command.commandFlags |= GCommand::kKeysWereStored;
    giveKeys(woken);
}

void GCommandManager::keepDormant(const GCommand& command) {
    keepDormant(new GKeyCommand(UKeyCode(), command.category, command.name));
    for (const UKeyCode& key : findKeyCommands(command.category, command.name))
        keepDormant(new GKeyCommand(key, command.category, command.name));
}

void GCommandManager::keepDormant(GKeyCommand* record) {
    dormantKeyCommands[fullName(record->category, record->name)].emplace_back(record);
}

int32_t GCommandManager::countDormantKeyCommands() const {
    size_t count = 0;
    for (const auto& [command, records] : dormantKeyCommands)
        count += records.size();
    return int32_t(count);
}

void GCommandManager::takeKeys(const KeyCommands& records) {
    dormantKeyCommands.clear();
    KeyCommands given;
    for (const OPtr<GKeyCommand>& record : records) {
        if (const GCommand* command = findCommandWithHistory(record->category, record->name))
            given.emplace_back(new GKeyCommand(record->keyCode, command->category, command->name));
        else if (isStorable(record->category, record->name))
            keepDormant(OPtr<GKeyCommand>(record).detach());
    }
    giveKeys(given);
}

void GCommandManager::giveKeys(const KeyCommands& records) {
    if (records.size() > kFewKeys)
        return giveManyKeys(records);
    for (const OPtr<GKeyCommand>& record : records)
        if (record->keyValue == 0)
            removeKeyCommands(record->category, record->name);
        else if (isStorable(record->keyCode))
            putKeyCommand(OPtr<GKeyCommand>(record).detach());
}

void GCommandManager::giveManyKeys(const KeyCommands& records) {
    std::unordered_set<uint32_t> given;  // from the end: the last one who gets a key has it
    std::unordered_set<std::u16string> emptied;
    KeyCommands left;
    const auto give = [&](GKeyCommand* record) {
        if (record->keyValue == 0)
            emptied.insert(fullName(record->category, record->name));
        else if (given.insert(record->keyValue).second && !emptied.contains(fullName(record->category, record->name)))
            left.emplace_back(IPtr<GKeyCommand>(record));
    };
    for (const OPtr<GKeyCommand>& record : records | std::views::reverse)
        if (isStorable(record->keyCode))
            give(record);
    for (int32_t i = keyCommands.total() - 1; i >= 0; --i)
        give(static_cast<GKeyCommand*>(keyCommands.at(i)));
    std::ranges::sort(left, {}, &keyValueOf);
    keyCommands.removeAll();
    for (OPtr<GKeyCommand>& each : left)
        keyCommands.add(each.detach());
}

bool GCommandManager::isStorable(const ConstString& name) {
    const String wide(name);
    const size_t length = std::u16string_view(wide.text16()).size();
    return length > 0 && length <= kLongestName && isText(wide);
}

bool GCommandManager::isStorable(const UKeyCode& key) {
    const tchar text[] = {key.character, 0};
    return isText(String(text));
}

// --- macros

GMacroCommand* GCommandManager::addMacro(const ConstString& name) {
    return areMacroCommandsEnabled() ? newMacro(name) : nullptr;
}

GMacroCommand* GCommandManager::newMacro(const ConstString& name) {
    if (!isStorable(name) || findCommand(ConstString(GMacroCommand::kCategory), name))
        return nullptr;
    auto* macro = new GMacroCommand(name);
    takeCommand(macro);
    return macro;
}

GMacroCommand* GCommandManager::findMacro(const ConstString& name) const {
    return classCast<GMacroCommand>(findCommand(ConstString(GMacroCommand::kCategory), name));
}

bool GCommandManager::removeMacro(const ConstString& name) {
    GMacroCommand* macro = findMacro(name);
    if (macro)
        removeCommand(macro);
    return macro != nullptr;
}

void GCommandManager::removeCommand(GCommand* command) {
    const IPtr<GCommand> held(command);
    const bool isMacro = classCast<GMacroCommand>(command);
    if (!isMacro)
        keepDormant(*command);  // its owner may come again
    removeKeyCommands(command->category, command->name);
    for (const ConstString& in : {ConstString(command->category), ConstString(command->subCategory)})
        if (GCommandCategory* from = findCategory(in))
            from->removeCommand(*command);
    std::erase_if(byName, [command](const auto& each) { return each.second == command; });  // whatever its names became
    commands.removeAt(commands.indexAbs(command));
    for (CmObject* each : commands)
        if (auto* macro = isMacro ? classCast<GMacroCommand>(each) : nullptr)
            macro->removeCommands(command->category, command->name);
    if (isMacro)
        static_cast<GMacroCommand*>(command)->removeAllCommands();  // it may hold itself
}

// --- dispatching

int32_t GCommandManager::dispatchActionMessage(FMessage* message) {
    int32_t answer = 0;
    if (gActionHooks.dispatchToWindows && gActionHooks.dispatchToWindows(message, answer))
        return answer;
    answer = tellHandlers(message);
    CmObject* application = gActionHooks.application ? gActionHooks.application() : nullptr;
    return answer == 0 && application ? application->notify(message) : answer;
}

int32_t GCommandManager::tellHandlers(FMessage* message) {
    const auto* action = classCast<GAction>(message->get("Action"));
    if (!action)
        return 0;
    const bool perform = message->isType("Interpret");
    for (IActionHandler* handler : std::vector(handlers)) {
        const bool isThere = std::ranges::find(handlers, handler) != handlers.end();
        const int32_t answer = isThere ? handler->handleAction(action->getCategory(), action->getName(), perform) : 0;
        if (answer != 0)
            return answer;
    }
    return 0;
}

int32_t GCommandManager::fireNamed(const ConstString& category, const ConstString& name) {
    IPtr<GCommand> command(findCommandWithHistory(category, name));
    if (!command)
        command = OPtr<GCommand>(new GCommand(category, name));
    return command->fire(0);
}

// --- IActionManager2

int32_t GCommandManager::addAction(const char* category, const char* name) {
    GCommand* command = addCommand(category, name, nullptr, UKeyCode());
    if (!command)
        return kInvalidArgument;
    command->commandFlags &= ~GCommand::kMayBeDisabled;
    return kResultOk;
}

int32_t GCommandManager::removeAction(const char* category, const char* name) {
    GCommand* command = findCommand(ConstString(category), ConstString(name));
    if (command)
        removeCommand(command);
    return command ? kResultOk : kResultFalse;
}

int32_t GCommandManager::performAction(const char* category, const char* name) {
    if (!category || !name)
        return kInvalidArgument;
    if (gActionHooks.isMainThread && !gActionHooks.isMainThread()) {
        auto* message = new FMessage("MenuSelect");
        message->add("Command", new GCommand(ConstString(category), ConstString(name)), true);
        gMessenger->postMessage(this, message);
        return kResultOk;
    }
    const int32_t answer = fireNamed(ConstString(category), ConstString(name));
    if (answer == GCommand::kDisabled)
        return kWrongState;
    return answer == GCommand::kDone ? kResultOk : kResultFalse;
}

int32_t GCommandManager::canPerformAction(const char* category, const char* name) {
    IPtr<GCommand> command(findCommandWithHistory(ConstString(category), ConstString(name)));
    if (!command)
        command = OPtr<GCommand>(new GCommand(ConstString(category), ConstString(name)));
    return command->canPerform(nullptr) ? kResultOk : kResultFalse;
}

int32_t GCommandManager::addActionHandler(IActionHandler* handler) {
    if (!handler || std::ranges::find(handlers, handler) != handlers.end())
        return kResultFalse;
    handlers.push_back(handler);
    return kResultOk;
}

int32_t GCommandManager::removeActionHandler(IActionHandler* handler) {
    return std::erase(handlers, handler) > 0 ? kResultOk : kResultFalse;
}

GCommand* GCommandManager::commandAt(int32_t category, int32_t action) const {
    const GCommandCategory* found = categoryAt(category);
    return found ? found->commandAt(action) : nullptr;
}

const char* GCommandManager::getCategoryName(int32_t category) {
    const GCommandCategory* found = categoryAt(category);
    return found ? shown8(found->name) : nullptr;
}

const tchar* GCommandManager::getCategoryTitle(int32_t category) {
    const GCommandCategory* found = categoryAt(category);
    return found ? shown16(found->name) : nullptr;
}

int32_t GCommandManager::countActionsOfCategory(int32_t category) {
    const GCommandCategory* found = categoryAt(category);
    return found ? found->countCommands() : 0;
}

const char* GCommandManager::getActionName(int32_t category, int32_t action) {
    const GCommand* command = commandAt(category, action);
    return command ? shown8(command->name) : nullptr;
}

const tchar* GCommandManager::getActionTitle(int32_t category, int32_t action) {
    const GCommand* command = commandAt(category, action);
    return command ? shown16(command->shownTitle()) : nullptr;
}

const char* GCommandManager::getActionTitle8(int32_t category, int32_t action) {
    const GCommand* command = commandAt(category, action);
    return command ? shown8(command->shownTitle()) : nullptr;
}

const char* GCommandManager::shown8(const FString& text) {
    const FString copy(text);  // NOLINT(performance-unnecessary-copy-initialization): it may change its width
    return shownTexts8.emplace(copy.text8()).first->c_str();
}

const tchar* GCommandManager::shown16(const FString& text) {
    const FString copy(text);  // NOLINT(performance-unnecessary-copy-initialization): it may change its width
    return shownTexts16.emplace(copy.text16()).first->c_str();
}

int32_t GCommandManager::getCategoryIndex(const char* category) {
    return categories.indexAbs(findCategory(ConstString(category)));
}

int32_t GCommandManager::getActionIndex(int32_t category, const char* name) {
    const GCommandCategory* found = categoryAt(category);
    return found ? found->indexOf(ConstString(name)) : -1;
}

int32_t GCommandManager::getLastPerformedAction(const char** category, const char** name) {
    if (!category || !name)
        return kInvalidArgument;
    if (lastName.isEmpty())
        return kResultFalse;
    *category = shown8(lastCategory);
    *name = shown8(lastName);
    return kResultOk;
}

}  // namespace Tessarine
