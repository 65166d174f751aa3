#include "base/source/fstringprint.h"
#include "base/source/fstringconvert.h"
#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <iterator>
#include <string>

namespace Tessarine {
namespace {
/** The C locale on this thread to the end of the block. */
class CLocaleScope {
public:
    CLocaleScope() : before(uselocale(cLocale())) {}
    ~CLocaleScope() { uselocale(before); }
    CLocaleScope(const CLocaleScope&) = delete;

private:
    locale_t before;
};

enum PrintFlag : uint32_t { kLeft = 1, kPlus = 2, kBlank = 4, kAlternate = 8, kZeros = 16 };
constexpr std::string_view kFlagLetters = "-+ #0";  // in the order of their bits
enum PrintLength { kByte, kShort, kInt, kLong, kLongLong, kLongDouble };

/** One place of a format. */
struct PrintSpec {
    uint32_t flags = 0;
    int32_t width = 0, precision = -1;
    PrintLength length = kInt;
    char conversion = 0;  // 0: the format ended

    bool has(PrintFlag flag) const { return (flags & flag) != 0; }
};

constexpr size_t kMaxFloat = 310 + kMaxPrinted;  // digits of the largest double, and as many behind the point

/** Formats 16-bit text as the C library does 8-bit text in the C locale. */
class WidePrinter {
public:
    WidePrinter(tchar* printed, std::u16string_view text, va_list list)
        : format(text), next(printed), begin(printed), last(printed + kMaxPrinted - 1) {
        va_copy(arguments, list);
    }
    ~WidePrinter() { va_end(arguments); }
    WidePrinter(const WidePrinter&) = delete;

    uint32_t print();

private:
    tchar unit() const;
    void put(tchar c);
    template <class Char>
    void putAll(std::basic_string_view<Char> text);
    void putRepeated(tchar c, int64_t count);
    void parse();
    void parseNumber(int32_t& number);
    void parseLength();
    void printSpec();
    void printSigned();
    void printUnsigned();
    void printPointer();
    void printFloat();
    template <class Value>
    void printByLibrary(const char* length, Value value);
    void printCharacter(bool wide);
    void printText16(const tchar* text);
    void printText8(const char* text);
    template <class Char>
    void printField(std::basic_string_view<Char> text);
    void printNumber(std::string_view head, std::string_view digits, bool mayZeroFill);
    template <class Char>
    std::basic_string_view<Char> bounded(const Char* text) const;
    std::string_view signOf(bool negative) const;

