#include "base/fpreferworkerthread.h"
#include "pluginterfaces/base/smartpointer.h"
#include <chrono>
#include <condition_variable>
#include <functional>
#include <gtest/gtest.h>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

using namespace Tessarine;

namespace {
/** What the jobs heard, in order; "stop" is a wish to cancel. */
class Journal {
public:
    void note(const std::string& entry) {
        const std::lock_guard guard(mutex);
        entries.push_back(entry);
        changed.notify_all();
    }
    /** Waits for so many entries. */
    std::vector<std::string> await(size_t count) {
        std::unique_lock guard(mutex);
        changed.wait_for(guard, std::chrono::seconds(20), [&] { return entries.size() >= count; });
        return entries;
    }

private:
    std::mutex mutex;
    std::condition_variable changed;
    std::vector<std::string> entries;
};

using Entries = std::vector<std::string>;

class Job final : public FWorkClass {
public:
    Job(
        Journal& journal, std::string name, std::function<void()> work = [] {})
        : journal(journal), name(std::move(name)), work(std::move(work)) {}

    void performThreadWork(void* data) override {
        journal.note(name + (data ? " works with data" : " works"));
        work();
    }
    void finished() override {
        journal.note(name + " finished");
        atEnd();
    }
    void cancelWork() override {
        journal.note(name + " stop");
        gate.signal();
    }

    FCondition gate;
    std::function<void()> atEnd = [] {};

private:
    Journal& journal;
    std::string name;
    std::function<void()> work;
};

template <class Worker>
class Workers : public testing::Test {
protected:
    Worker* worker = new Worker;
    Journal journal;
    Job first{journal, "first"}, second{journal, "second"};
    Job held{journal, "held", [this] { held.gate.wait(); }};
};
using Kinds = testing::Types<FWorkerThread, FPreferWorkerThread>;
TYPED_TEST_SUITE(Workers, Kinds);

class Prefer : public Workers<FPreferWorkerThread> {};
class Plain : public Workers<FWorkerThread> {};

/** Counts its living. */
class Owner : public CmObject {
public:
    Owner() { ++living; }
    ~Owner() override { --living; }
    inline static std::atomic<int32_t> living{0};
};
}  // namespace

TYPED_TEST(Workers, DoJobsInOrderAndEndWithoutAny) {
    int data = 0;
    EXPECT_FALSE(this->worker->addWork(nullptr, nullptr));
    this->worker->suspend();
    this->worker->addWork(&this->first, &data);
    this->worker->addWork(&this->second, nullptr);
    FThreadSleep(20);
    EXPECT_TRUE(this->journal.await(0).empty());
    this->worker->resume();
    EXPECT_EQ(this->journal.await(4),
              (Entries{"first works with data", "first finished", "second works", "second finished"}));
    this->worker->end();
    (new TypeParam)->end();
}

TYPED_TEST(Workers, EndCancelsWhatWaitsAndTakesNothingMore) {
    bool taken = true;
    this->first.atEnd = [&] { taken = this->worker->addWork(&this->first, nullptr); };
    this->worker->addWork(&this->held, nullptr);
    this->journal.await(1);
    this->worker->addWork(&this->first, nullptr);
    this->worker->addWork(&this->second, nullptr);
    this->worker->end();
    EXPECT_EQ(this->journal.await(0), (Entries{"held works", "held stop", "first stop", "first finished", "second stop",
                                               "second finished", "held finished"}));
    EXPECT_FALSE(taken);
}

TYPED_TEST(Workers, MayBeEndedByTheirOwnJobs) {
    this->worker->end();
    for (const bool atEnd : {false, true}) {
        Journal journal;
        TypeParam* worker = new TypeParam;
        Job job(journal, "job", [&] {
            if (!atEnd)
                worker->end();
            journal.note("behind");
        });
        job.atEnd = [&] {
            if (atEnd)
                worker->end();
            journal.note("over");
        };
        worker->addWork(&job, nullptr);
        const Entries duringWork{"job works", "job stop", "job finished", "over", "behind"};
        const Entries behindIt{"job works", "behind", "job finished", "over"};
        EXPECT_EQ(journal.await(atEnd ? 4 : 5), atEnd ? behindIt : duringWork);
        FThreadSleep(10);  // the thread leaves what is left of its worker
    }
}

TYPED_TEST(Workers, LoseNothingFromManyThreads) {
    constexpr int32_t kThreads = 4, kJobs = 500;
    class Counting final : public FWorkClass {
    public:
        void performThreadWork(void*) override { ++done; }
        void finished() override { ++ended; }
        std::atomic<int32_t> done{0}, ended{0};
    } job;
    {
        std::vector<std::jthread> givers;
        for (int32_t giver = 0; giver < kThreads; ++giver)
            givers.emplace_back([&] {
                for (int32_t i = 0; i < kJobs; ++i)
                    this->worker->addWork(&job, nullptr);
            });
    }
    for (int32_t ms = 0; job.ended < kThreads * kJobs && ms < 20'000; ++ms)
        FThreadSleep(1);
    EXPECT_EQ(job.done, kThreads * kJobs);
    this->worker->end();
}

TEST_F(Plain, GivesUpTheJobInProgressForGoodOrForLater) {
    (new FWorkerThread)->end();
    EXPECT_EQ(gWorkerThread, worker) << "the first one is the global one";
    worker->addWork(&held, nullptr);
    journal.await(1);
    worker->prependWork(&first, nullptr);
    worker->cancelCurrent(false);  // in front of the first
    EXPECT_EQ(journal.await(3)[2], "held works");
    worker->cancelCurrent(true);
    EXPECT_EQ(journal.await(7), (Entries{"held works", "held stop", "held works", "held stop", "held finished",
                                         "first works", "first finished"}));
    worker->end();
}

TEST_F(Prefer, AnOwnerWaitsOnceAndMayComeFirst) {
    OPtr<Owner> one(new Owner), two(new Owner), stranger(new Owner);
    worker->addWork(&held, stranger.get(), nullptr);
    journal.await(1);
    EXPECT_TRUE(worker->addWork(&first, one.get(), nullptr));
    EXPECT_FALSE(worker->addWork(&second, one.get(), nullptr));
    EXPECT_TRUE(worker->addWork(&second, two.get(), nullptr));
    EXPECT_TRUE(worker->prefer(two.get()));
    EXPECT_TRUE(worker->prefer(stranger.get())) << "in work";
    held.gate.signal();
    EXPECT_EQ(journal.await(6), (Entries{"held works", "held finished", "second works", "second finished",
                                         "first works", "first finished"}));
    EXPECT_FALSE(worker->prefer(two.get()));
    worker->end();
}

TEST_F(Prefer, ClearDropsTheWorkAndItsOwners) {
    for (Job* job : {&held, &first}) {
        const OPtr<Owner> owner(new Owner);
        worker->addWork(job, owner.get(), nullptr);
        journal.await(1);
    }
    EXPECT_EQ(Owner::living, 2);
    first.atEnd = [this] { worker->addWork(&second, nullptr); };
    worker->clear();
    EXPECT_LE(Owner::living, 1);
    EXPECT_EQ(journal.await(7).back(), "second finished") << "given while the others were dropped";
    worker->end();
    EXPECT_EQ(Owner::living, 0);
}
