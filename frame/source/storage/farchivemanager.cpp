#include "storage/farchivemanager.h"
#include "base/source/finitializer.h"
#include "collect/cmstring.h"
#include "pathsteps.h"
#include "storage/ffilesystemadapter.h"
#include "storage/furl.h"
#include "storage/fvfilesystem.h"
#include <algorithm>
#include <iterator>

namespace Tessarine {
namespace {
constexpr int32_t kBuckets = 64;
constexpr std::u16string_view kSeparator = u"//";
constexpr const tchar* kOnDemand[] = {FArchiveManager::kVirtualProtocol, FArchiveManager::kResourceProtocol};
constexpr size_t kUIDLength = 32;

FObject* gInstance = nullptr;

FString textOf(std::u16string_view text) {
    return FString(text.data(), int32_t(text.size()));
}

std::u16string_view units(const tchar* text) {
    return text;
}

FString hexOf(const FUID& uid) {
    char digits[kUIDLength + 1];
    uid.toString(digits);
    FString text(digits);
    text.toWideString();
    return text;
}

/** Behind the ":" of the protocol that the text begins with; 0: it has none. */
size_t findFirstProtocolPostfix(std::u16string_view text) {
    const size_t colon = text.find(u"://");
    return colon == text.npos || colon == 0 || text.find(u'/') < colon ? 0 : colon + 1;
}

struct UrlParts {
    explicit UrlParts(const FPath& path) : text(fullTextOf(path)) {
        std::u16string_view rest = units16(text);
        protocol = rest.substr(0, findFirstProtocolPostfix(rest));
        inner = rest;
        if (protocol.empty())
            return;
        rest.remove_prefix(protocol.size() + kSeparator.size());
        uid = rest.substr(0, rest.find(u'/'));
        inner = rest.substr(std::min(rest.size(), uid.size() + 1));
    }
    UrlParts(const UrlParts&) = delete;
    UrlParts& operator=(const UrlParts&) = delete;

    /** false, and an empty text: it isn't there. */
    bool give(std::u16string_view part, FString& target) const {
        target = textOf(part);
        return !part.empty();
    }

    FString text;
    std::u16string_view protocol, uid, inner;  // in text
};

bool isProtocol(std::u16string_view text) {
    return text.size() > 1 && text.find(u':') == text.size() - 1 && text.find(u'/') == text.npos;
}

bool isUID(std::u16string_view text) {
    return !text.empty() && text.find(u'/') == text.npos;
}

FRemovableFileSystem* removable(FFileSystem* fileSystem) {
    return classCast<FRemovableFileSystem>(fileSystem);
}

bool isInUse(FFileSystem* fileSystem) {
    const FRemovableFileSystem* taken = removable(fileSystem);
    return taken && taken->getUseCount() > 0;
}

void unmountAll(const std::vector<IPtr<FFileSystem>>& fileSystems) {
    for (FFileSystem* each : fileSystems)
        if (FRemovableFileSystem* taken = removable(each))
            taken->unmount();
}
}  // namespace

IMPLEMENT_ABSTRACT_CLASS(FArchiveManager, CmObject)
IMPLEMENT_ABSTRACT_CLASS(FFileIteratorUrlWrapper, FFileIterator)

struct FArchiveManager::ArchiveEntry : public CmObject {
    ArchiveEntry(FFileSystem* fileSystem, const FString& protocol, const FString& uid)
        : fileSystem(fileSystem), protocol(protocol), uid(uid) {}
    bool fits(const FString& otherProtocol, const FString& otherUID) const {
        return protocol == otherProtocol && uid == otherUID;
    }

