#pragma once
#include "storage/fcompression.h"
#include "storage/ffilearchive.h"

namespace Tessarine {
class FMemoryStream;
class FResourceEntry;

/** Says which files and folders get into an archive. */
class IResourceArchivePathFilter {
public:
    virtual bool includes(FPath* path) = 0;

protected:
    ~IResourceArchivePathFilter() = default;
};

/** Writes members in a way of its own: at the target's place, and the entry is told where and how many bytes. */
class IResourceArchiveCopyHook {
public:
    virtual bool copyInto(FStream* source, FStream* target, FResourceEntry* entry, UProgressHook* hook) = 0;

protected:
    ~IResourceArchiveCopyHook() = default;
};

/** A file or folder in a resource file. Offsets are from the start of the file, sizes in bytes. */
class FResourceEntry : public FFileArchiveNode {
public:
    enum EntryFlags : int32_t {
        kFolderEntry = 1,
        kFileEntry = 2,
        kCompressedEntry = 4,
        kUtf8Name = 8,  // the name's form in the table
    };
    static constexpr int32_t kMaxNameLength = 256;  // characters; a reader drops those behind

    explicit FResourceEntry(int32_t entryFlags = 0) : entryFlags(entryFlags) {}

    bool isFolder() const override { return entryFlags & kFolderEntry; }
    void getFileName(FString& text) const override { text = name; }
    void setFileName(const ConstString& text) override;
    int64_t getDataOffset() const override { return dataOffset; }
    int64_t getDataSize() const override { return dataSize; }
    int64_t getUncompressedSize() const override { return uncompressedSize; }

    int32_t getEntryFlags() const { return entryFlags; }
    bool isCompressed() const { return entryFlags & kCompressedEntry; }
    void setDataOffset(int64_t offset) { dataOffset = offset; }
    void setData(int64_t offset, int64_t size, int64_t uncompressed);
    void setCompressed(bool state) {
        entryFlags = state ? entryFlags | kCompressedEntry : entryFlags & ~kCompressedEntry;
    }

    /** The record of a content table; false: it is cut off. What is malformed in UTF-8 is no name at all. */
    bool read(FMemoryStream& table, int32_t version);
    /** false: a number is too large for the version. utf8 false: as an 8-bit text that can't be read again. */
    bool write(FMemoryStream& table, int32_t version, bool utf8) const;

    DECLARE_CLASS(FResourceEntry, FFileArchiveNode)

private:
    bool readName(FMemoryStream& table);

    int32_t entryFlags;
    int64_t dataOffset = 0, dataSize = 0, uncompressedSize = 0;
    FString name;  // wide
};

/** A form of resource files: the word that they end with, and which version that is. */
struct ArchiveFormatDesc {
    uint32_t magic;
    int32_t version;
    bool writable;
};

/** A resource file: a tree of files and folders, plain or compressed, in one file.

    Reading   takes the table, and each member when it is asked for. A table that is cut off within an entry isn't taken; one
              that ends too early or too late is (isTableWhole). Members are taken as the table says: what lies outside the
              file is cut off.
    Writing   without compression gives version 1, whose numbers end at 2 GB: what needs more fails.
    Results   a failure to open says nothing more; error of openFile is EIO for a compressed member that can't be read.
    Threads   as FFileArchive. The statics: start-up and main thread. */
class FResourceArchive : public FFileArchive {
public:
    /** For create, compact and addFolder. */
    enum PackFlags : int32_t {
        kSubFolders = 1,
        kCompress = 2,
        kDropEmptyFolders = 4,  // those that hold no file
    };
    static constexpr int64_t kHeaderSize = 25;  // bytes, behind which data may begin
    static int32_t gFormatVersion;              // 4 and above: what is written, whatever it holds
    static float gCompressionLevel;             // 0 (fastest) to 1 (smallest)

    explicit FResourceArchive(const FPath* path, int32_t flags = 0) : FFileArchive(path, flags) {}
    /** In a stream, which is shared and begins where the archive does. */
    explicit FResourceArchive(FStream* stream, int32_t flags = 0) : FFileArchive(stream, flags) {}

