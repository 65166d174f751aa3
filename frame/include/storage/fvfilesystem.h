#pragma once
#include "pluginterfaces/base/smartpointer.h"
#include "storage/ffilesystem.h"
#include <string_view>
#include <vector>

namespace Tessarine {

/** A part of another file system that looks like a whole one: all below a folder, or what lies in an archive.

    Paths     are those below the root. An absolute one stands for itself, and must lie below the root too; ".." goes up to the
              root and no further.
    Links     that lead out of the root are as if they weren't there; they are looked at before each call.
    Writing   fails until it is enabled. */
class FVFileSystem : public FFileSystem {
public:
    /** Makes a file system of a file, with a reference for the caller; null: the file isn't one of these. */
    using Creator = FFileSystem* (*)(FPath*);
    /** What files of a type are as file systems. The type is borrowed for good. Start-up and main thread. */
    static void registerHandler(const FFileType* type, Creator creator);

    /** All of the target, which is shared; of the disks, from "/" on. */
    FVFileSystem(FFileSystem* target, bool writable = false);
    /** A folder of the disks, or a file that a handler knows. */
    FVFileSystem(const FPath* path, bool writable = false);
    ~FVFileSystem() override;

    /** There is something behind it: a folder, or an archive that could be opened. */
    bool isValid() const { return target; }
    FFileSystem* getTarget() const { return target; }
    const FPath& getRoot() const { return root; }
    /** Gives the old state. */
    bool enableWrite(bool state);

    /** The path on the target: an absolute one as it is, any other from the root on. */
    FPath translatePath(const FPath* path) const;
    /** The reverse; a path that doesn't lie below the root stays as it is. */
    FPath reverseTranslate(const FPath* path) const;

    FStream* createFile(FPath* path, int32_t mode, int32_t* error = nullptr) override;
    FStream* openFile(FPath* path, int32_t mode, int32_t* error = nullptr) override;
    bool closeFile(FStream* stream) override;
    bool removeFile(FPath* path) override;
    bool fileExists(FPath* path) override;
    bool renameFile(FPath* path, const tchar* newName) override;
    bool moveFile(FPath* from, FPath* to, bool overwrite) override;
    bool copyFile(FPath* from, FPath* to, UProgressHook* hook = nullptr, int32_t* error = nullptr) override;
    bool createDir(FPath* path) override;
    bool getDirName(FPath* path, FString& name) override;
    bool removeDir(FPath* path, bool withContent) override;
    bool getFileTimes(FPath* path, CmTime& created, CmTime& modified) override;
    int64_t getFileSize(FPath* path) override;
    int64_t getFileSize(FStream* stream) override;
    bool makeValidName(FString& name, tchar replacement = 0, bool trim = true) override;
    FFileIterator* newIterator(const FPath* folder, bool withHidden) override;
    using FFileSystem::copyFile;

    DECLARE_ABSTRACT_CLASS(FVFileSystem, FFileSystem)

private:
    friend class FVFileIterator;
    struct DiskRoot;

    bool locate(const FPath* path, FString& below) const;
    int64_t sizeAtOnce(const FPath* path) const;
    bool reach(const FPath* path, FPath& real) const;
    bool reachToWrite(const FPath* path, FPath& real) const;
    bool dropRoot(std::vector<std::u16string_view>& steps) const;

    IPtr<FFileSystem> target;
    FPath root;                          // a folder; empty: all of the target
    std::unique_ptr<DiskRoot> diskRoot;  // where root is a folder of the disks
    bool writable;
};

/** A walk over a folder of a virtual file system; its paths are those of that system. */
class FVFileIterator : public FFileIterator {
public:
    /** Takes the target's iterator over. */
    FVFileIterator(FVFileSystem* fileSystem, FFileIterator* inner);

    FPath* first() override { return show(inner->first()); }
    FPath* next() override { return show(inner->next()); }
    FPath* current() override { return present ? &shown : nullptr; }

    DECLARE_ABSTRACT_CLASS(FVFileIterator, FFileIterator)

private:
    FPath* show(FPath* found);

    IPtr<FVFileSystem> fileSystem;
    OPtr<FFileIterator> inner;
    FPath shown;
    bool present = false;
};

/** Copies all that lies below a folder of one file system to the top of another: folders, then their files. Links to
    files become files, others are passed over. hook hears of the files one by one. false: something couldn't be
    copied, the hook stopped it, or the target lies within the source; what was copied stays. An FVFileSystem as
    target keeps what the source calls its files inside a folder. */
bool FCopyFileSystem(FFileSystem* source, FPath* from, FFileSystem* target, UProgressHook* hook = nullptr);

}  // namespace Tessarine
