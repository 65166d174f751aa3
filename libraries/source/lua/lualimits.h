#pragma once
#include "pluginterfaces/host/iscriptengine.h"
#include <cstddef>
#include <cstdint>

namespace Tessarine {

/** What scripts may take: memory for all that they keep and for each single value, and time for one run.

    A single value, which is a text, a table or the stack, is at most one block of kMaxBlock bytes: what the interpreter does with
    it without looking at the clock takes time that grows with its size, at worst with the square of that. */
class LuaLimits {
public:
    static constexpr size_t kMaxBlock = (1 << 20) + 1000;  // bytes: text of 1 MB, 65536 members of a list, 32768 others

    void set(uint32_t milliseconds, uint32_t bytes);
    uint32_t getMilliseconds() const { return maxMs; }

    /** A run begins. The result is what resume wants when it has ended. */
    int64_t start();
    void resume(int64_t deadline) { deadlineMs = deadline; }
    /** A call of the host took so long. Of each call the first part is the script's, so that one that calls forever is ended,
        too; the rest, as somebody may have been asked something, isn't. */
    void spare(int64_t milliseconds);
    bool isLongCall(int64_t milliseconds) const { return milliseconds > maxMs / kLongCalls; }
    /** For good: nothing more may run. */
    void end() { ended = true; }
    bool isExpired() const { return ended || now() > deadlineMs; }
    /** Milliseconds of a clock that costs little, and is up to 4 ms behind. */
    static int64_t now();

    size_t getUsedBytes() const { return usedBytes; }
    /** How much in use makes the next search for garbage worth while: twice what is now, at least so much, but before all is
        taken; for what the standard library refuses by itself, nobody looks for garbage first. */
    size_t nextSearch(size_t least) const;
    /** Is called before memory is refused, whereupon the interpreter looks for garbage. It must not allocate. */
    void setRefusal(void (*function)(void* user), void* user) {
        onRefusal = function;
        refusalUser = user;
    }
    /** Without limits on memory until false: what is given back must not fail. */
    void setLifted(bool state) { isLifted = state; }

    /** The interpreter's allocator; self is one of these. */
    static void* allocate(void* self, void* block, size_t oldBytes, size_t newBytes);

private:
    static constexpr int64_t kLongCalls = 10;  // of the host, in one run

    bool mayGrow(const void* block, size_t oldBytes, size_t newBytes) const;
    void* refuse();

    uint32_t maxMs = IScriptContext::kDefaultMs;
    size_t maxBytes = IScriptContext::kDefaultBytes, usedBytes = 0;
    int64_t deadlineMs = INT64_MAX;
    bool ended = false, isLifted = false;
    bool isTight = false;              // memory was refused, and none was granted since
    const void* shortTexts = nullptr;  // the interpreter's table of them
    void (*onRefusal)(void* user) = nullptr;
    void* refusalUser = nullptr;
};

}  // namespace Tessarine
