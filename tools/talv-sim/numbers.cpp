#include "tools/talv-sim/numbers.h"
#include <algorithm>
#include <charconv>

namespace TalvSim {
namespace {
template <class T>
std::optional<T> number(std::string_view text) {
    T value{};
    const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), value);
    const bool whole = failure == std::errc() && end == text.data() + text.size();
    return whole ? std::optional(value) : std::nullopt;
}
}  // namespace

std::optional<int64_t> wholeNumber(std::string_view text, int64_t min, int64_t max) {
    const std::optional<int64_t> value = number<int64_t>(text);
    return value && *value >= min && *value <= max ? value : std::nullopt;
}

std::optional<double> percentNumber(std::string_view text) {
    const std::optional<double> value = number<double>(text);
    return value && *value >= 0 && *value <= 100 ? value : std::nullopt;
}

bool isDeviceName(std::string_view text) {
    return std::ranges::all_of(text, [](char c) { return c >= ' ' && c <= '~'; });
}
}  // namespace TalvSim
