#pragma once
#include <cstdint>

namespace Tessarine {

/** Passes on whether a call of the system was done. If it wasn't and failures are to be shown, the user sees why. errno stays. */
bool told(bool done);

/** While one stands, told() shows nothing on this thread: the operation around it tells of the failure, once. */
class QuietErrors {
public:
    QuietErrors() { ++depth; }
    ~QuietErrors() { --depth; }
    QuietErrors(const QuietErrors&) = delete;
    QuietErrors& operator=(const QuietErrors&) = delete;
    static bool stand() { return depth > 0; }

private:
    static thread_local int32_t depth;
};

}  // namespace Tessarine
