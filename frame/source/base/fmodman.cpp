#include "base/fmodman.h"
#include "gui/values/ustringvalue.h"
#include "storage/ffilesystem.h"
#include <algorithm>
#include <utility>

namespace Tessarine {
namespace {
constexpr const char* kLastModified = "LastModified";
constexpr const char* kBundleVersion = "BundleVersion";
constexpr tchar kDelimiter[] = u"/";
constexpr uint32_t kMacType = 0x424E444C;  // BNDL

const FFileType& moduleType() {
    static const FFileType type(u"Module", u"bundle", u"bundle", kMacType, nullptr, u"com.apple.bundle");
    return type;
}

bool isOfType(const FPath& path, const FFileType& type) {
    FString extension;
    return path.getExtension(extension) && type.hasExtension(extension);
}

/** Of a link, what it leads to, if that is there. With one reference for the caller. */
FNPath* targetOf(const FPath& entry) {
    auto* target = new FNPath;
    static_cast<FPath&>(*target) = entry;
    if (entry.isLink())
        gFileSystem->checkResolveLink(target);
    return target;
}
}  // namespace

IMPLEMENT_ABSTRACT_CLASS(FModuleManager, CmObject)

constinit ComponentEventHooks gComponentEventHooks;

void showComponentStatus(const tchar* text) {
    if (gComponentEventHooks.showStatus)
        gComponentEventHooks.showStatus(text);
}

/** A module with its group of the cache, between looking at it and taking it. */
struct FModuleManager::Entry {
    FString group;
    FBundleFacts facts;
    IPtr<FDefaults> defaults;
    String version;        // the present one
    bool isKnown = false;  // the group is of this date and version
};

FModuleManager::FModuleManager(const tchar* folderName) : folderName(folderName) {
    modules._ownsObjects = CmContainer::kTakesOver;
}

FModuleManager::~FModuleManager() = default;

const FFileType& FModuleManager::getFileType() const {
    return moduleType();
}

bool FModuleManager::isModule(const FPath* path) const {
    return path && (path->isBundle() || isOfType(*path, getFileType()));
}

void FModuleManager::removeAll() {
    modules.removeAll();
    isScanned = false;
}

FModuleBase* FModuleManager::createModule(FPath* path) {
    path->release();
    return nullptr;
}

bool FModuleManager::onRestoreModule(FDefaults* /*defaults*/, FModuleBase* /*module*/) {
    return false;
}

bool FModuleManager::onRegisterModule(FDefaults* /*defaults*/, FModuleBase* /*module*/) {
    return false;
}

// --- scanning

int32_t FModuleManager::findModules() {
    if (isScanned)
        return 0;
    showComponentStatus(folderName.text16());
    isScanned = true;
    const FNPath folder(folderName.text16(), kApplicationFolder, kFolderPath, nullptr, false);
    const int32_t found = folder.isEmpty() ? 0 : findModules(folder, nullptr);
    showComponentStatus(nullptr);
    return found;
}

int32_t FModuleManager::rescanModules() {
    isScanned = false;
    return findModules();
}

int32_t FModuleManager::findModules(const FNPath& path, const FFileType* fileType) {
    if (!gFileSystem->dirExists(&path))
        return 0;
    const FNPath* const outer = std::exchange(scanRoot, &path);
    const int32_t before = countModules();
    FNFileSystemScanner scanner(&path);
    for (const FPath* each = scanner.first(); each; each = scanner.next()) {
        OPtr<FNPath> target(targetOf(*each));
        if (fileType ? !isOfType(*target, *fileType) : !isModule(target))
            continue;
        if (each->isFolder())
            scanner.skipFolder();
        takeModule(createModule(target.detach()));
    }
    scanRoot = outer;
    saveDefaults();
    return countModules() - before;
}

FModuleBase* FModuleManager::takeModule(OPtr<FModuleBase> module) {
    if (!module)
        return nullptr;
    if (CmObject* known = modules.lookup(module))
        return static_cast<FModuleBase*>(known);
    const auto isIt = [&module](const FModuleBase* each) { return each->isEqual(module); };
    if (std::ranges::any_of(beingTaken, isIt))
        return nullptr;
    beingTaken.push_back(module);
    const bool isTaken = restoreModule(module) || registerModule(module);
    beingTaken.pop_back();
    return isTaken ? module.get() : nullptr;
}

FModuleBase* FModuleManager::addModule(const FNPath* path) {
    char given[FNPath::kPlatformPathLength];
    FBundleFacts facts;
    if (!path || !path->toPlatformPath(given) || !gBundleHooks.examine || !gBundleHooks.examine(given, facts))
        return nullptr;
    OPtr<FNPath> bundle(new FNPath(kFolderPath));
    if (!bundle->fromPlatformPath(facts.folder.c_str()))
        return nullptr;
    FModuleBase* added = takeModule(createModule(bundle.detach()));
    saveDefaults();
    return added;
}

FModuleBase* FModuleManager::getModule(int32_t index) const {
    return static_cast<FModuleBase*>(modules.at(index));
}

int32_t FModuleManager::getModuleIndex(const tchar* name) const {
    int32_t index = 0;
    for (CmLinkedListIterator each(modules); !each.done(); ++index) {
        FString own;
        static_cast<FModuleBase*>(each.next())->getName(own);
        if (own == ConstString(name))
            return index;
    }
    return -1;
}

UStringListValue* FModuleManager::getModulesValue() const {
    auto* value = new UStringListValue;
    for (CmLinkedListIterator each(modules); !each.done();) {
        FString name;
        static_cast<FModuleBase*>(each.next())->getName(name);
        value->addString(name.text16());
    }
    return value;
}

// --- cache

FDefaultPool* FModuleManager::useCache() {
    if (!cache) {
        cache = new FDefaultPool;
        cache->loadArchive(cacheName.text8());
    }
    return cache;
}

bool FModuleManager::saveDefaults() {
    if (!cache || !cacheChanged)
        return false;
    cacheChanged = false;
    return cache->saveArchive(cacheName.text8());
}

void FModuleManager::makeKey(FString& key, const ConstString& text) {
    const String wide(text);
    key = FString();
    for (const tchar* each = wide.text16(); *each; ++each) {
        String unit;
        if (ConstString::isCharAscii(*each) && !(each[0] == '%' && each[1] == 'u'))
            key.append(char(*each));
        else
            key.append(unit.printf("%%u%04X", unsigned(*each)));
    }
}

void FModuleManager::getFolderName(const FNPath* path, FString& name) const {
    name = kDelimiter;
    FString root, folders(path->getPathName());
    if (!scanRoot || !path->isInDir(scanRoot))
        return;
    scanRoot->getFullPath(root);
    if (folders.length() > root.length())
        name.assign(folders.text16() + root.length());
}

void FModuleManager::makeGroupId(FString& id, const FPath* path) const {
    FString folder(kDelimiter);
    if (const auto* own = classCast<FNPath>(path))
        getFolderName(own, folder);
    id = folderName;
    id.append(folder).append(path->getFileName());
}

/** false: it can't run here, and leaves no group. */
bool FModuleManager::openEntry(FModuleBase* module, Entry& entry) {
    if (!module || !module->getPath())
        return false;
    FString id;
    makeGroupId(id, module->getPath());
    makeKey(entry.group, id);
    entry.defaults = useCache()->getDefaults(entry.group.text8(), cacheVersion, true);
    if (!entry.defaults)
        entry.defaults = OPtr<FDefaults>(new FDefaults);  // its name is too long for the file
    if (!module->examine(entry.facts) || !entry.facts.runsHere())
        return closeEntry(entry);
    int64_t time = 0;
    String version;
    entry.version.fromUTF8(entry.facts.version.c_str());
    entry.defaults->getString(kBundleVersion, version);
    entry.isKnown =
        entry.defaults->getLongLong(kLastModified, time) && time == entry.facts.modified && version == entry.version;
    return true;
}

/** The group goes; false for the caller to hand on. */
bool FModuleManager::closeEntry(const Entry& entry) {
    cacheChanged = cacheChanged || !entry.defaults->isEmpty();
    useCache()->removeDefaults(entry.group.text8(), cacheVersion);
    return false;
}

bool FModuleManager::restoreModule(FModuleBase* module) {
    Entry entry;
    if (!openEntry(module, entry))
        return false;
    if (!entry.isKnown || !onRestoreModule(entry.defaults, module))
        return closeEntry(entry);
    module->addRef();
    return modules.add(module);
}

bool FModuleManager::registerModule(FModuleBase* module) {
    Entry entry;
    if (!openEntry(module, entry))
        return false;
    cacheChanged = cacheChanged || !entry.defaults->isEmpty();
    entry.defaults->getValues().removeAll();
    if (!onRegisterModule(entry.defaults, module))
        return closeEntry(entry);
    entry.defaults->setLongLong(kLastModified, entry.facts.modified);
    if (!entry.version.isEmpty())
        entry.defaults->setString(kBundleVersion, entry.version);
    cacheChanged = true;
    module->addRef();
    return modules.add(module);
}

}  // namespace Tessarine
