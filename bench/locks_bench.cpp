// What threads share, beside the standard library's own. An item is one pass: a lock taken and given back, one to another
// thread and back again. All rows run in a process with a second thread, as every process with an open port has.
#include "base/fqueue.h"
#include "base/fworkerthread.h"
#include "bench/sleeper.h"
#include <benchmark/benchmark.h>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <sched.h>
#include <thread>

using namespace Tessarine;

namespace {
const SleepingThread sleeper;

/** Keeps this thread, and those it starts, on one processor: how fast another one wakes up is the machine's affair, and
    differs by a factor of fifty from run to run. */
class OnOneProcessor {
public:
    OnOneProcessor() {
        sched_getaffinity(0, sizeof(before), &before);
        cpu_set_t one;
        CPU_ZERO(&one);
        CPU_SET(sched_getcpu(), &one);
        sched_setaffinity(0, sizeof(one), &one);
    }
    ~OnOneProcessor() { sched_setaffinity(0, sizeof(before), &before); }
    OnOneProcessor(const OnOneProcessor&) = delete;

private:
    cpu_set_t before;
};

/** A signal that isn't lost. It may be told with the lock held: who waits may end the latch then, as with ours; or when
    it is free again, which spares the other thread a wait. */
template <bool holdsLock>
class StdLatch {
public:
    void signal() {
        std::unique_lock guard(mutex);
        isSet = true;
        if (!holdsLock)
            guard.unlock();
        condition.notify_one();
    }
    void wait() {
        std::unique_lock guard(mutex);
        condition.wait(guard, [this] { return isSet; });
        isSet = false;
    }

private:
    std::mutex mutex;
    std::condition_variable condition;
    bool isSet = false;
};

class StdQueue {
public:
    void append(void* item) {
        const std::lock_guard guard(mutex);
        items.push_back(item);
    }
    void* removeFirst() {
        const std::lock_guard guard(mutex);
        if (items.empty())
            return nullptr;
        void* first = items.front();
        items.pop_front();
        return first;
    }

private:
    std::mutex mutex;
    std::deque<void*> items;
};

class LockFreeQueue : public FLockFreeQueue {
public:
    LockFreeQueue() : FLockFreeQueue(1024, nullptr) {}
    void append(void* item) { push(item); }
    void* removeFirst() { return pop(); }
};

/** A thread that works off a queue of jobs, in the way one writes it by hand. */
class StdWorker {
public:
    ~StdWorker() { add(nullptr); }
    void add(std::function<void()> job) {
        {
            const std::lock_guard guard(mutex);
            jobs.push_back(std::move(job));
        }
        condition.notify_one();
    }

private:
    void work() {
        while (const std::function<void()> job = next())
            job();
    }
    std::function<void()> next() {
        std::unique_lock guard(mutex);
        condition.wait(guard, [this] { return !jobs.empty(); });
        std::function<void()> first = std::move(jobs.front());
        jobs.pop_front();
        return first;
    }

    std::mutex mutex;
    std::condition_variable condition;
    std::deque<std::function<void()>> jobs;
    std::jthread thread{[this] { work(); }};
};

/** Tells the latch when its job is done. */
template <class Latch>
class Answer final : public FWorkClass {
public:
    void performThreadWork(void* /*data*/) override {}
    void finished() override { latch.signal(); }

    Latch latch;
};

class OurWorker {
public:
    ~OurWorker() { worker->end(); }
    template <class Latch>
    void ask(Answer<Latch>& answer) {
        worker->addWork(&answer, nullptr);
    }

private:
    FWorkerThread* worker = new FWorkerThread("bench");  // ends by itself
};

class AskedStdWorker : public StdWorker {
public:
    template <class Latch>
    void ask(Answer<Latch>& answer) {
        add([&answer] { answer.finished(); });
    }
};

struct Ours {
    using Lock = FLock;
    using Latch = FCondition;
    using Queue = FQueue;
    using Worker = OurWorker;
};
struct OursLockFree {
    using Queue = LockFreeQueue;
};
struct StdMutex {
    using Lock = std::mutex;
    using Latch = StdLatch<true>;
    using Queue = StdQueue;
    using Worker = AskedStdWorker;
};
struct StdUnlockFirst {
    using Latch = StdLatch<false>;
    using Queue = StdQueue;
    using Worker = AskedStdWorker;
};
struct StdRecursiveMutex {
    using Lock = std::recursive_mutex;
};

/** What another thread does over and over until the row ends. */
template <class Step>
std::jthread meanwhile(Step step) {
    return std::jthread([step](const std::stop_token& stop) {
        while (!stop.stop_requested())
            step();
    });
}
}  // namespace

