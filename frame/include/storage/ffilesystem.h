#pragma once
#include "storage/fpath.h"
#include <memory>

namespace Tessarine {
class CmContainer;
class CmTime;
class FStream;
class UProgressHook;

/** What a file is opened for: bits. */
enum FOpenMode : int32_t {
    kOpenRead = 1,
    kOpenWrite = 2,
    kOpenShared = 4,
    kOpenCreate = 8,  // made when missing, emptied when there
};

/** A walk over what lies directly in a folder. Paths belong to the iterator and are valid until it moves. */
class FFileIterator : public CmObject {
public:
    /** Begins anew; null: there is nothing. */
    virtual FPath* first() = 0;
    /** Moves on; null: that was all. */
    virtual FPath* next() = 0;
    /** Where the walk stands; null before first() and at the end. */
    virtual FPath* current() = 0;

    DECLARE_ABSTRACT_CLASS(FFileIterator, CmObject)
};

/** Something that holds files: a disk, an archive. What a kind of it can't do answers as a miss.

    Paths     borrowed for the call; text as FPath has it.
    Results   false, null or -1 for a miss; error, when not null, gets the system's code, 0 for none.
    Threads   those of the path; two at a time on one file are the caller's affair. */
class FFileSystem : public CmObject {
public:
    static constexpr uint32_t kMaxNameLength = 1024;  // characters
    static constexpr int32_t kMaxDepth = 1000;        // of folders in folders, for whatever walks down

    /** A new file, or an old one emptied, with a mode of FOpenMode. The stream has one reference; end it with
        closeFile. */
    virtual FStream* createFile(FPath* path, int32_t mode, int32_t* error = nullptr) = 0;
    /** A file that exists, unless mode has kOpenCreate. */
    virtual FStream* openFile(FPath* path, int32_t mode, int32_t* error = nullptr) = 0;
    /** Releases the stream. false: not all that was written has reached the file. Null is allowed, and false. */
    virtual bool closeFile(FStream* stream) = 0;
    virtual bool removeFile(FPath* path) = 0;
    /** true: there is something of that name that isn't a folder. */
    virtual bool fileExists(FPath* path) = 0;
    /** Another name in the same folder; false when that is taken. */
    virtual bool renameFile(FPath* path, const tchar* newName) = 0;
    /** Within one system, in one step: whoever looks at the target sees what it was or what it becomes. overwrite:
        what is there goes; otherwise that is a failure. */
    virtual bool moveFile(FPath* from, FPath* to, bool overwrite);
    /** The content alone, over a file that is there. A failure or a stop leaves no target. */
    virtual bool copyFile(FPath* from, FPath* to, UProgressHook* hook = nullptr, int32_t* error = nullptr);
    /** Makes the folder, and the folders above it that are missing; true when it stands. */
    virtual bool createDir(FPath* path);
    /** The folder in which relative paths begin. */
    virtual bool changeDir(FPath* path);
    /** The name of the folder: the path's own, or of the one that the file lies in. */
    virtual bool getDirName(FPath* path, FString& name);
    /** withContent: whatever is in it; a link in it goes, not what it leads to. Otherwise it must be empty. */
    virtual bool removeDir(FPath* path, bool withContent);
    /** When it was made and when it was changed last, by the clock on the wall. */
    virtual bool getFileTimes(FPath* path, CmTime& created, CmTime& modified) = 0;
    /** In bytes. */
    virtual int64_t getFileSize(FPath* path) = 0;
    virtual int64_t getFileSize(FStream* stream) = 0;
    /** Makes a name that the system takes: at most kMaxNameLength characters, replacement ("_" when it is 0) for each that a
        name can't have. trim takes blanks off both ends first. true: the name has changed. */
    virtual bool makeValidName(FString& name, tchar replacement = 0, bool trim = true);
    /** By name in the order of their bytes, as they are at first(); null: no such folder. withHidden: those too that
        begin with a dot. The caller releases it. */
    virtual FFileIterator* newIterator(const FPath* folder, bool withHidden) = 0;
    /** What isn't a folder; deep: in the folders below as well, links aside. size, when not null, gets the sum of their sizes.
        -1: no such folder. */
    virtual int32_t countFiles(const FPath* folder, bool deep, bool withHidden, int64_t* size = nullptr);

