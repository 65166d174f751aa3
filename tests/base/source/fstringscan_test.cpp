#include "tests/base/source/libraryscan.h"
#include "tests/base/source/stringtext.h"
#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <locale.h>
#include <random>

namespace Tessarine {
namespace {
/** The C locale on this thread to the end of the block: what the C library is asked for beside ours. */
class PlainLocale {
public:
    ~PlainLocale() {
        uselocale(before);
        freelocale(locale);
    }

private:
    locale_t locale = newlocale(LC_ALL_MASK, "C", nullptr), before = uselocale(locale);
};

TEST(StringScan, IntegersFromAnOffset) {
    int32_t value = 11;
    EXPECT_TRUE(!ConstString("12").scanInt32(value, 2) && value == 11);
    EXPECT_FALSE(ConstString(u"\u0661\u0662").scanInt32(value));  // digits of other scripts
    EXPECT_TRUE(ConstString("ab4294967303").scanInt32(value, 2) && value == 7);
}

/** Texts that are nearly numbers. */
std::string nearlyNumber(std::minstd_rand& random) {
    static const char* const pieces[] = {"0", "1",           "9",   "12", ".", ",",   "e",        "E",   "p", "+",
                                         "-", "0x",          "0X",  "f",  "A", "inf", "infinity", "nan", " ", "\t",
                                         "x", "99999999999", "400", "00", "(", "i",   "\v",       "\xE9"};
    std::string text;
    for (size_t count = random() % 7; count > 0; --count)
        text += pieces[random() % std::size(pieces)];
    return text;
}

TEST(StringScan, FindsWhatTheLibraryFinds) {
    const PlainLocale plain;
    std::minstd_rand random(3);
    for (int32_t round = 0; round < 30000; ++round) {
        const std::string text = nearlyNumber(random);
        SCOPED_TRACE(text);
        const bool toEnd = round & 1;
        String ours(text.c_str());
        if (round & 2)
            ours.toWideString();
        ASSERT_STREQ(scanFault(ours, text, toEnd), nullptr);
    }
}

TEST(StringScan, TheFirstCommaFromTheOffsetIsAPoint) {
    const std::tuple<const char*, uint32_t, double> rows[] = {
        {"1,5,7",      2, 5.7 },
        {"x,5 2,5",    0, .5  },
        {"a, 2,5",     0, 2   },
        {"-2,25e2 dB", 0, -225},
    };
    for (const auto& [text, offset, expected] : rows) {
        double value = 0;
        EXPECT_TRUE(ConstString(text).scanFloat(value, offset));
        EXPECT_EQ(value, expected) << text;
    }
    double value = 0;
    EXPECT_TRUE(ConstString(("0." + std::string(500, '3')).c_str()).scanFloat(value) && value == 1 / 3.);
}

TEST(StringScan, LongTextsWithoutANumberTakeTimeByTheirLength) {
    for (const char* piece : {" ", "-", "in ", "0xinfinit", "+.e"}) {
        String text;
        while (text.length() < 400000)
            text.append(piece);
        double value = 0;
        text.scanFloat(value);  // squared, this would take minutes
    }
}

TEST(StringScan, NumbersAtTheEnd) {
    constexpr std::tuple<const char*, uint32_t, int32_t, int64_t> kTrailing[] = {
        {"take 12", 2, 5,  12},
        {"take 12", 1, -1, 12},
        {"take",    0, -1, -5},
        {"007",     0, 0,  7 },
    };
    for (const auto& [text, width, index, number] : kTrailing) {
        EXPECT_EQ(ConstString(text).getTrailingNumberIndex(width), index) << text;
        EXPECT_EQ(String(String(text).text16()).getTrailingNumber(-5), number) << text;
    }
    constexpr std::tuple<const char*, uint32_t, tchar, bool, const char*> kIncrements[] = {
        {"Copy",    0, u' ', false, "Copy 2"  },
        {"take",    2, u'_', false, "take_02" },
        {"take9",   3, 0,    false, "take010" },
        {"take_9",  0, u'_', true,  "take_9"  },
        {"take9",   2, u'_', true,  "take_09" },
        {"",        2, u'_', false, "02"      },
        {"x 99999", 0, u' ', false, "x 100000"},
    };
    for (const auto& [text, width, separator, formatOnly, expected] : kIncrements) {
        for (String each : {String(text), String(String(text).text16())}) {
            const bool wide = each.isWideString();
            EXPECT_TRUE(each.incrementTrailingNumber(width, separator, 2, formatOnly));
            EXPECT_EQ(each, ConstString(expected));
            EXPECT_EQ(each.isWideString(), wide);
        }
    }
    EXPECT_FALSE(String("a1").incrementTrailingNumber(33));
}

TEST(StringPrint, NumbersInTheCLocaleWhateverTheHostHas) {
    const std::pair<double, const char*> rows[] = {
        {1.0,                                     "1.0"                    },
        {-0.125,                                  "-0.125"                 },
        {1e-9,                                    "0.0"                    },
        {1e20,                                    "100000000000000000000.0"},
        {std::numeric_limits<double>::infinity(), "inf"                    },
    };
    String narrow, wide(u"w");
    for (const auto& [value, expected] : rows) {
        EXPECT_EQ(text8Of(narrow.printFloat(value)), expected);
        EXPECT_EQ(text16Of(wide.printFloat(value)), std::u16string(String(expected).text16()));
    }
    EXPECT_EQ(text8Of(narrow.printInt64(INT64_MIN)), "-9223372036854775808");
    EXPECT_EQ(text16Of(wide.printInt64(INT64_MIN)), u"-9223372036854775808");
}

/** What the C library makes of the same format and value. */
template <class... Values>
void expectAsTheLibrary(const std::string& format, Values... values) {
    const PlainLocale plain;
    char expected[8192];
    std::snprintf(expected, sizeof expected, format.c_str(), values...);
    String text;
    text.printf(String(format.c_str()).text16(), values...);
    EXPECT_EQ(text16Of(text), std::u16string(String(expected).text16())) << format;
}

TEST(StringPrint, SixteenBitFormatsAreThoseOfTheLibrary) {
    for (const char* flags : {"", "-", "0", "+", " ", "#", "-0", "+0", "+-", "# ", "#0", "0 "}) {
        for (const char* size : {"", "1", "12", ".0", ".3", "12.5", "5.12", ".", "40.30"}) {
            const std::string start = std::string("[%") + flags + size;
            for (const int32_t value : {0, 7, -7, INT32_MIN, INT32_MAX})
                for (const char* end : {"d]", "i]", "hd]", "hhd]", "u]", "x]", "X]", "o]", "hx]", "hho]"})
                    expectAsTheLibrary(start + end, value);
            for (const int64_t value : {int64_t(0), INT64_MIN, INT64_MAX})
                for (const char* end : {"ld]", "lld]", "zu]", "jx]", "llo]"})
                    expectAsTheLibrary(start + end, value);
            for (const double value :
                 {0.0, -0.0, 0.5, 1.5, 2.5, -34.125, 1e300, 1e-300, 123456789.0, 1e22, HUGE_VAL, -double(NAN)})
                for (const char* end : {"f]", "F]", "e]", "E]", "g]", "G]", "a]", "A]", "lf]"})
                    expectAsTheLibrary(start + end, value);
            expectAsTheLibrary(start + "Lf]", 1.25L);
            expectAsTheLibrary(start + "c]", 'c');
        }
    }
    expectAsTheLibrary("%*d|%-*d|%.*f|%*d", 4, 1, 3, 2, 2, 1.005, -4, 5);
    expectAsTheLibrary("%p|%p", static_cast<void*>(nullptr), reinterpret_cast<void*>(0x1234));
}

TEST(StringPrint, SixteenBitTexts) {
    const tchar* const null = nullptr;
    String text;
    EXPECT_EQ(text16Of(text.printf(u"%5s|%-4S|%.1S|%4S", "8\x8A", u"w", u"cut", u"r")), u"   8\u00E4|w   |c|   r");
    EXPECT_EQ(text16Of(text.printf(u"%c%C%%|%3c", '\x8A', u'\u65E5', 'x')), u"\u00E4\u65E5%|  x");
    EXPECT_EQ(text16Of(text.printf(u"%%s %%%s %d%%sx", u"a", 3)), u"%S %a 3%Sx");
    EXPECT_EQ(text16Of(text.printf(u"\u00E4%d: %s", 1, null)), u"\u00E41: (null)");
    EXPECT_EQ(text16Of(text.printf(u"a%Cb", 0)), u"a");
    int32_t never = 5;
    EXPECT_EQ(text16Of(text.printf(u"a%nb%d", &never, 7)), u"ab7");
    EXPECT_EQ(never, 5);
    EXPECT_EQ(text16Of(text.printf(u"%s-%s", text.text16(), text.text16())), u"ab7-ab7");
    const char unterminated[] = {'a', 'b'};
    EXPECT_EQ(text16Of(text.printf(u"%.2s", unterminated)), u"ab");
    tchar printed[4096];
    EXPECT_EQ(sprintf16(printed, u"%s %d", u"x", 5), 3);
    EXPECT_EQ(std::u16string(printed), u"x 5");
}

TEST(StringPrint, CutsAtTheBuffer) {
    String source, text;
    source.assign('x', 5000);
    EXPECT_EQ(text.printf("%s", source.text8()).length(), 4095u);
    EXPECT_EQ(text.printf(u"%5000s", source.text8()).length(), 4095u);
    EXPECT_EQ(text.printf(u"%s", source.text16()).length(), 4095u);
    EXPECT_EQ(text.printf(source.text16()).length(), 4095u);
    EXPECT_EQ(text.printf(u"%99999d", 1).length(), 4095u);
    EXPECT_EQ(text.printf(u"%.99999f%.4096f%#.4095f%.4096d", 1.0, 1e308, 1e308, 1).length(), 4095u);
}
}  // namespace
}  // namespace Tessarine
