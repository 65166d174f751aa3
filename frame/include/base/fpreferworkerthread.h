#pragma once
#include "base/fworkerthread.h"
#include "base/source/cmobject.h"

namespace Tessarine {

/** Work records, and beside each the object that it is done for, which may be null. Nothing is counted here.

    Threads   any; each operation takes the lock for itself */
class FPreferQueue {
public:
    bool append(FWorkRecord* record, CmObject* owner);
    bool prepend(FWorkRecord* record, CmObject* owner);
    /** Null, and a null owner, when the queue is empty. */
    FWorkRecord* removeFirst(CmObject** owner);
    FWorkRecord* removeLast(CmObject** owner);
    /** Moves the owner's record to the front. False: it isn't here. */
    bool prefer(CmObject* owner);
    /** Never for null. */
    bool idExists(CmObject* owner);
    bool isEmpty();

private:
    bool insertAt(FWorkRecord* record, CmObject* owner, int32_t index);
    FWorkRecord* removeAt(int32_t index, CmObject** owner);
    int32_t indexOf(const CmObject* owner) const;

    FLock lock;
    TDLinkedList<FWorkRecord*> records;
    TDLinkedList<CmObject*> owners;
};

/** A worker whose jobs belong to objects, and can be drawn to the front by them: what is on screen first.

    Owns      a reference to each owner, until its work is done or dropped; an owner's end may be the worker's, as a job's
    Threads   as FWorkerThread; so are the locks */
class FPreferWorkerThread : public FThread, public IWorkerThread {
public:
    explicit FPreferWorkerThread(const char* name = "Prefer Worker Thread");

    /** For nobody. */
    bool addWork(FWorkClass* job, void* data) override { return addWork(job, nullptr, data); }
    void end() override;
    /** Tells the job in progress to stop, too. */
    void suspend() override;
    void resume() override;

    /** False, and nothing queued, also when the owner waits already. */
    bool addWork(FWorkClass* job, CmObject* owner, void* data);
    /** The owner's work comes next, or is in progress. False: there is none. */
    bool prefer(CmObject* owner);
    /** Cancels everything, and goes on. A job that hears finished() from here may not end the worker. */
    void clear();

protected:
    ~FPreferWorkerThread() override;
    void entry() override;

private:
    bool takeNext(FWorkRecord& record);
    void finishCurrent();

    FCondition condition;
    FPreferQueue queue;
    FWorkerLife life;
    std::atomic<bool> suspended{false}, isWorking{false};
    CmObject* currentOwner = nullptr;  // of the job in progress: guarded as that is, counted
};

}  // namespace Tessarine
