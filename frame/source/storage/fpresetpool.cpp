#include "base/fdefaults.h"
#include "fpresetfiles.h"
#include "fpresetitems.h"
#include "storage/ffilesystem.h"
#include "storage/fnewarchive.h"
#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Tessarine {
namespace {
constexpr const tchar* kFolderName = u"Presets";
constexpr const tchar* kPoolFile = u"RAMPresets";
constexpr const tchar* kOldFile = u"Presets2.bin";
constexpr const tchar* kAside = u"Presets.new";  // a copy that isn't whole yet
constexpr const char* kBackupSuffix = ".backup";
constexpr const char* kPoolRoot = "Pool";
constexpr const char* kListRoot = "PresetList";
constexpr const char* kLists = "Lists";

bool isOfMemory(int32_t storageType) {
    return storageType == FPresetList::kWithPool || storageType == FPresetList::kOwnFile;
}

/** Ids that a file can't tell apart get a number. */
FString ownFileName(const FPresetList& list, std::set<std::u16string>& taken) {
    FString name, numbered;
    if (!presetFileName(list.getID(), kPresetSuffix, name))
        return FString();
    numbered = name;
    for (int32_t number = 1; !taken.insert(numbered.text16()).second; ++number) {
        FString mark;
        numbered = name;
        numbered += mark.printf("-%02d", number);
    }
    return numbered;
}

/** false: not all of it. */
bool storeOwnFile(const FNPath& folder, FPresetList& list, std::set<std::u16string>& taken) {
    const FString name = ownFileName(list, taken);
    const FNPath file = presetPath(folder, name, ramPresetListFileType);
    if (name.isEmpty() || savePresetFile(file, kListRoot, list))
        return !name.isEmpty();
    savePresetFile(file, kListRoot, *list.storablePart(1));
    return false;
}

FNPath folderOf(int32_t standardFolder, bool create) {
    FNPath folder(kFolderPath);
    folder.getStandardFolder(standardFolder, kFolderName, create);
    return folder;
}

/** Where the user has no presets yet, the application's are copied over: all of them, or none. */
void seedUserFolder(FNPath& userFolder) {
    FNPath source = folderOf(kApplicationFolder, false);
    if (userFolder.isEmpty() || source.isEmpty() || gFileSystem->dirExists(&userFolder) ||
        !gFileSystem->dirExists(&source))
        return;
    FNPath aside(kFolderPath);
    if (!aside.getStandardFolder(kUserFolder, kAside, true))
        return;
    if (!gFileSystem->copyFolderAndFileStructure(&source, &aside) || !gFileSystem->moveFile(&aside, &userFolder, false))
        gFileSystem->removeDir(&aside, true);
}

bool loadOldFile(FPresetPool& pool) {
    FNPath path(kOldFile, kApplicationFolder, kFilePath, nullptr, false);
    FStream* stream = path.isEmpty() ? nullptr : gFileSystem->openFile(&path, kOpenRead);
    if (!stream)
        return false;
    bool loaded = false;
    {
        FNewArchive archive(stream, false);
        loaded = pool.internalize(archive);
    }
    gFileSystem->closeFile(stream);
    if (loaded && !FDefaultPool::isGuest)
        gFileSystem->removeFile(&path);
    return loaded;
}

bool isLoadedFrom(FPresetPool& pool, const FNPath& folder) {
    return !folder.isEmpty() && pool.load(folder);
}

const bool registered = [] {
    FDefaultPool::addPostLoadFunc(PostDefLoadFPresetPool);
    FDefaultPool::addPreSaveFunc(PreDefSaveFPresetPool);
    return true;
}();
}  // namespace

IMPLEMENT_ABSTRACT_CLASS(FPresetPool, CmObject)

constinit FPresetPool* gPresetPool = nullptr;

FPresetPool::FPresetPool() {
    ramLists._ownsObjects = fileLists._ownsObjects = CmContainer::kTakesOver;
}

TArray<FPresetPool::Function>& FPresetPool::postLoaders() {
    static TArray<Function> functions(0, -1);
    return functions;
}

void FPresetPool::unuse() {
    if (gPresetPool)
        gPresetPool->release();
    gPresetPool = nullptr;
}

