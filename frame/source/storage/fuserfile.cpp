#include "fuserfile.h"
#include "base/utranslatedstring.h"
#include "pluginterfaces/base/smartpointer.h"
#include "storage/fbstream.h"
#include "storage/hooks.h"
#include <string>

namespace Tessarine {
namespace {
constexpr UTranslatedString kAskReplace("There is already a file of this name. Do you want to replace it?");
constexpr const char* kOldSuffix = "_old";

bool isFileName(const ConstString& name) {
    return !name.isEmpty() && !name.contains("/") && name.compare(".") != 0 && name.compare("..") != 0;
}

bool userAgrees(const FNPath& path) {
    return !gStorageHooks.askUser || gStorageHooks.askUser(path, kAskReplace);
}

FNPath userPath(const char* name, const FFileType& type) {
    return userFilePath(name, type, kUserFolder, false);
}

bool copyFile(FNPath& from, const FNPath& to) {
    FStream* source = gFileSystem->openFile(&from, kOpenRead);
    if (!source)
        return false;
    const bool copied =
        writeUserFile(to, [source](FStream& target) { return source->copyTo(target) && source->verify(); });
    gFileSystem->closeFile(source);
    return copied;
}
}  // namespace

FNPath userFilePath(const char* name, const FFileType& type, int32_t folder, bool create) {
    String fileName(name ? name : "");
    if (!isFileName(fileName) || !fileName.toWideString())
        return FNPath(kFilePath);
    fileName += ".";
    fileName += type.getDosType();
    FNPath path(fileName.text16(), folder, kFilePath, nullptr, create);
    path.setFileType(type);
    return path;
}

FNPath createUserFile(const char* name, const FFileType& type, bool ask) {
    FNPath path = userFilePath(name, type, kUserFolder, true);
    if (!ask || path.isEmpty() || !gFileSystem->fileExists(&path))
        return path;
    const std::string keptName = std::string(name) + kOldSuffix;
    return userAgrees(path) && copyFile(path, userPath(keptName.c_str(), type)) ? path : FNPath(kFilePath);
}

FStream* openUserFile(const char* name, const FFileType& type) {
    for (const int32_t folder : {kUserFolder, kCommonFolder}) {
        FNPath path = userFilePath(name, type, folder, false);
        if (path.isEmpty() || !gFileSystem->fileExists(&path))
            continue;  // which is no failure to be shown
        if (FStream* stream = gFileSystem->openFile(&path, kOpenRead))
            return stream;
    }
    return nullptr;
}

bool userFileExists(const char* name, const FFileType& type) {
    FNPath path = userPath(name, type);
    return !path.isEmpty() && gFileSystem->fileExists(&path);
}

bool removeUserFile(const char* name, const FFileType& type) {
    FNPath path = userPath(name, type);
    return !path.isEmpty() && gFileSystem->removeFile(&path);
}

bool renameUserFile(const char* name, const char* newName, const FFileType& type) {
    FNPath path = userPath(name, type);
    const FNPath target = userPath(newName, type);
    return !path.isEmpty() && !target.isEmpty() && gFileSystem->renameFile(&path, target.getName());
}

bool copyUserFile(const char* name, const FFileType& from, const FFileType& to) {
    FNPath path = userPath(name, from);
    return !path.isEmpty() && copyFile(path, userPath(name, to));
}

}  // namespace Tessarine
