#include "gui/drawing/ufontcollection.h"
#include "gui/drawing/ufontfacecache.h"
#include "gui/drawing/uphysicaldrawdevice.h"
#include "gui/uctrler.h"
#include "pluginterfaces/filesystem/ipath.h"
#include "pluginterfaces/graphics/ifactory.h"
#include "storage/ffilesystem.h"
#include "storage/fpath.h"

namespace Tessarine {
using Graphics::IFontDescription;

namespace {
Graphics::IFontCollection* fonts() {
    Graphics::IFactory* factory = UPhysicalDrawDevice::getFactory(true);
    return factory ? factory->getFontCollection() : nullptr;
}

OPtr<IFontDescription> descriptionAt(uint32_t index) {
    Graphics::IFontCollection* all = fonts();
    return all ? all->getFontByIndex(index) : nullptr;
}

bool setup(UFont& font, const tchar* name, Graphics::IFontFace* face) {
    if (!face)
        return false;
    font.setName(name);
    font.setGraphicsObject(face);
    return true;
}

/** One file of a walk. */
class FilePath : public FObject, public IPath {
public:
    FORWARD_REFCOUNT(FObject)
    explicit FilePath(const FPath& path) { path.getFullPath(text); }
    int32_t queryInterface(const char* iid, void** obj) override {
        return answerInterface<IPath>(this, iid, obj) ? kResultOk : FObject::queryInterface(iid, obj);
    }
    int32_t getFullPath(IString* result) override {
        if (!result)
            return kInvalidArgument;
        result->setText16(text.text16());
        return kResultOk;
    }

private:
    FString text;
};

class FolderFiles : public FObject, public IFileIterator {
public:
    FORWARD_REFCOUNT(FObject)
    explicit FolderFiles(const FPath& folder) : files(gFileSystem->newIterator(&folder, false)) {}
    int32_t queryInterface(const char* iid, void** obj) override {
        return answerInterface<IFileIterator>(this, iid, obj) ? kResultOk : FObject::queryInterface(iid, obj);
    }
    IPath* next() override {
        const FPath* path = files ? begun ? files->next() : files->first() : nullptr;
        begun = true;
        return path ? new FilePath(*path) : nullptr;
    }

private:
    OPtr<FFileIterator> files;
    bool begun = false;
};
}  // namespace

uint32_t UFontCollection::count() {
    Graphics::IFontCollection* all = fonts();
    return all ? all->countFonts() : 0;
}

bool UFontCollection::getName(uint32_t index, String& name) {
    const OPtr<IFontDescription> description = descriptionAt(index);
    if (description)
        name.assign(description->getName());
    return description;
}

int32_t UFontCollection::getIndexByName(const tchar* name) {
    const ConstString wanted(name);
    FString each;
    for (uint32_t index = 0; index < count(); ++index)
        if (getName(index, each) && each == wanted)
            return int32_t(index);
    return -1;
}

bool UFontCollection::setupFontByIndex(UFont& font, uint32_t index) {
    const OPtr<IFontDescription> description = descriptionAt(index);
    return description && setup(font, description->getName(),
                                UFontFaceCache::instance().getFontFace(description, font.getSize(), font.getStyle()));
}

bool UFontCollection::setupFontByName(UFont& font, const tchar* name) {
    return setup(font, name,
                 UFontFaceCache::instance().getFontFace(ConstString(name), font.getSize(), font.getStyle()));
}

bool UFontCollection::registerApplicationFonts() {
    static bool registered = false;
    const FNPath* application = gController ? UController::getAppPath() : nullptr;
    Graphics::IFontCollection* all = fonts();
    if (registered || !application || !all)
        return false;
    registered = true;
    FNPath folder(*application);
    folder.goDown(u"fonts");
    const OPtr<FolderFiles> files(new FolderFiles(folder));
    if (all->registerFonts(files) != kResultOk)
        return false;
    termUFontFaceCache();  // names may mean other fonts now
    return true;
}

}  // namespace Tessarine
