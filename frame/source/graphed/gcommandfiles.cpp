#include "base/fdefaults.h"
#include "graphed/gcommandmanager.h"
#include "graphed/hooks.h"
#include "storage/farchive.h"
#include "storage/fbstream.h"
#include "storage/ffilesystem.h"
#include "storage/fnewarchive.h"
#include "storage/fpersistent.h"
#include "storage/fxmlarchive.h"

namespace Tessarine {
namespace {
constexpr char kArchive[] = "Key Commands";
constexpr char kRootTag[] = "KeyCommands";
constexpr tchar kBinaryFile[] = u"Key Commands.bin";
constexpr tchar stringCouldNotReadKeycommands[] = u"The key commands could not be read. They stay as they were.";
constexpr uint8_t kWideCharacter = 0x80;  // with the modifiers

/** As its bytes stand in the binary form. */
struct StoredKey {
    uint8_t bytes[3];
};

StoredKey stored(const UKeyCode& key) {
    const auto low = uint8_t(key.character), high = uint8_t(key.character >> 8);
    const auto modifiers = uint8_t(key.modifiers & ~kWideCharacter);
    if (high)
        return {
            {low, high, uint8_t(modifiers | kWideCharacter)}
        };
    return {
        {low, key.virtualKey, modifiers}
    };
}

UKeyCode restored(const StoredKey& key) {
    const uint8_t modifiers = key.bytes[2] & (UKeyCode::kShift | UKeyCode::kOtherModifiers);
    if (key.bytes[2] & kWideCharacter)
        return UKeyCode(tchar(key.bytes[0] | key.bytes[1] << 8), 0, modifiers);
    return UKeyCode(key.bytes[0], key.bytes[1], modifiers);
}

bool writeRecord(FArchive& archive, const GKeyCommand& record) {
    const StoredKey key = stored(record.keyCode);
    return record.category.externalize(archive) && record.name.externalize(archive) &&
           archive.getStream().writeRaw(key.bytes, sizeof key.bytes) == sizeof key.bytes;
}

/** Null: cut off. */
OPtr<GKeyCommand> readRecord(FArchive& archive) {
    FString category, name;
    StoredKey key;
    if (!category.internalize(archive) || !name.internalize(archive) ||
        archive.getStream().readRaw(key.bytes, sizeof key.bytes) != sizeof key.bytes)
        return nullptr;
    return new GKeyCommand(restored(key), category, name);
}

/** A file that can't be read goes, unless it is another program's. */
void readBinaryFile(GCommandManager& manager) {
    FNPath path(kBinaryFile, kUserFolder, kFilePath, nullptr, false);
    FStream* stream = path.isEmpty() ? nullptr : gFileSystem->openFile(&path, kOpenRead);
    if (!stream)
        return;
    bool read = false;
    {
        FNewArchive archive(stream, false);
        read = manager.internalize(archive);
    }
    gFileSystem->closeFile(stream);
    if (!read && !FDefaultPool::isGuest)
        gFileSystem->removeFile(&path);
}

const bool registered = [] {
    FDefaultPool::addPostLoadFunc(PostDefLoadGCommandManager);
    FDefaultPool::addPreSaveFunc(PreDefSaveGCommandManager);
    return true;
}();
}  // namespace

GCommandManager::KeysByCommand GCommandManager::keysByCommand() const {
    KeysByCommand keys;
    for (CmObject* each : keyCommands) {
        const auto* key = static_cast<GKeyCommand*>(each);
        keys[findCommand(key->category, key->name)].push_back(key);
    }
    for (const auto& [command, records] : dormantKeyCommands)
        keys[nullptr].insert(keys[nullptr].end(), records.begin(), records.end());
    return keys;
}

GCommandManager::KeyCommands GCommandManager::keyRecords() const {
    KeyCommands records;
    const auto add = [&records](const UKeyCode& key, const FString& category, const FString& name) {
        if (isStorable(category, name) && isStorable(key))
            records.emplace_back(new GKeyCommand(key, category, name));
    };
    const auto addAll = [&add](const std::vector<const GKeyCommand*>& keys) {
        for (const GKeyCommand* key : keys)
            add(key->keyCode, key->category, key->name);
    };
    KeysByCommand keys(keysByCommand());
    for (CmObject* each : commands) {
        const auto* command = static_cast<GCommand*>(each);
        add(UKeyCode(), command->category, command->name);
        addAll(keys[command]);
    }
    addAll(keys[nullptr]);
    return records;
}

bool GCommandManager::externalize(FArchive& archive) const {
    const KeyCommands records = keyRecords();
    bool written = archive.getStream().writeInt32(int32_t(records.size()));
    for (const OPtr<GKeyCommand>& record : records)
        written = written && writeRecord(archive, *record);
    return written;
}

bool GCommandManager::internalize(FArchive& archive) {
    constexpr int64_t kSmallestRecord = 2 * sizeof(int32_t) + sizeof(StoredKey);
    int32_t count = 0;
    const int64_t left = archive.getStream().bytesLeft() - int64_t(sizeof count);
    bool read = archive.getStream().readInt32(count) && count >= 0 && (left < 0 || count <= left / kSmallestRecord);
    KeyCommands records;
    for (; read && count > 0; --count) {
        records.push_back(archive.hasLeft(kSmallestRecord) ? readRecord(archive) : nullptr);
        read = records.back() != nullptr;
    }
    if (read)
        takeKeys(records);
    else if (gActionHooks.showText)
        gActionHooks.showText(stringCouldNotReadKeycommands);
    return read;
}

bool GCommandManager::storeAttributes(FAttributes& attributes) const {
    return storeKeys(attributes) && storeMacros(attributes);
}

bool GCommandManager::storeKeys(FAttributes& attributes) const {
    bool stored = true;
    FString category;
    OPtr<FAttributes> bag;
    for (const OPtr<GKeyCommand>& record : keyRecords()) {
        if (!bag || category.compare(record->category) != 0) {
            category = record->category;
            bag = new FAttributes;
            stored = stored && bag->set("Name", category) && attributes.queueAttributes("Categories", bag);
        }
        const OPtr<FAttributes> command(new FAttributes);
        String key;
        record->keyCode.keyCode2String(key);
        stored = stored && command->set("Name", record->name) && command->set("Key", key) &&
                 bag->queueAttributes("Commands", command);
    }
    return stored;
}

bool GCommandManager::storeMacros(FAttributes& attributes) const {
    bool stored = true;
    for (CmObject* each : commands) {
        const auto* macro = classCast<GMacroCommand>(each);
        if (!macro)
            continue;
        const OPtr<FAttributes> bag(new FAttributes);
        stored = stored && bag->set("Name", macro->name) && attributes.queueAttributes("Macros", bag);
        for (CmObject* held : macro->getCommands()) {
            const auto* command = static_cast<GCommand*>(held);
            if (!isStorable(command->category, command->name))
                continue;
            const OPtr<FAttributes> entry(new FAttributes);
            stored = stored && entry->set("Category", command->category) && entry->set("Name", command->name) &&
                     bag->queueAttributes("Commands", entry);
        }
    }
    return stored;
}

bool GCommandManager::restoreAttributes(FAttributes& attributes) {
    KeyCommands records;
    while (const FAttributes* category = attributes.unqueueAttributes("Categories")) {
        FString categoryName;
        if (!category->get("Name", categoryName))
            return false;
        while (const FAttributes* command = category->unqueueAttributes("Commands")) {
            FString name, text;
            UKeyCode key;
            if (!command->get("Name", name) || !command->get("Key", text))
                return false;
            if (key.string2KeyCode(text))
                records.emplace_back(new GKeyCommand(key, categoryName, name));
        }
    }
    restoreMacros(attributes);
    takeKeys(records);
    return true;
}

/** All macros first, since they may hold each other. */
void GCommandManager::restoreMacros(FAttributes& attributes) {
    std::vector<std::pair<IPtr<GMacroCommand>, const FAttributes*>> macros;
    while (const FAttributes* bag = attributes.unqueueAttributes("Macros")) {
        FString name;
        if (!bag->get("Name", name))
            continue;
        GMacroCommand* known = findMacro(name);
        macros.emplace_back(known ? known : newMacro(name), bag);
    }
    for (const auto& [macro, bag] : macros)
        if (macro)
            restoreMacro(*macro, *bag);
}

/** What isn't known yet stands in by its name. */
void GCommandManager::restoreMacro(GMacroCommand& macro, const FAttributes& attributes) const {
    macro.removeAllCommands();
    while (const FAttributes* entry = attributes.unqueueAttributes("Commands")) {
        FString category, name;
        if (!entry->get("Category", category) || !entry->get("Name", name) || !isStorable(category, name))
            continue;
        IPtr<GCommand> command(findCommandWithHistory(category, name));
        if (!command)
            command = OPtr<GCommand>(new GCommand(category, name));
        if (GMacroCommand::isAllowed(command->category, command->name))
            macro.addCommand(command);
    }
}

void PostDefLoadGCommandManager() {
    if (!gCommandManager || !gCommandManager->isKeyStorageEnabled() ||
        FXmlArchive::restoreObject(kArchive, kRootTag, gCommandManager))
        return;
    if (!FDefaultPool::isGuest)
        FXmlArchive::backupObjectArchive(kArchive);  // it couldn't be read, and will be replaced
    readBinaryFile(*gCommandManager);
}

void PreDefSaveGCommandManager() {
    if (gCommandManager && gCommandManager->isKeyStorageEnabled() && !FDefaultPool::isGuest)
        FXmlArchive::storeObject(kArchive, kRootTag, gCommandManager);
}

}  // namespace Tessarine
