#pragma once
#include <cstdint>

namespace Tessarine {
class ITimerCallback;
class Timer;

/** What the base asks of the main run loop. All null until a platform fills them; then everything behaves as on a machine
    without timers, and queued work waits for whoever delivers it. */
struct RunLoopHooks {
    /** A repeating timer of the main thread; null when it can't be had. The first firing is one period from now. */
    Timer* (*createTimer)(ITimerCallback* callback, uint32_t periodMs) = nullptr;
    /** Posted messages or deferred updates wait: serve them at the next turn of the loop. Any thread. */
    void (*wakeUpdates)() = nullptr;
    /** There is something to do at idle time now. Any thread. */
    void (*wakeIdle)() = nullptr;
};
extern RunLoopHooks gRunLoopHooks;

inline void wakeUpdates() {
    if (gRunLoopHooks.wakeUpdates)
        gRunLoopHooks.wakeUpdates();
}

inline void wakeIdle() {
    if (gRunLoopHooks.wakeIdle)
        gRunLoopHooks.wakeIdle();
}

}  // namespace Tessarine
