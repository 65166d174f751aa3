#pragma once
#include "storage/ffilesystem.h"

namespace Tessarine {

/** Writes a file whole or not at all. The bytes go to a file beside the target, which takes its place only on
    commit(); so whoever reads the target, and whatever becomes of the process or the disk, there is the old file or
    the new one.

    Use       FAsideFile file(gFileSystem, path); write to file.getStream() if it isn't null; file.commit().
    Names     a new one each time, so that two savers never write into one file. Files that an earlier crash left
              beside the target are removed first; of two savers at one time the one that began last wins, and the
              other's commit fails.
    Links     a link at the target is replaced by the file.
    Threads   one at a time. */
class FAsideFile {
public:
    /** The file system is borrowed, the path copied. */
    FAsideFile(FFileSystem* fileSystem, const FPath& target);
    /** Without a commit nothing has happened. */
    ~FAsideFile();
    FAsideFile(const FAsideFile&) = delete;
    FAsideFile& operator=(const FAsideFile&) = delete;

    /** Borrowed until commit(); null: the file can't be created. */
    FStream* getStream() const { return stream; }
    /** Brings the bytes to the disk and the file to its place. false: something wasn't written; the old file stays. */
    bool commit();

private:
    void removeStaleFiles();

    FFileSystem* fileSystem;  // borrowed
    FPath target, aside;
    FStream* stream = nullptr;  // owned; its file system ends it
};

}  // namespace Tessarine
