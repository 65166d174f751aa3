#pragma once
#include "base/source/fthread.h"
#include "collect/cmhashdictionary.h"
#include "pluginterfaces/base/smartpointer.h"
#include "storage/ffilesystem.h"
#include <vector>

namespace Tessarine {

/** Knows the file systems that are inside of files, so that a path can lead into them: a protocol, "//", an identifier, "/" and
    the path within. Such a path is a URL: what is within is encoded as URLs are.

    Protocols  end with ":". An identifier is without "/", and stands for one file system whatever the protocol.
    On demand  a "vfs:" or "srf:" path whose identifier nobody has registered is that of a file, encoded as a whole: its
               content is mounted, by the handlers of virtual file systems or by a component, and registered, once for both
               protocols.
    Owns       shares the file systems.
    Results    file systems come with a reference for the caller.
    Threads    any. Nothing is mounted or unmounted, and no file system called, with the lock held. */
class FArchiveManager : public CmObject {
public:
    static constexpr const tchar* kArchiveProtocol = u"archive:";
    static constexpr const tchar* kResourceProtocol = u"srf:";
    static constexpr const tchar* kVirtualProtocol = u"vfs:";

    /** Made at first use, which is on the main thread; null when the program ends. */
    static FArchiveManager* instance();
    /** Unmounts all; the next use begins anew. */
    static void terminate();

    /** false: null, a protocol or an identifier that a URL can't have, or an identifier that is taken. */
    bool registerArchive(FFileSystem* fileSystem, const FString& protocol, const FString& uid);
    bool registerArchive(FFileSystem* fileSystem, const FString& protocol, const FUID& uid);
    /** All its identifiers; false: it has none. */
    bool unregisterArchive(FFileSystem* fileSystem);
    /** unmount: it is unmounted too, if it can be; false: there is none, or it is in use, and stays registered. */
    bool unregisterArchive(const FString& protocol, const FString& uid, bool unmount);
    bool unregisterArchive(const FString& protocol, const FUID& uid, bool unmount);
    bool containsArchive(const FString& protocol, const FString& uid);
    /** Null: there is none. */
    FFileSystem* lookupArchive(const FString& protocol, const FString& uid);
    bool isRegisteredURL(const FPath& path);

    /** The file system that a path leads into, mounted if need be; gFileSystem for one without a protocol. Null: nothing is
        registered, or can be mounted. */
    FFileSystem* getFileSystem(const FPath* path);
    /** A walk over the folder, whose paths are as complete as this one; null: there is none. */
    FFileIterator* newIterator(const FPath* path, bool withHidden = false);
    /** Adds the root of each registered file system as an FPath, sorted. The result is their number. */
    int32_t getDrives(CmContainer& drives);
    /** What is in a file of the disk, as a file system that isn't registered; null: it holds none. */
    static FFileSystem* createVirtualFileSystem(const FNPath* path);
    /** Those that can be unmounted and that nobody uses. */
    void unmountUnusedVirtualFileSystems();
    /** The file is a run of bytes on the disk or in an archive; false: a component makes them, or nothing leads there. */
    bool isBitwiseCopyable(const FPath* path);

    /** The identifier under which a file's content is mounted on demand; the file's path is absolute. */
    static FString getContainerUID(const FNPath& file);
    /** The root of a new identifier; empty: the protocol is none, or the system gives no random bytes. */
    static FString getNewURL(const ConstString& protocol);
    /** The path within; a path without a protocol is that itself. Empty: what is encoded there is no text. */
    static FPath getPath(const FPath& path);
    /** Protocol, "//" and identifier. This and the next two: false, and an empty text, for a path without. */
    static bool getRootPath(const FPath& path, FString& root);
    static bool getProtocol(const FPath& path, FString& protocol);
    static bool getUID(const FPath& path, FString& uid);
    /** false: it is no such text. */
    static bool getUIDFromString(const ConstString& text, FUID& uid);
    /** It leads into an archive, and to the top of it. */
    static bool isRoot(const FPath& path);

    DECLARE_ABSTRACT_CLASS(FArchiveManager, CmObject)

private:
    struct ArchiveEntry;
    using FileSystems = std::vector<IPtr<FFileSystem>>;

    FArchiveManager();
    ~FArchiveManager() override;
    FFileSystem* lookupMounted(const FString& uid);
    FFileSystem* mountOnDemand(const FString& protocol, const FString& uid);
    template <class Test>
    FileSystems takeOut(Test test);

    FLock lock;                // guards entries
    CmHashDictionary entries;  // CmString, the identifier, to ArchiveEntry
};

/** Gives the paths of another iterator the root of their archive. */
class FFileIteratorUrlWrapper : public FFileIterator {
public:
    /** Takes the iterator over. root: protocol, "//" and identifier. */
    FFileIteratorUrlWrapper(FFileIterator* inner, const ConstString& root);

    FPath* first() override { return show(inner->first()); }
    FPath* next() override { return show(inner->next()); }
    FPath* current() override { return present ? &shown : nullptr; }

    DECLARE_ABSTRACT_CLASS(FFileIteratorUrlWrapper, FFileIterator)

private:
    FPath* show(FPath* found);

    OPtr<FFileIterator> inner;
    FString root;
    FPath shown;
    bool present = false;
};

}  // namespace Tessarine