void FPresetPool::runPostLoaders() {
    for (int32_t i = 0; i < postLoaders().total(); ++i)
        postLoaders().at(i)();
}

// --- lists

FPresetList* FPresetPool::findRAMList(const tchar* id) const {
    const auto found = id ? ids.find(id) : ids.end();
    return found != ids.end() ? found->second : nullptr;
}

FPresetList* FPresetPool::findFileList(const tchar* id) const {
    for (CmLinkedListIterator each(fileLists); !each.done();) {
        auto* list = static_cast<FPresetList*>(each.next());
        if (ConstString(list->getID()) == ConstString(id))
            return list;
    }
    return nullptr;
}

void FPresetPool::addRAMList(FPresetList* list) {
    ramLists.append(list);
    ids.emplace(list->getID(), list);
}

FPresetList* FPresetPool::getRAMList(const tchar* id, bool ownFile) {
    if (FPresetList* known = findRAMList(id))
        return known;
    if (!FPresetList::isValidName(id))
        return nullptr;
    FPresetList* list = ownFile ? new FPresetListOwnFile(id) : new FPresetList(id);
    addRAMList(list);
    return list;
}

FPresetList* FPresetPool::getPresetList(const tchar* id, int32_t storageType, const FNPath* folder) {
    if (isOfMemory(storageType))
        return getRAMList(id, storageType == FPresetList::kOwnFile);
    FPresetList* list = findFileList(id);
    FString folderName;
    if (!list && presetFileName(id, 0, folderName)) {
        const bool writable = folder || !FDefaultPool::isGuest;
        FNPath path = folder ? FNPath(kFolderName, folder, kFolderPath) : folderOf(kUserFolder, writable);
        if (path.isEmpty())
            return nullptr;
        if (folder)
            gFileSystem->createDir(&path);
        path.descend(folderName.text16(), kFolderPath);
        fileLists.append(list = new FFilePresetList(id, path, writable));
    }
    if (list)
        list->use();
    return list;
}

bool FPresetPool::hasRAMList(const tchar* id) const {
    return findRAMList(id) != nullptr;
}

bool FPresetPool::hasPresetList(const tchar* id, int32_t storageType) const {
    return (isOfMemory(storageType) ? findRAMList(id) : findFileList(id)) != nullptr;
}

bool FPresetPool::removeFilePreset(FFilePresetList* list) {
    return fileLists.removeAbs(list);
}

void FPresetPool::merge(FPresetList* list) {
    if (FPresetList* known = findRAMList(list->getID())) {
        known->adjustTo(list);
        return;
    }
    list->addRef();
    addRAMList(list);
}

/** All of one file, but those in another one, which come with that. What stands in one of an id may refer to another one
    of it, and must not come to stand in that: several of an id go into a list of the pool's own. */
void FPresetPool::mergeAll(const std::vector<FPresetList*>& lists) {
    std::map<std::u16string_view, FPresetList::Lists> byID;
    std::set<const FPresetList*> met;
    for (FPresetList* list : lists) {
        if (!list->getList() && met.insert(list).second)
            byID[list->getID()].emplace_back(list);
    }
    for (FPresetList* list : lists) {
        const FPresetList::Lists same = std::exchange(byID[list->getID()], {});
        if (same.size() == 1)
            merge(same.front());
        else if (FPresetList* mine = same.empty() ? nullptr : getRAMList(list->getID(), false))
            mine->adjustToAll(same);
    }
}

// --- files

bool FPresetPool::loadFile(FNPath& path, const char* root, CmObject& object) {
    std::erase(spoilt, path);
    const bool loaded = loadPresetFile(path, root, object);
    if (!loaded && gFileSystem->fileExists(&path))
        spoilt.push_back(path);
    return loaded;
}

bool FPresetPool::loadOwnFile(FNPath& path) {
    const OPtr<FPresetListOwnFile> list(new FPresetListOwnFile);
    if (!loadFile(path, kListRoot, *list))
        return false;
    merge(list);
    return true;
}

bool FPresetPool::load(const FNPath& folder) {
    FNPath poolFile = presetPath(folder, ConstString(kPoolFile), presetFileType);
    bool loaded = loadFile(poolFile, kPoolRoot, *this);
    const OPtr<FFileIterator> files(gFileSystem->newIterator(&folder, false));
    for (FPath* file = files ? files->first() : nullptr; file; file = files->next()) {
        FString extension;
        FNPath path(file->getName(), &folder, kFilePath);
        if (!file->isFolder() && path.getExtension(extension) && ramPresetListFileType.hasExtension(extension))
            loaded = loadOwnFile(path) || loaded;
    }
    return loaded;
}

