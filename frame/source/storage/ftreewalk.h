#pragma once
#include "pluginterfaces/base/smartpointer.h"
#include "storage/ffilesystem.h"
#include <set>
#include <string>
#include <vector>

namespace Tessarine {

/** A walk through all that lies below a folder of a file system: each folder before what it holds. Links are met, not followed.
    Names that lead elsewhere than into their folder ("", ".", "..", one with a "/") end it, and of several folders of one name
    only the first is entered: all of them lead there. */
class FTreeWalk {
public:
    /** The file system is borrowed. */
    FTreeWalk(FFileSystem* fileSystem, const FPath& base, bool withHidden);

    /** What was met last; null: that was all. Belongs to the walk until it moves. */
    FPath* current() const;
    FPath* next();
    /** What the current folder holds is passed over. */
    void skipFolder() { enter = false; }
    /** Something couldn't be walked: no path leads there, or it lies deeper than FFileSystem::kMaxDepth. */
    bool hasFailed() const { return failed; }
    /** The path below the base, of the current entry. */
    FPath relativePath() const;

private:
    struct Level {
        OPtr<FFileIterator> entries;
        std::set<std::u16string> entered;  // names of folders
    };
    bool enterFolder();
    bool open(const FPath& folder);
    void settle();

    FFileSystem* fileSystem;  // borrowed
    bool withHidden;
    bool enter = true, failed = false;
    std::vector<Level> levels;
};

}  // namespace Tessarine
