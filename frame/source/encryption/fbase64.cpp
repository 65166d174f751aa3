#include "encryption/fbase64.h"
#include <cstdint>

namespace Tessarine {

std::string encodeBase64(std::string_view bytes) {
    constexpr char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    for (; !bytes.empty(); bytes.remove_prefix(bytes.size() < 3 ? bytes.size() : 3)) {
        uint32_t group = 0;
        for (size_t i = 0; i < 3; ++i)
            group = group << 8 | (i < bytes.size() ? uint8_t(bytes[i]) : 0u);
        for (size_t i = 0; i < 4; ++i)
            text += i <= bytes.size() ? kDigits[group >> (18 - 6 * i) & 63] : '=';
    }
    return text;
}

}  // namespace Tessarine
