// Numbers in any text, beside the C library's sscanf tried at every place.
#include "base/source/fstring.h"
#include "fuzz/demand.h"
#include <cmath>
#include <cstdio>
#include <string>

using namespace Tessarine;

namespace {
constexpr size_t kMaxText = 300;  // the plain way takes time by the square of it

template <class Value>
bool found(const std::string& text, const char* format, bool toEnd, Value& value) {
    for (size_t at = 0; at < text.size(); ++at) {
        if (std::sscanf(text.c_str() + at, format, &value) == 1)
            return true;
        if (!toEnd)
            return false;
    }
    return false;
}

bool same(double a, double b) {
    return std::signbit(a) == std::signbit(b) && (a == b || (std::isnan(a) && std::isnan(b)));
}

void checkIntegers(const ConstString& ours, const std::string& text, bool toEnd) {
    int64_t number = 1;
    long long expected = 1;
    demand(ours.scanInt64(number, 0, toEnd) == found(text, "%lld", toEnd, expected) && number == expected);
    uint64_t positive = 1;
    unsigned long long expectedPositive = 1;
    demand(ours.scanUInt64(positive, 0, toEnd) == found(text, "%llu", toEnd, expectedPositive));
    demand(positive == expectedPositive);
    uint8_t hexadecimal = 1;
    unsigned expectedHexadecimal = 1;
    demand(ours.scanHex(hexadecimal, 0, toEnd) == found(text, "%x", toEnd, expectedHexadecimal));
    demand(hexadecimal == uint8_t(expectedHexadecimal));
}

void checkFloat(const ConstString& ours, std::string text, bool toEnd) {
    const size_t comma = text.find(',');
    if (comma != text.npos)
        text[comma] = '.';
    double real = 1, expected = 1;
    demand(ours.scanFloat(real, 0, toEnd) == found(text, "%lf", toEnd, expected) && same(real, expected));
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0 || size > kMaxText)
        return 0;
    std::string text(data + 1, data + size);
    text = text.c_str();
    const bool toEnd = data[0] & 1;
    String ours(text.c_str());
    if (data[0] & 2)
        ours.toWideString();
    checkIntegers(ours, text, toEnd);
    checkFloat(ours, text, toEnd);
    return 0;
}
