#pragma once
#include "collect/cmilinkedlist.h"
#include "pluginterfaces/base/smartpointer.h"
#include "storage/ffilesystem.h"
#include "storage/fstreamproxy.h"
#include <atomic>
#include <memory>
#include <string_view>

namespace Tessarine {
class FConsole;

/** A file or folder in an archive, as a link in the list of its folder. A kind of archive derives one of its own.

    Owns      its children.
    Depth     may be any: nothing here recurses.
    Threads   any number may look at a tree that nobody changes. */
class FFileArchiveNode : public CmILink {
public:
    enum Flags : int32_t {
        kReference = 1,  // stands for a file outside
        kCached = 2,     // its content has moved to the cache folder
    };

    FFileArchiveNode();
    FFileArchiveNode(const FFileArchiveNode&) = delete;
    FFileArchiveNode& operator=(const FFileArchiveNode&) = delete;
    ~FFileArchiveNode() override;

    virtual bool isFolder() const = 0;
    /** For people; here the name. */
    virtual void getDisplayString(FString& text) const;
    /** In 16 bits, and kept so: several threads may ask. */
    virtual void getFileName(FString& name) const = 0;
    /** An override ends with nameChanged(). */
    virtual void setFileName(const ConstString& name) = 0;
    /** Where its bytes begin in the archive; below 0: it has none there. */
    virtual int64_t getDataOffset() const = 0;
    /** How many they are. */
    virtual int64_t getDataSize() const = 0;
    /** How many come out. */
    virtual int64_t getUncompressedSize() const { return getDataSize(); }

    int32_t getFlags() const { return flags; }
    bool isReference() const { return flags & kReference; }
    bool isCached() const { return flags & kCached; }
    void setCached(bool state) { flags = state ? flags | kCached : flags & ~kCached; }
    /** Null: it is none. */
    const FNPath* getReference() const { return reference.get(); }
    /** Null ends it. */
    void setReference(const FNPath* outside);

    FFileArchiveNode* getParent() const { return parent; }
    FFileArchiveNode* getFirstChild() const;
    /** The next one in the same folder. */
    FFileArchiveNode* getNext() const { return static_cast<FFileArchiveNode*>(next); }
    /** The next one in a walk below top, which meets folders before what they hold; null: that was all. level, when not
        null, goes up and down with it. */
    FFileArchiveNode* getNextBelow(const FFileArchiveNode* top, int32_t* level = nullptr) const;
    /** The same, past all that this one holds. */
    FFileArchiveNode* getNextBeyond(const FFileArchiveNode* top, int32_t* level = nullptr) const;
    int32_t countChildren() const;

    /** Takes the reference over, at the end of the folder. false, and it stays the caller's: it has a parent, or this lies
        in it. */
    bool addChild(FFileArchiveNode* child);
    /** Takes it out and gives its reference up; false: it isn't a child. */
    bool remove(FFileArchiveNode* child);
    /** The first of that very name; null: there is none. */
    FFileArchiveNode* findChild(std::u16string_view name) const;
    FFileArchiveNode* getSubFolder(std::u16string_view name) const;

    /** Below the root of the tree, which has an empty path. */
    void getPath(FPath& path) const;
    /** A name that can stand as a step of a path: not empty, not "." or "..", without "/". */
    bool hasPlainName() const;
    /** The files below; recursive: in the folders too. withHidden: those too whose name begins with a dot. bytes, when not
        null, gets the sum of their uncompressed sizes. */
    int32_t countFiles(bool recursive, bool withHidden, uint64_t* bytes = nullptr) const;
    /** A line for this and for each below, moved in by its level, with the flags behind the name. */
    void dump(FConsole* console, int32_t level) const;

    DECLARE_ABSTRACT_CLASS(FFileArchiveNode, CmILink)

protected:
    void nameChanged();

private:
    class NameIndex;
    struct Folder;

    FFileArchiveNode* findNamed(std::u16string_view name, bool folder) const;
    const NameIndex* nameIndex() const;
    void dropIndex();
    void writeLine(FConsole* console, int32_t level) const;

