#include "storage/fresourcearchive.h"
#include "base/fcompiledinclass.h"
#include "base/source/fbuffer.h"
#include "base/source/finitializer.h"
#include "base/utranslatedstring.h"
#include "fresourcetable.h"
#include "storage/fcstream.h"
#include "storage/fvfilesystem.h"
#include "storage/hooks.h"
#include <algorithm>
#include <cerrno>
#include <string>
#include <vector>

namespace Tessarine {
namespace {
constexpr size_t kHeaderLine = 254;  // bytes that are looked at, at most
constexpr UTranslatedString kNoEngine("Resource File Error: Compression not supported!");
constexpr ArchiveFormatDesc kOwnFormats[] = {
    {0x46465253, 1, true}, // SRFF
    {0x32465253, 2, true}, // SRF2
    {0x33465253, 3, true}, // SRF3
};
constinit std::vector<ArchiveFormatDesc> gArchiveFormats;

const FFileType* checkSrfFileType(const char* bytes, int32_t size) {
    return std::string_view(bytes, size_t(size)).starts_with(kResourceHeader) ? &srfFileType : nullptr;
}

FFileSystem* createSrfArchive(FPath* path) {
    OPtr<FResourceArchive> archive(new FResourceArchive(path));
    return archive->open() ? archive.detach() : nullptr;
}

bool initFResourceArchive() {
    static bool isDone = false;
    if (isDone)
        return true;
    isDone = true;
    FFileType::registerType(&srfFileType);
    FFileType::registerTypeIdentifier(checkSrfFileType);
    FVFileSystem::registerHandler(&srfFileType, createSrfArchive);
    return true;
}

const OneTimeProcedure FResourceArchiveInitializer(true, initFResourceArchive, "FResourceArchive", 0);

FCompressionEngine* engineOfName(const FUID& name) {
    for (const FCompiledInClass* each = FCompiledInClass::first(); each; each = each->next)
        if (each->classID == name && std::string_view(each->type) == FCompressionEngine::kCategory)
            return static_cast<FCompressionEngine*>(each->create());
    return nullptr;
}
}  // namespace

IMPLEMENT_ABSTRACT_CLASS(FResourceArchive, FFileArchive)
constinit int32_t FResourceArchive::gFormatVersion = 3;
constinit float FResourceArchive::gCompressionLevel = 0.5f;
const FFileType srfFileType(u"Tessarine Resource File", u"srf", u"srf");

bool FResourceArchive::open() {
    if (isOpen())
        return true;
    if (!FFileArchive::open())
        return false;
    if (!readContent()) {
        close();
        return false;
    }
    if (getFlags() & kWriteCached)
        checkUpdatedNodes(true);
    return true;
}

bool FResourceArchive::close() {
    if (!FFileArchive::close())
        return false;
    engine = nullptr;
    return true;
}

FStream* FResourceArchive::openFile(FPath* path, int32_t mode, int32_t* error) {
    const bool reads = !(mode & (kOpenWrite | kOpenCreate));
    auto* entry = static_cast<FResourceEntry*>(engine && reads ? lookupNode(path) : nullptr);
    if (!entry || !entry->isCompressed() || entry->isFolder() || entry->isReference() || entry->isCached() ||
        entry->getDataSize() == 0)
        return FFileArchive::openFile(path, mode, error);
    FStream* opened = openCompressed(entry);
    if (error)
        *error = opened ? 0 : EIO;
    return opened;
}

int64_t FResourceArchive::getFileSize(FStream* stream) {
    const auto* compressed = classCast<FCompressionStream>(stream);
    return compressed ? compressed->getOriginalSize() : FFileArchive::getFileSize(stream);
}

FFileArchiveNode* FResourceArchive::newNode(bool folder) {
    return new FResourceEntry(folder ? FResourceEntry::kFolderEntry : FResourceEntry::kFileEntry);
}

FCompressionEngine* FResourceArchive::makeCompressionEngine(const FUID* compression) {
    return compression ? engineOfName(*compression) : FCompressionEngine::createDefault();
}

void FResourceArchive::registerArchiveFormat(uint32_t magic, int32_t version, bool writable) {
    if (version > 0)
        gArchiveFormats.push_back({magic, version, writable});
}

int32_t FResourceArchive::getFormatVersion(uint32_t magic) {
    const auto known = std::ranges::find(kOwnFormats, magic, &ArchiveFormatDesc::magic);
    if (known != std::end(kOwnFormats))
        return known->version;
    const auto added = std::ranges::find(gArchiveFormats, magic, &ArchiveFormatDesc::magic);
    return added != gArchiveFormats.end() ? added->version : 0;
}

uint32_t FResourceArchive::getVersionMagic(int32_t version) {
    const auto writes = [=](const ArchiveFormatDesc& format) { return format.writable && format.version == version; };
    const auto added = std::ranges::find_if(gArchiveFormats, writes);
    if (added != gArchiveFormats.end())
        return added->magic;
    const auto known = std::ranges::find_if(kOwnFormats, writes);
    return known != std::end(kOwnFormats) ? known->magic : 0;
}

void FResourceArchive::doInits() {
    initFResourceArchive();
}

bool FResourceArchive::readContent() {
    FStream* stream = getStream();
    stream->byteOrder = 0;
    ResourceFileEnding ending;
    if (!readHeader() || !ending.read(*stream, stream->seek(0, kFromEnd)) ||
        (ending.isCompressed() && !findEngine(ending.compression)))
        return false;
    tableOffset = stream->seek(-int64_t(ending.endingSize) - ending.tableSize, kFromEnd);
    Buffer bytes(uint32_t(ending.tableSize));
    if (bytes.getSize() != uint32_t(ending.tableSize) ||
        stream->readRaw(bytes.data(), ending.tableSize) != ending.tableSize)
        return false;
    FMemoryStream table(bytes.data(), ending.tableSize);
    const OPtr<FResourceEntry> root(new FResourceEntry(FResourceEntry::kFolderEntry));
    int32_t openFolders = 0;
    const int32_t count = unpackContentTable(table, root, ending.entryCount, ending.version, openFolders);
    tableWhole = tableWhole && count == ending.entryCount && openFolders == 0 && table.tell() == ending.tableSize;
    setTree(root);
    return count >= 0;
}

/** tableWhole tells whether the line also ends as it should. */
bool FResourceArchive::readHeader() {
    char bytes[kHeaderLine];
    getStream()->rewind();
    const int64_t size = getStream()->readRaw(bytes, kHeaderLine);
    const std::string_view start(bytes, size_t(std::max<int64_t>(size, 0)));
    tableWhole = start.starts_with(kResourceHeader);
    constexpr std::string_view kText = kResourceHeader.substr(0, kResourceHeader.size() - 2);
    return tableWhole || start.starts_with(std::string(kText) + '\0');
}

bool FResourceArchive::findEngine(const FUID& compression) {
    engine = OPtr<FCompressionEngine>(makeCompressionEngine(&compression));
    if (!engine && gDisplayWarnings && gStorageHooks.showError)
        gStorageHooks.showError(FString(kNoEngine.text()));
    return engine;
}

FStream* FResourceArchive::openCompressed(FResourceEntry* entry) {
    const OPtr<FStream> stored(entry->getUncompressedSize() >= 0 ? openSubStream(entry) : nullptr);
    if (!stored)
        return nullptr;
    OPtr<FCompressionStream> opened(new FCompressionStream(stored, engine));
    return opened->beginDecompress(entry->getUncompressedSize()) ? opened.detach() : nullptr;
}

}  // namespace Tessarine
