#pragma once
#include "base/source/fstring.h"
#include "pluginterfaces/base/funknown.h"
#include <atomic>
#include <pthread.h>

/** Threads, and what they need to share things. Times are milliseconds of the monotonic clock. A thread that is cancelled
    while it waits leaves the condition or semaphore in order. */

namespace Tessarine {

/** A recursive lock. It may be built, and taken, before any static constructor ran. */
class FLock {
public:
    /** The name says to the reader of the code what the lock is for. */
    constexpr FLock(const char* /*name*/ = "FLock") {}
    virtual ~FLock() { pthread_mutex_destroy(&mutex); }
    FLock(const FLock&) = delete;
    FLock& operator=(const FLock&) = delete;

    void lock() { pthread_mutex_lock(&mutex); }
    void unlock() { pthread_mutex_unlock(&mutex); }
    /** True: got it. */
    bool trylock() { return pthread_mutex_trylock(&mutex) == 0; }

private:
    pthread_mutex_t mutex = PTHREAD_RECURSIVE_MUTEX_INITIALIZER_NP;
};

/** Holds a lock to the end of the block. */
class FGuard {
public:
    explicit FGuard(FLock& held) : held(held) { held.lock(); }
    ~FGuard() { held.unlock(); }
    FGuard(const FGuard&) = delete;
    FGuard& operator=(const FGuard&) = delete;

private:
    FLock& held;
};

/** A latch to wait for: a signal that comes before the wait isn't lost. Its own mutex is held only inside its calls; not
    for use with an outer lock. */
class FCondition {
public:
    FCondition();
    ~FCondition();
    FCondition(const FCondition&) = delete;
    FCondition& operator=(const FCondition&) = delete;

    void wait();
    /** True: signalled; false: the time is over. -1 waits for ever, other negative times are over at once. A time-out
        counts as a passage: while others wait, it takes 1 from the latch. */
    bool waitTimeout(int32_t ms);
    /** Lets one pass, now or later. */
    void signal();
    /** Lets all who wait pass, and the latch stays set until the last of them is through. */
    void signalAll();
    /** Takes back signals that nobody waited for. */
    void reset() { state = 0; }

private:
    struct Waiting;

    pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;
    pthread_cond_t condition;
    std::atomic<int32_t> state{0};  // not 0: set. Changed under the mutex, but for reset()
    int32_t waiters = 0;
};

/** Many readers or one writing thread, which may write again and read. A thread that reads and asks to write waits for
    itself. */
class FRwLock {
public:
    void waitToRead();
    void doneReading();
    void waitToWrite();
    void doneWriting();
    /** A place to look at the counts while debugging; called under the guard after each of their changes. */
    void verify() const {}

private:
    bool enterToRead();
    bool enterToWrite();
    bool isFreeFor(pthread_t thread) const { return writers == 0 || pthread_equal(writerThread, thread); }

    FCondition readCondition, writeCondition;
    FLock guard;  // guards what follows; the waiting ones lower their counts without it
    pthread_t writerThread{};
    std::atomic<int32_t> readers{0}, writers{0}, waitingReaders{0}, waitingWriters{0};
};

/** The counting semaphore beneath FSemaphore. */
class OSXSemaphore {
public:
    explicit OSXSemaphore(int32_t initial);
    ~OSXSemaphore();
    OSXSemaphore(const OSXSemaphore&) = delete;
    OSXSemaphore& operator=(const OSXSemaphore&) = delete;

    void wait();
    /** Signals the other one, then waits for this. */
    void waitSignal(OSXSemaphore& other);
    /** False: the time is over. */
    bool timedWait(int32_t ms);
    void signal();
    /** Releases all who wait now, and leaves the count as it is. */
    void signalAll();

private:
    template <class WaitOnce>
    bool take(WaitOnce waitOnce);

    pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;
    pthread_cond_t condition;
    int32_t count;
    uint32_t generation = 0;  // raised by signalAll: who came before it passes
};

/** A counting semaphore. */
class FSemaphore {
public:
    FSemaphore(int32_t initial, const char* /*name*/) : semaphore(initial) {}

