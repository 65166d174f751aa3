#include "storage/ffilearchive.h"
#include "pathsteps.h"
#include "rowprogress.h"
#include "samefile.h"
#include "storage/fbufferedstream.h"
#include "storage/ffstream.h"
#include <algorithm>
#include <cerrno>

namespace Tessarine {
namespace {
constexpr uint32_t kMainBuffer = 4096;
constexpr const tchar* kCacheEnding = u"~Cache";

void tellCode(int32_t* error, int32_t code) {
    if (error)
        *error = code;
}

FStream* refuse(int32_t* error, int32_t code) {
    tellCode(error, code);
    return nullptr;
}

/** The names on the way, with one "/" between them; empty: the root. */
FString resolvedTextOf(const FPath& path) {
    FString text = fullTextOf(path);
    if (isResolved(units16(text)))
        return text;
    FString resolved;
    appendSteps(resolved, resolvedSteps(units16(text)));
    return resolved;
}

bool makeFolderOf(const FPath& file) {
    FPath folder(file);
    return !folder.ascend() || gFileSystem->createDir(&folder);
}

bool standsOnDisk(FPath& path) {
    return gFileSystem->fileExists(&path) || gFileSystem->dirExists(&path);
}
}  // namespace

IMPLEMENT_ABSTRACT_CLASS(FFileArchive, FFileSystem)
IMPLEMENT_ABSTRACT_CLASS(FFileArchiveIterator, FFileIterator)
IMPLEMENT_ABSTRACT_CLASS(FFileArchiveSubStream, FStreamProxy)
constinit bool FFileArchive::gDisplayWarnings = false;

FFileArchive::FFileArchive(const FPath* file, int32_t flags) : flags(flags) {
    if (file)
        path = *file;
    setCacheFolder(nullptr);
}

FFileArchive::FFileArchive(FStream* stream, int32_t flags) : stream(stream), flags(flags) {}

FFileArchive::~FFileArchive() = default;

FStream* FFileArchive::createFile(FPath* file, int32_t mode, int32_t* error) {
    if (!file || !root)
        return refuse(error, EINVAL);
    if (!(flags & kWriteCached))
        return refuse(error, EROFS);
    const FFileArchiveNode* known = lookupNode(file);
    if (known && known->isFolder())
        return refuse(error, EISDIR);
    FPath cached(*file);
    if (!canHold(*file) || !makeCachedPath(&cached, nullptr) || !makeFolderOf(cached))
        return refuse(error, ENOTDIR);
    FStream* made = gFileSystem->createFile(&cached, mode, error);
    FFileArchiveNode* node = made ? createFileNode(*file) : nullptr;
    if (node) {
        node->setReference(nullptr);
        node->setCached(true);
    }
    return made;
}

FStream* FFileArchive::openFile(FPath* file, int32_t mode, int32_t* error) {
    tellCode(error, 0);
    if (!file || !stream)
        return refuse(error, EINVAL);
    FFileArchiveNode* node = lookupNode(file);
    if (!node)
        return openMissing(file, mode, error);
    if (node->isFolder())
        return refuse(error, EISDIR);
    FPath place;
    if (locateOutside(node, place))
        return gFileSystem->openFile(&place, mode, error);
    if (mode & (kOpenWrite | kOpenCreate))
        return openToWrite(file, node, mode, error);
    FStream* opened = openSubStream(node);
    return opened ? opened : refuse(error, ENODATA);
}

bool FFileArchive::closeFile(FStream* opened) {
    if (classCast<FFileStream>(opened))
        return gFileSystem->closeFile(opened);
    const OPtr<FStream> released(opened);
    return opened && opened->verify();
}

bool FFileArchive::removeFile(FPath* file) {
    if (!file || !(flags & kWriteCached))
        return false;
    FPath cached;
    FFileArchiveNode* node = lookupNode(file);
    if (node && node->isFolder())
        return false;
    const bool isCached = findCached(file, cached);
    if (isCached && !gFileSystem->removeFile(&cached))
        return false;
    return node ? node->getParent()->remove(node) : isCached;
}

bool FFileArchive::fileExists(FPath* file) {
    FPath cached;
    const FFileArchiveNode* node = lookupNode(file);
    return node ? !node->isFolder() : findCached(file, cached);
}

bool FFileArchive::renameFile(FPath* file, const tchar* newName) {
    FFileArchiveNode* node = lookupNode(file);
    FPath renamed;
    renamed.setName(newName);
    if (!node || !node->getParent() || !(flags & kWriteCached) || !isPlainStep(units16(renamed.getFileName())) ||
        node->getParent()->findChild(units16(renamed.getFileName())))
        return false;
    FPath cached, target;
    node->getPath(target);
    target.setName(newName);
    if (makeCachedPath(&target, nullptr) && standsOnDisk(target))
        return false;
    if (makeCachedPath(&cached, node) && standsOnDisk(cached) && !gFileSystem->renameFile(&cached, newName))
        return false;
    node->setFileName(newName);
    return true;
}

bool FFileArchive::getFileTimes(FPath* file, CmTime& created, CmTime& modified) {
    const FFileArchiveNode* node = lookupNode(file);
    FPath place;
    if (node ? locateOutside(node, place) : findCached(file, place))
        return gFileSystem->getFileTimes(&place, created, modified);
    return node && isNative() && gFileSystem->getFileTimes(&path, created, modified);
}

int64_t FFileArchive::getFileSize(FPath* file) {
    const FFileArchiveNode* node = lookupNode(file);
    FPath place;
    if (node ? locateOutside(node, place) : findCached(file, place))
        return gFileSystem->getFileSize(&place);
    return node && !node->isFolder() ? std::max<int64_t>(node->getUncompressedSize(), -1) : -1;
}

int64_t FFileArchive::getFileSize(FStream* opened) {
    return streamSize(opened);
}

FFileIterator* FFileArchive::newIterator(const FPath* folder, bool withHidden) {
    FFileArchiveNode* node = folder ? lookupNode(folder) : root.get();
    return node && node->isFolder() ? new FFileArchiveIterator(node, withHidden) : nullptr;
}

bool FFileArchive::create(FPath* /*folder*/, int16_t /*flags*/, UProgressHook* /*hook*/, const FUID* /*compression*/) {
    return false;
}

bool FFileArchive::open() {
    if (!stream)
        stream = OPtr<FStream>(gFileSystem->openFile(&path, kOpenRead));
    if (!stream)
        return false;
    if ((flags & kBuffered) && !classCast<FBufferedStream>(stream.get()))
        stream = OPtr<FStream>(new FBufferedStream(stream.detach(), kMainBuffer, true));
    opened = true;
    return true;
}

bool FFileArchive::compact(int32_t /*flags*/, FPath* /*target*/, UProgressHook* /*hook*/) {
    return false;
}

bool FFileArchive::close() {
    if (openCount > 0)
        return false;
    stream = nullptr;
    root = nullptr;
    opened = false;
    return true;
}

bool FFileArchive::checkUpdatedNodes(bool create) {
    if (!hasCacheFolder() || !root)
        return false;
    const int32_t begin = int32_t(fullTextOf(*cacheFolder).length()) + 1;
    const OPtr<FNFileSystemScanner> scanner(new FNFileSystemScanner(cacheFolder.get(), true));
    bool updated = false;
    for (const FPath* found = scanner->first(); found; found = scanner->next()) {
        FPath member;
        member.fromString(fullTextOf(*found).text16() + begin, kFilePath);
        FFileArchiveNode* node = found->isFile() ? lookupNode(&member) : nullptr;
        if (!found->isFile() || (node && (node->isFolder() || node->isCached() || node->isReference())))
            continue;
        updated = true;
        if (create && (node || (node = createNode(&member))))
            node->setCached(true);
    }
    return updated;
}

bool FFileArchive::extractFile(FPath* file, FPath* target, UProgressHook* hook) {
    FFileArchiveNode* node = lookupNode(file);
    return node && !node->isFolder() && target && copyMember(file, node, target, hook, nullptr);
}

bool FFileArchive::extractFolder(FPath* folder, FPath* target, UProgressHook* hook) {
    const FFileArchiveNode* top = folder ? lookupNode(folder) : root.get();
    if (!top || !top->isFolder() || !target || !gFileSystem->createDir(target))
        return false;
    uint64_t total = 0;
    top->countFiles(true, true, &total);
    const OPtr<RowProgress> progress(new RowProgress(hook, total));
    int32_t level = 1;
    for (FFileArchiveNode* node = top->getFirstChild(); node; node = node->getNextBelow(top, &level)) {
        progress->begin(node->getUncompressedSize());
        if (level > kMaxDepth || !node->hasPlainName() || !extractNode(node, top, *target, progress) ||
            (!node->isFolder() && !progress->end()))
            return false;
    }
    return true;
}

bool FFileArchive::createFileReference(FPath* file, const FNPath* outside) {
    FFileArchiveNode* node = file && outside ? createFileNode(*file) : nullptr;
    if (!node || node->isFolder())
        return false;
    node->setCached(false);
    node->setReference(outside);
    return true;
}

FStream* FFileArchive::openSubStream(FFileArchiveNode* node) {
    if (!stream || !node || node->isFolder() || node->getDataOffset() < 0 || node->getDataSize() < 1)
        return nullptr;
    if (!(flags & kOwnHandles) || !isNative())
        return new FStreamProxy(stream, node->getDataOffset(), node->getDataSize());
    const OPtr<FStream> own(gFileSystem->openFile(&path, kOpenRead));
    if (!own)
        return nullptr;
    own->byteOrder = stream->byteOrder;
    return new FFileArchiveSubStream(this, own, node->getDataOffset(), node->getDataSize());
}

bool FFileArchive::extractAll(FPath* target, UProgressHook* hook) {
    return extractFolder(nullptr, target, hook);
}

void FFileArchive::setCacheFolder(const FNPath* folder) {
    FString place = fullTextOf(folder ? static_cast<const FPath&>(*folder) : path);
    if (!folder)
        place += kCacheEnding;
    cacheFolder = folder || isNative() ? std::make_unique<FNPath>(place.text16(), kFolderPath) : nullptr;
    if (folder && gFileSystem->isSymlink(cacheFolder.get()))
        gFileSystem->checkResolveLink(cacheFolder.get());
}

bool FFileArchive::makeCachedPath(FPath* place, const FFileArchiveNode* node) const {
    if (!hasCacheFolder() || !place)
        return false;
    FPath member(*place);
    if (node)
        node->getPath(member);
    const FString text = resolvedTextOf(member);
    FPath cached(*cacheFolder);
    for (std::u16string_view rest = units16(text); !rest.empty();) {
        const std::u16string_view step = takeStep(rest);
        cached.descend(FString(step.data(), int32_t(step.size())).text16(), kFilePath);
        if (gFileSystem->isSymlink(&cached))
            return false;
    }
    if (!text.isEmpty())
        *place = cached;
    return !text.isEmpty();
}

FFileArchiveNode* FFileArchive::lookupNode(const FPath* file) const {
    if (!file || !root)
        return nullptr;
    const FString text = resolvedTextOf(*file);
    FFileArchiveNode* node = root;
    for (std::u16string_view rest = units16(text); node && !rest.empty();) {
        const std::u16string_view step = takeStep(rest);
        node = rest.empty() ? node->findChild(step) : node->getSubFolder(step);
    }
    return node;
}

FFileArchiveNode* FFileArchive::createNode(const FPath* file) {
    if (!file || !root || !canHold(*file))
        return nullptr;
    const FString text = resolvedTextOf(*file);
    FFileArchiveNode* node = root;
    for (std::u16string_view rest = units16(text); node && !rest.empty();) {
        const std::u16string_view step = takeStep(rest);
        node = enterOrMake(node, step, !rest.empty(), file->isFolder());
    }
    return node;
}

void FFileArchive::dumpContent(FConsole* console) const {
    if (root)
        root->dump(console, 0);
}

bool FFileArchive::hasCacheFolder() const {
    return cacheFolder && !gFileSystem->isSymlink(cacheFolder.get());
}

/** No file stands where the way to it needs a folder, and the way isn't too long. */
bool FFileArchive::canHold(const FPath& file) const {
    const FString text = resolvedTextOf(file);
    const FFileArchiveNode* node = root;
    std::u16string_view rest = units16(text);
    std::u16string_view step = takeStep(rest);
    for (; node && !rest.empty(); step = takeStep(rest)) {
        const FFileArchiveNode* below = node->getSubFolder(step);
        if (!below && node->findChild(step))
            return false;
        node = below;
    }
    return text.countOccurences(u'/') < kMaxDepth;
}

FFileArchiveNode* FFileArchive::createFileNode(const FPath& file) {
    FPath member(file);
    member.setKind(kFilePath);
    return createNode(&member);
}

/** The child of that name, made if there is none. */
FFileArchiveNode* FFileArchive::enterOrMake(FFileArchiveNode* folder, std::u16string_view name, bool onTheWay,
                                            bool makeFolder) {
    FFileArchiveNode* known = onTheWay ? folder->getSubFolder(name) : folder->findChild(name);
    if (known)
        return known;
    const OPtr<FFileArchiveNode> made(newNode(onTheWay || makeFolder));
    if (!made)
        return nullptr;
    made->setFileName(ConstString(name.data(), int32_t(name.size())));
    made->addRef();  // for the folder
    folder->addChild(made);
    return made;
}

bool FFileArchive::findCached(const FPath* file, FPath& cached) const {
    if (!file || !(flags & kWriteCached))
        return false;
    FPath place(*file);
    if (!makeCachedPath(&place, nullptr) || !gFileSystem->fileExists(&place))
        return false;
    cached = place;
    return true;
}

/** Checked against what the table says: a member that was cut off is none. */
bool FFileArchive::copyMember(FPath* file, FFileArchiveNode* node, FPath* target, UProgressHook* hook, int32_t* error) {
    if (isSourceOf(node, target)) {
        tellCode(error, EINVAL);
        return false;
    }
    if (!copyFile(this, file, gFileSystem, target, hook, error))
        return false;
    if (gFileSystem->getFileSize(target) == getFileSize(file))
        return true;
    tellCode(error, EIO);
    gFileSystem->removeFile(target);
    return false;
}

bool FFileArchive::locateOutside(const FFileArchiveNode* node, FPath& place) const {
    if (node->isReference())
        place = *node->getReference();
    else if (node->isCached())
        makeCachedPath(&place, node);
    return node->isReference() || node->isCached();
}

bool FFileArchive::isSourceOf(const FFileArchiveNode* node, const FPath* target) const {
    FPath place;
    return (isNative() && isSameFile(&path, target)) || (locateOutside(node, place) && isSameFile(&place, target));
}

FStream* FFileArchive::openMissing(FPath* file, int32_t mode, int32_t* error) {
    FPath cached;
    if (!findCached(file, cached))
        return mode & kOpenCreate ? createFile(file, mode, error) : refuse(error, ENOENT);
    FFileArchiveNode* node = createFileNode(*file);
    if (!node)
        return refuse(error, ENOTDIR);
    node->setCached(true);
    return gFileSystem->openFile(&cached, mode, error);
}

/** The member goes to the cache folder first, unless nothing of it would stay. */
FStream* FFileArchive::openToWrite(FPath* file, FFileArchiveNode* node, int32_t mode, int32_t* error) {
    if (!(flags & kWriteCached) || (mode & kOpenCreate))
        return createFile(file, mode, error);
    FPath cached;
    if (!makeCachedPath(&cached, node) || !makeFolderOf(cached))
        return refuse(error, ENOTDIR);
    if (!copyMember(file, node, &cached, nullptr, error))
        return nullptr;
    node->setCached(true);
    return gFileSystem->openFile(&cached, mode, error);
}

bool FFileArchive::extractNode(FFileArchiveNode* node, const FFileArchiveNode* top, const FPath& target,
                               UProgressHook* hook) {
    FPath member, base;
    node->getPath(member);
    top->getPath(base);
    const uint32_t begin = base.isEmpty() ? 0 : fullTextOf(base).length() + 1;
    const FString name = fullTextOf(member);
    hook->setText(name);
    FPath place(target);
    place.descend(name.text16() + begin, member.getKind());
    if (gFileSystem->isSymlink(&place))
        return false;
    if (node->isFolder())
        return gFileSystem->createDir(&place);
    if (isSourceOf(node, &place) || (gFileSystem->fileExists(&place) && !gFileSystem->removeFile(&place)))
        return false;
    return copyMember(&member, node, &place, hook, nullptr);
}

FFileArchiveIterator::FFileArchiveIterator(FFileArchiveNode* walked, bool withHidden)
    : folder(walked), withHidden(withHidden) {
    FPath base;
    walked->getPath(base);
    if (!base.isEmpty())
        shown.setPathName(fullTextOf(base).text16());
}

FPath* FFileArchiveIterator::next() {
    if (!node)
        return nullptr;
    return show(node->getParent() == folder ? node->getNext() : following.get());
}

/** The first from there on that may be seen. */
FPath* FFileArchiveIterator::show(FFileArchiveNode* found) {
    FString name;
    bool hidden = false;
    for (; found; found = found->getNext()) {
        found->getFileName(name);
        hidden = name.getChar16(0) == u'.';
        if (!hidden || withHidden)
            break;
    }
    node = found;
    following = found ? found->getNext() : nullptr;
    if (!found)
        return nullptr;
    shown.setName(name.text16());
    shown.setKind((found->isFolder() ? kFolderPath : kFilePath) | (hidden ? kHiddenPath : 0));
    return &shown;
}

FFileArchiveSubStream::FFileArchiveSubStream(FFileArchive* archive, FStream* stream, int64_t offset, int64_t size)
    : FStreamProxy(stream, offset, size), archive(archive) {
    ++archive->openCount;
}

FFileArchiveSubStream::~FFileArchiveSubStream() {
    --archive->openCount;
}

}  // namespace Tessarine
