#include "base/source/fbuffer.h"
#include "fresourcetable.h"
#include "rowprogress.h"
#include "samefile.h"
#include "storage/fmstream.h"
#include "storage/fresourcearchive.h"
#include <functional>
#include <utility>
#include <vector>

namespace Tessarine {
namespace {
constexpr int64_t kBlockBytes = 0x10000;
constexpr const tchar* kAdding = u"Adding File: %s...";
constexpr const tchar* kAsidePrefix = u"~";

FResourceEntry* entryOf(FFileArchiveNode* node) {
    return static_cast<FResourceEntry*>(node);
}

/** A member to be read that can go back to its start: it is opened anew. */
class MemberSource : public FStream {
public:
    using Open = std::function<FStream*()>;
    explicit MemberSource(Open open) : open(std::move(open)) { rewind(); }

    int64_t readRaw(void* buffer, int64_t count) override { return stream ? stream->readRaw(buffer, count) : 0; }
    int64_t writeRaw(const void* /*buffer*/, int64_t /*count*/) override { return 0; }
    int64_t seek(int64_t pos, FSeekMode mode) override {
        if (pos != 0 || mode != kFromStart)
            return -1;
        if (!stream || stream->tell() != 0)
            stream = open();
        return 0;
    }
    int64_t tell() override { return stream ? stream->tell() : -1; }
    bool verify() override { return stream && stream->verify(); }
    using FStream::seek;
    using FStream::tell;

private:
    Open open;
    OPtr<FStream> stream;
};

/** All that is left of one stream, to the other; -1: it isn't there, or the hook stopped it. */
int64_t copyPlain(FStream& source, FStream& target, UProgressHook* hook) {
    const int64_t total = hook ? source.bytesLeft() : 0;
    Buffer block{uint32_t(kBlockBytes)};
    int64_t done = 0;
    for (int64_t size; block.data() && (size = source.readRaw(block.data(), kBlockBytes)) > 0;) {
        if (target.writeRaw(block.data(), size) != size || !tellProgress(hook, done += size, total))
            return -1;
        if (size < kBlockBytes)
            break;
    }
    return block.data() && source.verify() ? done : -1;
}

bool isOutside(const FFileArchiveNode& node) {
    return node.isReference() || node.isCached();
}

int64_t endOf(const FFileArchiveNode& node) {
    return node.getDataOffset() + node.getDataSize();
}

bool hasData(const FFileArchiveNode& node) {
    return !node.isFolder() && node.getDataSize() > 0;
}

/** Where the last data below a folder ends, at least where data may begin; -1: some of it lies beyond the limit. */
int64_t findEndOfDataSection(const FFileArchiveNode& folder, int64_t limit) {
    int64_t end = FResourceArchive::kHeaderSize;
    for (const FFileArchiveNode* node = folder.getFirstChild(); node; node = node->getNextBelow(&folder)) {
        if (!hasData(*node))
            continue;
        if (node->getDataOffset() < 0 || node->getDataOffset() > limit || node->getDataSize() > limit ||
            endOf(*node) > limit)
            return -1;
        end = std::max(end, endOf(*node));
    }
    return end;
}

/** What begins at a place or behind it moves, empty files too. */
void updateNodeOffsets(const FFileArchiveNode& folder, int64_t from, int64_t delta) {
    for (FFileArchiveNode* node = folder.getFirstChild(); node; node = node->getNextBelow(&folder))
        if (!node->isFolder() && node->getDataOffset() >= from)
            entryOf(node)->setDataOffset(node->getDataOffset() + delta);
}

/** Nobody but the member itself has data from begin to end. */
bool isAlone(const FFileArchiveNode& folder, const FFileArchiveNode* member, int64_t begin, int64_t end) {
    for (const FFileArchiveNode* node = folder.getFirstChild(); node; node = node->getNextBelow(&folder))
        if (node != member && hasData(*node) && node->getDataOffset() < end && endOf(*node) > begin)
            return false;
    return true;
}

/** What lies between two places moves to an earlier one. */
bool moveDown(FStream& file, int64_t from, int64_t end, int64_t to) {
    Buffer block{uint32_t(kBlockBytes)};
    while (block.data() && from < end) {
        const int64_t size = std::min(kBlockBytes, end - from);
        if (file.seek(from, kFromStart) != from || file.readRaw(block.data(), size) != size ||
            file.seek(to, kFromStart) != to || file.writeRaw(block.data(), size) != size)
            return false;
        from += size;
        to += size;
    }
    return block.data();
}

/** The file ends where it stands. */
bool cutFile(FStream& file) {
    const FUnknownPtr<ISizeableStream> sizeable(static_cast<IBStream*>(&file));
    return sizeable && sizeable->setStreamSize(file.tell()) == kResultOk;
}
}  // namespace

/** A walk over folders that become entries. */
struct FResourceArchive::Packing {
    int32_t flags;
    RowProgress& progress;
    int32_t level = 0;
};

bool FResourceArchive::create(int32_t flags, const FUID* compression) {
    const OPtr<FCompressionEngine> made(flags & kCompress ? makeCompressionEngine(compression) : nullptr);
    if (isOpen() || ((flags & kCompress) && !made))
        return false;
    FPath place(getPath());
    if (isNative())
        setStream(OPtr<FStream>(gFileSystem->createFile(&place, kOpenRead | kOpenWrite)));
    FStream* stream = getStream();
    if (!stream)
        return false;
    engine = made;
    setTree(OPtr<FFileArchiveNode>(newNode(true)));
    stream->byteOrder = 0;
    stream->rewind();
    cutFile(*stream);  // what stood behind the new ending would be taken for it
    return stream->writeString8(kResourceHeader.data(), false);
}

bool FResourceArchive::create(FPath* folder, int16_t flags, UProgressHook* hook, const FUID* compression) {
    if (!folder || isOpen())
        return false;
    bool cancel = false;
    if (create(flags, compression) && addFolder(getRoot(), folder, flags, hook, cancel) && writeContent() &&
        getStream()->flush())
        return true;
    FPath place(getPath());
    if (isNative() && getStream())  // otherwise what is there isn't ours
        gFileSystem->removeFile(&place);
    close();
    return false;
}

bool FResourceArchive::addFolder(FResourceEntry* entry, FPath* path, int32_t flags, UProgressHook* hook, bool& cancel) {
    cancel = false;
    if (!entry || !path || !getStream())
        return false;
    int64_t total = 0;
    if (hook)
        gFileSystem->countFiles(path, flags & kSubFolders, true, &total);
    const OPtr<RowProgress> progress(new RowProgress(hook, uint64_t(std::max<int64_t>(total, 0))));
    Packing packing{flags, *progress};
    const bool added = addContent(entry, path, packing);
    cancel = progress->isStopped();
    return added;
}

bool FResourceArchive::addContent(FResourceEntry* entry, FPath* path, Packing& packing) {
    const OPtr<FFileIterator> paths(packing.level < kMaxDepth ? gFileSystem->newIterator(path, true) : nullptr);
    if (!paths)
        return false;
    ++packing.level;
    bool added = true;
    for (FPath* found = paths->first(); found && added; found = paths->next())
        added = (pathFilter && !pathFilter->includes(found)) || addPath(entry, found, packing);
    --packing.level;
    return added;
}

bool FResourceArchive::addPath(FResourceEntry* folder, FPath* path, Packing& packing) {
    if (path->isFolder())
        return !(packing.flags & kSubFolders) || addSubFolder(folder, path, packing);
    const bool leadsToFolder = path->isLink() && gFileSystem->dirExists(path);
    return leadsToFolder || addFile(folder, path, packing);
}

bool FResourceArchive::addSubFolder(FResourceEntry* folder, FPath* path, Packing& packing) {
    OPtr<FResourceEntry> entry(entryOf(newNode(true)));
    entry->setFileName(path->getFileName());
    if (!addContent(entry, path, packing))
        return false;
    if ((packing.flags & kDropEmptyFolders) && entry->countFiles(true, true) == 0)
        return true;
    return folder->addChild(entry.detach());
}

bool FResourceArchive::addFile(FResourceEntry* folder, FPath* path, Packing& packing) {
    if (isNative() && isSameFile(&getPath(), path))
        return false;  // it would grow for ever
    FStream* source = gFileSystem->openFile(path, kOpenRead);
    if (!source)
        return false;
    OPtr<FResourceEntry> entry(entryOf(newNode(false)));
    entry->setFileName(path->getFileName());
    packing.progress.setText(FString().printf(kAdding, path->getName()));
    packing.progress.begin(source->bytesLeft());
    const bool copied = copyInto(source, getStream(), entry, &packing.progress);
    gFileSystem->closeFile(source);
    return copied && packing.progress.end() && folder->addChild(entry.detach());
}

bool FResourceArchive::copyInto(FStream* source, FStream* target, FResourceEntry* entry, UProgressHook* hook) {
    if (!source || !target || !entry)
        return false;
    if (copyHook && target == getStream())
        return copyHook->copyInto(source, target, entry, hook);
    const int64_t begin = target->tell();
    if (begin < 0)
        return false;
    if (!shouldCompress(source, *entry)) {
        const int64_t size = copyPlain(*source, *target, hook);
        entry->setData(begin, size, size);
        return size >= 0;
    }
    entry->setCompressed(true);
    const bool copied = FCompressData(source, target, engine, gCompressionLevel, hook) && source->verify();
    entry->setData(begin, target->tell() - begin, source->tell());
    return copied;
}

bool FResourceArchive::shouldCompress(FStream* source, const FResourceEntry& entry) const {
    if (!engine || entry.isCompressed())
        return false;
    return (engine->getCompressionFlags() & FCompressionEngine::kEnciphers) ||
           FGetCompressionRatio(source, engine, gCompressionLevel) < 1;
}

bool FResourceArchive::writeContent() {
    FStream* stream = getStream();
    if (!stream || !getRoot())
        return false;
    FMemoryStream table;
    ResourceFileEnding ending;
    ending.version = gFormatVersion >= 4 ? gFormatVersion : engine ? 3 : 1;
    ending.entryCount = packContentTable(*getRoot(), table, ending.version, utf8Names);
    const int64_t size = table.getSize();
    if (ending.entryCount < 0 || size > INT32_MAX || (engine && !engine->getCompressionCID(ending.compression)))
        return false;
    ending.tableSize = int32_t(size);
    return ending.write(table) && stream->writeRaw(table.getData(), table.getSize()) == table.getSize();
}

bool FResourceArchive::compact(int32_t flags, FPath* target, UProgressHook* hook) {
    const bool inPlace = !target || *target == getPath() || isSameFile(&getPath(), target);
    if (!getRoot() || (inPlace && (!isNative() || getOpenCount() > 0)))
        return false;
    FPath own(getPath()), place(inPlace ? own : *target);
    if (inPlace) {
        FString name(kAsidePrefix);
        place.setName((name += own.getFileName()).text16());
        gFileSystem->removeFile(&place);  // a link of that name would lead elsewhere
    }
    if (!writeCompacted(place, flags, hook))
        return false;
    if (!inPlace)
        return true;
    copyRights(&own, &place);
    if (!gFileSystem->moveFile(&place, &own, true)) {
        gFileSystem->removeFile(&place);
        return false;
    }
    dropCache();
    return close() && open();
}

bool FResourceArchive::writeCompacted(FPath& place, int32_t flags, UProgressHook* hook) {
    FUID compression;
    const bool known = engine && engine->getCompressionCID(compression);
    const OPtr<FResourceArchive> copy(new FResourceArchive(&place));
    copy->setUtf8Names(utf8Names);
    if (copy->create(flags & kCompress, known ? &compression : nullptr) && compactFolder(*copy, hook) &&
        copy->writeContent() && copy->getStream()->flush())
        return true;
    if (copy->getStream())
        gFileSystem->removeFile(&place);
    return false;
}

bool FResourceArchive::compactFolder(FResourceArchive& target, UProgressHook* hook) {
    uint64_t total = 0;
    getRoot()->countFiles(true, true, &total);
    const OPtr<RowProgress> progress(new RowProgress(hook, total));
    std::vector<FResourceEntry*> folders = {target.getRoot()};  // those that are open in the copy, from the root on
    int32_t level = 1;
    for (FFileArchiveNode* node = getRoot()->getFirstChild(); node; node = node->getNextBelow(getRoot(), &level)) {
        FString name;
        node->getFileName(name);
        OPtr<FResourceEntry> copy(entryOf(newNode(node->isFolder())));
        copy->setFileName(name);
        progress->begin(node->getUncompressedSize());
        if (!node->isFolder() && (!compactFile(entryOf(node), target, copy, progress) || !progress->end()))
            return false;
        folders.resize(size_t(level));
        folders.push_back(copy.detach());
        folders[size_t(level) - 1]->addChild(folders.back());
    }
    return true;
}

bool FResourceArchive::compactFile(FResourceEntry* entry, FResourceArchive& target, FResourceEntry* copy,
                                   UProgressHook* hook) {
    const OPtr<MemberSource> source(new MemberSource([=, this] { return openMember(entry); }));
    return source->verify() && target.copyInto(source, target.getStream(), copy, hook) &&
           (isOutside(*entry) || copy->getUncompressedSize() == entry->getUncompressedSize());
}

/** An empty one too. */
FStream* FResourceArchive::openMember(FResourceEntry* entry) {
    if (isOutside(*entry)) {
        FPath path;
        entry->getPath(path);
        return openFile(&path, kOpenRead);
    }
    if (entry->getDataSize() == 0 && entry->getUncompressedSize() == 0)
        return new FMemoryStream;
    return engine && entry->isCompressed() ? openCompressed(entry) : openSubStream(entry);
}

void FResourceArchive::dropCache() {
    if (!(getFlags() & kWriteCached) || !hasCacheFolder())
        return;
    for (FFileArchiveNode* node = getRoot()->getFirstChild(); node; node = node->getNextBelow(getRoot())) {
        FPath cached;
        if (node->isCached() && makeCachedPath(&cached, node))
            gFileSystem->removeFile(&cached);
    }
    FPath folder(*getCacheFolder());
    if (gFileSystem->dirExists(&folder) && gFileSystem->removeEmptyFolders(&folder))
        gFileSystem->removeDir(&folder, false);
}

bool FResourceArchive::replaceFileInArchive(FPath* archive, FPath* inner, FPath* file) {
    if (isSameFile(archive, file))
        return false;  // it would grow for ever
    FStream* source = gFileSystem->openFile(file, kOpenRead);
    const OPtr<FStream> stream(gFileSystem->openFile(archive, kOpenRead | kOpenWrite));
    const OPtr<FResourceArchive> opened(new FResourceArchive(stream.get()));
    FFileArchiveNode* node = source && stream && opened->open() ? opened->lookupNode(inner) : nullptr;
    const bool replaced = node && !node->isFolder() && opened->replaceMember(entryOf(node), source) && stream->flush();
    return gFileSystem->closeFile(source) && replaced;
}

/** The new bytes go behind all others, which then close up. */
bool FResourceArchive::replaceMember(FResourceEntry* entry, FStream* source) {
    FStream* stream = getStream();
    const int64_t begin = entry->getDataOffset(), size = hasData(*entry) ? entry->getDataSize() : 0;
    int64_t end = findEndOfDataSection(*getRoot(), tableOffset);
    if (end < 0 || stream->seek(end, kFromStart) != end)
        return false;
    const bool closesUp = size > 0 && begin >= kHeaderSize && isAlone(*getRoot(), entry, begin, begin + size);
    entry->setCompressed(false);
    if (!copyInto(source, stream, entry, nullptr))
        return false;
    end = stream->tell();
    if (closesUp) {
        if (!moveDown(*stream, begin + size, end, begin))
            return false;
        updateNodeOffsets(*getRoot(), begin + size, -size);
        end -= size;
    }
    return stream->seek(end, kFromStart) == end && writeContent() && cutFile(*stream);
}

}  // namespace Tessarine
