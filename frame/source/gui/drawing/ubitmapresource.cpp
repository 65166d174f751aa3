#include "gui/drawing/ubitmapresource.h"
#include "gui/drawing/hooks.h"
#include "gui/uctrler.h"
#include "storage/fbstream.h"
#include "storage/ffilesystem.h"
#include <cstdio>

namespace Tessarine {

IMPLEMENT_ABSTRACT_CLASS(UBitmapResource, UBitmap)

UBitmapResource::UBitmapResource(int32_t id, void* module) : id(id) {
    const OPtr<FStream> resource(gDrawingHooks.openResource ? gDrawingHooks.openResource(id, module) : nullptr);
    if (!resource || !loadFromStream(resource))
        loadFromApplication();
}

void UBitmapResource::loadFromApplication() {
    const FNPath* application = gController ? UController::getAppPath() : nullptr;
    if (!application)
        return;
    char name[24] = "";
    std::snprintf(name, sizeof name, "bitmap%05d", int(id));
    FNPath path(*application);
    path.goDown(u"Resources");
    path.descend(FString(name).text16(), kFilePath);
    FStream* file = gFileSystem->openFile(&path, kOpenRead);
    loadFromStream(file);
    gFileSystem->closeFile(file);
}

}  // namespace Tessarine
