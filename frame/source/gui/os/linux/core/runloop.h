#pragma once
#include "base/source/timer.h"
#include <atomic>
#include <set>

struct _GSource;

namespace Tessarine {
class LinuxTimer;

/** This copy's share of the process's default main context: one source for all timers, one for posted messages and deferred
    updates, one for idle work. Host and module each have their own.

    Life      open() attaches the sources, close() destroys them; what was armed before a close stays dead. Closed again before
              the copy's statics die, so that nothing of an unloaded module is ever called.
    Threads   wakeUpdates() and wakeIdle() from any, the rest on the main thread. */
class RunLoop {
public:
    static RunLoop& instance();

    bool open();
    void close();
    bool isOpen() const { return timerSource != nullptr; }

    void wakeUpdates();
    void wakeIdle();

    /** Puts a timer in the order of those that wait, at its due time. */
    void arm(LinuxTimer* timer);
    void disarm(LinuxTimer* timer);

    /** When a source has something to do, in microseconds of GLib's monotonic clock. */
    static constexpr int64_t kNow = 0, kNever = -1;
    int64_t timersDue() const;
    int64_t updatesDue() const;
    int64_t idleDue() const { return idleDueUs; }
    /** What it does then. */
    void fireEarliest();
    void serveUpdates();
    void serveIdle();

    RunLoop(const RunLoop&) = delete;
    RunLoop& operator=(const RunLoop&) = delete;

private:
    RunLoop() = default;
    struct Earlier {
        bool operator()(const LinuxTimer* a, const LinuxTimer* b) const;
    };

    void planIdle();
    static void destroy(_GSource*& source);

    std::set<LinuxTimer*, Earlier> armed;  // counted; by due time, the older start first
    uint64_t starts = 0;                   // timers started so far
    _GSource* timerSource = nullptr;
    _GSource* updateSource = nullptr;
    _GSource* idleSource = nullptr;
    std::atomic<bool> updatesWoken{false};  // messages or updates wait, and the loop knows
    std::atomic<int64_t> idleDueUs{kNever};
    bool restWaits = false;  // they are being served: a modal loop within that serves what still waits

    friend class LinuxTimer;
};

/** A repeating timer. It keeps its cadence: the first firing plus whole periods; what a blocked loop missed is skipped. */
class LinuxTimer : public Timer {
public:
    /** Null when the run loop is closed. */
    static Timer* create(ITimerCallback* callback, uint32_t periodMs);
    void stop() override;

private:
    LinuxTimer(ITimerCallback* target, uint32_t periodMs, uint64_t start);
    /** Moves the due time to the first one of the cadence that lies behind now. */
    void skipTo(int64_t nowUs);
    void fire();

    ITimerCallback* callback;  // borrowed; null once stopped
    int64_t periodUs;
    int64_t dueUs;
    uint64_t startNumber;
    bool inCallback = false;

    friend class RunLoop;
};

}  // namespace Tessarine
