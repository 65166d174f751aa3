#pragma once
#include "base/source/fstring.h"
#include <cmath>
#include <cstdio>
#include <string>
#include <string_view>

/** The first number in the text as sscanf finds it, tried at every place; a comma counts as a point for it. */
template <class Value>
bool scannedByLibrary(std::string text, const char* format, bool toEnd, Value& value) {
    const size_t comma = text.find(',');
    if (std::string_view(format) == "%lf" && comma != text.npos)
        text[comma] = '.';
    for (size_t at = 0; at < text.size(); ++at) {
        if (std::sscanf(text.c_str() + at, format, &value) == 1)
            return true;
        if (!toEnd)
            return false;
    }
    return false;
}

/** Null when ours finds the same numbers; else what it read another way. */
inline const char* scanFault(const Tessarine::ConstString& ours, const std::string& text, bool toEnd) {
    long long expected = 1;
    int64_t number = 1;
    if (ours.scanInt64(number, 0, toEnd) != scannedByLibrary(text, "%lld", toEnd, expected) || number != expected)
        return "an integer";
    unsigned long long expectedPositive = 1;
    uint64_t positive = 1;
    if (ours.scanUInt64(positive, 0, toEnd) != scannedByLibrary(text, "%llu", toEnd, expectedPositive) ||
        positive != expectedPositive)
        return "a positive integer";
    unsigned expectedHex = 1;
    uint8_t hex = 1;
    if (ours.scanHex(hex, 0, toEnd) != scannedByLibrary(text, "%x", toEnd, expectedHex) || hex != uint8_t(expectedHex))
        return "a hexadecimal number";
    double real = 1, expectedReal = 1;
    const bool found = ours.scanFloat(real, 0, toEnd) == scannedByLibrary(text, "%lf", toEnd, expectedReal);
    const bool same = real == expectedReal || (std::isnan(real) && std::isnan(expectedReal));
    return found && same && std::signbit(real) == std::signbit(expectedReal) ? nullptr : "a float";
}
