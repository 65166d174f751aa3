#pragma once
#include "storage/fpath.h"

namespace Tessarine {
class FStream;

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

/** Something that holds files: a disk, an archive.

    Paths     borrowed for the call; text as FPath has it.
    Results   false, null or -1 for a miss; error, when not null, gets the system's code, 0 for none.
    Threads   those of the path; two at a time on one file are the caller's affair. */
class FFileSystem : public CmObject {
public:
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
    virtual bool moveFile(FPath* from, FPath* to, bool overwrite) = 0;
    /** Makes the folder, and the folders above it that are missing; true when it stands. */
    virtual bool createDir(FPath* path) = 0;
    /** In bytes. */
    virtual int64_t getFileSize(FPath* path) = 0;
    virtual int64_t getFileSize(FStream* stream) = 0;
    /** By name in the order of their bytes, as they are at first(); null: no such folder. withHidden: those too that
        begin with a dot. The caller releases it. */
    virtual FFileIterator* newIterator(const FPath* folder, bool withHidden) = 0;

    DECLARE_ABSTRACT_CLASS(FFileSystem, CmObject)
};

/** The system's disks. Names are UTF-8 there; a file whose name isn't can't be reached. */
class FNFileSystem : public FFileSystem {
public:
    FStream* createFile(FPath* path, int32_t mode, int32_t* error = nullptr) override;
    FStream* openFile(FPath* path, int32_t mode, int32_t* error = nullptr) override;
    bool closeFile(FStream* stream) override;
    bool removeFile(FPath* path) override;
    bool fileExists(FPath* path) override;
    bool renameFile(FPath* path, const tchar* newName) override;
    bool moveFile(FPath* from, FPath* to, bool overwrite) override;
    bool createDir(FPath* path) override;
    int64_t getFileSize(FPath* path) override;
    int64_t getFileSize(FStream* stream) override;
    FFileIterator* newIterator(const FPath* folder, bool withHidden) override;

    /** The system's code as a translated text for the user. Main thread. */
    static void getErrorMessage(int32_t code, FString& text);

    DECLARE_CLASS(FNFileSystem, FFileSystem)
};

/** The disks, from static initialisation to exit. */
extern FNFileSystem* const gFileSystem;

}  // namespace Tessarine