    bool open() override;
    bool close() override;
    /** An empty file, to be filled by addFolder and closed off by writeContent. compression null: the default engine.
        false: the archive is open. */
    virtual bool create(int32_t flags, const FUID* compression);
    /** With all that a folder holds, hidden files too. A failure or a stop leaves no file; one that
        was there and couldn't be opened to be written stays. false: the archive is open. */
    bool create(FPath* folder, int16_t flags, UProgressHook* hook, const FUID* compression) override;
    /** Without gaps, with the engine that it has if flags says kCompress. In its own place it is written beside first, with
        "~" before its name, and open again afterwards; what the cache folder held of it goes. */
    bool compact(int32_t flags, FPath* target, UProgressHook* hook) override;
    /** The table and what ends the file, where the stream stands. */
    virtual bool writeContent();
    FStream* openFile(FPath* path, int32_t mode, int32_t* error = nullptr) override;
    using FFileArchive::getFileSize;
    /** Of a compressed member, uncompressed. */
    int64_t getFileSize(FStream* stream) override;
    FFileArchiveNode* newNode(bool folder) override;
    /** The engine of that name, null for the default one, with a reference for the caller; null: there is none. */
    virtual FCompressionEngine* makeCompressionEngine(const FUID* compression);
    /** Adds what a folder of the disk holds, in the order of its iterator. Links to files are read, links to folders passed
        over. flags: of PackFlags. false: something can't be read or written, or the hook stopped it, and cancel is true. */
    bool addFolder(FResourceEntry* entry, FPath* path, int32_t flags, UProgressHook* hook, bool& cancel);
    /** All of the source, at the target's place. It is compressed if there is an engine and a sample gets smaller by it; an
        engine that enciphers has it all. An entry that is marked as compressed takes the bytes as they are, and their number
        as its size: to pack a member again, begin with a fresh one. */
    virtual bool copyInto(FStream* source, FStream* target, FResourceEntry* entry, UProgressHook* hook);

    /** Both borrowed; null: everything, and as it comes. */
    void setPathFilter(IResourceArchivePathFilter* filter) { pathFilter = filter; }
    void setCopyHook(IResourceArchiveCopyHook* hook) { copyHook = hook; }
    /** On at first. */
    void setUtf8Names(bool state) { utf8Names = state; }
    FCompressionEngine* getEngine() const { return engine; }
    /** Where the content table begins. */
    int64_t getTableOffset() const { return tableOffset; }
    /** Header and table were exactly what they should be: all folders closed, and nothing left over. */
    bool isTableWhole() const { return tableWhole; }

    /** The file gets the bytes of another one for a member that it has. Not all at once: after a failure in the middle the
        file can be unreadable, so that one who can't have that does it with a copy. */
    static bool replaceFileInArchive(FPath* archive, FPath* inner, FPath* file);

    /** One more form; versions begin with 1. */
    static void registerArchiveFormat(uint32_t magic, int32_t version, bool writable);
    /** 0: none that is known. */
    static int32_t getFormatVersion(uint32_t magic);
    static uint32_t getVersionMagic(int32_t version);
    /** Makes file type and reader known; a second time changes nothing. Start-up does it. */
    static void doInits();

    DECLARE_ABSTRACT_CLASS(FResourceArchive, FFileArchive)

private:
    struct Packing;

    FResourceEntry* getRoot() const { return static_cast<FResourceEntry*>(getTree()); }
    bool readContent();
    bool readHeader();
    bool findEngine(const FUID& compression);
    FStream* openCompressed(FResourceEntry* entry);
    FStream* openMember(FResourceEntry* entry);
    bool shouldCompress(FStream* source, const FResourceEntry& entry) const;
    bool addContent(FResourceEntry* entry, FPath* path, Packing& packing);
    bool addPath(FResourceEntry* folder, FPath* path, Packing& packing);
    bool addFile(FResourceEntry* folder, FPath* path, Packing& packing);
    bool addSubFolder(FResourceEntry* folder, FPath* path, Packing& packing);
    bool writeCompacted(FPath& place, int32_t flags, UProgressHook* hook);
    bool compactFolder(FResourceArchive& target, UProgressHook* hook);
    bool compactFile(FResourceEntry* entry, FResourceArchive& target, FResourceEntry* copy, UProgressHook* hook);
    void dropCache();
    bool replaceMember(FResourceEntry* entry, FStream* source);

    IPtr<FCompressionEngine> engine;
    IResourceArchivePathFilter* pathFilter = nullptr;  // borrowed
    IResourceArchiveCopyHook* copyHook = nullptr;      // borrowed
    int64_t tableOffset = 0;
    bool utf8Names = true;
    bool tableWhole = false;
};

/** ".srf" */
extern const FFileType srfFileType;

}  // namespace Tessarine