    /** True: taken; false: the time is over. A negative time has no end. */
    bool acquire(int32_t ms);
    /** So many signals; below 1 releases all who wait now. */
    void release(int32_t count);

private:
    OSXSemaphore semaphore;
};

/** One counted object for each thread. A thread that ends releases its own; what other threads still hold when the
    storage dies is never released. */
class FLocalThreadStorage {
public:
    /** The caller deletes it; null: the system has no more keys. */
    static FLocalThreadStorage* create();
    FLocalThreadStorage() = default;
    ~FLocalThreadStorage();
    FLocalThreadStorage(const FLocalThreadStorage&) = delete;
    FLocalThreadStorage& operator=(const FLocalThreadStorage&) = delete;

    /** Before all else; false: no key can be had. */
    bool init();
    /** Borrowed; null when this thread has none. */
    FUnknown* getData() const;
    /** Shares data, and releases the old one. */
    void setData(FUnknown* data);

private:
    pthread_key_t key = 0;
    bool hasKey = false;
};

/** Symbolic priorities; any other number is as kThreadPriorityLow. */
enum FThreadPriority : int32_t {
    kThreadPriorityLow = 0,
    kThreadPriorityBelowNormal = 1,
    kThreadPriorityNormal = 2,
    kThreadPriorityHigh = 3,  // from here on real-time, where the user may have that
    kThreadPriorityHigher = 4,
    kThreadPriorityHighest = 5,
};

class FThread;

/** Hears of all threads, on the thread that builds or destroys the object. */
class IThreadSpy {
public:
    virtual void threadConstructed(FThread* thread) = 0;
    virtual void threadDestructed(FThread* thread) = 0;

protected:
    ~IThreadSpy() = default;
};

/** A thread; derived classes say in entry() what it does.

    Life      built, run(), ended when entry() returns, joined by waitDead() or left alone by the destructor. The derived
              class waits before its own part of the object is gone, if entry() uses it.
    Threads   run, waitDead and destruction on one thread; isInThreadContext on any. */
class FThread {
public:
    /** The system shows the first 15 characters. */
    explicit FThread(const char* name);
    virtual ~FThread();
    FThread(const FThread&) = delete;
    FThread& operator=(const FThread&) = delete;

    /** An FThreadPriority, applied at once or, before run(), with the start. Without the right to it the thread stays as
        it is, silently. */
    virtual void setPriority(int32_t priority);
    virtual void cleanup() {}
    /** On the new thread, named and with its priority. */
    virtual void entry() {}

    /** False: it runs already, or the system has no more threads. The object may be gone when this returns. */
    bool run();
    /** Ends the thread where it next waits; it is still to be waited for. */
    void terminate();
    /** Until the thread has ended, however long; ms has no effect. True at once when it never ran. False: called by the
        thread itself. */
    bool waitDead(int32_t ms);
    /** Binds the calling thread, not this one, to the n-th processor that the process may use; -1 to all of them. A
        number that there isn't binds nothing. */
    void setCpuAffinity(int32_t n);
    /** The caller is this thread. */
    bool isInThreadContext() const;
    /** The system's handle; 0: not running. */
    pthread_t getThreadReference() const { return handle; }

    /** Brings a process that was started with low priority back to the normal one, where the user may. */
    static void setTaskPriorityToForegroundApplication();
    /** Borrowed; null for none. */
    static void setSpy(IThreadSpy* spy) { gSpy = spy; }

protected:
    int32_t priority = kThreadPriorityNormal;
    int32_t cpuAffinity = -1;
    bool started = false;
    std::atomic<pthread_t> handle{0};  // 0: none, or joined
    String name;

    static std::atomic<IThreadSpy*> gSpy;

private:
    struct Start;
    static void* threadMain(void* argument);
    static FThread* passGate(void* argument);
    void nameCaller() const;
};

/** The calling thread waits; a negative time has no end. */
void FThreadSleep(int32_t ms);

}  // namespace Tessarine