/** Nobody else wants it. */
template <class Peer>
void Lock(benchmark::State& state) {
    typename Peer::Lock lock;
    for (auto _ : state) {
        lock.lock();
        benchmark::ClobberMemory();
        lock.unlock();
    }
    state.SetItemsProcessed(state.iterations());
}

/** Several threads want it all the time. */
template <class Peer>
void LockContended(benchmark::State& state) {
    static typename Peer::Lock lock;
    static int64_t count = 0;
    for (auto _ : state) {
        lock.lock();
        benchmark::DoNotOptimize(++count);
        lock.unlock();
    }
    state.SetItemsProcessed(state.iterations());
}

/** To the other thread and back. */
template <class Peer>
void ConditionRoundTrip(benchmark::State& state) {
    const OnOneProcessor pinned;
    typename Peer::Latch there, back;
    auto other = meanwhile([&] {
        there.wait();
        back.signal();
    });
    for (auto _ : state) {
        there.signal();
        back.wait();
    }
    other.request_stop();
    there.signal();
    state.SetItemsProcessed(state.iterations());
}

/** Into the queue and out again on one thread: what the queue itself costs. */
template <class Peer>
void QueuePass(benchmark::State& state) {
    typename Peer::Queue queue;
    for (auto _ : state) {
        queue.append(&queue);
        benchmark::DoNotOptimize(queue.removeFirst());
    }
    state.SetItemsProcessed(state.iterations());
}

/** An item to the other thread, another one back. */
template <class Peer>
void QueueRoundTrip(benchmark::State& state) {
    const OnOneProcessor pinned;
    typename Peer::Queue queueThere, queueBack;
    typename Peer::Latch there, back;
    auto other = meanwhile([&] {
        there.wait();
        queueBack.append(queueThere.removeFirst());
        back.signal();
    });
    for (auto _ : state) {
        queueThere.append(&state);
        there.signal();
        back.wait();
        if (queueBack.removeFirst() != &state)
            state.SkipWithError("something else came back");
    }
    other.request_stop();
    there.signal();
    state.SetItemsProcessed(state.iterations());
}

/** A job to the worker, and the news that it is done. */
template <class Peer>
void WorkerRoundTrip(benchmark::State& state) {
    const OnOneProcessor pinned;
    Answer<typename Peer::Latch> answer;
    typename Peer::Worker worker;
    for (auto _ : state) {
        worker.ask(answer);
        answer.latch.wait();
    }
    state.SetItemsProcessed(state.iterations());
}

#define ROWS_OF_LOCK(Peer)          \
    BENCHMARK_TEMPLATE(Lock, Peer); \
    BENCHMARK_TEMPLATE(LockContended, Peer)->Threads(2)->UseRealTime()
#define ROWS_OF_THREADS(Peer)                                    \
    BENCHMARK_TEMPLATE(ConditionRoundTrip, Peer)->UseRealTime(); \
    BENCHMARK_TEMPLATE(QueueRoundTrip, Peer)->UseRealTime();     \
    BENCHMARK_TEMPLATE(WorkerRoundTrip, Peer)->UseRealTime()

ROWS_OF_LOCK(Ours);
ROWS_OF_LOCK(StdMutex);
ROWS_OF_LOCK(StdRecursiveMutex);
BENCHMARK_TEMPLATE(QueuePass, Ours);
BENCHMARK_TEMPLATE(QueuePass, StdMutex);
BENCHMARK_TEMPLATE(QueuePass, OursLockFree);
ROWS_OF_THREADS(Ours);
ROWS_OF_THREADS(StdMutex);
ROWS_OF_THREADS(StdUnlockFirst);
