#pragma once
#include "base/fqueue.h"
#include "base/fworkerlife.h"

/** Threads that do one job after the other. */

namespace Tessarine {

/** A job. It lives until finished() was called, once for each time that it was given to a worker. */
class FWorkClass {
public:
    /** The work itself, on the worker's thread. */
    virtual void performThreadWork(void* data) = 0;
    /** Done, or taken off the queue; the worker doesn't touch the job any more. After FWorkerThread::cancelCurrent the work may
        still be on its way out. */
    virtual void finished() = 0;
    /** The work isn't wanted any more: come to an end soon. Any thread, also while the work runs. */
    virtual void cancelWork() {}

protected:
    ~FWorkClass() = default;
};

/** What all workers can do. */
class IWorkerThread {
public:
    /** Queues a job, which is borrowed as data is. False, and nothing queued: null, or the worker ends. */
    virtual bool addWork(FWorkClass* job, void* data) = 0;
    /** Cancels everything, waits for the work in progress and deletes the worker, which is gone when this returns. A job may
        call it too, in its work or in the finished() behind it; the thread then ends where it next waits. */
    virtual void end() = 0;
    /** No further job is begun. */
    virtual void suspend() = 0;
    virtual void resume() = 0;

protected:
    ~IWorkerThread() = default;
};

/** A worker with a plain queue; the thread starts with the first job.

    Threads   addWork, prependWork, suspend, resume and cancelCurrent any; end() one, after the last of the others. A job
              that ends the worker lets the addWork that gave it return first
    Locks     held while a job hears cancelWork() or finished(): a job that takes locks of its own there takes them second */
class FWorkerThread : public FThread, public IWorkerThread {
public:
    explicit FWorkerThread(const char* name = "Worker Thread", int32_t priority = kThreadPriorityNormal);

    bool addWork(FWorkClass* job, void* data) override;
    /** In front of the queue. */
    virtual bool prependWork(FWorkClass* job, void* data);
    void end() override;
    void suspend() override;
    void resume() override;
    /** Tells the job in progress to stop, and gives it up: it is finished (remove), or begins anew later. A job that hears
        finished() from here may not end the worker. */
    void cancelCurrent(bool remove);

protected:
    ~FWorkerThread() override;
    void entry() override;

private:
    bool takeNext(FWorkRecord& record);
    void finishCurrent();
    void cancelAll();
    void waitForWork();
    void waitWhileSuspended();

    FCondition workCondition, suspendCondition;
    FQueue queue;  // of FWorkRecord, owned
    FWorkerLife life;
    std::atomic<bool> suspended{false};
    int32_t workPriority;
};

/** The first worker that was made, as long as it lives. */
extern std::atomic<FWorkerThread*> gWorkerThread;

}  // namespace Tessarine
