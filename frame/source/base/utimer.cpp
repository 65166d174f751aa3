#include "base/utimer.h"
#include "base/fmessage.h"
#include "pluginterfaces/base/smartpointer.h"
#include <ctime>
#include <vector>

namespace Tessarine {
namespace {
constexpr uint32_t kTickMask = 0x7FFFFFFF;
constexpr int32_t kHalfCircle = 0x40000000;

uint32_t ticksOf(clockid_t clock) {
    timespec now;
    clock_gettime(clock, &now);
    return uint32_t(uint64_t(now.tv_sec) * 1000 + uint64_t(now.tv_nsec) / 1000000);
}

/** Timers whose owner went without them would stay for ever in a program that loads this copy again and again. */
struct LivingTimers {
    std::vector<UTimer*> timers;
    ~LivingTimers() {
        for (UTimer* timer : std::vector<UTimer*>(std::move(timers)))
            timer->release();
    }
};
__attribute__((init_priority(102))) LivingTimers living;  // goes behind all that might still hold a timer
}  // namespace

uint32_t SystemTime::getTicks() {
    return ticksOf(CLOCK_MONOTONIC);
}

int32_t UTicks::now() {
    return int32_t(SystemTime::getTicks() & kTickMask);
}

int32_t UTicks::coarseNow() {
    return int32_t(ticksOf(CLOCK_MONOTONIC_COARSE) & kTickMask);
}

int32_t UTicks::future(int32_t milliseconds) {
    return int32_t((SystemTime::getTicks() + uint32_t(milliseconds)) & kTickMask);
}

bool UTicks::reachedFuture(int32_t tick) {
    return isBigger(now(), tick);
}

bool UTicks::isBigger(int32_t a, int32_t b) {
    return a > b ? a - b <= kHalfCircle : b - a > kHalfCircle;
}

IMPLEMENT_ABSTRACT_CLASS(UTimer, CmObject)

UTimer::UTimer(CmObject* target, int32_t number, uint32_t periodMs) : receiver(target), id(number), period(periodMs) {
    living.timers.push_back(this);
    restart(0);
}

UTimer::~UTimer() {
    std::erase(living.timers, this);
    stop();
}

bool UTimer::stop() {
    if (!timer)
        return false;
    timer->stop();
    timer->release();
    timer = nullptr;
    return true;
}

bool UTimer::restart(uint32_t periodMs) {
    stop();
    if (periodMs)
        period = periodMs;
    timer = Timer::create(this, period);
    return timer != nullptr;
}

void UTimer::kill() {
    stop();
    release();
}

void UTimer::onTimer(Timer* /*fired*/) {
    if (!receiver)
        return;
    const IPtr<UTimer> held = this;  // the receiver may kill it
    FMessage message("Timer");
    message.add("Timer", this, false);
    receiver->notify(&message);
}

}  // namespace Tessarine
