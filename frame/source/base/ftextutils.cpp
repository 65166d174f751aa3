#include "base/ftextutils.h"
#include "base/source/fstring.h"
#include "collect/cmarray.h"
#include "collect/cmdate.h"
#include "collect/cmstring.h"
#include "pluginterfaces/base/fvariant.h"
#include <algorithm>
#include <charconv>
#include <cmath>
#include <string_view>

namespace Tessarine {
namespace {
constexpr int32_t kMaxDigits = 1100;  // a double has no more digits behind the point that aren't zero
constexpr size_t kMaxWhole = 320;     // nor before it, sign and point included

bool isZero(std::string_view text) {
    return text.find_first_of("123456789in") == text.npos;  // infinity and what is no number aren't zero either
}

constexpr const UTranslatedString* kFileSizeUnits[] = {&FTextUtils::stringKB, &FTextUtils::stringMB,
                                                       &FTextUtils::stringGB, &FTextUtils::stringTB};

struct FileSizeLetter {
    tchar letter;
    double factor;
};
constexpr FileSizeLetter kFileSizeLetters[] = {
    {u'K', 1024.              },
    {u'M', 1024. * 1024       },
    {u'G', 1024. * 1024 * 1024},
};

struct TimeUnit {
    int32_t seconds;
    const UTranslatedString* one;
    const UTranslatedString* many;
    const tchar* letter;

