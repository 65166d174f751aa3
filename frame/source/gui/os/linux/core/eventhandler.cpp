#include "eventhandler.h"
#include "mountwatch.h"
#include "runloop.h"
#include <glib.h>

namespace Tessarine {

CoreEventHandler* CoreEventHandler::instance() {
    static constinit CoreEventHandler handler;
    return &handler;
}

int32_t CoreEventHandler::queryInterface(const char* iid, void** obj) {
    const bool known =
        answerInterface<IPlatformEventHandler>(this, iid, obj) || answerInterface<FUnknown>(this, iid, obj);
    return known ? kResultOk : noInterface(obj);
}

bool CoreEventHandler::open(int32_t /*flags*/) {
    quitting = false;
    return RunLoop::instance().open();
}

bool CoreEventHandler::close(bool /*force*/) {
    watchMounts(false);
    RunLoop::instance().close();
    return true;
}

void CoreEventHandler::runPlatformEventLoop() {
    while (!quitting)
        g_main_context_iteration(nullptr, TRUE);
}

void CoreEventHandler::quitPlatformEventLoop() {
    quitting = true;
    g_main_context_wakeup(nullptr);
}

void CoreEventHandler::doNextEvent() {
    g_main_context_iteration(nullptr, FALSE);
}

bool CoreEventHandler::eventPending() {
    return g_main_context_pending(nullptr);
}

}  // namespace Tessarine
