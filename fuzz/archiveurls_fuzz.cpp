// Paths into archives, as text. An input is lines of UTF-8: the identifier of an archive, then paths of members that it is to
// have, and that URLs lead to.
#include "demand.h"
#include "storage/farchivemanager.h"
#include "storage/fresourcearchive.h"
#include <algorithm>
#include <string>
#include <string_view>

using namespace Tessarine;

namespace {
constexpr const tchar* kCache = u"/nowhere/pack~Cache";

class Archive : public FFileArchive {
public:
    Archive() : FFileArchive(static_cast<FStream*>(nullptr), kWriteCached) {
        const FNPath cache(kCache, kFolderPath);
        setCacheFolder(&cache);
        setTree(OPtr<FFileArchiveNode>(newNode(true)));
    }
    FFileArchiveNode* newNode(bool folder) override {
        return new FResourceEntry(folder ? FResourceEntry::kFolderEntry : FResourceEntry::kFileEntry);
    }
};

FPath pathOf(const FString& text) {
    FPath path;
    path.fromString(text.text16(), kFilePath);
    return path;
}

FString takeLine(std::string_view& bytes) {
    FString line;
    const std::string_view found = bytes.substr(0, bytes.find('\n'));
    bytes.remove_prefix(std::min(bytes.size(), found.size() + 1));
    line.fromUTF8(std::string(found).c_str());
    line.toWideString();
    return line;
}

/** What was made is found, under the same path, and nowhere but in the cache folder. */
FFileArchiveNode* checkMember(Archive& archive, const FPath& path) {
    FFileArchiveNode* node = archive.createNode(&path);
    FPath found, cached(path);
    if (archive.makeCachedPath(&cached, nullptr)) {
        const FPath cache = FNPath(kCache, kFolderPath);
        demand(cached.isInDir(&cache) && FNPath(cached.getName(), kFilePath).countAscendLevels() == 0);
    }
    if (!node)
        return nullptr;
    demand(archive.lookupNode(&path) == node);
    node->getPath(found);
    demand(archive.lookupNode(&found) == node);
    demand(node == archive.getTree() || node->hasPlainName());
    return node;
}

/** The way there and back: a walk from the top of the archive meets each member under a URL that leads to it. */
void checkWalk(FArchiveManager& manager, Archive& archive, const FPath& folder) {
    const OPtr<FFileIterator> entries(manager.newIterator(&folder, true));
    demand(entries);
    for (FPath* each = entries->first(); each; each = entries->next()) {
        const FPath inner = FArchiveManager::getPath(*each);
        const OPtr<FFileSystem> there(manager.getFileSystem(each));
        const FFileArchiveNode* node = archive.lookupNode(&inner);
        FString name;
        demand(there.get() == &archive && node);
        node->getFileName(name);
        demand(name == inner.getName());
        if (each->isFolder())
            checkWalk(manager, archive, *each);
    }
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::string_view bytes(reinterpret_cast<const char*>(data), std::min<size_t>(size, 2000));
    const FString uid = takeLine(bytes);
    const OPtr<Archive> archive(new Archive);
    FArchiveManager& manager = *FArchiveManager::instance();
    FString root(FArchiveManager::kArchiveProtocol);
    const bool registered = manager.registerArchive(archive, root, uid);
    demand(registered == (!uid.isEmpty() && !uid.contains(u"/")));
    root += u"//";
    root += uid;
    while (!bytes.empty()) {
        const FString line = takeLine(bytes);
        const FPath url = pathOf(line);
        FString protocol, found, start;
        if (FArchiveManager::getRootPath(url, start)) {
            demand(line.startsWith(start) && FArchiveManager::getProtocol(url, protocol));
            demand(FArchiveManager::getUID(url, found) && start.endsWith(found) && start.startsWith(protocol));
        }
        checkMember(*archive, FArchiveManager::getPath(url));
    }
    if (registered)
        checkWalk(manager, *archive, pathOf(root));
    demand(manager.unregisterArchive(archive) == registered);
    return 0;
}
