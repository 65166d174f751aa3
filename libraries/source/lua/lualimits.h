#pragma once
#include <cstddef>
#include <cstdint>

namespace Tessarine {

/** What scripts may take: memory for all that they keep, and time for one run. */
class LuaLimits {
public:
    void set(uint32_t milliseconds, uint32_t bytes);
    uint32_t getMilliseconds() const { return maxMs; }

    /** A run begins. */
    void start() { deadlineMs = now() + maxMs; }
    void extend(int64_t milliseconds) { deadlineMs += milliseconds; }
    /** For good: nothing more may run. */
    void end() { ended = true; }
    bool isExpired() const { return ended || now() > deadlineMs; }
    /** Milliseconds of a clock that costs little, and is up to 4 ms behind. */
    static int64_t now();

    size_t getUsedBytes() const { return usedBytes; }
    /** Is called before memory is refused, whereupon the interpreter looks for garbage. It must not allocate. */
    void setRefusal(void (*function)(void* user), void* user) {
        onRefusal = function;
        refusalUser = user;
    }

    /** The interpreter's allocator; self is one of these. */
    static void* allocate(void* self, void* block, size_t oldBytes, size_t newBytes);

private:
    bool mayGrow(size_t oldBytes, size_t newBytes) const;

    uint32_t maxMs = 1000;
    size_t maxBytes = 16 << 20, usedBytes = 0;
    int64_t deadlineMs = INT64_MAX;
    bool ended = false;
    void (*onRefusal)(void* user) = nullptr;
    void* refusalUser = nullptr;
};

}  // namespace Tessarine
