#pragma once
#include "base/source/fthread.h"
#include <atomic>
#include <memory>
#include <utility>

namespace Tessarine {

class FWorkClass;

/** A job and what it works on, both borrowed. */
struct FWorkRecord {
    FWorkClass* job;
    void* data;
};

/** What every worker goes through: it starts with its first job, does one after the other, and may be ended by one of them.

    Locks     currentLock is held while a job hears finished(), which may give work: giveLock comes second */
class FWorkerLife {
public:
    /** Tells the worker's thread, which may stand in a job that deletes the worker. */
    ~FWorkerLife();

    /** False: no job, or the worker ends. Under giveLock, until the job is queued and the thread woken: a job may be quicker
        than who is just giving it. */
    bool takes(const FWorkClass* job) const { return job && !stopping; }
    /** For the first job; start answers whether the thread runs. Under giveLock. */
    template <class Start>
    void startOnce(Start&& start) {
        if (notStarted)
            notStarted = !start();
    }

    /** The whole of the worker's thread. takeNext fills a record or answers false, finish ends the job in progress, wait
        returns when there may be work. */
    template <class TakeNext, class Finish, class Wait>
    void work(TakeNext&& takeNext, Finish&& finish, Wait&& wait) {
        bool gone = false;
        isGone = &gone;
        while (!stopping) {
            FWorkRecord record{};
            if (takeNext(record)) {
                perform(record);
                if (!gone)
                    finish();
                if (gone)
                    return;
            } else {
                wait();
            }
        }
        isGone = nullptr;
    }

    /** Ends the job in progress, if it is still in its place: whoever finds it there ends it. It hears finished() after
        leave(), both under currentLock. */
    template <class Leave>
    void finishCurrent(Leave&& leave) {
        currentLock.lock();
        if (const std::unique_ptr<FWorkRecord> record = std::move(current)) {
            leave();
            if (!finish(*record))
                return;
        }
        currentLock.unlock();
    }

    /** False: somebody ended the worker before. No job is taken from then on. */
    bool beginEnd();
    /** Waits for the thread; in one of the worker's own jobs it ends that job with finish instead, and the thread goes when it
        waits next. */
    template <class Finish>
    void waitForEnd(FThread& thread, Finish&& finish) {
        if (thread.waitDead(kPatience))
            return;
        if (isFinishing)
            currentLock.unlock();
        else
            finish();
        thread.terminate();
    }

    FLock giveLock;     // held by who gives work; nobody is called under it
    FLock currentLock;  // guards current
    std::unique_ptr<FWorkRecord> current;
    std::atomic<bool> stopping{false};

private:
    static constexpr int32_t kPatience = 1000;  // ms

    static void perform(const FWorkRecord& record);
    /** False: the worker is gone. */
    bool finish(const FWorkRecord& record);

    bool notStarted = true;    // guarded by giveLock
    bool isFinishing = false;  // the thread's own, as is the next
    bool* isGone = nullptr;
};

}  // namespace Tessarine
