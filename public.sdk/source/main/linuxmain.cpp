#include "public.sdk/source/main/linuxmain.h"
#include "base/fdefaults.h"
#include "gui/os/linux/core/platformcore.h"
#include <cstdio>

using namespace Tessarine;

namespace Tessarine {
IModuleBundle* ghInst = nullptr;
IModuleBundle* moduleHandle = nullptr;
char gPath[2048] = {};
int32_t bundleRefCounter = 0;
std::vector<IModuleBundle*> gBundleRefs;

namespace {
void keepAsModule(IModuleBundle* bundle) {
    ghInst = bundle;
    moduleHandle = bundle;
    std::snprintf(gPath, sizeof(gPath), "%s", bundle->getPath());
}
}  // namespace
}  // namespace Tessarine

bool bundleEntry(void* bundleRef) {
    if (!bundleRef)
        return InitModule();
    auto* bundle = static_cast<IModuleBundle*>(bundleRef);
    ++bundleRefCounter;
    bundle->addRef();
    gBundleRefs.push_back(bundle);
    if (!moduleHandle)
        keepAsModule(bundle);
    FDefaultPool::isGuest = true;
    installTessarinePlatformCore();  // this copy of the framework has hooks of its own to fill
    return InitModule();
}

bool bundleExit() {
    if (!DeinitModule())
        return false;
    if (--bundleRefCounter != 0)
        return true;
    for (IModuleBundle* bundle : gBundleRefs)
        bundle->release();
    gBundleRefs.clear();
    return true;
}

bool InitModule() {
    return true;
}

bool DeinitModule() {
    return true;
}
