#include "base/source/fstring.h"
#include "base/source/fstringconvert.h"
#include <algorithm>
#include <cstdio>
#include <iterator>
#include <locale.h>
#include <string>

namespace Tessarine {
namespace {
constexpr uint32_t kMaxPrinted = 4096;  // units with the terminator

/** Process-wide and never freed, which the C library allows for this one. */
locale_t cLocale() {
    static const locale_t locale = newlocale(LC_ALL_MASK, "C", nullptr);
    return locale;
}

/** The C locale on this thread to the end of the block. */
class CLocaleScope {
public:
    CLocaleScope() : before(uselocale(cLocale())) {}
    ~CLocaleScope() { uselocale(before); }
    CLocaleScope(const CLocaleScope&) = delete;

private:
    locale_t before;
};

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
template <class View>
bool scanInteger(View text, uint32_t base, ScannedInteger& number) {
    size_t at = 0;
    if (at < text.size() && (text[at] == '-' || text[at] == '+'))
        number.negative = text[at++] == '-';
    const bool prefixed = base == 16 && text.size() > at + 2 && text[at] == '0' && (text[at + 1] | 0x20) == 'x' &&
                          digitValue(text[at + 2]) < base;
    if (prefixed)
        at += 2;
    const size_t first = at;
    for (; at < text.size() && digitValue(text[at]) < base; ++at) {
        uint64_t scaled;
        number.overflow |= __builtin_mul_overflow(number.magnitude, uint64_t(base), &scaled);
        number.overflow |= __builtin_add_overflow(scaled, uint64_t(digitValue(text[at])), &number.magnitude);
    }
    return at > first;
}

/** Tries to scan behind the blanks at offset; to the end: at the places behind it, too. */
template <class View, class Scan>
bool scanFrom(View text, size_t offset, bool toEnd, Scan scan) {
    for (size_t at = offset; at < text.size(); ++at) {
        while (at < text.size() && isBlank(text[at]))
            ++at;
        if (scan(text.substr(std::min(at, text.size()))))
            return true;
        if (!toEnd)
            return false;
    }
    return false;
}

bool scanIntegerFrom(const ConstString& text, uint32_t offset, bool toEnd, uint32_t base, ScannedInteger& number) {
    const auto scan = [base, &number](auto rest) {
        ScannedInteger scanned;
        const bool found = scanInteger(rest, base, scanned);
        if (found)
            number = scanned;
        return found;
    };
    return text.isWideString() ? scanFrom(units16(text), offset, toEnd, scan)
                               : scanFrom(units8(text), offset, toEnd, scan);
}

/** The text from offset on as strtod wants it; what isn't ASCII ends a number like any other character. */
std::string floatText(const ConstString& text, uint32_t offset) {
    std::string copy;
    const auto narrow = [&copy, offset](auto units) {
        for (auto c : units.substr(offset))
            copy += ConstString::isCharAscii(c) ? char(c) : '?';
    };
    if (text.isWideString())
        narrow(units16(text));
    else
        narrow(units8(text));
    const size_t comma = copy.find(',');
    if (comma != copy.npos)
        copy[comma] = '.';
    return copy;
}

template <class View>
size_t skipWhile(View text, size_t at, bool (*test)(typename View::value_type)) {
    while (at < text.size() && test(text[at]))
        ++at;
    return at;
}

/** A run of digits: zeros in front, then the digits that count. */
struct NumberRun {
    size_t first, significant, end;

    template <class View>
    NumberRun(View text, size_t at)
        : first(at), significant(skipWhile(text, at, [](typename View::value_type c) { return c == '0'; })),
          end(skipWhile(text, significant, &ConstString::isCharDigit)) {}
    int32_t zeros() const { return int32_t(significant - first); }
    int32_t digits() const { return int32_t(end - significant); }
};

/** By length, then digit by digit, then by the zeros in front. */
template <class View>
int32_t compareNumbers(View a, const NumberRun& runA, View b, const NumberRun& runB) {
    if (runA.digits() != runB.digits())
        return runA.digits() - runB.digits();
    for (int32_t i = 0; i < runA.digits(); ++i)
        if (a[runA.significant + i] != b[runB.significant + i])
            return a[runA.significant + i] - b[runB.significant + i];
    return runA.zeros() - runB.zeros();
}

template <class Char>
int32_t naturalValue(Char c, bool caseSensitive) {
    return int32_t(std::make_unsigned_t<Char>(caseSensitive ? c : ConstString::toUpper(c)));
}

template <class View>
int32_t compareNaturally(View a, View b, bool caseSensitive) {
    size_t atA = 0, atB = 0;
    while (atA < a.size() && atB < b.size()) {
        int32_t difference;
        if (ConstString::isCharDigit(a[atA]) && ConstString::isCharDigit(b[atB])) {
            const NumberRun runA(a, atA), runB(b, atB);
            difference = compareNumbers(a, runA, b, runB);
            atA = runA.end;
            atB = runB.end;
        } else {
            difference = naturalValue(a[atA++], caseSensitive) - naturalValue(b[atB++], caseSensitive);
        }
        if (difference != 0)
            return difference;
    }
    return (atA < a.size()) - (atB < b.size());
}

/** One place of a format, from behind the '%' on. */
struct PrintSpec {
    char flags[8] = {};
    int32_t width = -1, precision = -1;
    enum Length { kByte, kShort, kInt, kLong, kLongLong, kLongDouble } length = kInt;
    char conversion = 0;
};

constexpr char kPrintFlags[] = "-+ #0'";
constexpr std::string_view kSigned = "di", kUnsigned = "ouxX", kFloating = "fFeEgGaA";

/** Formats 16-bit text as the C library does 8-bit text; numbers are left to it. */
class WidePrinter {
public:
    explicit WidePrinter(va_list list) { va_copy(arguments, list); }
    ~WidePrinter() { va_end(arguments); }
    WidePrinter(const WidePrinter&) = delete;

