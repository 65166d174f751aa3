#include "ftreewalk.h"
#include "pathsteps.h"

namespace Tessarine {
FTreeWalk::FTreeWalk(FFileSystem* fileSystem, const FPath& base, bool withHidden)
    : fileSystem(fileSystem), withHidden(withHidden) {
    open(base);
    settle();
}

FPath* FTreeWalk::current() const {
    return levels.empty() ? nullptr : levels.back().entries->current();
}

FPath* FTreeWalk::next() {
    if (levels.empty())
        return nullptr;
    if (!enterFolder())
        levels.back().entries->next();
    enter = true;
    settle();
    return current();
}

FPath FTreeWalk::relativePath() const {
    FPath path;
    for (const auto& level : levels)
        path.descend(level.entries->current()->getName(), level.entries->current()->getKind());
    return path;
}

bool FTreeWalk::enterFolder() {
    const FPath* entry = current();
    if (!enter || !entry->isFolder())
        return false;
    if (levels.back().entered.insert(entry->getName()).second)
        return open(*entry);
    failed = true;
    return false;
}

bool FTreeWalk::open(const FPath& folder) {
    const OPtr<FFileIterator> entries(
        levels.size() < FFileSystem::kMaxDepth ? fileSystem->newIterator(&folder, withHidden) : nullptr);
    if (!entries) {
        failed = true;
        return false;
    }
    entries->first();
    levels.push_back({entries, {}});
    return true;
}

/** Leaves the folders that are through. */
void FTreeWalk::settle() {
    while (!levels.empty() && !current()) {
        levels.pop_back();
        if (!levels.empty())
            levels.back().entries->next();
    }
    if (levels.empty() || isPlainStep(current()->getName()))
        return;
    failed = true;
    levels.clear();
}

}  // namespace Tessarine