    const tchar* name(int64_t amount) const { return (amount == 1 ? one : many)->text(); }
};
enum TimeUnitIndex { kDays, kHours, kMinutes, kSeconds, kNumTimeUnits };
constexpr TimeUnit kTimeUnits[] = {
    {86400, &FTextUtils::stringDay,    &FTextUtils::stringDays,    u"d"},
    {3600,  &FTextUtils::stringHour,   &FTextUtils::stringHours,   u"h"},
    {60,    &FTextUtils::stringMinute, &FTextUtils::stringMinutes, u"m"},
    {1,     &FTextUtils::stringSecond, &FTextUtils::stringSeconds, u"s"},
};
static_assert(std::size(kTimeUnits) == kNumTimeUnits);

void printSampleRate(String& text, int64_t value) {
    text.printf(FTextUtils::kSampleRatePattern, double(value) / 1000);
}

void printBitDepth(String& text, int64_t value) {
    if (value == 32)
        text.assign("32 bit float");
    else
        text.printf("%d bit", int32_t(value));
}

void printBitRate(String& text, int64_t value) {
    text.printf(FTextUtils::kBitRatePattern, int32_t(value / 1000));
}

void printUnixTime(String& text, int64_t value) {
    FTextUtils::printDateTime(text, CmTime::fromUnixTime(value));
}

constexpr void (*kIntPrinters[])(String&, int64_t) = {
    printSampleRate,
    [](String& text, int64_t value) { FTextUtils::printChannels(text, int32_t(value)); },
    printBitDepth,
    printBitRate,
    FTextUtils::printFileSize,
    printUnixTime,
    [](String& text, int64_t value) { FTextUtils::printFriendlyDuration(text, value, true); },
    [](String& text, int64_t value) { text.printf("%X", uint32_t(value)); },
};
static_assert(std::size(kIntPrinters) == kHexFormat + 1, "each form has its printer");
}  // namespace

void FTextUtils::printInt(String& text, int64_t value, UTextFormatType type) {
    if (type >= 0 && type < int32_t(std::size(kIntPrinters)))
        kIntPrinters[type](text, value);
    else
        text.printf("%lld", static_cast<long long>(value));
}

bool FTextUtils::scanInt(const ConstString& text, int64_t& value, UTextFormatType type) {
    CmTime time;
    if (type == kFileSizeFormat)
        return scanFileSize(text, value);
    if (type == kDateTimeFormat)
        return scanDateTime(text, time) && time.toUnixTime(value);
    return text.scanInt64(value);
}

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

void FTextUtils::printFileSize(String& text, int64_t bytes) {
    constexpr int32_t kStep = 1024;
    if (bytes <= kStep) {
        text.printf(u"%lld %s", static_cast<long long>(bytes), stringBytes.text());
        return;
    }
    double size = double(bytes) / kStep;
    const auto* unit = kFileSizeUnits;
    for (; size > kStep && unit + 1 < std::end(kFileSizeUnits); ++unit)
        size /= kStep;
    text.printf(u"%.2f %s", size, (*unit)->text());
}

bool FTextUtils::scanFileSize(const ConstString& text, int64_t& bytes) {
    double number;
    if (!text.scanFloat(number, 0, true) || std::isnan(number))
        return false;
    String upper(text);
    upper.toUpper();
    const auto* row = std::ranges::find_if(
        kFileSizeLetters, [&](const FileSizeLetter& each) { return upper.findNext(0, each.letter) >= 0; });
    const double factor = row == std::end(kFileSizeLetters) ? 1 : row->factor;
    bytes = truncated64(number * factor + 0.5);
    return true;
}

void FTextUtils::printChannels(String& text, int32_t count) {
    if (count == 1 || count == 2)
        text.assign(count == 1 ? stringMono.text() : stringStereo.text());
    else
        text.printf(u"%d %s", count, stringChannels.text());
}

void FTextUtils::printVersion(String& text, int32_t a, int32_t b, int32_t c) {
    text.printf("%d.%d.%d", a, b, c);
}

int32_t FTextUtils::scanVersion(const ConstString& text, int32_t& a, int32_t& b, int32_t& c) {
    CmArray parts(0, -1);
    const int32_t total = CmString::split(text, parts, u'.', true, true);
    int32_t* const numbers[] = {&a, &b, &c};
    for (int32_t i = 0; i < std::min(total, 3); ++i)
        if (!static_cast<CmString*>(parts.at(i))->scanInt32(*numbers[i]))
            return i > 0 ? i : -1;
    return total;
}

bool FTextUtils::scanVersionToFloat(const ConstString& text, float& number) {
    int32_t a = 0, b = 0, c = 0;
    if (scanVersion(text, a, b, c) < 1 || b < 0 || b > 9 || c < 0 || c > 99)
        return false;
    number = float(a + b / 10. + c / 1000.);
    return true;
}

void FTextUtils::printFriendlyDuration(String& text, int64_t seconds, bool rough) {
    if (seconds < 61) {
        text.printf(u"%lld %s", static_cast<long long>(seconds), kTimeUnits[kSeconds].name(seconds));
        return;
    }
    int64_t amounts[kNumTimeUnits];
    int64_t rest = seconds;
    for (int32_t i = kDays; i < kNumTimeUnits; ++i) {
        amounts[i] = rest / kTimeUnits[i].seconds;
        rest %= kTimeUnits[i].seconds;
    }
    int32_t first = int32_t(std::ranges::find_if(amounts, [](int64_t amount) { return amount > 0; }) - amounts);
    if (amounts[first] == 1 && amounts[first + 1] == 0) {  // "24 hours" rather than "1 day"
        amounts[first + 1] = kTimeUnits[first].seconds / kTimeUnits[first + 1].seconds;
        ++first;
    }
    const int32_t end = rough ? std::min(first + 2, int32_t(kNumTimeUnits)) : int32_t(kNumTimeUnits);
    String all, part;
    for (int32_t i = first; i < end; ++i) {
        if (amounts[i] == 0)
            continue;
        part.printf(u"%lld %s", static_cast<long long>(amounts[i]), kTimeUnits[i].name(amounts[i]));
        all.append(all.isEmpty() ? u"" : u" ").append(part);
    }
    text.take(all);
}

void FTextUtils::printSegments(String& text, int32_t seconds, bool fixed, SegmentStyle style) {
    const int32_t minute = seconds / 60 % 60, second = seconds % 60;
    const TimeUnit& unit = kTimeUnits[seconds >= 3600 ? kHours : seconds >= 60 ? kMinutes : kSeconds];
    if (seconds >= 3600)
        print3Segments(text, seconds, fixed);
    else if (seconds >= 60)
        text.printf(fixed ? "%.2d:%.2d" : "%d:%.2d", minute, second);
    else
        text.printf(fixed ? "%.2d" : "%d", seconds);
    if (style == kShortUnit)
        text.append(u" ").append(unit.letter);
    else if (style == kUnitName)
        text.append(u" ").append(unit.name(seconds == unit.seconds ? 1 : 2));
}

void FTextUtils::print3Segments(String& text, int32_t seconds, bool fixed) {
    text.printf(fixed ? "%.2d:%.2d:%.2d" : "%d:%.2d:%.2d", seconds / 3600, seconds / 60 % 60, seconds % 60);
}

void FTextUtils::printDateTime(String& text, const CmTime& time) {
    String clock;
    time.getDate().toString(text);
    time.toString(clock);
    text.append(" ").append(clock);
}

bool FTextUtils::scanDateTime(const ConstString& text, CmTime& time) {
    String dateText(text);
    dateText.trim();
    const int32_t blank = dateText.findNext(0, ' ');
    String clockText("0:00:00");
    if (blank >= 0) {
        dateText.extract(clockText, uint32_t(blank));
        dateText.remove(uint32_t(blank));
    }
    CmDate date;
    CmTime clock;
    if (!date.fromString(dateText) || !clock.fromString(clockText))
        return false;
    time = CmTime(date, clock.getTotalSeconds());
    return true;
}

void FTextUtils::makeCopyString(String& text) {
    if (text.contains(stringCopy.text()))
        text.incrementTrailingNumber(0, u' ', 2, false);
    else
        text.append(u" ").append(stringCopy.text());
}

}  // namespace Tessarine
