#pragma once
#include <cstdint>

namespace Tessarine {

/** A place, or a size, in whole pixels. */
class UPoint {
public:
    constexpr UPoint() = default;
    constexpr UPoint(int32_t x, int32_t y) : x(x), y(y) {}
    constexpr UPoint(const UPoint&) = default;
    constexpr UPoint& operator=(const UPoint&) = default;
    constexpr virtual ~UPoint() = default;

    bool operator==(const UPoint& other) const { return x == other.x && y == other.y; }
    UPoint operator+(const UPoint& other) const { return {clip(int64_t(x) + other.x), clip(int64_t(y) + other.y)}; }
    UPoint operator-(const UPoint& other) const { return {clip(int64_t(x) - other.x), clip(int64_t(y) - other.y)}; }
    UPoint operator-() const { return UPoint() - *this; }

    /** A coordinate that stays in range: what leaves it stops at the end. */
    static constexpr int32_t clip(int64_t value) {
        return value < INT32_MIN ? INT32_MIN : value > INT32_MAX ? INT32_MAX : int32_t(value);
    }

    int32_t x = 0;
    int32_t y = 0;
};

}  // namespace Tessarine