    std::u16string_view print(std::u16string_view format);

private:
    bool hasFlag(char flag) const { return std::string_view(spec.flags).find(flag) != std::string_view::npos; }
    void put(tchar unit);
    size_t parse(std::u16string_view format, size_t at);
    size_t parseNumber(std::u16string_view format, size_t at, int32_t& number);
    size_t parseLength(std::u16string_view format, size_t at);
    void printSpec();
    void printText(std::u16string_view text);
    template <class Value>
    void printNumber(const char* length, Value value);
    int64_t nextSigned();
    uint64_t nextUnsigned();
    void printString16(const tchar* text);
    void printString8(const char* text);

    va_list arguments;
    PrintSpec spec;
    tchar printed[kMaxPrinted - 1];
    uint32_t count = 0;
};

void WidePrinter::put(tchar unit) {
    if (count < std::size(printed))
        printed[count++] = unit;
}

std::u16string_view WidePrinter::print(std::u16string_view format) {
    for (size_t at = 0; at < format.size() && count < std::size(printed);) {
        if (format[at] != '%') {
            put(format[at++]);
            continue;
        }
        at = parse(format, at + 1);
        printSpec();
    }
    return {printed, count};
}

size_t WidePrinter::parse(std::u16string_view format, size_t at) {
    spec = {};
    const auto here = [&] {
        return at < format.size() && ConstString::isCharAscii(format[at]) ? char(format[at]) : '\0';
    };
    for (size_t flags = 0; here() && std::string_view(kPrintFlags).find(here()) != std::string_view::npos; ++at)
        if (flags + 1 < std::size(spec.flags) && !hasFlag(here()))
            spec.flags[flags++] = here();
    at = parseNumber(format, at, spec.width);
    if (here() == '.') {
        spec.precision = 0;
        at = parseNumber(format, at + 1, spec.precision);
    }
    at = parseLength(format, at);
    spec.conversion = here();
    return std::min(at + 1, format.size());
}

size_t WidePrinter::parseNumber(std::u16string_view format, size_t at, int32_t& number) {
    if (at < format.size() && format[at] == '*') {
        number = std::clamp<int32_t>(va_arg(arguments, int), -int32_t(kMaxPrinted), kMaxPrinted);
        return at + 1;
    }
    for (; at < format.size() && ConstString::isCharDigit(format[at]); ++at)
        number = std::min<int32_t>(std::max(number, 0) * 10 + (format[at] - '0'), kMaxPrinted);
    return at;
}

size_t WidePrinter::parseLength(std::u16string_view format, size_t at) {
    for (; at < format.size(); ++at) {
        switch (format[at]) {
        case 'h':
            spec.length = spec.length == PrintSpec::kShort ? PrintSpec::kByte : PrintSpec::kShort;
            break;
        case 'l':
            spec.length = spec.length == PrintSpec::kLong ? PrintSpec::kLongLong : PrintSpec::kLong;
            break;
        case 'q':
        case 'j':
        case 'z':
        case 't':
            spec.length = PrintSpec::kLongLong;
            break;
        case 'L':
            spec.length = PrintSpec::kLongDouble;
            break;
        default:
            return at;
        }
    }
    return at;
}

int64_t WidePrinter::nextSigned() {
    switch (spec.length) {
    case PrintSpec::kByte:
        return int8_t(va_arg(arguments, int));
    case PrintSpec::kShort:
        return int16_t(va_arg(arguments, int));
    case PrintSpec::kInt:
        return va_arg(arguments, int);
    default:
        return va_arg(arguments, int64_t);
    }
}

uint64_t WidePrinter::nextUnsigned() {
    switch (spec.length) {
    case PrintSpec::kByte:
        return uint8_t(va_arg(arguments, unsigned));
    case PrintSpec::kShort:
        return uint16_t(va_arg(arguments, unsigned));
    case PrintSpec::kInt:
        return va_arg(arguments, unsigned);
    default:
        return va_arg(arguments, uint64_t);
    }
}

void WidePrinter::printSpec() {
    const char conversion = spec.conversion;
    if (conversion == '%')
        put(u'%');
    else if (conversion == 's' && spec.length < PrintSpec::kLong)
        printString8(va_arg(arguments, const char*));
    else if (conversion == 'S' || conversion == 's')
        printString16(va_arg(arguments, const tchar*));
    else if (conversion == 'C' || (conversion == 'c' && spec.length == PrintSpec::kLong))
        printText(std::u16string(1, tchar(va_arg(arguments, int))));
    else if (conversion == 'c')
        printText(WideText(String().assign(char(va_arg(arguments, int)))));
    else if (conversion == 'p')
        printNumber("", va_arg(arguments, const void*));
    else if (kSigned.find(conversion) != std::string_view::npos)
        printNumber("ll", static_cast<long long>(nextSigned()));
    else if (kUnsigned.find(conversion) != std::string_view::npos)
        printNumber("ll", static_cast<unsigned long long>(nextUnsigned()));
    else if (kFloating.find(conversion) == std::string_view::npos)
        return;
    else if (spec.length == PrintSpec::kLongDouble)
        printNumber("L", va_arg(arguments, long double));
    else
        printNumber("", va_arg(arguments, double));
}

/** Cut to the precision, filled with blanks to the width. */
void WidePrinter::printText(std::u16string_view text) {
    text = text.substr(0, spec.precision < 0 ? text.npos : size_t(spec.precision));
    const bool left = hasFlag('-') || spec.width < -1;
    const size_t width = size_t(spec.width == -1 ? 0 : std::abs(spec.width));
    const size_t blanks = width > text.size() ? width - text.size() : 0;
    for (size_t i = 0; !left && i < blanks; ++i)
        put(u' ');
    for (tchar unit : text)
        put(unit);
    for (size_t i = 0; left && i < blanks; ++i)
        put(u' ');
}

template <class Value>
void WidePrinter::printNumber(const char* length, Value value) {
    std::string format = std::string("%") + spec.flags;
    if (spec.width != -1)
        format += std::to_string(spec.width);
    if (spec.precision >= 0)
        format += '.' + std::to_string(spec.precision);
    format += length;
    format += spec.conversion;
    char number[kMaxPrinted];
    std::snprintf(number, sizeof number, format.c_str(), value);
    for (const char* digit = number; *digit; ++digit)
        put(tchar(*digit));
}

void WidePrinter::printString16(const tchar* text) {
    printText(text ? text : u"(null)");
}

void WidePrinter::printString8(const char* text) {
    printText(WideText(ConstString(text ? text : "(null)")));
}

template <class View>
size_t withoutTrailingZeros(View number) {
    const size_t point = number.rfind('.');
    if (point == number.npos)
        return number.size();
    return std::max(number.find_last_not_of('0') + 1, point + 2);
}
}  // namespace

int32_t strnatcmp8(const char* a, const char* b, bool caseSensitive) {
    return ConstString(a).naturalCompare(ConstString(b), caseSensitive ? kMatchCase : kIgnoreCase);
}

int32_t strnatcmp16(const tchar* a, const tchar* b, bool caseSensitive) {
    return ConstString(a).naturalCompare(ConstString(b), caseSensitive ? kMatchCase : kIgnoreCase);
}

int32_t ConstString::naturalCompare(const ConstString& other, CompareMode mode) const {
    return inOneWidth(*this, other, [mode](auto a, auto b) { return compareNaturally(a, b, mode == kMatchCase); });
}

bool ConstString::scanInt64(int64_t& value, uint32_t offset, bool scanToEnd) const {
    ScannedInteger number;
    if (!scanIntegerFrom(*this, offset, scanToEnd, 10, number))
        return false;
    value = number.asSigned();
    return true;
}

bool ConstString::scanUInt64(uint64_t& value, uint32_t offset, bool scanToEnd) const {
    ScannedInteger number;
    if (!scanIntegerFrom(*this, offset, scanToEnd, 10, number))
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
    if (!scanIntegerFrom(*this, offset, scanToEnd, 16, number))
        return false;
    value = uint8_t(number.asUnsigned());
    return true;
}

bool ConstString::scanFloat(double& value, uint32_t offset, bool scanToEnd) const {
    if (isEmpty() || offset >= len)
        return false;
    const std::string text = floatText(*this, offset);
    return scanFrom(std::string_view(text), 0, scanToEnd, [&value](std::string_view rest) {
        char* end;
        const double scanned = strtod_l(rest.data(), &end, cLocale());
        const bool found = end != rest.data();
        if (found)
            value = scanned;
        return found;
    });
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
    const CLocaleScope locale;
    String plain(format);
    plain.replace(u"%s", u"%S");
    WidePrinter printer(arguments);
    const std::u16string_view printed = printer.print(units16(plain));
    return assign(printed.data(), int32_t(printed.size()));
}

String& String::printInt64(int64_t value) {
    const long long number = value;
    return isWide ? printf(u"%lld", number) : printf("%lld", number);
}

String& String::printFloat(double value) {
    if (isWide)
        printf(u"%lf", value).remove(uint32_t(withoutTrailingZeros(units16(*this))));
    else
        printf("%lf", value).remove(uint32_t(withoutTrailingZeros(units8(*this))));
    return *this;
}

}  // namespace Tessarine
