#include "base/fdynlib.h"
#include "collect/cmlinkedlist.h"

namespace Tessarine {
namespace {
constexpr const char* kBundleExtension = "bundle";

CmLinkedList& addedFolders() {
    static CmLinkedList folders;
    folders._ownsObjects = CmContainer::kTakesOver;
    return folders;
}

using Open = FLoadableBundle* (*)(const char* path, std::string& error);

/** A name in a folder, or whole; null: there is no such code. */
FLoadableBundle* openFrom(const FNPath* folder, const tchar* name, const char* extension, Open open) {
    if (!open || !extension)
        return nullptr;
    String file(name);
    file.append(".").append(extension);
    char platformPath[FNPath::kPlatformPathLength];
    std::string ignored;
    const bool known = FNPath(file.text16(), folder, kFilePath).toPlatformPath(platformPath);
    return known ? open(platformPath, ignored) : nullptr;
}
}  // namespace

void FDynLibrary::addFolder(const FNPath& folder) {
    addedFolders().append(folder.newCopy());
}

bool FDynLibrary::init(const tchar* name, bool isAbsolute) {
    if (bundle || !name || !*name)
        return false;
    if (isAbsolute)
        return loadFrom(nullptr, name);
    FNPath program;
    if (program.getStandardFolder(kApplicationFolder, nullptr, false) && loadFrom(&program, name))
        return true;
    for (CmLinkedListIterator each(addedFolders()); !each.done();)
        if (loadFrom(static_cast<FNPath*>(each.next()), name))
            return true;
    return false;
}

bool FDynLibrary::loadFrom(const FNPath* folder, const tchar* name) {
    return take(openFrom(folder, name, kBundleExtension, gBundleHooks.openBundle)) ||
           take(openFrom(folder, name, gBundleHooks.libraryExtension, gBundleHooks.openLibrary));
}

bool FDynLibrary::take(FLoadableBundle* opened) {
    const OPtr<FLoadableBundle> owned(opened);
    std::string ignored;
    if (opened && opened->load(ignored))
        bundle = owned;
    return bundle;
}

void FDynLibrary::unload() {
    if (bundle)
        bundle->unload();
    bundle = nullptr;
}

}  // namespace Tessarine