/** Each of this folder once; false: one couldn't be copied. */
bool FPresetPool::keepSpoilt(const FNPath& folder) {
    bool kept = true;
    std::erase_if(spoilt, [&](FNPath& path) {
        FNPath parent(path), copy(path);
        FString name(path.getFileName());
        name += kBackupSuffix;
        copy.setName(name.text16());
        if (!parent.ascend() || !(parent == folder))
            return false;
        const bool isKept = !gFileSystem->fileExists(&path) || gFileSystem->copyFile(&path, &copy);
        kept = kept && isKept;
        return isKept;
    });
    return kept;
}

OPtr<FPresetPool> FPresetPool::storablePart() const {
    OPtr<FPresetPool> part(new FPresetPool);
    for (CmLinkedListIterator each(ramLists); !each.done();) {
        auto* list = static_cast<FPresetList*>(each.next());
        if (list->getStorageType() == FPresetList::kWithPool)
            part->addRAMList(list->storablePart(2).detach());
    }
    return part;
}

bool FPresetPool::store(const FNPath& folder) {
    if (ramLists.isEmpty())
        return true;
    if (!keepSpoilt(folder))
        return false;
    const FNPath poolFile = presetPath(folder, ConstString(kPoolFile), presetFileType);
    bool stored = savePresetFile(poolFile, kPoolRoot, *this);
    if (!stored)
        savePresetFile(poolFile, kPoolRoot, *storablePart());
    std::set<std::u16string> taken;
    for (CmLinkedListIterator each(ramLists); !each.done();) {
        auto* list = static_cast<FPresetList*>(each.next());
        if (list->getStorageType() == FPresetList::kOwnFile)
            stored = storeOwnFile(folder, *list, taken) && stored;
    }
    return stored;
}

bool FPresetPool::internalize(FArchive& archive) {
    CmLinkedList container;
    std::vector<OPtr<CmObject>> objects;
    std::vector<FPresetList*> lists;
    if (!readObjects(archive, container, objects))
        return false;
    for (const OPtr<CmObject>& each : objects) {
        if (auto* list = classCast<FPresetList>(each.get()))
            lists.push_back(list);
    }
    mergeAll(lists);
    return true;
}

bool FPresetPool::externalize(FArchive& archive) const {
    return ramLists.externalize(archive);
}

bool FPresetPool::storeAttributes(FAttributes& attributes) const {
    bool stored = true;
    for (CmLinkedListIterator each(ramLists); !each.done();) {
        auto* list = static_cast<FPresetList*>(each.next());
        if (list->getStorageType() == FPresetList::kWithPool)
            stored = attributes.queueObject(kLists, list) && stored;
    }
    return stored;
}

bool FPresetPool::restoreAttributes(FAttributes& attributes) {
    std::vector<FPresetList*> lists;
    attributes.resetList(kLists);
    for (int32_t left = attributes.countQueueItems(kLists); left > 0; --left) {
        if (auto* list = classCast<FPresetList>(attributes.unqueueObject(kLists)))
            lists.push_back(list);
    }
    mergeAll(lists);
    return true;
}

// --- with the defaults

void PostDefLoadFPresetPool() {
    if (!gPresetPool)
        gPresetPool = new FPresetPool;
    FNPath userFolder = folderOf(kUserFolder, false);
    if (!FDefaultPool::isGuest)
        seedUserFolder(userFolder);
    if (!isLoadedFrom(*gPresetPool, userFolder) && !isLoadedFrom(*gPresetPool, folderOf(kApplicationFolder, false)))
        loadOldFile(*gPresetPool);
    FPresetPool::runPostLoaders();
}

void PreDefSaveFPresetPool() {
    if (!gPresetPool || FDefaultPool::isGuest || gPresetPool->countRAMLists() == 0)
        return;
    const FNPath folder = folderOf(kUserFolder, true);
    if (!folder.isEmpty())
        gPresetPool->store(folder);
}

}  // namespace Tessarine
