#pragma once
#include "base/source/fstring.h"
#include <algorithm>
#include <string>
#include <string_view>

using Bytes = std::basic_string_view<uint8_t>;

/** A text of an input: of UTF-8, or with any units, half pairs among them. */
inline std::u16string unitsOf(Bytes bytes, bool any) {
    using namespace Tessarine;
    std::u16string text;
    if (any) {
        for (size_t i = 0; i + 1 < bytes.size(); i += 2)
            text += tchar(std::max(1, bytes[i] << 8 | bytes[i + 1]));
        return text;
    }
    FString parsed;
    parsed.fromUTF8(std::string(bytes.begin(), bytes.end()).c_str());
    return parsed.text16();
}

/** Halves without their others, which UTF-8 can't hold. */
inline bool hasHalfPairs(const std::u16string& text) {
    bool open = false;
    for (const char16_t c : text) {
        const bool high = (c & 0xFC00) == 0xD800, low = (c & 0xFC00) == 0xDC00;
        if (open != low)
            return true;
        open = high;
    }
    return open;
}
