#pragma once
#include "base/source/cmobject.h"

namespace Tessarine {
class Timer;

class ITimerCallback {
public:
    virtual void onTimer(Timer* timer) = 0;

protected:
    ~ITimerCallback() = default;
};

/** A repeating timer of the main thread; it fires in modal loops too. Ends with stop(), then release(). */
class Timer : public CmObject {
public:
    DECLARE_ABSTRACT_CLASS(Timer, CmObject)

    virtual void stop() = 0;

    /** First firing one period from now. The callback is borrowed and must outlive the timer or stop it. Null: there is no
        run loop to carry it. */
    static Timer* create(ITimerCallback* callback, uint32_t periodMs);
};

/** While one exists, no timer fires; scopes may nest. Main thread. */
class DisableDispatchingTimers {
public:
    DisableDispatchingTimers() : before(timersEnabled) { timersEnabled = false; }
    ~DisableDispatchingTimers() { timersEnabled = before; }
    DisableDispatchingTimers(const DisableDispatchingTimers&) = delete;
    DisableDispatchingTimers& operator=(const DisableDispatchingTimers&) = delete;

    /** Carriers look at it before each callback. */
    static bool timersEnabled;

private:
    bool before;
};

}  // namespace Tessarine