    va_list arguments;
    std::u16string_view format;
    size_t at = 0;  // in the format
    PrintSpec spec;
    tchar *next, *begin, *last;  // last: room for the terminator alone
};

uint32_t WidePrinter::print() {
    while (at < format.size() && next < last) {
        const tchar c = unit();
        ++at;
        if (c != '%') {
            *next++ = c;
            continue;
        }
        parse();
        printSpec();
    }
    *next = 0;
    return uint32_t(next - begin);
}

/** The unit at hand; an s behind a percent sign is always the one of 16-bit text. */
tchar WidePrinter::unit() const {
    const tchar c = format[at];
    return c == 's' && at > 0 && format[at - 1] == '%' ? u'S' : c;
}

/** A 0 ends the whole text. */
void WidePrinter::put(tchar c) {
    if (c == 0)
        last = next;
    if (next < last)
        *next++ = c;
}

template <class Char>
void WidePrinter::putAll(std::basic_string_view<Char> text) {
    next = std::copy_n(text.data(), std::min<size_t>(text.size(), size_t(last - next)), next);
}

void WidePrinter::putRepeated(tchar c, int64_t count) {
    if (count > 0)
        next = std::fill_n(next, std::min<int64_t>(count, last - next), c);
}

void WidePrinter::parse() {
    spec = {};
    for (; at < format.size() && format[at] < 0x80; ++at) {
        const size_t flag = kFlagLetters.find(char(format[at]));
        if (flag == kFlagLetters.npos && format[at] != '\'')
            break;
        spec.flags |= flag == kFlagLetters.npos ? 0u : 1u << flag;
    }
    parseNumber(spec.width);
    if (spec.width < 0) {
        spec.flags |= kLeft;
        spec.width = -spec.width;
    }
    if (at < format.size() && format[at] == '.') {
        ++at;
        spec.precision = 0;
        parseNumber(spec.precision);
    }
    parseLength();
    if (at < format.size()) {
        const tchar c = unit();
        spec.conversion = c < 0x80 ? char(c) : '?';
        ++at;
    }
}

void WidePrinter::parseNumber(int32_t& number) {
    if (at < format.size() && format[at] == '*') {
        ++at;
        number = std::clamp<int32_t>(va_arg(arguments, int), -int32_t(kMaxPrinted), kMaxPrinted);
        return;
    }
    for (; at < format.size() && ConstString::isCharDigit(format[at]); ++at)
        number = std::min<int32_t>(number * 10 + (format[at] - '0'), kMaxPrinted);
}

void WidePrinter::parseLength() {
    for (; at < format.size(); ++at) {
        switch (format[at]) {
        case 'h':
            spec.length = spec.length == kShort ? kByte : kShort;
            break;
        case 'l':
            spec.length = spec.length == kLong ? kLongLong : kLong;
            break;
        case 'q':
        case 'j':
        case 'z':
        case 't':
            spec.length = kLongLong;
            break;
        case 'L':
            spec.length = kLongDouble;
            break;
        default:
            return;
        }
    }
}

void WidePrinter::printSpec() {
    switch (spec.conversion) {
    case '%':
        return put(u'%');
    case 's':
        return spec.length < kLong ? printText8(va_arg(arguments, const char*))
                                   : printText16(va_arg(arguments, const tchar*));
    case 'S':
        return printText16(va_arg(arguments, const tchar*));
    case 'c':
    case 'C':
        return printCharacter(spec.conversion == 'C' || spec.length == kLong);
    case 'd':
    case 'i':
        return printSigned();
    case 'o':
    case 'u':
    case 'x':
    case 'X':
        return printUnsigned();
    case 'p':
        return printPointer();
    case 'n':
        static_cast<void>(va_arg(arguments, void*));  // nothing is ever written back
        return;
    case 'f':
    case 'F':
    case 'e':
    case 'E':
    case 'g':
    case 'G':
    case 'a':
    case 'A':
        return spec.length == kLongDouble ? printByLibrary("L", va_arg(arguments, long double)) : printFloat();
    }
}

std::string_view WidePrinter::signOf(bool negative) const {
    return negative ? "-" : spec.has(kPlus) ? "+" : spec.has(kBlank) ? " " : "";
}

/** head and digits with zeros or blanks up to the width. */
void WidePrinter::printNumber(std::string_view head, std::string_view digits, bool mayZeroFill) {
    const int64_t fill = spec.width - int64_t(head.size() + digits.size());
    const bool left = spec.has(kLeft), zeros = mayZeroFill && spec.has(kZeros) && !left;
    putRepeated(u' ', left || zeros ? 0 : fill);
    putAll(head);
    putRepeated(u'0', zeros ? fill : 0);
    putAll(digits);
    putRepeated(u' ', left ? fill : 0);
}

/** The digits of an integer, at least as many as the precision wants. */
class IntegerText {
public:
    IntegerText(uint64_t value, const PrintSpec& spec) {
        const int32_t base = spec.conversion == 'o' ? 8 : spec.conversion == 'x' || spec.conversion == 'X' ? 16 : 10;
        char* const digits = text + kMaxPrinted;
        end = std::to_chars(digits, std::end(text), value, base).ptr;
        if (spec.conversion == 'X')
            std::transform(digits, end, digits, [](char c) { return ConstString::toUpper(c); });
        begin = value == 0 && spec.precision == 0 ? end : digits;
        const bool octalMark = base == 8 && spec.has(kAlternate) && (begin == end || *begin != '0');
        const int64_t wanted = std::max<int64_t>(spec.precision, end - begin + octalMark);
        while (end - begin < wanted)
            *--begin = '0';
    }
    operator std::string_view() const { return {begin, size_t(end - begin)}; }

private:
    char text[kMaxPrinted + 32];
    char *begin, *end;
};

void WidePrinter::printSigned() {
    const int64_t value = spec.length >= kLong ? va_arg(arguments, int64_t) : va_arg(arguments, int);
    const int64_t cut = spec.length == kByte ? int8_t(value) : spec.length == kShort ? int16_t(value) : value;
    const uint64_t magnitude = cut < 0 ? 0 - uint64_t(cut) : uint64_t(cut);
    printNumber(signOf(cut < 0), IntegerText(magnitude, spec), spec.precision < 0);
}

void WidePrinter::printUnsigned() {
    const uint64_t value = spec.length >= kLong ? va_arg(arguments, uint64_t) : va_arg(arguments, unsigned);
    const uint64_t cut = spec.length == kByte ? uint8_t(value) : spec.length == kShort ? uint16_t(value) : value;
    const bool marked = spec.has(kAlternate) && cut != 0;
    const std::string_view head = !marked ? "" : spec.conversion == 'x' ? "0x" : spec.conversion == 'X' ? "0X" : "";
    printNumber(head, IntegerText(cut, spec), spec.precision < 0);
}

void WidePrinter::printPointer() {
    const void* pointer = va_arg(arguments, const void*);
    spec.conversion = 'x';
    if (pointer)
        printNumber("0x", IntegerText(reinterpret_cast<uintptr_t>(pointer), spec), true);
    else
        printNumber("", "(nil)", false);
}

/** The plain forms are those of std::to_chars, the rest is left to the C library. */
void WidePrinter::printFloat() {
    const double value = va_arg(arguments, double);
    const char form = ConstString::toLower(spec.conversion);
    if (form == 'a' || spec.has(kAlternate))
        return printByLibrary("", value);
    const auto chars = form == 'f'   ? std::chars_format::fixed
                       : form == 'e' ? std::chars_format::scientific
                                     : std::chars_format::general;
    char digits[kMaxFloat];
    char* const end =
        std::to_chars(digits, std::end(digits), std::fabs(value), chars, spec.precision < 0 ? 6 : spec.precision).ptr;
    if (form != spec.conversion)
        std::transform(digits, end, digits, [](char c) { return ConstString::toUpper(c); });
    printNumber(signOf(std::signbit(value)), {digits, size_t(end - digits)}, std::isfinite(value));
}

template <class Value>
void WidePrinter::printByLibrary(const char* length, Value value) {
    std::string pattern = "%";
    for (size_t flag = 0; flag < kFlagLetters.size(); ++flag)
        if (spec.flags & 1u << flag)
            pattern += kFlagLetters[flag];
    pattern += "*.*";
    pattern += length;
    pattern += spec.conversion;
    char printed[kMaxPrinted];
    const CLocaleScope locale;
    std::snprintf(printed, sizeof printed, pattern.c_str(), spec.width, spec.precision, value);
    putAll(std::string_view(printed));
}

template <class Char>
void WidePrinter::printField(std::basic_string_view<Char> text) {
    const int64_t fill = spec.width - int64_t(text.size());
    putRepeated(u' ', spec.has(kLeft) ? 0 : fill);
    putAll(text);
    putRepeated(u' ', spec.has(kLeft) ? fill : 0);
}

/** Up to the terminator or the precision, whichever comes first. */
template <class Char>
std::basic_string_view<Char> WidePrinter::bounded(const Char* text) const {
    const int32_t count = spec.precision < 0 ? int32_t(kMaxPrinted) : spec.precision;
    return {text, size_t(std::find(text, text + count, Char(0)) - text)};
}

void WidePrinter::printText16(const tchar* text) {
    printField(bounded(text ? text : u"(null)"));
}

void WidePrinter::printText8(const char* text) {
    const std::string_view narrow = bounded(text ? text : "(null)");
    tchar wide[kMaxPrinted];
    const int64_t size = decodeText(narrow, wide, std::size(wide), kCodePageDefault);
    printField(std::u16string_view(wide, size_t(std::max<int64_t>(size, 0))));
}

void WidePrinter::printCharacter(bool wide) {
    const int value = va_arg(arguments, int);
    const char narrow = char(value);
    tchar c = tchar(value);
    if (!wide && decodeText({&narrow, 1}, &c, 1, kCodePageDefault) < 1)
        c = 0;
    putRepeated(u' ', spec.has(kLeft) ? 0 : spec.width - 1);
    put(c);
    putRepeated(u' ', spec.has(kLeft) ? spec.width - 1 : 0);
}

/** Without the zeros at the end, one digit behind the point apart. */
std::string_view withoutTrailingZeros(std::string_view number) {
    const size_t point = number.rfind('.');
    if (point == number.npos)
        return number;
    return number.substr(0, std::max(number.find_last_not_of('0') + 1, point + 2));
}

String& assignAscii(String& string, std::string_view text) {
    const bool wide = string.isWideString();
    string.assign(text.data(), int32_t(text.size()));
    if (wide)
        string.toWideString();
    return string;
}
}  // namespace

locale_t cLocale() {
    static const locale_t locale = newlocale(LC_ALL_MASK, "C", nullptr);
    return locale;
}

uint32_t printUnits(tchar* printed, const tchar* format, va_list arguments) {
    return WidePrinter(printed, format ? format : u"", arguments).print();
}

int32_t sprintf16(tchar* dst, const tchar* format, ...) {
    tchar printed[kMaxPrinted];
    va_list arguments;
    va_start(arguments, format);
    const uint32_t length = printUnits(printed, format, arguments);
    va_end(arguments);
    std::copy_n(printed, length + 1, dst);
    return int32_t(length);
}

String& String::printf(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    vprintf(format, arguments);
    va_end(arguments);
    return *this;
}

String& String::printf(const tchar* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    vprintf(format, arguments);
    va_end(arguments);
    return *this;
}

String& String::vprintf(const char* format, va_list arguments) {
    const CLocaleScope locale;
    char printed[kMaxPrinted];
    return std::vsnprintf(printed, sizeof printed, format, arguments) < 0 ? *this : assign(printed);
}

String& String::vprintf(const tchar* format, va_list arguments) {
    tchar printed[kMaxPrinted];
    const uint32_t length = printUnits(printed, format, arguments);
    return assign(printed, int32_t(length));
}

String& String::printInt64(int64_t value) {
    char digits[24];
    return assignAscii(*this, {digits, size_t(std::to_chars(digits, std::end(digits), value).ptr - digits)});
}

String& String::printFloat(double value) {
    char digits[kMaxFloat];
    const auto end = std::to_chars(digits, std::end(digits), value, std::chars_format::fixed, 6).ptr;
    return assignAscii(*this, withoutTrailingZeros({digits, size_t(end - digits)}));
}

}  // namespace Tessarine
