#include "network/ninterrupt.h"
#include <algorithm>
#include <cerrno>
#include <climits>
#include <poll.h>
#include <sys/eventfd.h>
#include <time.h>
#include <unistd.h>

namespace Tessarine {

int64_t NClock::nowMs() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return int64_t(now.tv_sec) * 1000 + now.tv_nsec / 1000000;
}

int64_t NClock::fromNowMs(int32_t ms) {
    return ms > 0 ? nowMs() + ms : kNever;
}

NInterrupt::NInterrupt() : event(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}

NInterrupt::~NInterrupt() {
    if (event >= 0)
        ::close(event);
}

void NInterrupt::cancel() {
    cancelled.store(true, std::memory_order_release);
    if (event >= 0)
        eventfd_write(event, 1);
}

NError NInterrupt::wait(int32_t descriptor, int16_t events, int64_t endMs) const {
    if (event < 0)
        return NError::kNoMeans;
    for (;;) {
        const int64_t leftMs = endMs == NClock::kNever ? -1 : std::clamp<int64_t>(endMs - NClock::nowMs(), 0, INT_MAX);
        pollfd watched[] = {
            {descriptor, events, 0},
            {event,      POLLIN, 0},
        };
        const int ready = ::poll(watched, std::size(watched), int(leftMs));
        if (isCancelled())
            return NError::kCancelled;
        if (ready > 0)
            return NError::kNone;
        if (ready < 0 && errno != EINTR)
            return NError::kNoMeans;
        if (ready == 0 && leftMs < INT_MAX)
            return NError::kTimeout;
    }
}

}  // namespace Tessarine
