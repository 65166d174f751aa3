#pragma once
#include <cstdint>
#include <limits>
#include <optional>
#include <string_view>

namespace TalvSim {
/** The text is a decimal number and nothing else, and lies in the range. */
std::optional<int64_t> wholeNumber(std::string_view text, int64_t min = std::numeric_limits<int64_t>::min(),
                                   int64_t max = std::numeric_limits<int64_t>::max());
/** The text is a decimal number from 0 to 100 and nothing else; "0.5" is one. */
std::optional<double> percentNumber(std::string_view text);
/** Printable ASCII: on the line a name is eight bytes without any encoding. */
bool isDeviceName(std::string_view text);
}  // namespace TalvSim
