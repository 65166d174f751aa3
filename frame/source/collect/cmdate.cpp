#include "collect/cmdate.h"
#include "base/source/fstring.h"
#include "storage/farchive.h"
#include "storage/fbstream.h"
#include "storage/fpersistent.h"
#include <algorithm>
#include <charconv>
#include <chrono>
#include <cstdio>
#include <langinfo.h>
#include <locale.h>
#include <string>
#include <string_view>
#include <time.h>

namespace Tessarine {

IMPLEMENT_CLASS(CmDate, CmObject)
IMPLEMENT_CLASS(CmTime, CmObject)

namespace {
constexpr char kJulianDayKey[] = "JulianDay";
constexpr char kSecondsKey[] = "Seconds";

using std::chrono::year_month_day;

constexpr int32_t kJulianDayOf1970 = 2440588;  // 1 January

constexpr int32_t julianDayOf(const year_month_day& date) {
    return static_cast<int32_t>(std::chrono::sys_days(date).time_since_epoch().count()) + kJulianDayOf1970;
}
constexpr year_month_day calendarDay(int32_t julianDay) {
    return std::chrono::sys_days(std::chrono::days(julianDay - kJulianDayOf1970));
}

constexpr int32_t kFirstYear = 1, kLastYear = 32767;
constexpr int32_t kFirstDay = julianDayOf({std::chrono::year(kFirstYear), std::chrono::January, std::chrono::day(1)});
constexpr int32_t kLastDay = julianDayOf({std::chrono::year(kLastYear), std::chrono::December, std::chrono::day(31)});

constexpr int32_t kSecondsADay = 24 * 60 * 60;

tm systemFields(const CmDate& date) {
    tm fields = {};
    fields.tm_year = date.getYear() - 1900;
    fields.tm_mon = date.getMonth() - 1;
    fields.tm_mday = date.getDay();
    fields.tm_wday = date.getWeekday();
    fields.tm_yday = date.getJulianDay() - CmDate(date.getYear(), 1, 1).getJulianDay();
    fields.tm_isdst = -1;
    return fields;
}

CmDate dateOf(const tm& fields) {
    if (fields.tm_year > kLastYear)
        return CmDate();
    return CmDate(fields.tm_year + 1900, fields.tm_mon + 1, fields.tm_mday);
}

/** How the user of this environment writes dates. */
class UserDates {
public:
    UserDates() : locale(newlocale(LC_TIME_MASK, "", nullptr)) {
        constexpr std::string_view kPlainFormat = "%m/%d/%y", kShortYear = "%y";
        const std::string_view itsFormat = locale ? nl_langinfo_l(D_FMT, locale) : "";
        if (itsFormat.empty() || itsFormat == kPlainFormat)
            return;  // the user hasn't chosen one
        format = itsFormat;
        for (size_t at; (at = format.find(kShortYear)) != format.npos;)
            format[at + 1] = 'Y';
    }
    ~UserDates() {
        if (locale)
            freelocale(locale);
    }
    UserDates(const UserDates&) = delete;
    UserDates& operator=(const UserDates&) = delete;

