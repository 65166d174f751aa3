#include "fpresetfiles.h"
#include "base/fdefaults.h"
#include "storage/fasidefile.h"
#include "storage/ffilesystem.h"

namespace Tessarine {
namespace {
constexpr const char* kRootTag = "Presets";
constexpr const char* kPreset = "Preset";  // the global root, and the object's key in it
constexpr uint32_t kMaxFileName = 255;     // bytes, on all disks that we know

/** Characters at the start of text that take so many bytes at most in UTF-8; no pair is cut. */
uint32_t charactersWithin(const ConstString& text, uint32_t bytes) {
    uint32_t count = 0;
    for (; count < text.length(); ++count) {
        const tchar c = text.getChar16(count);
        const bool isHigh = c >= 0xD800 && c < 0xDC00 && count + 1 < text.length();
        const uint32_t taken = isHigh ? 4 : c < 0x80 ? 1 : c < 0x800 ? 2 : 3;
        if (taken > bytes)
            break;
        bytes -= taken;
        count += isHigh;
    }
    return count;
}

FString fileNameOf(const ConstString& name, const FFileType& type) {
    FString fileName(name);
    fileName += ".";
    fileName += type.getDosType();
    return fileName;
}

bool exists(FNPath& path) {
    return gFileSystem->fileExists(&path) || gFileSystem->dirExists(&path);
}
}  // namespace

const FFileType presetFileType(u"Tessarine Preset File", u"xml", nullptr, 0x54455854);
const FFileType ramPresetListFileType(u"Tessarine Preset File", u"pxml", nullptr, 0x54455854);

IMPLEMENT_ABSTRACT_CLASS(FFilePresetList, FPresetList)

bool presetFileName(const tchar* text, uint32_t reserved, FString& name) {
    if (!FPresetList::isValidName(text))
        return false;
    name = text;
    gFileSystem->makeValidName(name);
    name.remove(charactersWithin(name, kMaxFileName - reserved));
    if (name.isEmpty() || name.compare(u".") == 0 || name.compare(u"..") == 0)
        return false;
    if (name.getChar16(0) == u'.')
        name.setChar16(0, u'_');  // a hidden file would not be found again
    return true;
}

FNPath presetPath(const FNPath& folder, const ConstString& name, const FFileType& type) {
    FNPath path(fileNameOf(name, type).text16(), &folder, kFilePath);
    path.setFileType(type);
    return path;
}

bool savePresetFile(const FNPath& path, const char* root, CmObject& object) {
    FAsideFile file(gFileSystem, path);
    if (!file.getStream())
        return false;
    FXmlArchive archive(file.getStream(), true);
    return archive.addGlobalRoot(root, &object) && archive.save(kRootTag) && file.commit();
}

bool loadPresetFile(FPath& path, const char* root, CmObject& object) {
    FStream* stream = gFileSystem->openFile(&path, kOpenRead);
    if (!stream)
        return false;
    bool loaded = false;
    {
        FXmlArchive archive(stream, false);
        loaded = archive.load(kRootTag) && archive.isWhole() && archive.getGlobalRoot(root, &object);
    }
    gFileSystem->closeFile(stream);
    return loaded;
}

FFilePresetList::FFilePresetList(const tchar* id, const FNPath& folder, bool writable)
    : FPresetList(id), folder(new FNPath(folder)), writable(writable) {
    this->folder->setKind(kFolderPath);
}

FNPath FFilePresetList::pathOf(const FPreset& preset) const {
    return presetPath(*folder, ConstString(preset.getName()), presetFileType);
}

void FFilePresetList::refresh() {
    if (!scanned)
        scan();
}

void FFilePresetList::scan() {
    scanned = true;
    const OPtr<FFileIterator> files(gFileSystem->newIterator(folder, false));
    for (FPath* found = files ? files->first() : nullptr; found; found = files->next())
        addFound(*found);
    items.quickSort();
}

/** A link to a folder may lead back here. */
void FFilePresetList::addFound(FPath& found) {
    FNPath path(found.getName(), folder, found.getKind());
    if (found.isFolder()) {
        insertAt(new FFilePresetList(found.getName(), path, writable), -1);
        return;
    }
    FString name;
    path.setFileType(presetFileType);
    path.getNameWithoutExtension(name, true);
    path.setKind(kFilePath);
    if (!FPresetList::isValidName(name.text16()) || !(fileNameOf(name, presetFileType) == path.getFileName()) ||
        !gFileSystem->fileExists(&path))
        return;
    insertAt(new FPreset(new FNPath(path), name.text16(), FPreset::kCanModify | FPreset::kRenamed), -1);
}

CmObject* FFilePresetList::getPresetObject(int32_t index) {
    FPreset* preset = getPreset(index);
    auto* unread = preset ? classCast<FNPath>(preset->getObject()) : nullptr;
    FNPath path = preset ? pathOf(*preset) : FNPath(kFilePath);
    if (!unread || !(*unread == path))
        return preset ? preset->getObject() : nullptr;
    const OPtr<FAttributes> bag(new FAttributes);
    CmObject* object = loadPresetFile(path, kPreset, *bag) ? bag->getObject(kPreset) : nullptr;
    if (!object)
        return nullptr;
    object->addRef();
    preset->setObject(object);
    return object;
}

bool FFilePresetList::setPresetName(int32_t index, const tchar* text) {
    FPreset* preset = getPreset(index);
    FString newName;
    if (!writable || !preset || !preset->canModify() || !presetFileName(text, kPresetSuffix, newName))
        return false;
    FNPath path = pathOf(*preset), target = presetPath(*folder, newName, presetFileType);
    if (!(path == target)) {
        target.uniqueName();
        if (!gFileSystem->renameFile(&path, target.getName()))
            return false;
    }
    target.getNameWithoutExtension(newName, true);
    if (auto* unread = classCast<FNPath>(preset->getObject()); unread && *unread == path)
        preset->setObject(new FNPath(target));
    return FPresetList::setPresetName(index, newName.text16());
}

int32_t FFilePresetList::addPreset(CmObject* object, const tchar* text, bool canModify, int32_t index) {
    const OPtr<CmObject> held(object);
    FString fileName;
    refresh();
    if (!writable || !object || !presetFileName(text, kPresetSuffix, fileName) || !gFileSystem->createDir(folder))
        return -1;
    FNPath path = presetPath(*folder, fileName, presetFileType);
    path.uniqueName();
    const OPtr<FAttributes> bag(new FAttributes);
    bag->setObject(kPreset, object);
    if (!savePresetFile(path, kPreset, *bag))
        return -1;
    path.getNameWithoutExtension(fileName, true);
    object->addRef();
    return FPresetList::addPreset(object, fileName.text16(), canModify, index);
}

bool FFilePresetList::removePresetAt(int32_t index) {
    const FPreset* preset = getPreset(index);
    if (!writable || !preset)
        return false;
    FNPath path = pathOf(*preset);
    const bool isGone = gFileSystem->removeFile(&path) || !exists(path);
    return isGone && FPresetList::removePresetAt(index);
}

FPresetList* FFilePresetList::addSubList(const tchar* text) {
    FString folderName;
    if (!presetFileName(text, kPresetSuffix, folderName))
        return nullptr;
    if (FPresetList* known = getSubListByName(folderName.text16()))
        return known;
    FNPath path(folderName.text16(), folder, kFolderPath);
    if (!writable || !gFileSystem->createDir(&path))
        return nullptr;
    auto* list = new FFilePresetList(folderName.text16(), path, writable);
    insertAt(list, -1);
    return list;
}

}  // namespace Tessarine
