#include "lualimits.h"
#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <utility>

namespace Tessarine {
namespace {
constexpr size_t kBigBlock = 64 << 10;  // bytes; what takes time to fill
constexpr size_t kLateBytes = 1 << 20;  // more than allowed, until what has no time left ends: to refuse costs a search
constexpr size_t kShortTexts = 1024;    // bytes of their table at first; of no other block before it
}  // namespace

void LuaLimits::set(uint32_t milliseconds, uint32_t bytes) {
    maxMs = milliseconds;
    maxBytes = bytes;
}

size_t LuaLimits::nextSearch(size_t least) const {
    const size_t room = maxBytes > usedBytes ? maxBytes - usedBytes : 0;
    return std::min(std::max(least, 2 * usedBytes), usedBytes + room / 2);
}

int64_t LuaLimits::now() {
    timespec time = {};
    clock_gettime(CLOCK_MONOTONIC_COARSE, &time);
    return int64_t(time.tv_sec) * 1000 + time.tv_nsec / 1000000;
}

int64_t LuaLimits::start() {
    return std::exchange(deadlineMs, now() + maxMs);
}

void LuaLimits::spare(int64_t milliseconds) {
    if (isLongCall(milliseconds))
        deadlineMs += milliseconds - maxMs / kLongCalls;
}

/** The table of short texts always may: without room it stays as it is, and is asked for again, after a search for garbage, at
    each text. Each refusal means such a search; so from one on to the next that is granted the clock counts for all. */
bool LuaLimits::mayGrow(const void* block, size_t oldBytes, size_t newBytes) const {
    if (isLifted || (block && block == shortTexts))
        return true;
    const size_t others = usedBytes - oldBytes;
    const bool hasRoom = newBytes <= kMaxBlock && others <= maxBytes && newBytes <= maxBytes - others;
    if (hasRoom && newBytes < kBigBlock && !isTight)
        return true;
    if (!isExpired())
        return hasRoom;
    return newBytes < kBigBlock && others + newBytes <= maxBytes + kLateBytes;
}

void* LuaLimits::refuse() {
    isTight = true;
    if (onRefusal)
        onRefusal(refusalUser);
    return nullptr;
}

void* LuaLimits::allocate(void* self, void* block, size_t oldBytes, size_t newBytes) {
    auto& limits = *static_cast<LuaLimits*>(self);
    const size_t held = block ? oldBytes : 0;  // for a new block the number says its kind
    const bool isShortTexts = block ? block == limits.shortTexts : !limits.shortTexts && newBytes == kShortTexts;
    if (newBytes == 0) {
        std::free(block);
        limits.usedBytes -= held;
        return nullptr;
    }
    const bool grows = newBytes > held;
    void* moved = !grows || limits.mayGrow(block, held, newBytes) ? std::realloc(block, newBytes) : nullptr;
    if (!moved)
        return limits.refuse();
    limits.isTight = limits.isTight && !grows;
    if (isShortTexts)
        limits.shortTexts = moved;
    limits.usedBytes += newBytes - held;
    return moved;
}

}  // namespace Tessarine
