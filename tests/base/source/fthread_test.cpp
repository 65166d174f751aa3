#include "base/source/fthread.h"
#include "base/source/fatomic.h"
#include "base/source/fcpu.h"
#include "tests/support/uncounted.h"
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <unistd.h>
#include <vector>

using namespace Tessarine;

namespace {
constexpr int32_t kPatienceMs = 20'000;  // only a hang takes so long

/** A thread that runs a function, and is waited for. */
class Runner : public FThread {
public:
    explicit Runner(std::function<void()> work, const char* name = "Runner") : FThread(name), work(std::move(work)) {}
    ~Runner() override { waitDead(-1); }

    void setPriority(int32_t wanted) override {
        FThread::setPriority(wanted);
        prioritySeen = true;
    }
    void entry() override {
        prioritySeenFirst = prioritySeen;
        kernelId = gettid();
        work();
    }
    /** Starts, and waits until the thread has come to sleep inside its work. */
    bool runToSleep() {
        const auto sleeps = [this] {
            std::string status;
            std::getline(std::ifstream("/proc/self/task/" + std::to_string(kernelId) + "/stat"), status);
            return kernelId != 0 && status.find(") S ") != std::string::npos;
        };
        bool seen = false;
        const bool runs = run();
        for (int32_t waited = 0; runs && !(seen = sleeps()) && waited < kPatienceMs; ++waited)
            FThreadSleep(1);
        return seen;
    }

    std::function<void()> work;
    bool prioritySeen = false;
    bool prioritySeenFirst = false;
    std::atomic<pid_t> kernelId{0};
};

void runAll(std::initializer_list<std::function<void()>> works) {
    std::vector<std::unique_ptr<Runner>> threads;
    for (const auto& work : works)
        EXPECT_TRUE(threads.emplace_back(std::make_unique<Runner>(work))->run());
}

bool hasRealTime() {
    sched_param parameters{.sched_priority = 48};
    const bool may = pthread_setschedparam(pthread_self(), SCHED_RR, &parameters) == 0;
    parameters.sched_priority = 0;
    pthread_setschedparam(pthread_self(), SCHED_OTHER, &parameters);
    return may;
}

constinit FLock gEarly("before any constructor");
}  // namespace

TEST(FLockHolding, IsRecursiveForItsThreadOnly) {
    const auto othersGetIt = [] {
        bool got = false;
        runAll({[&] {
            got = gEarly.trylock();
            if (got)
                gEarly.unlock();
        }});
        return got;
    };
    gEarly.lock();
    EXPECT_TRUE(gEarly.trylock());
    gEarly.unlock();
    EXPECT_FALSE(othersGetIt());
    gEarly.unlock();
    EXPECT_TRUE(othersGetIt());
}

TEST(FConditionLatch, RemembersWhatNobodyWaitedFor) {
    FCondition condition;
    EXPECT_FALSE(condition.waitTimeout(0) || condition.waitTimeout(-2));
    condition.signal();
    condition.signal();
    condition.wait();
    EXPECT_FALSE(condition.waitTimeout(1)) << "two signals are one";
    condition.signalAll();
    EXPECT_TRUE(condition.waitTimeout(-1));
    EXPECT_FALSE(condition.waitTimeout(0));
    condition.signal();
    condition.reset();
    EXPECT_FALSE(condition.waitTimeout(0));
}

TEST(FConditionLatch, LetsAllWaitersPassAndIsClearAfterTheLast) {
    FCondition condition;
    Runner first([&] { condition.wait(); }), second([&] { EXPECT_TRUE(condition.waitTimeout(kPatienceMs)); });
    ASSERT_TRUE(first.runToSleep() && second.runToSleep());
    condition.signalAll();
    EXPECT_TRUE(first.waitDead(-1) && second.waitDead(-1));
    EXPECT_FALSE(condition.waitTimeout(0));
}

TEST(FConditionLatch, ATimeOutBesideAnotherWaiterLetsTheNextThrough) {
    FCondition condition;
    Runner waiter([&] { condition.wait(); });
    ASSERT_TRUE(waiter.runToSleep());
    EXPECT_FALSE(condition.waitTimeout(1));
    EXPECT_TRUE(condition.waitTimeout(1)) << "the first time-out unlatched it";
    condition.signalAll();
    EXPECT_TRUE(waiter.waitDead(-1));
    EXPECT_FALSE(condition.waitTimeout(0));
}

TEST(FConditionLatch, CountsACancelledWaiterNoLonger) {
    FCondition condition;
    Runner waiter([&] { condition.wait(); });
    ASSERT_TRUE(waiter.runToSleep());
    waiter.terminate();
    EXPECT_TRUE(waiter.waitDead(-1));
    condition.signalAll();
    EXPECT_TRUE(condition.waitTimeout(0));
    EXPECT_FALSE(condition.waitTimeout(0));
}

