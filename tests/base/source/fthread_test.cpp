#include "base/source/fthread.h"
#include "base/source/fatomic.h"
#include "base/source/fcpu.h"
#include <chrono>
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
    /** The thread has come to sleep inside its work. */
    bool sleeps() const {
        std::string status;
        std::getline(std::ifstream("/proc/self/task/" + std::to_string(kernelId) + "/stat"), status);
        return kernelId != 0 && status.find(") S ") != std::string::npos;
    }

    std::function<void()> work;
    bool prioritySeen = false;
    bool prioritySeenFirst = false;
    std::atomic<pid_t> kernelId{0};
};

template <class Test>
bool comesTrue(Test test) {
    for (int32_t waited = 0; waited < kPatienceMs; ++waited) {
        if (test())
            return true;
        FThreadSleep(1);
    }
    return false;
}

bool comesToSleep(const Runner& runner) {
    return comesTrue([&] { return runner.sleeps(); });
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
        Runner other([&] {
            got = gEarly.trylock();
            if (got)
                gEarly.unlock();
        });
        other.run();
        other.waitDead(-1);
        return got;
    };
    gEarly.lock();
    EXPECT_TRUE(gEarly.trylock());
    EXPECT_FALSE(othersGetIt());
    gEarly.unlock();
    EXPECT_FALSE(othersGetIt());
    gEarly.unlock();
    EXPECT_TRUE(othersGetIt());
}

TEST(FLockHolding, KeepsThreadsApart) {
    FLock lock;
    int count = 0;
    const auto work = [&] {
        for (int i = 0; i < 5000; ++i) {
            const FGuard guard(lock);
            const FGuard again(lock);
            ++count;
        }
    };
    {
        Runner a(work), b(work);
        ASSERT_TRUE(a.run());
        ASSERT_TRUE(b.run());
    }
    EXPECT_EQ(count, 10000);
}

TEST(FConditionLatch, RemembersWhatNobodyWaitedFor) {
    FCondition condition;
    EXPECT_FALSE(condition.waitTimeout(0));
    EXPECT_FALSE(condition.waitTimeout(-2));
    condition.signal();
    condition.signal();
    condition.wait();
    EXPECT_FALSE(condition.waitTimeout(1)) << "two signals are one";
    condition.signal();
    EXPECT_TRUE(condition.waitTimeout(0));
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
    ASSERT_TRUE(first.run() && second.run());
    ASSERT_TRUE(comesToSleep(first) && comesToSleep(second));
    condition.signalAll();
    EXPECT_TRUE(first.waitDead(-1));
    EXPECT_TRUE(second.waitDead(-1));
    EXPECT_FALSE(condition.waitTimeout(0));
}

TEST(FConditionLatch, ATimeOutBesideAnotherWaiterLetsTheNextThrough) {
    FCondition condition;
    Runner waiter([&] { condition.wait(); });
    ASSERT_TRUE(waiter.run());
    EXPECT_TRUE(comesTrue([&] { return condition.waitTimeout(1); })) << "the first time-out beside it unlatches";
    condition.signalAll();
    EXPECT_TRUE(waiter.waitDead(-1));
    EXPECT_FALSE(condition.waitTimeout(0));
}

TEST(FConditionLatch, CountsACancelledWaiterNoLonger) {
    FCondition condition;
    Runner waiter([&] { condition.wait(); });
    ASSERT_TRUE(waiter.run());
    ASSERT_TRUE(comesToSleep(waiter));
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
    ASSERT_TRUE(reader.run());
    ASSERT_TRUE(comesToSleep(reader));
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
    ASSERT_TRUE(writer.run());
    ASSERT_TRUE(comesToSleep(writer));
    lock.doneReading();
    FThreadSleep(2);
    EXPECT_EQ(order, 1) << "one reader is left";
    lock.doneReading();
    EXPECT_TRUE(writer.waitDead(-1));
    EXPECT_EQ(readerAt, 1);
    EXPECT_EQ(writerAt, 2);
}

TEST(FRwLockEntering, NeitherMixesNorForgetsAnybody) {
    FRwLock lock;
    int text = 0;
    std::atomic<int> reading{0};
    const auto read = [&] {
        for (int i = 0; i < 500; ++i) {
            lock.waitToRead();
            ++reading;
            EXPECT_EQ(text % 2, 0);
            --reading;
            lock.doneReading();
        }
    };
    const auto write = [&] {
        for (int i = 0; i < 500; ++i) {
            lock.waitToWrite();
            ++text;
            EXPECT_EQ(reading, 0);
            ++text;
            lock.doneWriting();
        }
    };
    {
        Runner threads[] = {Runner(read), Runner(read), Runner(read), Runner(write), Runner(write)};
        for (Runner& thread : threads)
            ASSERT_TRUE(thread.run());
    }
    EXPECT_EQ(text, 2000);
}

