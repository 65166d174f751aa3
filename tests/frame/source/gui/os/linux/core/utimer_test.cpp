#include "base/utimer.h"
#include "tests/frame/source/gui/os/linux/core/loopfixture.h"
#include <map>

using namespace Tessarine;

namespace {
/** Timers that note their number when they fire, and then do what the test says. */
class UTimerTest : public LoopTest {
protected:
    UTimerTest()
        : receiver([this](FMessage* message) {
              auto* timer = static_cast<UTimer*>(message->get("Timer"));
              EXPECT_TRUE(message->isType("Timer"));
              fired.push_back(timer->getID());
              if (const auto action = actions.find(timer->getID()); action != actions.end())
                  action->second(timer);
          }) {}
    ~UTimerTest() override {
        for (UTimer* timer : timers)
            timer->kill();
    }
    UTimer* add(int32_t id, uint32_t period) { return timers.emplace_back(new UTimer(&receiver, id, period)); }
    int32_t count(int32_t id) const { return int32_t(std::ranges::count(fired, id)); }

    Listener receiver;
    std::map<int32_t, std::function<void(UTimer*)>> actions;
    std::vector<int32_t> fired;
    std::vector<UTimer*> timers;
};
using Ids = std::vector<int32_t>;
}  // namespace

TEST_F(UTimerTest, FireByDueTimeAndOfThoseByTheirStartAfterABlockedLoop) {
    add(1, 40);
    add(2, 20);
    Ids expected = {2};
    for (int32_t id = 3; id < 40; ++id)
        expected.push_back(add(id, 30)->getID());
    expected.push_back(1);
    UController::wait(45);
    while (fired.size() < expected.size())
        turn();
    EXPECT_EQ(fired, expected) << "each once: what was missed is skipped";
}

TEST_F(UTimerTest, AreLookedAtAfreshAfterEachCallback) {
    UTimer *victim = nullptr, *later = nullptr;
    actions[1] = [&](UTimer*) {
        victim->stop();
        later->restart(1000);
    };
    add(1, 10);
    victim = add(2, 11);
    later = add(3, 12);
    add(4, 13);
    UController::wait(20);
    while (count(4) == 0)
        turn();
    EXPECT_EQ(count(2) + count(3), 0);
    EXPECT_FALSE(victim->isAlive());
    EXPECT_EQ(later->getPeriod(), 1000u);
}

TEST_F(UTimerTest, KeepTheirCadence) {
    constexpr int32_t kPeriod = 20, kBlock = 50;
    int32_t earliestPhase = kPeriod;
    for (int32_t attempt = 0; attempt < 5 && earliestPhase >= 7; ++attempt) {
        fired.clear();
        const int32_t start = UTicks::now();
        UTimer* timer = add(1, kPeriod);
        UController::wait(kBlock);
        ASSERT_TRUE(runUntil([&] { return fired.size() == 1; }));
        for (size_t n = 2; n < 5; ++n) {
            ASSERT_TRUE(runUntil([&] { return fired.size() == n; }));
            const int32_t passed = UTicks::now() - start;
            EXPECT_GE(passed, kPeriod * int32_t(n + 1)) << "too early";
            earliestPhase = std::min(earliestPhase, passed % kPeriod);
        }
        timer->stop();
    }
    EXPECT_LT(earliestPhase, 7) << "the pace is that of the start, not of the late firing";
}

TEST_F(UTimerTest, MayBeKilledOrStartedAnewInTheirOwnCall) {
    new UTimer(&receiver, 1, 0);  // no period is a short one
    actions[1] = [](UTimer* timer) { timer->kill(); };
    actions[2] = [](UTimer* timer) { timer->restart(7); };
    add(2, 5);
    ASSERT_TRUE(runUntil([&] { return count(2) >= 3; }));
    EXPECT_EQ(count(1), 1);
}

TEST_F(UTimerTest, GoOnInTheModalLoopOfOneOfThem) {
    int32_t depth = 0;
    actions[1] = [&](UTimer*) {
        EXPECT_EQ(depth, 0) << "it is still in its call";
        ++depth;
        const int32_t before = count(2);
        EXPECT_TRUE(runUntil([&] { return count(2) >= before + 3; }));
        --depth;
    };
    UTimer* outer = add(1, 5);
    add(2, 8);
    ASSERT_TRUE(runUntil([&] { return count(1) >= 2; })) << "and comes again afterwards";
    outer->stop();
    EXPECT_GE(count(2), 6);
}

TEST_F(UTimerTest, StayStillWhileDispatchIsOff) {
    add(1, 2);
    {
        const DisableDispatchingTimers outer, inner;
        runFor(15);
    }
    EXPECT_EQ(fired, Ids());
    EXPECT_TRUE(runUntil([&] { return !fired.empty(); }));
}

TEST_F(UTimerTest, StayDeadAfterTheEndOfTheLoop) {
    UTimer* running = add(1, 2);
    end();
    EXPECT_FALSE(add(2, 2)->isAlive());
    runFor(10);
    start();
    runFor(10);
    EXPECT_EQ(fired, Ids());
    EXPECT_TRUE(running->restart(0));
    EXPECT_TRUE(runUntil([&] { return count(1) > 0; })) << "unless someone starts them anew";
}
