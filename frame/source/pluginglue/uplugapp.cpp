#include "pluginglue/uplugapp.h"
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

}  // namespace Tessarine