TEST(FRwLockEntering, ForgetsNoReaderThatIsJustOnItsWayToTheWait) {
    constexpr int kRounds = 2000;
    FRwLock lock;
    std::atomic<int> round{0}, coming{0}, left{0};
    const auto read = [&] {
        for (int i = 1; i <= kRounds; ++i) {
            while (round < i)
                sched_yield();
            ++coming;
            lock.waitToRead();
            lock.doneReading();
            ++left;
        }
    };
    Runner first(read), second(read);
    ASSERT_TRUE(first.run() && second.run());
    int forgotten = 0;
    for (int i = 1; i <= kRounds && forgotten == 0; ++i) {
        lock.waitToWrite();
        round = i;
        while (coming < 2 * i - i % 2)  // one of them, or both
            sched_yield();
        lock.doneWriting();
        const auto start = std::chrono::steady_clock::now();
        while (left < 2 * i) {
            sched_yield();
            if (std::chrono::steady_clock::now() - start < std::chrono::seconds(5))
                continue;
            ++forgotten;
            lock.waitToWrite();  // frees it, so that the test comes to its end
            lock.doneWriting();
        }
    }
    round = kRounds;
    EXPECT_EQ(forgotten, 0);
}

TEST(FSemaphoreCount, IsTakenOneByOne) {
    FSemaphore semaphore(2, "two");
    EXPECT_TRUE(semaphore.acquire(0));
    EXPECT_TRUE(semaphore.acquire(-1));
    EXPECT_FALSE(semaphore.acquire(0));
    EXPECT_FALSE(semaphore.acquire(2));
    semaphore.release(3);
    semaphore.release(0);
    for (int i = 0; i < 3; ++i)
        EXPECT_TRUE(semaphore.acquire(0));
    EXPECT_FALSE(semaphore.acquire(0));
    OSXSemaphore own(0), other(0);
    own.signal();
    own.waitSignal(other);
    EXPECT_TRUE(other.timedWait(0));
    EXPECT_FALSE(own.timedWait(0));
}

TEST(FSemaphoreCount, ReleasesAllWhoWaitAndNobodyWhoComesLater) {
    FSemaphore semaphore(0, "gate");
    Runner first([&] { EXPECT_TRUE(semaphore.acquire(-1)); });
    Runner second([&] { EXPECT_TRUE(semaphore.acquire(kPatienceMs)); });
    ASSERT_TRUE(first.run() && second.run());
    ASSERT_TRUE(comesToSleep(first) && comesToSleep(second));
    semaphore.release(0);
    EXPECT_TRUE(first.waitDead(-1));
    EXPECT_TRUE(second.waitDead(-1));
    EXPECT_FALSE(semaphore.acquire(0));
}

namespace {
struct Probe final : FUnknown {
    int32_t queryInterface(const char*, void** obj) override { return noInterface(obj); }
    uint32_t addRef() override { return ++references; }
    uint32_t release() override { return --references; }
    std::atomic<uint32_t> references{0};
};
}  // namespace

TEST(FLocalThreadStorageData, IsOfItsThreadAndReleasedWithIt) {
    Probe probe, other;
    const std::unique_ptr<FLocalThreadStorage> storage(FLocalThreadStorage::create());
    ASSERT_TRUE(storage);
    EXPECT_EQ(storage->getData(), nullptr);
    storage->setData(&probe);
    storage->setData(&probe);
    EXPECT_EQ(probe.references, 1u);
    {
        Runner thread([&] {
            EXPECT_EQ(storage->getData(), nullptr);
            storage->setData(&other);
            storage->setData(&probe);
            EXPECT_EQ(other.references, 0u);
            EXPECT_EQ(probe.references, 2u);
        });
        ASSERT_TRUE(thread.run());
    }
    EXPECT_EQ(probe.references, 1u);
    EXPECT_EQ(storage->getData(), &probe);
    storage->setData(nullptr);
    EXPECT_EQ(probe.references, 0u);
}

TEST(FLocalThreadStorageData, AsksForNothingWithoutAKey) {
    std::vector<std::unique_ptr<FLocalThreadStorage>> all;
    while (all.size() <= PTHREAD_KEYS_MAX) {
        all.emplace_back(FLocalThreadStorage::create());
        if (!all.back())
            break;
    }
    EXPECT_EQ(all.back(), nullptr) << "the keys never ended";
    FLocalThreadStorage without;
    Probe probe;
    without.setData(&probe);
    EXPECT_EQ(without.getData(), nullptr);
    EXPECT_EQ(probe.references, 0u);
    all.clear();
    EXPECT_TRUE(without.init()) << "keys were given back";
}

