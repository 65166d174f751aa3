#include "fresourcetable.h"
#include "storage/fmstream.h"
#include "storage/fresourcearchive.h"
#include <algorithm>

namespace Tessarine {
namespace {
constexpr int32_t kIdDigits = 32;
constexpr int32_t kMagicBytes = 4;
constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
constexpr const tchar* kClosingName = u"..";
static_assert(kResourceHeader.size() == FResourceArchive::kHeaderSize);

bool hasWideNumbers(int32_t version) {
    return version >= 3;
}

int32_t leastEntrySize(int32_t version) {
    return hasWideNumbers(version) ? 21 : 13;
}

bool readNumber(FMemoryStream& table, int32_t version, int64_t& number) {
    if (hasWideNumbers(version))
        return table.readInt64(number);
    int32_t narrow = 0;
    const bool read = table.readInt32(narrow);
    number = narrow;
    return read;
}

bool writeNumber(FMemoryStream& table, int32_t version, int64_t number) {
    if (hasWideNumbers(version))
        return table.writeInt64(number);
    return int32_t(number) == number && table.writeInt32(int32_t(number));
}

bool isAscii(std::string_view text) {
    return std::ranges::all_of(text, [](char c) { return ConstString::isCharAscii(c); });
}

/** bytes has a terminator behind it. */
void takeName(std::string_view bytes, FString& name) {
    constexpr int32_t kRoom = FResourceEntry::kMaxNameLength;
    tchar units[kRoom + 1];
    const std::string_view kept = bytes.substr(0, kRoom);
    if (isAscii(kept)) {
        std::ranges::copy(kept, units);
        name.assign(units, int32_t(kept.size()));
        return;
    }
    const bool marked = bytes.starts_with(kUtf8Mark);
    const char* text = bytes.data() + (marked ? kUtf8Mark.size() : 0);
    if (ConstString::multiByteToWideString(units, text, kRoom + 1, marked ? kCodePageUTF8 : kCodePageDefault) > 0)
        name.assign(units);
}

bool isClosing(const FResourceEntry& entry) {
    FString name;
    if (entry.isFolder())
        entry.getFileName(name);
    return units16(name) == kClosingName;
}

FResourceEntry* parentOf(const FResourceEntry* entry) {
    return static_cast<FResourceEntry*>(entry->getParent());
}
}  // namespace

IMPLEMENT_CLASS(FResourceEntry, FFileArchiveNode)

void FResourceEntry::setFileName(const ConstString& text) {
    name = text;
    name.toWideString();
    nameChanged();
}

void FResourceEntry::setData(int64_t offset, int64_t size, int64_t uncompressed) {
    dataOffset = offset;
    dataSize = size;
    uncompressedSize = uncompressed;
}

bool FResourceEntry::read(FMemoryStream& table, int32_t version) {
    if (!table.readInt32(entryFlags) || !readNumber(table, version, dataOffset) ||
        !readNumber(table, version, dataSize))
        return false;
    uncompressedSize = dataSize;
    return (!isCompressed() || readNumber(table, version, uncompressedSize)) && readName(table);
}

bool FResourceEntry::readName(FMemoryStream& table) {
    const char* begin = table.getData() + table.tell();
    const std::string_view rest(begin, size_t(table.getSize() - table.tell()));
    const size_t length = rest.find('\0');
    if (length == rest.npos)
        return false;
    takeName(rest.substr(0, length), name);
    table.seek(int64_t(length) + 1, kFromCurrent);
    return true;
}

bool FResourceEntry::write(FMemoryStream& table, int32_t version, bool utf8) const {
    const int32_t flags = utf8 ? entryFlags | kUtf8Name : entryFlags & ~kUtf8Name;
    if (!table.writeInt32(flags) || !writeNumber(table, version, dataOffset) ||
        !writeNumber(table, version, dataSize) || (isCompressed() && !writeNumber(table, version, uncompressedSize)))
        return false;
    FString text(name);
    return utf8 ? table.writeStringUtf8(text.text16()) : table.writeString8(text.text8(), false);
}

bool ResourceFileEnding::read(FStream& file, int64_t fileSize) {
    uint32_t magic = 0;
    if (file.seek(fileSize - kMagicBytes, kFromStart) < 0 || !file.readInt32u(magic))
        return false;
    version = FResourceArchive::getFormatVersion(magic);
    const int32_t ownSize = sizeOfVersion(version);
    const int64_t room = fileSize - FResourceArchive::kHeaderSize - ownSize;
    if (version == 0 || room < 0)
        return false;
    char id[kIdDigits + 1] = {};
    file.seek(fileSize - ownSize, kFromStart);
    if (version >= 2 && file.readRaw(id, kIdDigits) != kIdDigits)
        return false;
    compression.fromString(id);
    return file.readInt32(tableSize) && file.readInt32(entryCount) && file.readInt32(endingSize) &&
           endingSize == ownSize && tableSize >= 0 && tableSize <= room && entryCount >= 0 &&
           entryCount <= tableSize / leastEntrySize(version);
}

bool ResourceFileEnding::write(FMemoryStream& stream) const {
    char id[kIdDigits + 1] = {};
    if (isCompressed())
        compression.toString(id);
    const uint32_t magic = FResourceArchive::getVersionMagic(version);
    return magic != 0 && (version < 2 || stream.writeRaw(id, kIdDigits) == kIdDigits) && stream.writeInt32(tableSize) &&
           stream.writeInt32(entryCount) && stream.writeInt32(sizeOfVersion(version)) && stream.writeInt32u(magic);
}

int32_t unpackContentTable(FMemoryStream& table, FResourceEntry* parent, int32_t count, int32_t version,
                           int32_t& openFolders) {
    openFolders = 0;
    FResourceEntry* folder = parent;
    for (int32_t done = 0; done < count; ++done) {
        OPtr<FResourceEntry> entry(new FResourceEntry);
        if (!entry->read(table, version))
            return -1;
        if (isClosing(*entry)) {
            if (folder == parent)
                return done + 1;
            folder = parentOf(folder);
            --openFolders;
            continue;
        }
        FResourceEntry* added = entry.detach();
        folder->addChild(added);
        if (!added->isFolder())
            continue;
        folder = added;
        ++openFolders;
    }
    return count;
}

int32_t packContentTable(const FResourceEntry& root, FMemoryStream& table, int32_t version, bool utf8) {
    FResourceEntry closing(FResourceEntry::kFolderEntry);
    closing.setFileName(kClosingName);
    int32_t count = 0;
    for (const FFileArchiveNode* node = root.getFirstChild(); node;) {
        bool written = static_cast<const FResourceEntry*>(node)->write(table, version, utf8);
        int32_t level = 0;
        const FFileArchiveNode* next = node->getNextBelow(&root, &level);
        // as many folders end here as levels are left; an empty one ends at once, the root has no end
        int32_t closings = std::max(-level, 0) + (node->isFolder() && !node->getFirstChild()) - (next ? 0 : 1);
        count += 1 + closings;
        for (; closings > 0 && written; --closings)
            written = closing.write(table, version, utf8);
        if (!written)
            return -1;
        node = next;
    }
    return count;
}

}  // namespace Tessarine
