#include "base/fworkerthread.h"
#include <utility>

namespace Tessarine {
namespace {
constexpr int32_t kPatience = 1000;  // ms
}  // namespace

constinit std::atomic<FWorkerThread*> gWorkerThread{nullptr};

FWorkerThread::FWorkerThread(const char* name, int32_t priority) : FThread(name), workPriority(priority) {
    FWorkerThread* none = nullptr;
    gWorkerThread.compare_exchange_strong(none, this);
}

FWorkerThread::~FWorkerThread() {
    FWorkerThread* self = this;
    gWorkerThread.compare_exchange_strong(self, nullptr);
    if (isGone)
        *isGone = true;
}

bool FWorkerThread::addWork(FWorkClass* job, void* data) {
    const FGuard guard(giveLock);
    if (!job || stopping)
        return false;
    queue.append(new FWorkRecord{job, data});
    if (notStarted) {
        notStarted = !run();
        setPriority(workPriority);
    }
    workCondition.signalAll();
    return true;
}

bool FWorkerThread::prependWork(FWorkClass* job, void* data) {
    const FGuard guard(giveLock);
    if (!job || stopping)
        return false;
    queue.prepend(new FWorkRecord{job, data});
    if (notStarted) {
        setPriority(workPriority);
        notStarted = !run();
    }
    workCondition.signalAll();
    return true;
}

void FWorkerThread::entry() {
    bool gone = false;
    isGone = &gone;
    while (!stopping) {
        waitWhileSuspended();
        FWorkRecord record{};
        if (takeNext(record)) {
            record.job->performThreadWork(record.data);
            if (!gone)
                finishCurrent(gone);
            if (gone)
                return;
        } else if (!stopping) {
            workCondition.wait();
        }
    }
    isGone = nullptr;
}

void FWorkerThread::waitWhileSuspended() {
    while (suspended && !stopping)
        suspendCondition.wait();
}

bool FWorkerThread::takeNext(FWorkRecord& record) {
    const FGuard guard(currentLock);
    if (!stopping)  // what is queued then is cancelAll's
        current.reset(static_cast<FWorkRecord*>(queue.removeFirst()));
    if (current)
        record = *current;
    return current != nullptr;
}

/** Whoever finds the record in its place, this or cancelCurrent, ends the job. */
void FWorkerThread::finishCurrent(const bool& gone) {
    currentLock.lock();
    if (const std::unique_ptr<FWorkRecord> record = std::move(current)) {
        isFinishing = true;
        record->job->finished();
        if (gone)
            return;
        isFinishing = false;
    }
    currentLock.unlock();
}

void FWorkerThread::suspend() {
    if (suspended)
        return;
    suspendCondition.reset();
    suspended = true;
}

void FWorkerThread::resume() {
    if (suspended.exchange(false))
        suspendCondition.signalAll();
}

void FWorkerThread::cancelCurrent(bool remove) {
    const FGuard guard(currentLock);
    std::unique_ptr<FWorkRecord> record = std::move(current);
    if (!record)
        return;
    record->job->cancelWork();
    if (remove || stopping)
        record->job->finished();
    else
        queue.prepend(record.release());
}

void FWorkerThread::cancelAll() {
    const FGuard guard(currentLock);
    if (current)
        current->job->cancelWork();
    while (void* queued = queue.removeFirst()) {
        const std::unique_ptr<FWorkRecord> record(static_cast<FWorkRecord*>(queued));
        record->job->cancelWork();
        record->job->finished();
    }
}

void FWorkerThread::end() {
    {
        const FGuard guard(giveLock);  // a job may be quicker than who is just giving it
        if (stopping.exchange(true))
            return;
    }
    suspended = false;
    cancelAll();
    workCondition.signalAll();
    suspendCondition.signalAll();
    if (!waitDead(kPatience)) {  // a job calls
        if (isFinishing)
            currentLock.unlock();
        else
            finishCurrent(false);
        terminate();
    }
    delete this;
}

}  // namespace Tessarine
