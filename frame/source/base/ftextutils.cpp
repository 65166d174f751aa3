#include "base/ftextutils.h"
#include "base/source/fstring.h"
#include <algorithm>
#include <charconv>
#include <string_view>

namespace Tessarine {
namespace {
constexpr int32_t kMaxDigits = 1100;  // a double has no more digits behind the point that aren't zero
constexpr size_t kMaxWhole = 320;     // nor before it, sign and point included

bool isZero(std::string_view text) {
    return text.find_first_of("123456789in") == text.npos;  // infinity and what is no number aren't zero either
}
}  // namespace

void FTextUtils::printFloat(String& text, double number, int32_t digits) {
    char buffer[kMaxWhole + kMaxDigits];
    const int32_t shown = digits < 0 ? 2 : std::min(digits, kMaxDigits);
    const char* end = std::to_chars(buffer, std::end(buffer), number, std::chars_format::fixed, shown).ptr;
    std::string_view printed(buffer, size_t(end - buffer));
    if (printed.front() == '-' && isZero(printed))
        printed.remove_prefix(1);
    for (const std::string_view tail : {"00", "0"})
        if (digits < 0 && printed.ends_with(tail)) {
            printed.remove_suffix(tail.size());
            break;
        }
    text.assign(printed.data(), int32_t(printed.size()));
}

}  // namespace Tessarine
