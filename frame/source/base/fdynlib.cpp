#include "base/fdynlib.h"
#include <algorithm>
#include <vector>

namespace Tessarine {
namespace {
constexpr const char* kBundleExtension = "bundle";

std::vector<FNPath>& addedFolders() {
    static std::vector<FNPath> folders;
    return folders;
}

/** An empty one stands for that of a whole path. */
std::vector<FNPath> foldersToLookInto(bool isAbsolute) {
    if (isAbsolute)
        return {FNPath()};
    std::vector<FNPath> folders = addedFolders();
    if (FNPath program; program.getStandardFolder(kApplicationFolder, nullptr, false))
        folders.insert(folders.begin(), program);
    return folders;
}

using Open = FLoadableBundle* (*)(const char* path, std::string& error);

/** Null: there is no such code. */
FLoadableBundle* openFrom(const FNPath& folder, const tchar* name, const char* extension, Open open) {
    if (!open || !extension)
        return nullptr;
    String file(name);
    file.append(".").append(extension);
    char platformPath[FNPath::kPlatformPathLength];
    std::string ignored;
    const bool known = FNPath(file.text16(), &folder, kFilePath).toPlatformPath(platformPath);
    return known ? open(platformPath, ignored) : nullptr;
}
}  // namespace

void FDynLibrary::addFolder(const FNPath& folder) {
    addedFolders().push_back(folder);
}

bool FDynLibrary::init(const tchar* name, bool isAbsolute) {
    if (bundle || !name || !*name)
        return false;
    const std::vector<FNPath> folders = foldersToLookInto(isAbsolute);
    const auto loadAs = [&](const char* extension, Open open) {
        return std::ranges::any_of(folders,
                                   [&](const FNPath& folder) { return take(openFrom(folder, name, extension, open)); });
    };
    return loadAs(kBundleExtension, gBundleHooks.openBundle) ||
           loadAs(gBundleHooks.libraryExtension, gBundleHooks.openLibrary);
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
