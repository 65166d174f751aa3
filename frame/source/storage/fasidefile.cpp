#include "storage/fasidefile.h"
#include "pluginterfaces/base/smartpointer.h"
#include "storage/fbstream.h"

namespace Tessarine {
namespace {
// "Setup.xml.0123456789ABCDEF0123456789ABCDEF.aside"
constexpr const tchar* kAsideEnding = u".aside";
constexpr uint32_t kMarkLength = 32;
constexpr uint32_t kMostOfName = 64;  // characters: with mark and ending, a name that disks take in any script

/** What names aside begin with: the target's own name, or as much as leaves room for the rest. */
FString stemOf(const FPath& target) {
    FString stem(target.getName());
    if (stem.length() <= kMostOfName)
        return stem;
    const bool halfPair = (stem.getChar16(kMostOfName) & 0xFC00) == 0xDC00;
    stem.remove(halfPair ? kMostOfName - 1 : kMostOfName);
    return stem;
}

FString newAsideName(const FPath& target) {
    char mark[kMarkLength + 1];
    FUID id;
    id.generate();
    id.toString(mark);
    FString name = stemOf(target);
    name += u".";
    name += FString(mark);
    name += kAsideEnding;
    return name;
}

bool isMark(const ConstString& text) {
    for (uint32_t i = 0; i < kMarkLength; ++i) {
        const tchar digit = text.getChar16(i);
        if (!ConstString::isCharDigit(digit) && (digit < u'A' || digit > u'F'))
            return false;
    }
    return true;
}

bool isAsideName(const ConstString& name, const ConstString& stem) {
    const uint32_t markAt = stem.length() + 1;
    const ConstString ending(kAsideEnding);
    return name.length() == markAt + kMarkLength + ending.length() && name.startsWith(stem) &&
           name.getChar16(markAt - 1) == u'.' && isMark(ConstString(name, int32_t(markAt))) && name.endsWith(ending);
}

FPath folderOf(const FPath& file) {
    FPath folder(file);
    if (!folder.ascend())
        folder.fromString(u".", kFolderPath);
    return folder;
}
}  // namespace

FAsideFile::FAsideFile(FFileSystem* fileSystem, const FPath& target)
    : fileSystem(fileSystem), target(target), aside(target) {
    aside.setName(newAsideName(target).text16());
    removeStaleFiles();
    stream = fileSystem->createFile(&aside, kOpenWrite);
}

FAsideFile::~FAsideFile() {
    if (!stream)
        return;
    fileSystem->closeFile(stream);
    fileSystem->removeFile(&aside);
}

bool FAsideFile::commit() {
    if (!stream)
        return false;
    const bool written = stream->flush();
    const bool closed = fileSystem->closeFile(stream);
    stream = nullptr;
    if (written && closed && fileSystem->moveFile(&aside, &target, true))
        return true;
    fileSystem->removeFile(&aside);
    return false;
}

void FAsideFile::removeStaleFiles() {
    const FPath folder = folderOf(target);
    const OPtr<FFileIterator> files(fileSystem->newIterator(&folder, true));
    if (!files)
        return;
    const FString stem = stemOf(target);
    for (FPath* file = files->first(); file; file = files->next())
        if (isAsideName(file->getName(), stem))
            fileSystem->removeFile(file);
}

}  // namespace Tessarine