TEST(FRwLockEntering, WriterMayWriteAgainAndReadReadersComeTogether) {
    FRwLock lock;
    std::atomic<int> order{0};
    int readerAt = 0, writerAt = 0;
    lock.waitToWrite();
    lock.waitToWrite();
    lock.waitToRead();
    Runner reader([&] {
        lock.waitToRead();
        readerAt = ++order;
    });
    ASSERT_TRUE(reader.runToSleep());
    lock.doneReading();
    lock.doneWriting();
    EXPECT_EQ(order, 0) << "one of the two writes goes on";
    lock.doneWriting();
    EXPECT_TRUE(reader.waitDead(-1));

    lock.waitToRead();  // the other reading thread hasn't left yet
    Runner writer([&] {
        lock.waitToWrite();
        writerAt = ++order;
        lock.doneWriting();
    });
    ASSERT_TRUE(writer.runToSleep());
    lock.doneReading();
    FThreadSleep(2);
    EXPECT_EQ(order, 1) << "one reader is left";
    lock.doneReading();
    EXPECT_TRUE(writer.waitDead(-1));
    EXPECT_TRUE(readerAt == 1 && writerAt == 2);
}

TEST(FRwLockEntering, NeitherMixesNorForgetsAnybody) {
    FRwLock lock;
    std::atomic<int> inside{0};
    const auto enter = [&](bool writes) {
        for (int i = 0; i < 500; ++i) {
            writes ? lock.waitToWrite() : lock.waitToRead();
            const int weight = writes ? 100 : 1;
            const int seen = inside += weight;
            sched_yield();
            EXPECT_TRUE(writes ? seen == weight && inside == weight : seen < 100);
            inside -= weight;
            writes ? lock.doneWriting() : lock.doneReading();
        }
    };
    const auto read = [&] { enter(false); };
    const auto write = [&] { enter(true); };
    runAll({read, read, read, write, write});
}

/** It would hang. */
TEST(FRwLockEntering, ForgetsNoReaderThatIsJustOnItsWayToTheWait) {
    constexpr int kRounds = 8000, kReaders = 6;
    FRwLock lock;
    std::atomic<int> round{0}, coming{0}, left{0};
    const auto read = [&] {
        for (int i = 0; i < kRounds; ++i) {
            while (round <= i)
                sched_yield();
            ++coming;
            lock.waitToRead();
            lock.doneReading();
            ++left;
        }
    };
    const auto write = [&] {
        for (int i = 0; i < kRounds; ++i) {
            lock.waitToWrite();
            ++round;
            while (coming <= i * kReaders + i % kReaders)  // some of them, or all
                sched_yield();
            lock.doneWriting();
            while (left < round * kReaders)
                sched_yield();
        }
    };
    runAll({read, read, read, read, read, read, write});
}

TEST(FSemaphoreCount, IsTakenOneByOne) {
    FSemaphore semaphore(2, "two");
    EXPECT_TRUE(semaphore.acquire(0) && semaphore.acquire(-1));
    EXPECT_FALSE(semaphore.acquire(0) || semaphore.acquire(2));
    semaphore.release(2);
    semaphore.release(0);
    EXPECT_TRUE(semaphore.acquire(0) && semaphore.acquire(0));
    EXPECT_FALSE(semaphore.acquire(0));
    OSXSemaphore own(1), other(0);
    own.waitSignal(other);
    EXPECT_TRUE(other.timedWait(0));
    EXPECT_FALSE(own.timedWait(0));
}

TEST(FSemaphoreCount, ReleasesAllWhoWaitAndNobodyWhoComesLater) {
    FSemaphore semaphore(0, "gate");
    Runner first([&] { EXPECT_TRUE(semaphore.acquire(-1)); });
    Runner second([&] { EXPECT_TRUE(semaphore.acquire(kPatienceMs)); });
    ASSERT_TRUE(first.runToSleep() && second.runToSleep());
    semaphore.release(0);
    EXPECT_TRUE(first.waitDead(-1) && second.waitDead(-1));
    EXPECT_FALSE(semaphore.acquire(0));
}

TEST(FLocalThreadStorageData, IsOfItsThreadAndReleasedWithIt) {
    Uncounted<FUnknown> probe, other;
    const std::unique_ptr<FLocalThreadStorage> storage(FLocalThreadStorage::create());
    ASSERT_TRUE(storage);
    storage->setData(&probe);
    storage->setData(&probe);
    EXPECT_EQ(probe.references, 1);
    runAll({[&] {
        EXPECT_EQ(storage->getData(), nullptr);
        storage->setData(&other);
        storage->setData(&probe);
        EXPECT_TRUE(other.references == 0 && probe.references == 2);
    }});
    EXPECT_EQ(probe.references, 1);
    EXPECT_EQ(storage->getData(), &probe);
    storage->setData(nullptr);
    EXPECT_EQ(probe.references, 0);
}

