#pragma once
#include <cstdint>

namespace Tessarine {

/** A place in whole pixels. */
struct UPoint {
    int32_t x = 0;
    int32_t y = 0;

    bool operator==(const UPoint&) const = default;
};

}  // namespace Tessarine