    FFileArchiveNode* parent = nullptr;  // borrowed
    std::unique_ptr<Folder> content;     // of what has children
    int32_t flags = 0;
    std::unique_ptr<FNPath> reference;
};

/** A file system within a file: a tree of nodes, each a piece of it. A kind of archive derives from this, reads the tree in
    open() and writes it in create() and compact().

    Paths     are those below the root; ".." goes up to the root and no further. Names compare exactly.
    Writing   needs kWriteCached: what is changed moves to the cache folder, beside the archive unless one is set, and the
              archive takes it in with compact(). A cache that an earlier run left is taken over. Links in the cache folder
              are as if they weren't there.
    Files     an empty member can't be opened; extractFile makes it all the same.
    Results   error gets codes of the system.
    Threads   with kOwnHandles any number of threads may open, read and close members at a time, as long as nobody changes
              the archive. Otherwise one at a time. */
class FFileArchive : public FFileSystem {
public:
    enum Flags : int32_t {
        kWriteCached = 1,
        kOwnHandles = 2,  // each member that is open has a file of its own
        kBuffered = 4,    // the main stream has a cache of 4096 bytes, for many small values
    };
    static constexpr const char* kDisplayName = "File Archive";
    static bool gDisplayWarnings;  // main thread
    static void displayWarnings(bool state) { gDisplayWarnings = state; }

    explicit FFileArchive(const FPath* path, int32_t flags = 0);
    /** In a stream, which is shared. There is no cache folder unless one is set. */
    explicit FFileArchive(FStream* stream, int32_t flags = 0);
    ~FFileArchive() override;
    FFileArchive(const FFileArchive&) = delete;
    FFileArchive& operator=(const FFileArchive&) = delete;

    FStream* createFile(FPath* path, int32_t mode, int32_t* error = nullptr) override;
    FStream* openFile(FPath* path, int32_t mode, int32_t* error = nullptr) override;
    bool closeFile(FStream* stream) override;
    /** From the tree and the cache. */
    bool removeFile(FPath* path) override;
    bool fileExists(FPath* path) override;
    bool renameFile(FPath* path, const tchar* newName) override;
    /** Those of the archive, as long as the member lies in it. */
    bool getFileTimes(FPath* path, CmTime& created, CmTime& modified) override;
    /** Uncompressed. */
    int64_t getFileSize(FPath* path) override;
    int64_t getFileSize(FStream* stream) override;
    /** In the order of the tree. */
    FFileIterator* newIterator(const FPath* folder, bool withHidden) override;

    /** Makes the archive of a folder; flags and compression are the kind's own. false: this kind can't. */
    virtual bool create(FPath* folder, int16_t flags, UProgressHook* hook, const FUID* compression);
    /** Opens the stream, unless it is given; a kind reads its tree then. false: there is none, or it is of another kind. */
    virtual bool open();
    /** Writes the archive anew with what the cache holds; target null: in its own place. false: this kind can't. */
    virtual bool compact(int32_t flags, FPath* target, UProgressHook* hook);
    /** Lets go of stream and tree. false: streams with a file of their own are still open, and nothing has happened. */
    virtual bool close();
    virtual bool isOpen() const { return opened; }
    /** Looks for files in the cache folder that the tree doesn't know as cached; true: there are some. create: it knows them
        then, and has nodes for those that it lacked. */
    virtual bool checkUpdatedNodes(bool create);
    /** A member becomes a file of the disk; false: it can't be read whole, or the hook stopped it, and there is no file; or
        the target is the archive itself, or the file outside that the member's bytes are in. */
    virtual bool extractFile(FPath* path, FPath* target, UProgressHook* hook);
    /** What a folder holds appears below a folder of the disk, and nowhere else: a name that leads elsewhere or a link
        below the target ends it, as the first failure and the hook do. What was made before stays. A file that stands in the
        way goes, and keeps its bytes where it has another name. The hook hears each member's path as its text, before the
        member is made. */
    virtual bool extractFolder(FPath* path, FPath* target, UProgressHook* hook);
    /** The member stands for a file outside from now on, and is made if it is missing. */
    virtual bool createFileReference(FPath* path, const FNPath* outside);
    /** One of the kind's nodes, without a name, with a reference for the caller. */
    virtual FFileArchiveNode* newNode(bool folder) = 0;
    /** The node's bytes as they are stored, with a reference for the caller; null: it has none. */
    virtual FStream* openSubStream(FFileArchiveNode* node);