TEST(FThreadStart, NamesTheThreadAndSetsThePriorityBeforeEntry) {
    const bool realTime = hasRealTime();
    struct Row {
        int32_t priority;
        int policy, number;
    };
    constexpr Row kRows[] = {
        {0, SCHED_OTHER, 0 },
        {2, SCHED_OTHER, 0 },
        {3, SCHED_RR,    35},
        {4, SCHED_RR,    39},
        {5, SCHED_RR,    48},
        {6, SCHED_OTHER, 0 },
    };
    for (const Row& row : kRows) {
        SCOPED_TRACE(row.priority);
        char shown[32] = {};
        int policy = -1;
        sched_param parameters{};
        Runner thread(
            [&] {
                pthread_getname_np(pthread_self(), shown, sizeof(shown));
                pthread_getschedparam(pthread_self(), &policy, &parameters);
            },
            "A name beyond the limit");
        thread.setPriority(row.priority);
        thread.prioritySeen = false;
        ASSERT_TRUE(thread.run());
        EXPECT_TRUE(thread.waitDead(-1));
        EXPECT_TRUE(thread.prioritySeenFirst);
        EXPECT_STREQ(shown, "A name beyond t");
        EXPECT_EQ(policy, realTime ? row.policy : SCHED_OTHER);
        EXPECT_EQ(parameters.sched_priority, realTime ? row.number : 0);
    }
}

TEST(FThreadStart, KnowsItselfAndRunsOnceAtATime) {
    FSemaphore gate(0, "gate");
    int runs = 0;
    Runner* self = nullptr;
    Runner thread([&] {
        ++runs;
        EXPECT_TRUE(self->isInThreadContext());
        EXPECT_FALSE(self->waitDead(-1));
        gate.acquire(kPatienceMs);
    });
    self = &thread;
    EXPECT_TRUE(thread.waitDead(-1)) << "never ran";
    for (int expected = 1; expected <= 2; ++expected) {
        ASSERT_TRUE(thread.run());
        EXPECT_FALSE(thread.run() || thread.isInThreadContext());
        gate.release(1);
        EXPECT_TRUE(thread.waitDead(-1) && thread.waitDead(-1));
        EXPECT_EQ(thread.getThreadReference(), 0u);
        EXPECT_EQ(runs, expected);
    }
}

TEST(FThreadEnd, ComesByTerminateInASleep) {
    Runner thread([] {  // without locals: AddressSanitizer doesn't see that a cancelled thread leaves its frames
        for (;;)
            pause();
    });
    thread.terminate();
    ASSERT_TRUE(thread.runToSleep());
    thread.terminate();
    EXPECT_TRUE(thread.waitDead(0));
}

namespace {
struct CountingSpy final : IThreadSpy {
    void threadConstructed(FThread*) override { ++constructed; }
    void threadDestructed(FThread*) override { ++destructed; }
    std::atomic<int> constructed{0}, destructed{0};
};

struct SelfDestroyer final : FThread {
    explicit SelfDestroyer(FSemaphore& farewell) : FThread("SelfDestroyer"), farewell(farewell) {}
    void entry() override {
        FSemaphore& last = farewell;
        delete this;
        last.release(1);
    }
    FSemaphore& farewell;
};
}  // namespace

TEST(FThreadEnd, AThreadMayDestroyItsOwnObject) {
    CountingSpy spy;
    FThread::setSpy(&spy);
    FSemaphore farewell(0, "farewell");
    for (int i = 0; i < 20; ++i) {
        EXPECT_TRUE((new SelfDestroyer(farewell))->run());
        EXPECT_TRUE(farewell.acquire(kPatienceMs));
    }
    FThread::setSpy(nullptr);
    EXPECT_TRUE(spy.constructed == 20 && spy.destructed == 20);
}

TEST(FThreadAffinity, BindsTheCallingThread) {
    std::vector<int> counts;
    runAll({[&] {
        for (const int32_t n : {0, 100'000, -1}) {
            FThread("any").setCpuAffinity(n);
            cpu_set_t mask;
            pthread_getaffinity_np(pthread_self(), sizeof(mask), &mask);
            counts.push_back(CPU_COUNT(&mask));
        }
    }});
    EXPECT_EQ(counts, (std::vector<int>{1, 1, FCpuInfo().availableCpus}));
}

TEST(FAtomics, GiveThePreviousValue) {
    int value = 5;
    EXPECT_EQ(FAtomicIncrement(value), 5);
    EXPECT_EQ(FAtomicAdd(value, 0), 6);
    EXPECT_FALSE(FAtomicCompareAndSwap(value, 0, 1));
    EXPECT_TRUE(FAtomicCompareAndSwap(value, 6, 1));
    EXPECT_EQ(value, 1);
}