    /** As the member, from one system to another. */
    static bool copyFile(FFileSystem* source, FPath* from, FFileSystem* target, FPath* to,
                         UProgressHook* hook = nullptr, int32_t* error = nullptr);
    /** Such as "1.500 MB". */
    static void makeFileSizeString(double bytes, FString& text);

    DECLARE_ABSTRACT_CLASS(FFileSystem, CmObject)
};

/** Kinds of drives. */
enum FDriveType : int32_t { kHarddisk, kCompactDisc, kRemovableDrive, kNetworkDrive, kUndefinedDrive };

/** The system's disks. Names are UTF-8 there; a file whose name isn't can't be reached.

    Links     are followed, except where a call is about the link itself. */
class FNFileSystem : public FFileSystem {
public:
    FStream* createFile(FPath* path, int32_t mode, int32_t* error = nullptr) override;
    FStream* openFile(FPath* path, int32_t mode, int32_t* error = nullptr) override;
    bool closeFile(FStream* stream) override;
    bool removeFile(FPath* path) override;
    bool fileExists(FPath* path) override;
    bool renameFile(FPath* path, const tchar* newName) override;
    /** From disk to disk it is copied beside the target first, which folders are not. */
    bool moveFile(FPath* from, FPath* to, bool overwrite) override;
    /** With its rights, where the disk knows them. Not from or to a device. */
    bool copyFile(FPath* from, FPath* to, UProgressHook* hook = nullptr, int32_t* error = nullptr) override;
    bool createDir(FPath* path) override;
    /** Of the whole process. */
    bool changeDir(FPath* path) override;
    bool getDirName(FPath* path, FString& name) override;
    bool removeDir(FPath* path, bool withContent) override;
    bool getFileTimes(FPath* path, CmTime& created, CmTime& modified) override;
    int64_t getFileSize(FPath* path) override;
    int64_t getFileSize(FStream* stream) override;
    FFileIterator* newIterator(const FPath* folder, bool withHidden) override;
    using FFileSystem::copyFile;

    /** The bits of FOpenMode in a mode that a component asks for. */
    static int32_t convertOpenMode(int32_t mode);

    bool dirExists(const FPath* path);
    /** Hidden files count. */
    bool isFolderEmpty(const FPath* path);
    /** The empty folders below, and those that become empty by it; the folder itself stays. false: no such folder, or one
        could not be removed. */
    bool removeEmptyFolders(const FPath* path);
    /** The folders below from appear below to. Links are passed over. false: one is missing there. */
    bool copyFolderStructure(const FPath* from, const FPath* to);
    /** Files as well; hook hears of them one by one. */
    bool copyFolderAndFileStructure(const FPath* from, const FPath* to, UProgressHook* hook = nullptr);
    /** Moves a file or folder to the user's trash, from where the desktop can restore it. */
    bool trashFile(const FPath* path);
    /** The first file of that name in the folder or one below. */
    bool findFile(const FPath* folder, const tchar* name, FNPath& found);

    /** Makes a name valid: without what no name here can have, and none of those with a meaning of their own. */
    bool makeSystemName(FString& name);
    bool makeValidFileName(FString& name) { return makeValidName(name); }
    /** The same for each step of a path. true: it has changed. */
    bool makeValidPath(FPath* path);
    /** The file's extension becomes that of the type. */
    bool changeFileType(FPath* path, const FFileType& type);
    /** The file is of the type: by its content where that is known, else by its extension. */
    bool verifyType(FPath* path, const FFileType& type);

