#include "platformname.h"

namespace Tessarine {
namespace {
constexpr size_t kMaxBytesOfUnit = 3;

bool isHighSurrogate(tchar c) {
    return (c & 0xFC00) == 0xD800;
}
bool isLowSurrogate(tchar c) {
    return (c & 0xFC00) == 0xDC00;
}

/** The next character; 0: half a pair. */
uint32_t takeCharacter(std::u16string_view& text) {
    const tchar first = text.front();
    text.remove_prefix(1);
    if (!isHighSurrogate(first))
        return isLowSurrogate(first) ? 0 : first;
    if (text.empty() || !isLowSurrogate(text.front()))
        return 0;
    const uint32_t character = 0x10000 + ((first & 0x3FFu) << 10 | (text.front() & 0x3FFu));
    text.remove_prefix(1);
    return character;
}

char* putCharacter(char* out, uint32_t character) {
    const int32_t more = character < 0x80 ? 0 : character < 0x800 ? 1 : character < 0x10000 ? 2 : 3;
    constexpr uint32_t kLead[] = {0x00, 0xC0, 0xE0, 0xF0};
    *out++ = char(kLead[more] | character >> (6 * more));
    for (int32_t left = more; left-- > 0;)
        *out++ = char(0x80 | (character >> (6 * left) & 0x3F));
    return out;
}
}  // namespace

void PlatformName::convert(std::u16string_view text) {
    const size_t most = text.size() * kMaxBytesOfUnit + 1;
    if (most > kShort) {
        block = std::make_unique<char[]>(most);
        name = block.get();
    }
    char* out = name;
    while (!text.empty()) {
        const uint32_t character = takeCharacter(text);
        if (character == 0) {
            out = name;
            break;
        }
        out = putCharacter(out, character);
    }
    *out = 0;
}

}  // namespace Tessarine
