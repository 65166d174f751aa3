#include "base/fpreferworkerthread.h"
#include "pluginterfaces/base/smartpointer.h"
#include <utility>
#include <vector>

namespace Tessarine {
namespace {
/** Off the queue. */
struct DroppedWork {
    std::unique_ptr<FWorkRecord> record;
    OPtr<CmObject> owner;
};
}  // namespace

// --- FPreferQueue

bool FPreferQueue::append(FWorkRecord* record, CmObject* owner) {
    const FGuard guard(lock);
    return insertAt(record, owner, records.total());
}

bool FPreferQueue::prepend(FWorkRecord* record, CmObject* owner) {
    const FGuard guard(lock);
    return insertAt(record, owner, 0);
}

FWorkRecord* FPreferQueue::removeFirst(CmObject** owner) {
    const FGuard guard(lock);
    return removeAt(0, owner);
}

FWorkRecord* FPreferQueue::removeLast(CmObject** owner) {
    const FGuard guard(lock);
    return removeAt(records.total() - 1, owner);
}

bool FPreferQueue::prefer(CmObject* owner) {
    const FGuard guard(lock);
    const int32_t index = indexOf(owner);
    if (index < 0)
        return false;
    return insertAt(removeAt(index, &owner), owner, 0);
}

bool FPreferQueue::idExists(CmObject* owner) {
    const FGuard guard(lock);
    return indexOf(owner) >= 0;
}

bool FPreferQueue::isEmpty() {
    const FGuard guard(lock);
    return records.isEmpty();
}

bool FPreferQueue::insertAt(FWorkRecord* record, CmObject* owner, int32_t index) {
    return records.insertAt(record, index) && owners.insertAt(owner, index);
}

FWorkRecord* FPreferQueue::removeAt(int32_t index, CmObject** owner) {
    FWorkRecord* record = records.at(index);
    *owner = owners.at(index);
    records.removeAt(index);
    owners.removeAt(index);
    return record;
}

int32_t FPreferQueue::indexOf(const CmObject* owner) const {
    int32_t index = 0;
    for (const CmObject* waiting : owners) {
        if (owner && waiting == owner)
            return index;
        ++index;
    }
    return -1;
}

// --- FPreferWorkerThread

FPreferWorkerThread::FPreferWorkerThread(const char* name) : FThread(name) {}

FPreferWorkerThread::~FPreferWorkerThread() = default;

bool FPreferWorkerThread::addWork(FWorkClass* job, CmObject* owner, void* data) {
    const FGuard guard(life.giveLock);
    if (!life.takes(job) || queue.idExists(owner))
        return false;
    if (owner)
        owner->addRef();
    queue.append(new FWorkRecord{job, data}, owner);
    life.startOnce([this] {
        setPriority(kThreadPriorityLow);
        return run();
    });
    if (!suspended && !isWorking)
        condition.signal();
    return true;
}

void FPreferWorkerThread::entry() {
    life.work([this](FWorkRecord& record) { return takeNext(record); }, [this] { finishCurrent(); },
              [this] { condition.wait(); });
}

bool FPreferWorkerThread::takeNext(FWorkRecord& record) {
    const FGuard guard(life.currentLock);
    if (!suspended && !life.stopping)
        life.current.reset(queue.removeFirst(&currentOwner));
    isWorking = life.current != nullptr;
    if (life.current)
        record = *life.current;
    return isWorking;
}

void FPreferWorkerThread::finishCurrent() {
    OPtr<CmObject> owner;  // released when nothing here is needed any more
    life.finishCurrent([&] {
        owner = OPtr<CmObject>(std::exchange(currentOwner, nullptr));
        isWorking = false;
    });
}

void FPreferWorkerThread::suspend() {
    const FGuard guard(life.currentLock);
    if (life.current)
        life.current->job->cancelWork();
    suspended = true;
}

void FPreferWorkerThread::resume() {
    if (suspended.exchange(false))
        condition.signalAll();
}

bool FPreferWorkerThread::prefer(CmObject* owner) {
    const FGuard guard(life.currentLock);
    return (owner && owner == currentOwner) || queue.prefer(owner);
}

void FPreferWorkerThread::clear() {
    std::vector<DroppedWork> dropped;  // outlives the guard, as an owner's end may be the worker's
    const FGuard guard(life.currentLock);
    if (life.current)
        life.current->job->cancelWork();
    CmObject* owner = nullptr;
    while (FWorkRecord* queued = queue.removeFirst(&owner))
        dropped.push_back({std::unique_ptr<FWorkRecord>(queued), OPtr<CmObject>(owner)});
    for (const DroppedWork& work : dropped) {  // which may give new work
        work.record->job->cancelWork();
        work.record->job->finished();
    }
}

void FPreferWorkerThread::end() {
    if (!life.beginEnd())
        return;
    suspended = false;
    clear();
    condition.signalAll();
    life.waitForEnd(*this, [this] { finishCurrent(); });
    delete this;
}

}  // namespace Tessarine