    IPtr<FFileSystem> fileSystem;
    FString protocol, uid;
};

FArchiveManager::FArchiveManager() : entries(kBuckets) {
    entries._ownsObjects = CmContainer::kTakesOver;
}

FArchiveManager::~FArchiveManager() {
    unmountAll(takeOut([](const ArchiveEntry&) { return true; }));
}

FArchiveManager* FArchiveManager::instance() {
    static FLock making("FArchiveManager");
    static bool isRegistered = false;
    const FGuard guard(making);
    if (!gInstance && !Singleton::isTerminated()) {
        gInstance = new FArchiveManager;
        if (!isRegistered)
            Singleton::registerInstance(&gInstance);
        isRegistered = true;
    }
    return static_cast<FArchiveManager*>(gInstance);
}

void FArchiveManager::terminate() {
    FObject* const ended = gInstance;
    gInstance = nullptr;
    if (ended)
        ended->release();
}

bool FArchiveManager::registerArchive(FFileSystem* fileSystem, const FString& protocol, const FString& uid) {
    const FString wideProtocol(protocol.text16()), wideUID(uid.text16());
    if (!fileSystem || !isProtocol(units16(wideProtocol)) || !isUID(units16(wideUID)))
        return false;
    OPtr<CmString> key(new CmString(wideUID));
    OPtr<ArchiveEntry> entry(new ArchiveEntry(fileSystem, wideProtocol, wideUID));
    const FGuard guard(lock);
    if (!entries.add(key.get(), entry.get()))
        return false;
    key.detach();
    entry.detach();
    return true;
}

bool FArchiveManager::registerArchive(FFileSystem* fileSystem, const FString& protocol, const FUID& uid) {
    return registerArchive(fileSystem, protocol, hexOf(uid));
}

bool FArchiveManager::unregisterArchive(FFileSystem* fileSystem) {
    return !takeOut([=](const ArchiveEntry& entry) { return entry.fileSystem == fileSystem; }).empty();
}

bool FArchiveManager::unregisterArchive(const FString& protocol, const FString& uid, bool unmount) {
    const FileSystems taken = takeOut([&](const ArchiveEntry& entry) {
        return entry.fits(protocol, uid) && !(unmount && isInUse(entry.fileSystem));
    });
    if (unmount)
        unmountAll(taken);
    return !taken.empty();
}

bool FArchiveManager::unregisterArchive(const FString& protocol, const FUID& uid, bool unmount) {
    return unregisterArchive(protocol, hexOf(uid), unmount);
}

bool FArchiveManager::containsArchive(const FString& protocol, const FString& uid) {
    return OPtr<FFileSystem>(lookupArchive(protocol, uid)) != nullptr;
}

FFileSystem* FArchiveManager::lookupArchive(const FString& protocol, const FString& uid) {
    const CmString key(uid.text16());
    const FGuard guard(lock);
    const auto* entry = static_cast<const ArchiveEntry*>(entries.lookupObject(&key));
    return entry && entry->fits(protocol, uid) ? IPtr<FFileSystem>(entry->fileSystem).detach() : nullptr;
}

bool FArchiveManager::isRegisteredURL(const FPath& path) {
    const UrlParts parts(path);
    return !parts.protocol.empty() && containsArchive(textOf(parts.protocol), textOf(parts.uid));
}

FFileSystem* FArchiveManager::getFileSystem(const FPath* path) {
    if (!path)
        return nullptr;
    const UrlParts parts(*path);
    if (parts.protocol.empty())
        return IPtr<FFileSystem>(gFileSystem).detach();
    const FString protocol = textOf(parts.protocol), uid = textOf(parts.uid);
    FFileSystem* known = lookupArchive(protocol, uid);
    return known ? known : mountOnDemand(protocol, uid);
}

FFileIterator* FArchiveManager::newIterator(const FPath* path, bool withHidden) {
    const OPtr<FFileSystem> fileSystem(getFileSystem(path));
    if (!fileSystem)
        return nullptr;
    const FPath inner = getPath(*path);
    if (inner.isEmpty() && !isRoot(*path))
        return nullptr;
    FString root;
    FFileIterator* found = fileSystem->newIterator(&inner, withHidden);
    return found && getRootPath(*path, root) ? new FFileIteratorUrlWrapper(found, root) : found;
}

int32_t FArchiveManager::getDrives(CmContainer& drives) {
    std::vector<FString> roots;
    {
        const FGuard guard(lock);
        for (CmHashTableIterator each(entries); !each.done();) {
            const auto* entry = static_cast<ArchiveEntry*>(static_cast<CmAssociation*>(each.next())->value);
            FString& root = roots.emplace_back(entry->protocol);
            root += u"//";
            root += entry->uid;
        }
    }
    std::ranges::sort(roots, [](const FString& a, const FString& b) { return a < b; });
    int32_t count = 0;
    for (const FString& root : roots) {
        const OPtr<FPath> drive(new FPath);
        drive->fromString(root.text16(), kFolderPath);
        if (!drives.add(drive))
            continue;
        if (drives._ownsObjects != CmContainer::kShares)
            drive->addRef();
        ++count;
    }
    return count;
}

FFileSystem* FArchiveManager::createVirtualFileSystem(const FNPath* path) {
    FNPath file;
    if (path)
        file = *path;
    if (!gFileSystem->fileExists(&file))
        return nullptr;
    const OPtr<FVFileSystem> handled(new FVFileSystem(&file));
    if (handled->getTarget() && handled->getTarget() != gFileSystem)
        return IPtr<FFileSystem>(handled->getTarget()).detach();
    return FFileSystemAdapter::mount(&file);
}

void FArchiveManager::unmountUnusedVirtualFileSystems() {
    unmountAll(
        takeOut([](const ArchiveEntry& entry) { return removable(entry.fileSystem) && !isInUse(entry.fileSystem); }));
}

bool FArchiveManager::isBitwiseCopyable(const FPath* path) {
    const OPtr<FFileSystem> fileSystem(getFileSystem(path));
    if (!fileSystem || removable(fileSystem))
        return false;
    FPath inner = getPath(*path);
    return fileSystem->fileExists(&inner);
}

FString FArchiveManager::getContainerUID(const FNPath& file) {
    FString uid = fullTextOf(file);
    FUrl::urlEncode(uid);
    uid.replace(u"/", u"%2f");
    return uid;
}

FString FArchiveManager::getNewURL(const ConstString& protocol) {
    FUID uid;
    FString url(protocol);
    url.toWideString();
    if (!isProtocol(units16(url)) || !uid.generate())
        return {};
    url += u"//";
    url += hexOf(uid);
    return url;
}

FPath FArchiveManager::getPath(const FPath& path) {
    const UrlParts parts(path);
    FPath inner(path);
    if (parts.protocol.empty())
        return inner;
    FString text = textOf(parts.inner);
    inner.fromString(FUrl::urlDecode(text) ? text.text16() : u"", path.getKind());
    return inner;
}

bool FArchiveManager::getRootPath(const FPath& path, FString& root) {
    const UrlParts parts(path);
    const size_t length = parts.protocol.size() + kSeparator.size() + parts.uid.size();
    return parts.give(parts.uid.empty() ? parts.uid : units16(parts.text).substr(0, length), root);
}

bool FArchiveManager::getProtocol(const FPath& path, FString& protocol) {
    const UrlParts parts(path);
    return parts.give(parts.protocol, protocol);
}

bool FArchiveManager::getUID(const FPath& path, FString& uid) {
    const UrlParts parts(path);
    return parts.give(parts.uid, uid);
}

bool FArchiveManager::getUIDFromString(const ConstString& text, FUID& uid) {
    FString digits(text);
    digits.toWideString();
    const bool isHex = digits.length() == kUIDLength && std::ranges::all_of(units16(digits), [](tchar c) {
                           return ConstString::isCharDigit(c) || ((c | 0x20) >= u'a' && (c | 0x20) <= u'f');
                       });
    return isHex && uid.fromString(digits.text8());
}

bool FArchiveManager::isRoot(const FPath& path) {
    const UrlParts parts(path);
    return !parts.uid.empty() && resolvedSteps(parts.inner).empty();
}

/** What was mounted on demand, by whatever protocol. */
FFileSystem* FArchiveManager::lookupMounted(const FString& uid) {
    for (const tchar* protocol : kOnDemand)
        if (FFileSystem* known = lookupArchive(protocol, uid))
            return known;
    return nullptr;
}

/** Whoever is first registers his; the other's is dropped, with no lock held. */
FFileSystem* FArchiveManager::mountOnDemand(const FString& protocol, const FString& uid) {
    FString file(uid);
    if (std::ranges::find(kOnDemand, units16(protocol), units) == std::end(kOnDemand) || !FUrl::urlDecode(file))
        return nullptr;
    const FNPath path(file.text16(), kFilePath);
    const FString ownUID = getContainerUID(path);  // however the other was written
    FFileSystem* known = lookupMounted(ownUID);
    if (known || !path.isAbsolute())
        return known;
    OPtr<FFileSystem> made(createVirtualFileSystem(&path));
    if (!made || registerArchive(made, protocol, ownUID))
        return made.detach();
    return lookupMounted(ownUID);
}

/** Whatever passes the test is registered no more. */
template <class Test>
FArchiveManager::FileSystems FArchiveManager::takeOut(Test test) {
    FileSystems taken;
    const FGuard guard(lock);
    for (CmHashTableIterator each(entries); !each.done();) {
        const auto* entry = static_cast<ArchiveEntry*>(static_cast<CmAssociation*>(each.current())->value);
        if (!test(*entry)) {
            each.next();
            continue;
        }
        taken.push_back(entry->fileSystem);
        entries.remove(each);
    }
    return taken;
}

FFileIteratorUrlWrapper::FFileIteratorUrlWrapper(FFileIterator* inner, const ConstString& root)
    : inner(inner), root(root) {}

FPath* FFileIteratorUrlWrapper::show(FPath* found) {
    present = found != nullptr;
    if (!found)
        return nullptr;
    FString inside = fullTextOf(*found), text(root);
    FUrl::urlEncode(inside);
    text += u"/";
    text += inside;
    shown.fromString(text.text16(), found->getKind());
    return &shown;
}

}  // namespace Tessarine
