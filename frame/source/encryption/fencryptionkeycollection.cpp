#include "encryption/fencryptionkeycollection.h"
#include "collect/cmstring.h"
#include "pluginterfaces/base/smartpointer.h"
#include "storage/fbstream.h"
#include "storage/ffilesystem.h"
#include <string>

namespace Tessarine {
namespace {
constexpr int64_t kMaxFileSize = 0x10000;  // bytes; a key has some dozens
constexpr const tchar* kEnding = u".key";
constexpr const tchar* kFolder = u"Keys";

/** The digits of a key file; empty when it can't be one. */
std::string digitsIn(FPath& file) {
    FStream* stream = gFileSystem->openFile(&file, kOpenRead);
    if (!stream)
        return {};
    std::string text(kMaxFileSize, '\0');
    const int64_t size = stream->readRaw(text.data(), kMaxFileSize);
    gFileSystem->closeFile(stream);
    text.resize(static_cast<size_t>(size < kMaxFileSize ? size : 0));
    const size_t last = text.find_last_not_of(" \t\r\n");
    text.resize(last == text.npos ? 0 : last + 1);
    return text;
}
}  // namespace

IMPLEMENT_CLASS(FEncryptionKeyCollection, CmObject)

FEncryptionKeyCollection::FEncryptionKeyCollection() {
    keys._ownsObjects = CmContainer::kTakesOver;
}

const FEncryptionKey* FEncryptionKeyCollection::lookupKey(const tchar* name) const {
    const CmString wanted(name);
    return static_cast<const FEncryptionKey*>(keys.lookupObject(&wanted));
}

bool FEncryptionKeyCollection::setKey(const tchar* name, const FEncryptionKey& key) {
    OPtr<CmString> keyName(new CmString(name));
    OPtr<CmObject> copy(key.newCopy());
    keys.remove(keyName.get());
    if (keyName->isEmpty() || !keys.add(keyName, copy))
        return false;
    keyName.detach();
    copy.detach();
    return true;
}

bool FEncryptionKeyCollection::scanFolder(FNPath* folder) {
    const OPtr<FFileIterator> files(folder ? gFileSystem->newIterator(folder, false) : nullptr);
    if (!files)
        return false;
    const ConstString ending(kEnding);
    for (FPath* file = files->first(); file; file = files->next()) {
        String name(file->getName());
        FEncryptionKey key;
        if (!file->isFile() || !name.endsWith(ending, kIgnoreCase) || !key.setPlainKey(digitsIn(*file).c_str()) ||
            key.getBytes().getFillSize() == 0)
            continue;
        name.remove(name.length() - ending.length());
        setKey(name.text16(), key);
    }
    return true;
}

void FEncryptionKeyCollection::scanSystemPreferences() {
    for (const int32_t number : {kCommonFolder, kUserFolder}) {
        FNPath folder(kFolderPath);
        if (folder.getStandardFolder(number, kFolder, false))
            scanFolder(&folder);
    }
}

}  // namespace Tessarine
