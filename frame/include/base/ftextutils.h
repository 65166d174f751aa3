#pragma once
#include <cstdint>

namespace Tessarine {
class String;

/** Text forms of plain things. Numbers are in the C locale. */
class FTextUtils {
public:
    /** So many digits behind the point; negative: two, less a tail of "00" or "0". What rounds to zero has no sign. */
    static void printFloat(String& text, double number, int32_t digits);
};

}  // namespace Tessarine
