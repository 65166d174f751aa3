#pragma once
#include "base/source/timer.h"

namespace Tessarine {

namespace SystemTime {
/** Milliseconds of a clock that never steps back; wraps at 32 bits. Any thread. */
uint32_t getTicks();
}  // namespace SystemTime

/** A 31-bit millisecond clock and its comparisons on the circle, by the short way round. */
namespace UTicks {
int32_t now();
/** At a quarter of the price; up to 10 ms behind, so compare it with its own kind only. */
int32_t coarseNow();
int32_t future(int32_t milliseconds);
/** now() is later than the tick. */
bool reachedFuture(int32_t tick);
/** a is later than b; equal is not later. */
bool isBigger(int32_t a, int32_t b);
}  // namespace UTicks

/** Sends its receiver the message "Timer" at each period, from its making on; the entry "Timer" of the message is the timer.
    The message lives for the call only.

    Owns      the platform's timer. The receiver is borrowed: stop or kill the timer before it dies. A timer that nobody ever
              released goes when this copy of the framework does.
    Threads   main. */
class UTimer : public CmObject, public ITimerCallback {
public:
    DECLARE_ABSTRACT_CLASS(UTimer, CmObject)

    UTimer(CmObject* receiver, int32_t id, uint32_t periodMs);
    ~UTimer() override;

    /** false: it wasn't running. */
    bool stop();
    /** Starts afresh; a period of 0 keeps the present one. false: there is no run loop. */
    bool restart(uint32_t periodMs);
    /** Stops and releases; fine within the receiver's notify. */
    void kill();
    bool isAlive() const { return timer != nullptr; }
    int32_t getID() const { return id; }
    uint32_t getPeriod() const { return period; }

    void onTimer(Timer* fired) override;

private:
    CmObject* receiver;  // borrowed
    int32_t id;
    uint32_t period;
    Timer* timer = nullptr;  // owned
};

}  // namespace Tessarine
