#include "base/fworkerthread.h"

namespace Tessarine {

constinit std::atomic<FWorkerThread*> gWorkerThread{nullptr};

FWorkerThread::FWorkerThread(const char* name, int32_t priority) : FThread(name), workPriority(priority) {
    FWorkerThread* none = nullptr;
    gWorkerThread.compare_exchange_strong(none, this);
}

FWorkerThread::~FWorkerThread() {
    FWorkerThread* self = this;
    gWorkerThread.compare_exchange_strong(self, nullptr);
}

bool FWorkerThread::addWork(FWorkClass* job, void* data) {
    const FGuard guard(life.giveLock);
    if (!life.takes(job))
        return false;
    queue.append(new FWorkRecord{job, data});
    life.startOnce([this] {
        const bool runs = run();
        setPriority(workPriority);
        return runs;
    });
    workCondition.signalAll();
    return true;
}

bool FWorkerThread::prependWork(FWorkClass* job, void* data) {
    const FGuard guard(life.giveLock);
    if (!life.takes(job))
        return false;
    queue.prepend(new FWorkRecord{job, data});
    life.startOnce([this] {
        setPriority(workPriority);
        return run();
    });
    workCondition.signalAll();
    return true;
}

void FWorkerThread::entry() {
    life.work([this](FWorkRecord& record) { return takeNext(record); }, [this] { finishCurrent(); },
              [this] { waitForWork(); });
}

void FWorkerThread::waitForWork() {
    if (!life.stopping)
        workCondition.wait();
}

void FWorkerThread::waitWhileSuspended() {
    while (suspended && !life.stopping)
        suspendCondition.wait();
}

bool FWorkerThread::takeNext(FWorkRecord& record) {
    waitWhileSuspended();
    const FGuard guard(life.currentLock);
    if (!life.stopping)  // what is queued then is cancelAll's
        life.current.reset(static_cast<FWorkRecord*>(queue.removeFirst()));
    if (life.current)
        record = *life.current;
    return life.current != nullptr;
}

void FWorkerThread::finishCurrent() {
    life.finishCurrent([] {});
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
    const FGuard guard(life.currentLock);
    std::unique_ptr<FWorkRecord> record = std::move(life.current);
    if (!record)
        return;
    record->job->cancelWork();
    if (remove || life.stopping)
        record->job->finished();
    else
        queue.prepend(record.release());
}

void FWorkerThread::cancelAll() {
    const FGuard guard(life.currentLock);
    if (life.current)
        life.current->job->cancelWork();
    while (void* queued = queue.removeFirst()) {
        const std::unique_ptr<FWorkRecord> record(static_cast<FWorkRecord*>(queued));
        record->job->cancelWork();
        record->job->finished();
    }
}

void FWorkerThread::end() {
    if (!life.beginEnd())
        return;
    suspended = false;
    cancelAll();
    workCondition.signalAll();
    suspendCondition.signalAll();
    life.waitForEnd(*this, [this] { finishCurrent(); });
    delete this;
}

}  // namespace Tessarine