    bool getFileSizeString(FPath* path, FString& text);
    /** Adds an FNPath for each place where a drive of the type is mounted; -1: of all but the undefined ones, which are the
        system's own. A container that borrows them leaves them to the caller. The result is their number. */
    int32_t getDrives(CmContainer& drives, int32_t type = -1);
    int32_t getDriveType(const FPath* path);
    /** Translated. Main thread. */
    static const tchar* getDriveTypeString(int32_t type);
    /** Where the drive of the path is mounted. */
    bool getRootDir(const FPath* path, FNPath& root);
    /** For this user; -1: not known. */
    int64_t getFreeBytesOnDisk(const FPath* path);
    /** The top of the disks, or the place where a drive is mounted. */
    bool isRoot(const FPath* path);

    /** This user may write there: to the file, into the folder. */
    bool canWrite(const FPath* path);
    /** Gives the owner the right to write, or takes it from all. */
    bool enableWrite(const FPath* path, bool state);
    /** Its name begins with a dot. */
    bool isHidden(const FPath* path);

    bool isSymlink(const FPath* path);
    /** Where the link leads, from its folder on. */
    bool readSymlink(const FPath* link, FNPath& target);
    /** target is kept as it is, relative or not. */
    bool createSymlink(const FPath* link, const FPath* target);
    /** A second name of a file. */
    bool createLink(const FPath* link, const FPath* target);
    /** The path becomes what it leads to, over any number of links. false, and as it was: nothing is there. */
    bool checkResolveLink(FNPath* path);

    /** With the desktop's program for it; see FSystemShell. */
    bool openUrl(const tchar* url);

    /** Of an extension, by the registered types and then the desktop's table. */
    static bool lookupMimeType(const ConstString& extension, FString& mimeType);
    /** By the registered types alone. */
    static bool lookupUTI(const ConstString& extension, FString& uti);

    /** A code of the system, or one of FSystemError, as a translated text for the user. Main thread. */
    static void getErrorMessage(int32_t code, FString& text);
    /** The FSystemError for a code of errno; the code itself when there is none. */
    static int32_t fromPlatformErrorCode(int32_t code);
    /** Failures of what changes files are shown to the user. Main thread, with all that it touches. Gives the old state. */
    bool showPlatformErrors(bool state);

    /** Who hears "VolMount" and "VolUnmount" as a message, with the drive's path as "path". Borrowed. Main thread. */
    void subscribeToMountEvent(CmObject* subscriber);
    void unsubscribeFromMountEvent(CmObject* subscriber);
    void onMountEvent(const char* event, const FNPath& drive);
    /** Tells the same ones "PathChanged", with the path as "change". */
    void onFileSystemChange(const FNPath& change);

    /** The folder that was used last for files of a type; without one, for any. See FNPath::storeAsDefault. */
    bool storeLastPath(const FNPath& folder, const FFileType* type);
    bool loadLastPath(FNPath& folder, const FFileType* type);

    DECLARE_CLASS(FNFileSystem, FFileSystem)

private:
    bool moveToOtherDisk(FPath* from, FPath* to, bool overwrite);
};

/** What may have gone wrong on a disk, in numbers of old. */
enum FSystemError : int32_t {
    kDiskFullError = -34,
    kDiskDefectError = -36,
    kNameError = -37,
    kFileNotFoundError = -43,
    kReadOnlyError = -44,
    kNotPermittedError = -54,
};

/** Walks down from some folders to every file in them: each folder before what it holds. Links are told, not followed. */
class FNFileSystemScanner : public FFileIterator {
public:
    FNFileSystemScanner();
    ~FNFileSystemScanner() override;
    explicit FNFileSystemScanner(const FPath* base, bool withHidden = false);
    void addBasePath(const FPath* base);

    FPath* first() override;
    FPath* next() override;
    FPath* current() override;
    /** What lies in the current folder is passed over. */
    void skipFolder();

    DECLARE_CLASS(FNFileSystemScanner, FFileIterator)

private:
    FPath* openBase();

    struct Walk;
    std::unique_ptr<Walk> walk;
};

/** The disks, from static initialisation to exit. */
extern FNFileSystem* const gFileSystem;

}  // namespace Tessarine
