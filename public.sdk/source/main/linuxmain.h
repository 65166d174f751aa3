#pragma once
#include "pluginterfaces/base/imodulebundle.h"
#include "public.sdk/source/main/export.h"
#include <vector>

/** The module's door. A host calls bundleEntry once for each reference that it takes on the bundle, then
    GetPluginFactory, and bundleExit once for each bundleEntry. Main thread only. */

namespace Tessarine {

/** The bundle of the first entry, for readers of the module's own resources. Both keep it for good, also after the last
    exit, when its reference is gone. */
extern IModuleBundle* ghInst;
extern IModuleBundle* moduleHandle;
/** The path of that bundle, cut to its room. */
extern char gPath[2048];
/** Entries that no exit has answered yet; may fall below 0 when entries had no bundle. */
extern int32_t bundleRefCounter;
/** One reference for each entry, released together by the last exit. */
extern std::vector<IModuleBundle*> gBundleRefs;

}  // namespace Tessarine

extern "C" {
/** bundleRef is an IModuleBundle, whose reference is taken; null changes nothing. Answers InitModule(). */
TALV_EXPORT bool bundleEntry(void* bundleRef);
/** false: DeinitModule() refused, and everything stays. */
TALV_EXPORT bool bundleExit();
TALV_EXPORT bool InitModule();
TALV_EXPORT bool DeinitModule();
}
