#include "base/source/fstringconvert.h"
#include "base/source/fstringprint.h"
#include <algorithm>
#include <charconv>
#include <cstdio>
#include <limits>
#include <string>

/** Numbers out of text, by the rules of the C library's scanf in the C locale. */

namespace Tessarine {
namespace {
/** What scanf skips in front of a number. */
template <class Char>
bool isBlank(Char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

template <class Char>
uint32_t digitValue(Char c) {
    if (c >= '0' && c <= '9')
        return uint32_t(c - '0');
    const uint32_t letter = uint32_t(c) | 0x20;
    return letter >= 'a' && letter <= 'f' ? letter - 'a' + 10 : 99;
}

struct ScannedInteger {
    uint64_t magnitude = 0;
    bool negative = false, overflow = false;

    int64_t asSigned() const {
        if (overflow || magnitude > uint64_t(INT64_MAX))
            return negative ? INT64_MIN : INT64_MAX;
        return negative ? -int64_t(magnitude) : int64_t(magnitude);
    }
    uint64_t asUnsigned() const { return overflow ? UINT64_MAX : negative ? 0 - magnitude : magnitude; }
};

/** An integer at the very start of the text, with a sign. */
template <uint32_t kBase, class View>
bool scanInteger(View text, ScannedInteger& number) {
    number = {};
    size_t at = 0;
    if (text[0] == '-' || text[0] == '+')
        number.negative = text[at++] == '-';
    const bool prefixed = kBase == 16 && text.size() > at + 2 && text[at] == '0' && (text[at + 1] | 0x20) == 'x' &&
                          digitValue(text[at + 2]) < kBase;
    if (prefixed)
        at += 2;
    const size_t first = at;
    for (uint32_t digit; at < text.size() && (digit = digitValue(text[at])) < kBase; ++at) {
        number.overflow |= __builtin_mul_overflow(number.magnitude, uint64_t(kBase), &number.magnitude);
        number.overflow |= __builtin_add_overflow(number.magnitude, uint64_t(digit), &number.magnitude);
    }
    return at > first;
}

/** Tries behind the blanks at offset; to the end: at the places behind it, too. scan gets the rest of the text, which
    isn't empty. */
template <class View, class Scan>
bool scanFrom(View text, size_t offset, bool toEnd, Scan scan) {
    for (size_t at = offset; at < text.size(); ++at) {
        while (at < text.size() && isBlank(text[at]))
            ++at;
        if (at < text.size() && scan(text.substr(at)))
            return true;
        if (!toEnd)
            return false;
    }
    return false;
}

template <uint32_t kBase>
bool scanIntegerFrom(const ConstString& text, uint32_t offset, bool toEnd, ScannedInteger& number) {
    return inItsWidth(text, [&](auto units) {
        return scanFrom(units, offset, toEnd, [&number](auto rest) { return scanInteger<kBase>(rest, number); });
    });
}

/** A float at the start of a text, taken unit by unit: which of them belong to it is scanf's own rule. */
template <class View>
class FloatScanner {
public:
    using Char = typename View::value_type;
    /** decimalComma: the comma that is a point; the first one that is met becomes it. */
    FloatScanner(View units, const Char*& decimalComma) : text(units), comma(decimalComma) {}

    /** false: there is none. */
    bool scan(double& value) {
        negative = text[0] == '-';
        at = negative || text[0] == '+';
        if (takeWord("nan"))
            return put(value, std::numeric_limits<double>::quiet_NaN());
        if (takeWord("inf"))
            return (!isLetter(0, 'i') || takeWord("inity")) && put(value, std::numeric_limits<double>::infinity());
        const bool hexadecimal = at + 1 < text.size() && text[at] == '0' && isLetter(1, 'x');
        if (hexadecimal) {
            copy();
            copy();
        }
        return takeMantissa(hexadecimal) && put(value, converted(hexadecimal));
    }

private:
    bool isLetter(size_t ahead, char letter) const {
        return at + ahead < text.size() && (text[at + ahead] | 0x20) == letter;
    }
    bool takeWord(std::string_view word) {
        for (size_t i = 0; i < word.size(); ++i)
            if (!isLetter(i, word[i]))
                return false;
        at += word.size();
        return true;
    }
    bool isPoint() {
        if (at < text.size() && text[at] == ',' && !comma)
            comma = &text[at];
        return at < text.size() && (text[at] == '.' || &text[at] == comma);
    }
    bool takeDigits(uint32_t base) {
        const size_t start = at;
        while (at < text.size() && digitValue(text[at]) < base)
            copy();
        return at > start;
    }
    bool takeMantissa(bool hexadecimal) {
        const uint32_t base = hexadecimal ? 16 : 10;
        bool any = takeDigits(base);
        if (isPoint()) {
            copy();
            any = takeDigits(base) || any || hexadecimal;  // the C library takes "0x." for a number
        }
        if (any && isLetter(0, hexadecimal ? 'p' : 'e')) {
            copy();
            if (at < text.size() && (text[at] == '-' || text[at] == '+'))
                copy();
            takeDigits(10);
        }
        return any;
    }
    void copy() {
        const char c = text[at] == ',' ? '.' : char(text[at]);
        ++at;
        if (size + 1 < std::size(local))
            local[size++] = c;
        else
            longer.append(longer.empty() ? std::string(local, size) + c : std::string(1, c));
    }
    bool put(double& value, double magnitude) const {
        value = negative ? -magnitude : magnitude;
        return true;
    }
    double converted(bool hexadecimal) {
        local[size] = 0;
        const char* digits = longer.empty() ? local : longer.c_str();
        double magnitude = 0;
        if (!hexadecimal &&
            std::from_chars(digits, digits + std::max(size, longer.size()), magnitude).ec == std::errc())
            return magnitude;
        return strtod_l(digits, nullptr, cLocale());
    }

    View text;
    const Char*& comma;
    size_t at = 0, size = 0;
    bool negative = false;
    char local[64];
    std::string longer;  // all of it where local was too short
};

template <class View>
bool scanFloatFrom(View text, uint32_t offset, bool toEnd, double& value) {
    const typename View::value_type* comma = nullptr;
    return scanFrom(text, offset, toEnd, [&](View rest) {
        if (rest[0] == ',' && !comma)
            comma = rest.data();
        return FloatScanner<View>(rest, comma).scan(value);
    });
}

template <class View>
int32_t trailingDigits(View text) {
    size_t first = text.size();
    while (first > 0 && ConstString::isCharDigit(text[first - 1]))
        --first;
    return int32_t(text.size() - first);
}
}  // namespace

bool ConstString::scanInt64(int64_t& value, uint32_t offset, bool scanToEnd) const {
    ScannedInteger number;
    if (!scanIntegerFrom<10>(*this, offset, scanToEnd, number))
        return false;
    value = number.asSigned();
    return true;
}

bool ConstString::scanUInt64(uint64_t& value, uint32_t offset, bool scanToEnd) const {
    ScannedInteger number;
    if (!scanIntegerFrom<10>(*this, offset, scanToEnd, number))
        return false;
    value = number.asUnsigned();
    return true;
}

bool ConstString::scanInt32(int32_t& value, uint32_t offset, bool scanToEnd) const {
    int64_t wide;
    if (!scanInt64(wide, offset, scanToEnd))
        return false;
    value = int32_t(wide);
    return true;
}

bool ConstString::scanUInt32(uint32_t& value, uint32_t offset, bool scanToEnd) const {
    uint64_t wide;
    if (!scanUInt64(wide, offset, scanToEnd))
        return false;
    value = uint32_t(wide);
    return true;
}

bool ConstString::scanHex(uint8_t& value, uint32_t offset, bool scanToEnd) const {
    ScannedInteger number;
    if (!scanIntegerFrom<16>(*this, offset, scanToEnd, number))
        return false;
    value = uint8_t(number.asUnsigned());
    return true;
}

bool ConstString::scanFloat(double& value, uint32_t offset, bool scanToEnd) const {
    return inItsWidth(*this, [&](auto units) { return scanFloatFrom(units, offset, scanToEnd, value); });
}

int32_t ConstString::getTrailingNumberIndex(uint32_t width) const {
    const int32_t digits = inItsWidth(*this, [](auto units) { return trailingDigits(units); });
    return digits == 0 || (width > 0 && uint32_t(digits) != width) ? -1 : int32_t(len) - digits;
}

int64_t ConstString::getTrailingNumber(int64_t otherwise) const {
    const int32_t index = getTrailingNumberIndex();
    int64_t number = otherwise;
    if (index >= 0)
        scanInt64(number, uint32_t(index), false);
    return number;
}

bool String::incrementTrailingNumber(uint32_t width, tchar separator, uint32_t minNumber, bool applyOnlyFormat) {
    if (width > 32)
        return false;
    uint32_t number = 1;
    const bool wide = isWide, asciiSeparator = isCharAscii(separator);
    const int32_t index = getTrailingNumberIndex();
    if (index >= 0) {
        scanUInt32(number, uint32_t(index), false);
        number += applyOnlyFormat ? 0 : 1;
        const uint32_t before = uint32_t(index) - 1;
        const bool separated =
            separator && index > 0 &&
            (testChar16(before, separator) || (asciiSeparator && testChar8(before, char(separator))));
        remove(uint32_t(index) - separated);
    }
    char digits[40];
    const int size = std::snprintf(digits, sizeof digits, "%0*u", int(width), std::max(number, minNumber));
    if (separator && !isEmpty())
        wide || !asciiSeparator ? append(separator) : append(char(separator));
    append(digits, size);
    if (wide)
        toWideString();
    return true;
}

}  // namespace Tessarine
