#pragma once
#include "base/utranslatedstring.h"
#include <cstdint>

namespace Tessarine {
class CmTime;
class ConstString;
class String;

/** The text forms of an integer. */
enum UTextFormatType : int32_t {
    kPlainFormat = -1,
    kSampleRateFormat,  // Hz
    kChannelsFormat,
    kBitDepthFormat,
    kBitRateFormat,   // bits a second
    kFileSizeFormat,  // bytes
    kDateTimeFormat,  // seconds since the beginning of 1970, UTC
    kDurationFormat,  // seconds
    kHexFormat,
};

/** Text forms of plain things. Numbers are in the C locale, words in the user's language.

    Results   what can't be scanned gives false, and the value stays.
    Threads   the main thread, where words come in. */
class FTextUtils {
public:
    static void printInt(String& text, int64_t value, UTextFormatType type);
    /** File sizes and dates by their own forms, all others as an integer. */
    static bool scanInt(const ConstString& text, int64_t& value, UTextFormatType type);

    /** So many digits behind the point; negative: two, less a tail of "00" or "0". What rounds to zero has no sign. */
    static void printFloat(String& text, double number, int32_t digits);

    /** Up to 1024 bytes whole, above with two digits in the unit that keeps the number at 1024 or below. */
    static void printFileSize(String& text, int64_t bytes);
    /** A number, times the unit of the first of the letters K, M and G, in this order, that is anywhere. */
    static bool scanFileSize(const ConstString& text, int64_t& bytes);

    static void printChannels(String& text, int32_t count);

    static void printVersion(String& text, int32_t a, int32_t b, int32_t c);
    /** How many parts there are up to the first without a number, of which three at most are written; 0 for empty text,
        -1 when already the first has none. */
    static int32_t scanVersion(const ConstString& text, int32_t& a, int32_t& b, int32_t& c);
    /** 1.2.34 becomes 1.234; no digit may run into the next, so b is 9 at most and c 99. */
    static bool scanVersionToFloat(const ConstString& text, float& number);

    /** Up to a minute in seconds, then all units that aren't 0; a single one with nothing of the next below is told in
        that. rough: the two largest units only. */
    static void printFriendlyDuration(String& text, int64_t seconds, bool rough = false);

    enum SegmentStyle { kNoUnit, kShortUnit, kUnitName };
    /** h:mm:ss, m:ss or s, as the value needs; fixed: two digits for the first one too. */
    static void printSegments(String& text, int32_t seconds, bool fixed = false, SegmentStyle style = kNoUnit);
    static void print3Segments(String& text, int32_t seconds, bool fixed = false);

    /** 2026-11-21 9:05:00; without a time it is midnight. */
    static void printDateTime(String& text, const CmTime& time);
    static bool scanDateTime(const ConstString& text, CmTime& time);

    /** Adds the word for a copy; where that is already, counts from 2 on. */
    static void makeCopyString(String& text);

    static constexpr char kSampleRatePattern[] = "%.3f kHz";
    static constexpr char kBitRatePattern[] = "%d kBit/s";
    static constexpr char kBitRatePatternVBR[] = "VBR %d kBit/s";

    static constexpr UTranslatedString stringBytes{"Bytes"};
    static constexpr UTranslatedString stringKB{"KB"};
    static constexpr UTranslatedString stringMB{"MB"};
    static constexpr UTranslatedString stringGB{"GB"};
    static constexpr UTranslatedString stringTB{"TB"};
    static constexpr UTranslatedString stringMono{"Mono"};
    static constexpr UTranslatedString stringStereo{"Stereo"};
    static constexpr UTranslatedString stringChannels{"Channels"};
    static constexpr UTranslatedString stringCopy{"Copy{{Noun}}"};
    static constexpr UTranslatedString stringDay{"day"};
    static constexpr UTranslatedString stringDays{"days"};
    static constexpr UTranslatedString stringHour{"hour"};
    static constexpr UTranslatedString stringHours{"hours"};
    static constexpr UTranslatedString stringMinute{"minute"};
    static constexpr UTranslatedString stringMinutes{"minutes"};
    static constexpr UTranslatedString stringSecond{"second"};
    static constexpr UTranslatedString stringSeconds{"seconds"};
};

}  // namespace Tessarine
