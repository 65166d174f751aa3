#include "base/utimer.h"
#include "base/fmessage.h"
#include "base/source/hooks.h"
#include "pluginterfaces/base/smartpointer.h"
#include <functional>
#include <gtest/gtest.h>
#include <unistd.h>
#include <vector>

using namespace Tessarine;

namespace {
/** A run loop whose time the test moves: it fires a timer by hand. */
class HandTimer final : public Timer {
public:
    HandTimer(ITimerCallback* callback, uint32_t periodMs) : callback(callback), period(periodMs) { ++living; }
    ~HandTimer() override { --living; }
    void stop() override { callback = nullptr; }

    static Timer* create(ITimerCallback* callback, uint32_t periodMs) {
        return latest = new HandTimer(callback, periodMs);
    }
    static void fire() {
        const IPtr<HandTimer> held = latest;
        if (held->callback)
            held->callback->onTimer(held);
    }

    ITimerCallback* callback;
    uint32_t period;
    inline static HandTimer* latest;
    inline static int32_t living = 0;
};

struct Receiver : CmObject {
    int32_t notify(FMessage* message) override {
        const auto* timer = classCast<UTimer>(message->get("Timer"));
        fired.push_back(timer && message->isType("Timer") ? timer->getID() : -1);
        if (then)
            then();
        return 1;
    }
    std::vector<int32_t> fired;
    std::function<void()> then;
};

class TimerTest : public testing::Test {
protected:
    TimerTest() { gRunLoopHooks.createTimer = HandTimer::create; }
    ~TimerTest() override {
        gRunLoopHooks = hooksBefore;
        EXPECT_EQ(HandTimer::living, 0);
    }
    Receiver receiver;
    RunLoopHooks hooksBefore = gRunLoopHooks;
};
}  // namespace

TEST(Ticks, CompareByTheShortWayRound) {
    constexpr int32_t kHalf = 0x40000000, kLast = 0x7FFFFFFF;
    const std::tuple<int32_t, int32_t, bool, bool> rows[] = {
        {5,         5,     false, false},
        {1,         0,     true,  false},
        {kHalf,     0,     true,  false},
        {kHalf + 1, 0,     false, true },
        {0,         kLast, true,  false},
        {100,       kLast, true,  false},
    };
    for (const auto& [a, b, isBigger, isSmaller] : rows) {
        EXPECT_EQ(UTicks::isBigger(a, b), isBigger) << a << " " << b;
        EXPECT_EQ(UTicks::isBigger(b, a), isSmaller) << b << " " << a;
    }
}

TEST(Ticks, RunForwardInMilliseconds) {
    const uint32_t ticks = SystemTime::getTicks();
    EXPECT_FALSE(UTicks::reachedFuture(UTicks::future(60'000)));
    EXPECT_TRUE(UTicks::reachedFuture(UTicks::future(-2)));
    EXPECT_GE(UTicks::future(0x7FFFFFFF), 0) << "31 bits, wherever the clock stands";
    const int32_t soon = UTicks::future(20);
    while (!UTicks::reachedFuture(soon))
        usleep(1000);
    EXPECT_GE(SystemTime::getTicks() - ticks, 20u);
}

TEST_F(TimerTest, SendsItselfUntilItIsStopped) {
    const OPtr<UTimer> timer(new UTimer(&receiver, 42, 500));
    HandTimer::fire();
    HandTimer::fire();
    EXPECT_EQ(receiver.fired, (std::vector<int32_t>{42, 42}));
    EXPECT_TRUE(timer->stop());
    EXPECT_FALSE(timer->stop() || timer->isAlive() || HandTimer::living);
}

TEST_F(TimerTest, RestartsWithTheStoredPeriodOrANewOne) {
    const OPtr<UTimer> timer(new UTimer(&receiver, 1, 500));
    EXPECT_EQ(HandTimer::latest->period, 500u);
    for (const auto& [asked, used] : {
             std::pair(0u, 500u), {20u, 20u},
               {0u,  20u}
    }) {
        EXPECT_TRUE(timer->restart(asked) && timer->getPeriod() == used);
        EXPECT_EQ(HandTimer::latest->period, used);
        EXPECT_EQ(HandTimer::living, 1) << "the one before has gone";
    }
    gRunLoopHooks.createTimer = nullptr;
    EXPECT_FALSE(timer->restart(0) || timer->isAlive()) << "nothing carries it";
    gRunLoopHooks.createTimer = [](ITimerCallback*, uint32_t) { return static_cast<Timer*>(nullptr); };
    EXPECT_FALSE(timer->restart(7));
    EXPECT_EQ(timer->getPeriod(), 7u);
}

/** What a receiver may do to the timer that just told it. */
TEST_F(TimerTest, StandsWhatItsReceiverDoes) {
    UTimer* timer = nullptr;
    const std::function<void()> rows[] = {[&] { timer->kill(); }, [&] { timer->stop(), timer->kill(); },
                                          [&] { timer->restart(9), timer->kill(); }};
    for (const auto& then : rows) {
        timer = new UTimer(&receiver, 1, 10);
        receiver.then = then;
        HandTimer::fire();
    }
    EXPECT_EQ(receiver.fired.size(), std::size(rows));
}
