#include "gui/os/linux/core/platformcore.h"
#include "base/source/hooks.h"
#include "eventhandler.h"
#include "folders.h"
#include "gui/os/linux/core/modulebundle.h"
#include "mountwatch.h"
#include "runloop.h"
#include "storage/hooks.h"

namespace Tessarine {
namespace {
IPlatformEventHandler* eventHandler() {
    return CoreEventHandler::instance();
}

void wakeForUpdates() {
    RunLoop::instance().wakeUpdates();
}

void wakeForIdle() {
    RunLoop::instance().wakeIdle();
}
}  // namespace

void installTessarinePlatformCore() {
    gRunLoopHooks.createTimer = LinuxTimer::create;
    gRunLoopHooks.wakeUpdates = wakeForUpdates;
    gRunLoopHooks.wakeIdle = wakeForIdle;
    gStorageHooks.watchMounts = watchMounts;
    gControllerHooks.eventHandler = eventHandler;
    gControllerHooks.folder = findPlatformFolder;
    gControllerHooks.programName = findProgramName;
    fillBundleHooks();
}

}  // namespace Tessarine
