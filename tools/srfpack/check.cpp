#include "tools/srfpack/check.h"
#include "base/uprogresshook.h"
#include "libraries/source/zlib/zlibcomp.h"
#include "storage/fcstream.h"
#include "tools/srfpack/names.h"
#include <algorithm>
#include <vector>

namespace SrfPack {
using namespace Tessarine;

namespace {
constexpr int64_t kBlockBytes = 0x10000;

struct Range {
    int64_t begin, end;
    const FResourceEntry* entry;
};

const FResourceEntry& entryOf(const FFileArchiveNode& node) {
    return static_cast<const FResourceEntry&>(node);
}

std::string nameFault(const FFileArchiveNode& node) {
    FString name;
    node.getFileName(name);
    if (!node.hasPlainName())
        return "has no proper name";
    return node.getParent()->findChild(units16(name)) == &node ? "" : "is there twice";
}

std::string placeFault(const FResourceEntry& entry, const FResourceArchive& archive) {
    const int64_t offset = entry.getDataOffset(), size = entry.getDataSize();
    if (entry.isCompressed() && !archive.getEngine())
        return "is compressed, and the file doesn't say how";
    if (size < 0 || entry.getUncompressedSize() < 0 || (size == 0 && entry.getUncompressedSize() > 0))
        return "has no proper size";
    const bool within = offset >= FResourceArchive::kHeaderSize && size <= archive.getTableOffset() - offset;
    return size == 0 || within ? "" : "lies outside the data";
}

std::string entryFault(const FResourceEntry& entry, int32_t level, const FResourceArchive& archive) {
    constexpr int32_t kKinds = FResourceEntry::kFolderEntry | FResourceEntry::kFileEntry;
    if (level > FFileSystem::kMaxDepth)
        return "lies too deep";
    if ((entry.getEntryFlags() & kKinds) == 0 || (entry.getEntryFlags() & kKinds) == kKinds)
        return "is neither file nor folder";
    const std::string fault = nameFault(entry);
    return fault.empty() && !entry.isFolder() ? placeFault(entry, archive) : fault;
}

std::string describe(const FResourceEntry& entry, const std::string& fault) {
    return printable(memberName(entry)) + ": " + fault;
}

std::string overlapFault(std::vector<Range>& ranges) {
    std::ranges::sort(ranges, {}, &Range::begin);
    const auto overlap =
        std::ranges::adjacent_find(ranges, [](const Range& a, const Range& b) { return b.begin < a.end; });
    return overlap == ranges.end() ? "" : describe(*overlap->entry, "shares its bytes with another member");
}

/** The stored bytes, or what they become; no bound on that. */
OPtr<FStream> openToEnd(FResourceArchive& archive, FFileArchiveNode* node) {
    OPtr<FStream> stored(archive.openSubStream(node));
    if (!stored || !entryOf(*node).isCompressed())
        return stored;
    OPtr<FCompressionStream> unpacked(new FCompressionStream(stored, archive.getEngine()));
    return unpacked->beginDecompress() ? OPtr<FStream>(static_cast<FStream*>(unpacked.detach())) : OPtr<FStream>();
}

uint32_t sumWith(uint32_t sum, const std::vector<char>& block, int64_t size) {
    return uint32_t(adler32(sum, reinterpret_cast<const Bytef*>(block.data()), uInt(size)));
}

/** What zlib packed ends with the checksum of what comes out; a reader doesn't miss the part of it that is cut off. */
bool endsWithSum(FResourceArchive& archive, FFileArchiveNode* node, uint32_t sum) {
    FUID engine;
    if (!entryOf(*node).isCompressed() || !archive.getEngine()->getCompressionCID(engine) || engine != ZLib::getCID())
        return true;
    uint32_t end = 0;
    const OPtr<FStream> stored(archive.openSubStream(node));
    if (!stored)
        return false;
    stored->byteOrder = 1;
    stored->seek(-int64_t(sizeof end), kFromEnd);
    return stored->readInt32u(end) && end == sum;
}

/** Its bytes are there, whole, and no more than it says. The last piece is asked for with a byte more, so that the end of what
    is compressed is met. */
bool isReadable(FResourceArchive& archive, FFileArchiveNode* node, std::vector<char>& block) {
    uint32_t sum = 1;
    int64_t left = node->getUncompressedSize();
    if (node->getDataSize() == 0)
        return left == 0;
    const OPtr<FStream> stream = openToEnd(archive, node);
    while (stream && left > kBlockBytes) {
        if (stream->readRaw(block.data(), kBlockBytes) != kBlockBytes)
            return false;
        sum = sumWith(sum, block, kBlockBytes);
        left -= kBlockBytes;
    }
    return stream && stream->readRaw(block.data(), left + 1) == left &&
           endsWithSum(archive, node, sumWith(sum, block, left));
}
}  // namespace

std::string memberName(const FFileArchiveNode& node) {
    FPath path;
    node.getPath(path);
    return utf8Of(path);
}

std::string findFault(const FResourceArchive& archive) {
    if (!archive.isTableWhole())
        return "the table of its content is damaged";
    std::vector<Range> ranges;
    const FFileArchiveNode* root = archive.getTree();
    int32_t level = 1;
    for (const FFileArchiveNode* node = root->getFirstChild(); node; node = node->getNextBelow(root, &level)) {
        const FResourceEntry& entry = entryOf(*node);
        const std::string fault = entryFault(entry, level, archive);
        if (!fault.empty())
            return describe(entry, fault);
        if (!entry.isFolder() && entry.getDataSize() > 0)
            ranges.push_back({entry.getDataOffset(), entry.getDataOffset() + entry.getDataSize(), &entry});
    }
    return overlapFault(ranges);
}

std::string findUnreadable(FResourceArchive& archive, UProgressHook* hook) {
    std::vector<char> block(size_t(kBlockBytes + 1));
    FFileArchiveNode* root = archive.getTree();
    const int64_t total = archive.getTableOffset() - FResourceArchive::kHeaderSize;
    int64_t done = 0;
    for (FFileArchiveNode* node = root->getFirstChild(); node; node = node->getNextBelow(root)) {
        if (node->isFolder())
            continue;
        if (!isReadable(archive, node, block))
            return describe(entryOf(*node), "can't be read to its end");
        tellProgress(hook, done += node->getDataSize(), total);
    }
    return {};
}
}  // namespace SrfPack