    /** false: the user has no form of his own. */
    bool print(const CmDate& date, String& text) const {
        char printed[256];
        const tm fields = systemFields(date);
        return !format.empty() && strftime_l(printed, sizeof printed, format.c_str(), &fields, locale) > 0 &&
               text.fromUTF8(printed);
    }
    CmDate scan(const std::string& utf8) const {
        tm fields = {};
        const char* end = format.empty() ? nullptr : strptime_l(utf8.c_str(), format.c_str(), &fields, locale);
        return end && *end == 0 ? dateOf(fields) : CmDate();
    }

private:
    locale_t locale;
    std::string format;  // for strftime; empty: none
};

/** UTF-8 without blanks around it. */
std::string trimmedText(const ConstString& text) {
    String copy(text);
    copy.toMultiByte(kCodePageUTF8);
    const std::string_view utf8 = copy.text8();
    const size_t first = utf8.find_first_not_of(' ');
    return first == utf8.npos ? "" : std::string(utf8.substr(first, utf8.find_last_not_of(' ') - first + 1));
}

/** Numbers without signs with one separator between them. False: another form. */
template <size_t N>
bool scanFields(std::string_view text, char separator, int32_t (&fields)[N], size_t& count) {
    for (count = 0; count < N; ++count) {
        const size_t digits = std::min(text.find_first_not_of("0123456789"), text.size());
        if (std::from_chars(text.data(), text.data() + digits, fields[count]).ec != std::errc())
            return false;
        text.remove_prefix(digits);
        if (text.empty())
            return ++count, true;
        if (text.front() != separator)
            return false;
        text.remove_prefix(1);
    }
    return false;
}
}  // namespace

CmDate::CmDate(int32_t julianDay) : julianDay(julianDay >= kFirstDay && julianDay <= kLastDay ? julianDay : kNoDay) {}

CmDate::CmDate(int32_t year, int32_t month, int32_t day) {
    if (year < kFirstYear || year > kLastYear || month < 1 || month > 12 || day < 1 || day > 31)
        return;
    const year_month_day date{std::chrono::year(year), std::chrono::month(uint32_t(month)),
                              std::chrono::day(uint32_t(day))};
    if (date.ok())
        julianDay = julianDayOf(date);
}

CmDate CmDate::today() {
    return CmTime::now().getDate();
}

int32_t CmDate::getYear() const {
    return isValid() ? int32_t(calendarDay(julianDay).year()) : 0;
}

int32_t CmDate::getMonth() const {
    return isValid() ? int32_t(uint32_t(calendarDay(julianDay).month())) : 0;
}

int32_t CmDate::getDay() const {
    return isValid() ? int32_t(uint32_t(calendarDay(julianDay).day())) : 0;
}

void CmDate::toString(String& text, int32_t format) const {
    if (!isValid()) {
        text.assign("");
        return;
    }
    if (format == kLocaleDate && UserDates().print(*this, text))
        return;
    text.printf("%04d-%02d-%02d", getYear(), getMonth(), getDay());
}

bool CmDate::fromString(const ConstString& text) {
    const std::string trimmed = trimmedText(text);
    int32_t fields[3] = {};
    size_t count;
    CmDate scanned;
    if (scanFields(trimmed, '-', fields, count) && count == 3)
        scanned = CmDate(fields[0], fields[1], fields[2]);
    else
        scanned = UserDates().scan(trimmed);
    if (!scanned.isValid())
        return false;
    julianDay = scanned.julianDay;
    return true;
}

bool CmDate::isEqual(const CmObject* other) const {
    const CmDate* date = classCast<CmDate>(other);
    return date ? julianDay == date->julianDay : CmObject::isEqual(other);
}

int32_t CmDate::compare(const CmObject* other) const {
    const CmDate* date = classCast<CmDate>(other);
    return date ? julianDay - date->julianDay : CmObject::compare(other);
}

uint32_t CmDate::hash(uint32_t buckets) const {
    return buckets > 0 ? uint32_t(julianDay) % buckets : 0;
}

bool CmDate::internalize(FArchive& archive) {
    int32_t day;
    const bool done = archive.getStream().readInt32(day);
    if (done)
        *this = CmDate(day);
    return done;
}

bool CmDate::externalize(FArchive& archive) const {
    return archive.getStream().writeInt32(julianDay);
}

bool CmDate::storeAttributes(FAttributes& attributes) const {
    return attributes.set(kJulianDayKey, julianDay);
}

bool CmDate::restoreAttributes(FAttributes& attributes) {
    int32_t day;
    const bool done = attributes.get(kJulianDayKey, day);
    if (done)
        *this = CmDate(day);
    return done;
}

CmTime::CmTime(const CmDate& date, int32_t seconds) : date(date), seconds(std::max(seconds, 0)) {}

CmTime CmTime::now() {
    return fromUnixTime(time(nullptr));
}

CmTime CmTime::fromUnixTime(int64_t unixTime) {
    const time_t systemTime = unixTime;
    tm fields = {};
    if (!localtime_r(&systemTime, &fields))
        return CmTime();
    const int32_t seconds = fields.tm_hour * 3600 + fields.tm_min * 60 + fields.tm_sec;
    return CmTime(dateOf(fields), std::min(seconds, kSecondsADay - 1));  // no leap second
}

bool CmTime::toUnixTime(int64_t& unixTime) const {
    if (!date.isValid())
        return false;
    tm fields = systemFields(date);
    fields.tm_hour = getHour();
    fields.tm_min = getMinute();
    fields.tm_sec = getSecond();
    unixTime = mktime(&fields);
    return true;
}

void CmTime::toString(String& text) const {
    text.printf("%d:%02d:%02d", getHour(), getMinute(), getSecond());
}

bool CmTime::fromString(const ConstString& text) {
    int32_t fields[3] = {};
    size_t count;
    if (!scanFields(trimmedText(text), ':', fields, count) || count < 2 || fields[1] > 59 || fields[2] > 59)
        return false;
    const int64_t scanned = int64_t(fields[0]) * 3600 + fields[1] * 60 + fields[2];
    if (scanned > INT32_MAX)
        return false;
    seconds = int32_t(scanned);
    return true;
}

bool CmTime::isEqual(const CmObject* other) const {
    const CmTime* time = classCast<CmTime>(other);
    return time ? compare(time) == 0 : CmObject::isEqual(other);
}

int32_t CmTime::compare(const CmObject* other) const {
    const CmTime* time = classCast<CmTime>(other);
    if (!time)
        return CmObject::compare(other);
    const int32_t days = date.compare(&time->date);
    return days != 0 ? days : (seconds > time->seconds) - (seconds < time->seconds);
}

uint32_t CmTime::hash(uint32_t buckets) const {
    return buckets > 0 ? (uint32_t(date.getJulianDay()) * kSecondsADay + uint32_t(seconds)) % buckets : 0;
}

bool CmTime::internalize(FArchive& archive) {
    CmDate itsDate;
    int32_t itsSeconds;
    if (!itsDate.internalize(archive) || !archive.getStream().readInt32(itsSeconds))
        return false;
    *this = CmTime(itsDate, itsSeconds);
    return true;
}

bool CmTime::externalize(FArchive& archive) const {
    return date.externalize(archive) && archive.getStream().writeInt32(seconds);
}

bool CmTime::storeAttributes(FAttributes& attributes) const {
    return date.storeAttributes(attributes) && attributes.set(kSecondsKey, seconds);
}

bool CmTime::restoreAttributes(FAttributes& attributes) {
    CmDate itsDate;
    int32_t itsSeconds;
    if (!itsDate.restoreAttributes(attributes) || !attributes.get(kSecondsKey, itsSeconds))
        return false;
    *this = CmTime(itsDate, itsSeconds);
    return true;
}

}  // namespace Tessarine
