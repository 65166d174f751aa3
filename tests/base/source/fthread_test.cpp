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
    gEarly.lock();
    EXPECT_TRUE(gEarly.trylock());
    gEarly.unlock();
    runAll({[] { EXPECT_FALSE(gEarly.trylock()); }});
    gEarly.unlock();
    runAll({[] { EXPECT_TRUE(gEarly.trylock()); }});
}

TEST(FConditionLatch, RemembersWhatNobodyWaitedFor) {
    FCondition condition;
    EXPECT_FALSE(condition.waitTimeout(0) || condition.waitTimeout(-2));
    condition.signal();
    condition.signal();
    condition.wait();
    EXPECT_FALSE(condition.waitTimeout(1)) << "two signals are one";
    condition.signalAll();
    EXPECT_TRUE(condition.waitTimeout(-1) && !condition.waitTimeout(0));
    condition.signal();
    condition.reset();
    EXPECT_FALSE(condition.waitTimeout(0));
}

TEST(FConditionLatch, LetsAllWaitersPassAndIsClearAfterTheLast) {
    FCondition condition;
    Runner first([&] { condition.wait(); }), second([&] { EXPECT_TRUE(condition.waitTimeout(kPatienceMs)); });
    ASSERT_TRUE(first.runToSleep() && second.runToSleep());
    EXPECT_FALSE(condition.waitTimeout(1));
    EXPECT_TRUE(condition.waitTimeout(1)) << "a time-out beside another waiter unlatched it";
    condition.signalAll();
    EXPECT_TRUE(first.waitDead(-1) && second.waitDead(-1));
    EXPECT_FALSE(condition.waitTimeout(0));
}

TEST(FRwLockEntering, AWriterMayWriteAgainAndRead) {
    FRwLock lock;
    std::atomic<bool> entered{false};
    lock.waitToWrite();
    lock.waitToWrite();
    lock.waitToRead();
    Runner reader([&] {
        lock.waitToRead();
        entered = true;
    });
    ASSERT_TRUE(reader.runToSleep());
    lock.doneReading();
    lock.doneWriting();
    FThreadSleep(2);
    EXPECT_FALSE(entered) << "one of the two writes goes on";
    lock.doneWriting();
    EXPECT_TRUE(reader.waitDead(-1) && entered);
    lock.waitToRead();  // beside the other thread, which hasn't left
}

/** Also not a reader that is just on its way to the wait; it would hang. */
TEST(FRwLockEntering, NeitherMixesNorForgetsAnybody) {
    constexpr int kRounds = 8000, kReaders = 6;
    FRwLock lock;
    std::atomic<int> round{0}, coming{0}, inside{0}, left{0};
    const auto read = [&] {
        for (int i = 0; i < kRounds; ++i) {
            while (round <= i)
                sched_yield();
            ++coming;
            lock.waitToRead();
            EXPECT_LE(++inside, kReaders);
            --inside;
            lock.doneReading();
            ++left;
        }
    };
    const auto write = [&] {
        for (int i = 0; i < kRounds; ++i) {
            lock.waitToWrite();
            inside += 100;
            ++round;
            while (coming <= i * kReaders + i % kReaders)  // some of them, or all
                sched_yield();
            EXPECT_EQ(inside, 100);
            inside -= 100;
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
    EXPECT_TRUE(semaphore.acquire(0) && semaphore.acquire(0) && !semaphore.acquire(0));
    OSXSemaphore own(1), other(0);
    own.waitSignal(other);
    EXPECT_TRUE(other.timedWait(0) && !own.timedWait(0));
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
    storage->setData(nullptr);
    EXPECT_EQ(probe.references, 0);
}

TEST(FThreadStart, NamesTheThreadAndSetsThePriorityBeforeEntry) {
    const bool realTime = hasRealTime();
    constexpr std::pair<int32_t, int> kRows[] = {
        {0, 0 },
        {2, 0 },
        {3, 35},
        {4, 39},
        {5, 48},
        {6, 0 },
    };
    for (const auto& [priority, number] : kRows) {
        SCOPED_TRACE(priority);
        char shown[32] = {};
        int policy = -1;
        sched_param parameters{};
        Runner thread(
            [&] {
                pthread_getname_np(pthread_self(), shown, sizeof(shown));
                pthread_getschedparam(pthread_self(), &policy, &parameters);
            },
            "A name beyond the limit");
        thread.setPriority(priority);
        thread.prioritySeen = false;
        EXPECT_TRUE(thread.run() && thread.waitDead(-1) && thread.prioritySeenFirst);
        EXPECT_STREQ(shown, "A name beyond t");
        EXPECT_EQ(policy, realTime && number > 0 ? SCHED_RR : SCHED_OTHER);
        EXPECT_EQ(parameters.sched_priority, realTime ? number : 0);
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
    struct CountingSpy final : IThreadSpy {
        void threadConstructed(FThread*) override { ++seen; }
        void threadDestructed(FThread*) override { seen += 100; }
        std::atomic<int> seen{0};
    } spy;
    FThread::setSpy(&spy);
    FSemaphore farewell(0, "farewell");
    for (int i = 0; i < 20; ++i)
        EXPECT_TRUE((new SelfDestroyer(farewell))->run() && farewell.acquire(kPatienceMs));
    FThread::setSpy(nullptr);
    EXPECT_EQ(spy.seen, 20 * 101);
}

TEST(FThreadAffinity, BindsTheCallingThread) {
    runAll({[] {
        for (const auto& [cpu, count] : {
                 std::pair(0, 1), {100'000, 1                       },
                   {-1,      FCpuInfo().availableCpus}
        }) {
            FThread("any").setCpuAffinity(cpu);
            cpu_set_t mask;
            pthread_getaffinity_np(pthread_self(), sizeof(mask), &mask);
            EXPECT_EQ(CPU_COUNT(&mask), count);
        }
    }});
}

TEST(FAtomics, GiveThePreviousValue) {
    int value = 5;
    EXPECT_TRUE(FAtomicIncrement(value) == 5 && FAtomicAdd(value, 0) == 6);
    EXPECT_TRUE(!FAtomicCompareAndSwap(value, 0, 1) && FAtomicCompareAndSwap(value, 6, 1) && value == 1);
}
