#pragma once
#include "base/source/cmobject.h"

namespace Tessarine {
class ConstString;
class String;

/** A day of the Gregorian calendar, from 1 January 1 to 31 December 32767, or none.

    Texts     a person's own form follows LC_TIME of the environment, whatever locale the process has set. */
class CmDate : public CmObject {
public:
    DECLARE_CLASS(CmDate, CmObject)
    DECLARE_NEWCOPY(CmDate)
    enum Format : int32_t { kIsoDate, kLocaleDate };
    static constexpr int32_t kNoDay = -1;

    CmDate() = default;
    /** By its Julian day number; no date out of range. */
    explicit CmDate(int32_t julianDay);
    /** Months and days count from 1; no date when the calendar hasn't got it. */
    CmDate(int32_t year, int32_t month, int32_t day);
    /** Where the clock on the wall stands. */
    static CmDate today();

    bool isValid() const { return julianDay != kNoDay; }
    /** The number of the Julian day that begins at noon of this date, kNoDay without a date. */
    int32_t getJulianDay() const { return julianDay; }
    /** 0 without a date. */
    int32_t getYear() const;
    int32_t getMonth() const;
    int32_t getDay() const;
    /** 0 is Sunday. */
    int32_t getWeekday() const { return (julianDay + 1) % 7; }

    /** 2026-11-21, or the user's form with all digits of the year; empty without a date. */
    void toString(String& text, int32_t format = kIsoDate) const;
    /** Either form; false, and as it was: neither, or no date of the calendar. */
    bool fromString(const ConstString& text);

    /** By the day with other dates, otherwise as objects. No date comes first. */
    bool isEqual(const CmObject* other) const override;
    int32_t compare(const CmObject* other) const override;
    uint32_t hash(uint32_t buckets) const override;
    bool internalize(FArchive& archive) override;
    bool externalize(FArchive& archive) const override;
    bool storeAttributes(FAttributes& attributes) const override;
    bool restoreAttributes(FAttributes& attributes) override;

private:
    int32_t julianDay = kNoDay;
};

/** A time of day, as a rule with its date; without one, a span of time.

    Units     seconds; all fields are those of a clock on the wall, without a time zone. */
class CmTime : public CmObject {
public:
    DECLARE_CLASS(CmTime, CmObject)
    DECLARE_NEWCOPY(CmTime)

    /** Below 0 becomes 0; more than a day is fine. */
    explicit CmTime(int32_t seconds = 0) : CmTime(CmDate(), seconds) {}
    CmTime(const CmDate& date, int32_t seconds);
    static CmTime now();
    /** Of seconds since the beginning of 1970 in UTC, in the time zone of the machine; no date out of range. */
    static CmTime fromUnixTime(int64_t unixTime);
    /** false, and nothing written: there is no date. */
    bool toUnixTime(int64_t& unixTime) const;

    const CmDate& getDate() const { return date; }
    /** From midnight. */
    int32_t getTotalSeconds() const { return seconds; }
    int32_t getHour() const { return seconds / 3600; }
    int32_t getMinute() const { return seconds / 60 % 60; }
    int32_t getSecond() const { return seconds % 60; }

    /** The time alone: 9:05:00. */
    void toString(String& text) const;
    /** The time alone, the date stays; seconds may be missing. false, and as it was: another form. */
    bool fromString(const ConstString& text);

    /** By date and time with other times, otherwise as objects. */
    bool isEqual(const CmObject* other) const override;
    int32_t compare(const CmObject* other) const override;
    uint32_t hash(uint32_t buckets) const override;
    bool internalize(FArchive& archive) override;
    bool externalize(FArchive& archive) const override;
    bool storeAttributes(FAttributes& attributes) const override;
    bool restoreAttributes(FAttributes& attributes) override;

private:
    CmDate date;
    int32_t seconds;
};

}  // namespace Tessarine
