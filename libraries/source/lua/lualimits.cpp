#include "lualimits.h"
#include <cstdlib>
#include <ctime>

namespace Tessarine {
namespace {
constexpr size_t kBigBlock = 64 << 10;  // bytes; what takes time to fill
}

void LuaLimits::set(uint32_t milliseconds, uint32_t bytes) {
    maxMs = milliseconds;
    maxBytes = bytes;
}

int64_t LuaLimits::now() {
    timespec time = {};
    clock_gettime(CLOCK_MONOTONIC_COARSE, &time);
    return int64_t(time.tv_sec) * 1000 + time.tv_nsec / 1000000;
}

bool LuaLimits::mayGrow(size_t oldBytes, size_t newBytes) const {
    const bool inTime = newBytes < kBigBlock || !isExpired();
    return inTime && usedBytes - oldBytes <= maxBytes && newBytes <= maxBytes - (usedBytes - oldBytes);
}

void* LuaLimits::allocate(void* self, void* block, size_t oldBytes, size_t newBytes) {
    auto& limits = *static_cast<LuaLimits*>(self);
    const size_t held = block ? oldBytes : 0;  // for a new block the number says its kind
    if (newBytes > held && !limits.mayGrow(held, newBytes)) {
        if (limits.onRefusal)
            limits.onRefusal(limits.refusalUser);
        return nullptr;
    }
    void* moved = newBytes ? std::realloc(block, newBytes) : nullptr;
    if (newBytes && !moved)
        return nullptr;
    if (!newBytes)
        std::free(block);
    limits.usedBytes += newBytes - held;
    return moved;
}

}  // namespace Tessarine