    bool extractAll(FPath* target, UProgressHook* hook);
    /** Null: beside the archive again. A link is followed now. */
    void setCacheFolder(const FNPath* folder);
    /** Without a set one the archive's own name with "~Cache" behind it; it appears with the first file. Borrowed; null: the
        archive isn't in a file. */
    const FNPath* getCacheFolder() const { return cacheFolder.get(); }
    /** The path of a member, or of a node if it isn't null, becomes that of its file in the cache folder. false, and as it was:
        there is no such folder, the path leads elsewhere, or a link stands in its way. */
    bool makeCachedPath(FPath* path, const FFileArchiveNode* node) const;
    /** Null: there is none. */
    FFileArchiveNode* lookupNode(const FPath* path) const;
    /** The node, made with the folders above it if they are missing. Null, and nothing is made: a file stands in the way, or it
        would lie deeper than kMaxDepth. */
    FFileArchiveNode* createNode(const FPath* path);
    /** The root; null when it is closed. */
    FFileArchiveNode* getTree() const { return root; }
    /** It is a file of the disk. */
    bool isNative() const { return !path.isEmpty(); }
    const FPath& getPath() const { return path; }
    /** Of the archive's file. */
    void getName(FString& name) const { name = path.getName(); }
    int32_t getFlags() const { return flags; }
    int32_t getOpenCount() const { return openCount; }
    void dumpContent(FConsole* console) const;

    DECLARE_ABSTRACT_CLASS(FFileArchive, FFileSystem)

protected:
    FStream* getStream() const { return stream; }
    void setStream(FStream* newStream) { stream = newStream; }
    /** Shares it. */
    void setTree(FFileArchiveNode* newRoot) { root = newRoot; }
    /** There may be files in it; a link in its place is none. */
    bool hasCacheFolder() const;

private:
    friend class FFileArchiveSubStream;

    bool canHold(const FPath& file) const;
    FFileArchiveNode* createFileNode(const FPath& file);
    FFileArchiveNode* enterOrMake(FFileArchiveNode* folder, std::u16string_view name, bool onTheWay, bool makeFolder);
    bool findCached(const FPath* path, FPath& cached) const;
    bool copyMember(FPath* path, FFileArchiveNode* node, FPath* target, UProgressHook* hook, int32_t* error);
    /** Its content isn't in the archive; place is where it is, empty: out of reach. */
    bool locateOutside(const FFileArchiveNode* node, FPath& place) const;
    /** That file is where the node's content comes from. */
    bool isSourceOf(const FFileArchiveNode* node, const FPath* target) const;
    FStream* openMissing(FPath* path, int32_t mode, int32_t* error);
    FStream* openToWrite(FPath* path, FFileArchiveNode* node, int32_t mode, int32_t* error);
    bool extractNode(FFileArchiveNode* node, const FFileArchiveNode* top, const FPath& target, UProgressHook* hook);

    FPath path;  // empty: in a stream
    IPtr<FStream> stream;
    IPtr<FFileArchiveNode> root;
    int32_t flags;
    std::atomic<int32_t> openCount{0};  // streams with a file of their own
    std::unique_ptr<FNPath> cacheFolder;
    bool opened = false;
};

/** Walks over the children of a node, which is shared. The one at hand may be removed meanwhile. */
class FFileArchiveIterator : public FFileIterator {
public:
    FFileArchiveIterator(FFileArchiveNode* folder, bool withHidden);

    FPath* first() override { return show(folder->getFirstChild()); }
    FPath* next() override;
    FPath* current() override { return node ? &shown : nullptr; }
    FFileArchiveNode* currentNode() const { return node; }

    DECLARE_ABSTRACT_CLASS(FFileArchiveIterator, FFileIterator)

private:
    FPath* show(FFileArchiveNode* found);

    IPtr<FFileArchiveNode> folder, node;
    IPtr<FFileArchiveNode> following;  // where node is gone
    bool withHidden;
    FPath shown;
};

/** A member over a file of its own: the archive, which is shared, counts it as open as long as it lives. */
class FFileArchiveSubStream : public FStreamProxy {
public:
    FFileArchiveSubStream(FFileArchive* archive, FStream* stream, int64_t offset, int64_t size);
    ~FFileArchiveSubStream() override;

    DECLARE_ABSTRACT_CLASS(FFileArchiveSubStream, FStreamProxy)

private:
    IPtr<FFileArchive> archive;
};

}  // namespace Tessarine
