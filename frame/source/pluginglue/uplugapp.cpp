#include "pluginglue/uplugapp.h"
#include "base/fdefaults.h"
#include "base/source/finitializer.h"

namespace Tessarine {
namespace {
constexpr uint32_t kProcedures = 99;  // all but the last ones
}

IMPLEMENT_ABSTRACT_CLASS(UPluginApplication, UApplication)

bool UPluginApplication::initPlugin() {
    preInit();
    if (isFailed) {
        OneTimeProcedure::cancel();
        return false;
    }
    if (!OneTimeProcedure::initialize(kProcedures))
        return false;
    postInit();
    return true;
}

void UPluginApplication::preInit() {
    UApplication::preInit();
    if (!isFailed)
        FDefaultPool::use()->load();
}

void UPluginApplication::postInit() {
    UApplication::postInit();
    if (gDefaults)
        gDefaults->postInit();
}

}  // namespace Tessarine
