#pragma once
#include "network/nerror.h"
#include <atomic>

namespace Tessarine {

/** Points in time: milliseconds of the monotonic clock. */
namespace NClock {
constexpr int64_t kNever = INT64_MAX;
int64_t nowMs();
/** So many milliseconds from now; 0 or less: never. */
int64_t fromNowMs(int32_t ms);
}  // namespace NClock

/** Waiting for a descriptor, which another thread can end for good.

    Threads   cancel() and isCancelled() from any, the rest one at a time. */
class NInterrupt {
public:
    NInterrupt();
    ~NInterrupt();
    NInterrupt(const NInterrupt&) = delete;
    NInterrupt& operator=(const NInterrupt&) = delete;

    /** All waits end, those to come too. */
    void cancel();
    bool isCancelled() const { return cancelled.load(std::memory_order_acquire); }
    /** Until one of the events of poll is there. kTimeout, kCancelled, or kNoMeans where the system can't. */
    NError wait(int32_t descriptor, int16_t events, int64_t endMs) const;

private:
    std::atomic<bool> cancelled{false};
    int32_t event;  // owned; readable once cancelled
};

}  // namespace Tessarine
