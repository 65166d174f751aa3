#include "base/source/timer.h"
#include "base/source/hooks.h"

namespace Tessarine {

IMPLEMENT_ABSTRACT_CLASS(Timer, CmObject)

constinit bool DisableDispatchingTimers::timersEnabled = true;

Timer* Timer::create(ITimerCallback* callback, uint32_t periodMs) {
    return callback && gRunLoopHooks.createTimer ? gRunLoopHooks.createTimer(callback, periodMs) : nullptr;
}

}  // namespace Tessarine