TEST(FThreadStart, NamesTheThreadAndSetsThePriorityBeforeEntry) {
    const bool realTime = hasRealTime();
    struct Row {
        int32_t priority;
        int policy, number;
    };
    constexpr Row kRows[] = {
        {0,  SCHED_OTHER, 0 },
        {2,  SCHED_OTHER, 0 },
        {3,  SCHED_RR,    35},
        {4,  SCHED_RR,    39},
        {5,  SCHED_RR,    48},
        {6,  SCHED_OTHER, 0 },
        {-1, SCHED_OTHER, 0 },
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
    bool knewItself = false;
    bool waitedForItself = true;
    Runner* self = nullptr;
    Runner thread([&] {
        ++runs;
        knewItself = self->isInThreadContext();
        waitedForItself = self->waitDead(-1);
        gate.acquire(kPatienceMs);
    });
    self = &thread;
    EXPECT_TRUE(thread.waitDead(-1)) << "never ran";
    EXPECT_FALSE(thread.isInThreadContext());
    for (int expected = 1; expected <= 2; ++expected) {
        ASSERT_TRUE(thread.run());
        EXPECT_FALSE(thread.run());
        EXPECT_NE(thread.getThreadReference(), 0u);
        EXPECT_FALSE(thread.isInThreadContext());
        gate.release(1);
        EXPECT_TRUE(thread.waitDead(-1));
        EXPECT_TRUE(thread.waitDead(-1));
        EXPECT_EQ(thread.getThreadReference(), 0u);
        EXPECT_EQ(runs, expected);
    }
    EXPECT_TRUE(knewItself);
    EXPECT_FALSE(waitedForItself);
}

TEST(FThreadStart, FailsWithoutMemoryForAStack) {
    pthread_attr_t usual, huge;
    ASSERT_EQ(pthread_getattr_default_np(&usual), 0);
    pthread_attr_init(&huge);
    pthread_attr_setstacksize(&huge, size_t{1} << 47);
    ASSERT_EQ(pthread_setattr_default_np(&huge), 0);
    Runner thread([] {});
    EXPECT_FALSE(thread.run());
    EXPECT_TRUE(thread.waitDead(-1));
    pthread_setattr_default_np(&usual);
    EXPECT_TRUE(thread.run());
    pthread_attr_destroy(&usual);
    pthread_attr_destroy(&huge);
}

TEST(FThreadEnd, ComesByTerminateInASleep) {
    Runner thread([] {  // without locals: AddressSanitizer doesn't see that a cancelled thread leaves its frames
        for (;;)
            pause();
    });
    thread.terminate();
    ASSERT_TRUE(thread.run());
    ASSERT_TRUE(comesToSleep(thread));
    thread.terminate();
    EXPECT_TRUE(thread.waitDead(0));
}

namespace {
class CountingSpy final : public IThreadSpy {
public:
    void threadConstructed(FThread*) override { ++constructed; }
    void threadDestructed(FThread*) override { ++destructed; }

    std::atomic<int> constructed{0}, destructed{0};
};

class SelfDestroyer : public FThread {
public:
    explicit SelfDestroyer(FSemaphore& farewell) : FThread("SelfDestroyer"), farewell(farewell) {}
    void entry() override {
        FSemaphore& last = farewell;
        delete this;
        last.release(1);
    }

private:
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
    EXPECT_EQ(spy.constructed, 20);
    EXPECT_EQ(spy.destructed, 20);
}

TEST(FThreadAffinity, BindsTheCallingThread) {
    std::vector<int> counts;
    Runner thread([&] {
        for (const int32_t n : {0, 100'000, -1}) {
            thread.setCpuAffinity(n);
            cpu_set_t mask;
            pthread_getaffinity_np(pthread_self(), sizeof(mask), &mask);
            counts.push_back(CPU_COUNT(&mask));
        }
    });
    ASSERT_TRUE(thread.run());
    EXPECT_TRUE(thread.waitDead(-1));
    EXPECT_EQ(counts, (std::vector<int>{1, 1, FCpuInfo().availableCpus}));
}

TEST(FCpuInfoCounts, GoTogether) {
    const FCpuInfo info;
    EXPECT_GE(info.availableCpus, 1);
    EXPECT_LE(info.availableCpus, info.numberOfCpus);
    EXPECT_FALSE(info.isLogicalAvailable(-1));
    EXPECT_TRUE(info.isLogicalAvailable(info.availableCpus - 1));
    EXPECT_FALSE(info.isLogicalAvailable(info.availableCpus));
}

TEST(FThreadSleepTime, IsNotCutShort) {
    const auto start = std::chrono::steady_clock::now();
    FThreadSleep(0);
    FThreadSleep(15);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(15));
}

TEST(FAtomics, GiveThePreviousValue) {
    int value = 5;
    EXPECT_EQ(FAtomicIncrement(value), 5);
    EXPECT_EQ(FAtomicDecrement(value), 6);
    EXPECT_EQ(FAtomicAdd(value, -7), 5);
    EXPECT_FALSE(FAtomicCompareAndSwap(value, 0, 1));
    EXPECT_TRUE(FAtomicCompareAndSwap(value, -2, 1));
    EXPECT_EQ(value, 1);
    void* pointer = &value;
    EXPECT_FALSE(FAtomicCompareAndSwap(pointer, nullptr, &pointer));
    EXPECT_TRUE(FAtomicCompareAndSwap(pointer, &value, nullptr));
    EXPECT_EQ(pointer, nullptr);
}
