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

struct ScanRow {
    const char* text;
    uint32_t offset;
    bool toEnd, found;
    int64_t value;
};
constexpr ScanRow kScans[] = {
    {" \t-7x",                0, false, true,  -7        },
    {"",                      0, true,  false, 0         },
    {"12",                    2, true,  false, 0         },
    {"ab12",                  0, false, false, 0         },
    {"ab-12",                 0, true,  true,  -12       },
    {"ab12",                  3, false, true,  2         },
    {"- 3",                   0, true,  true,  3         },
    {"--",                    0, true,  false, 0         },
    {"   ",                   0, true,  false, 0         },
    {"9223372036854775808",   0, false, true,  INT64_MAX },
    {"-99999999999999999999", 0, false, true,  INT64_MIN },
    {"4294967303",            0, false, true,  4294967303},
};

TEST(StringScan, IntegersInBothWidths) {
    for (const ScanRow& row : kScans) {
        String text(row.text);
        for (int32_t wide = 0; wide < 2; ++wide) {
            SCOPED_TRACE(row.text);
            int64_t value = 0;
            EXPECT_EQ(text.scanInt64(value, row.offset, row.toEnd), row.found);
            EXPECT_EQ(value, row.value);
            text.toWideString();
        }
    }
    int32_t narrow = 0;
    EXPECT_TRUE(ConstString("4294967303").scanInt32(narrow));
    EXPECT_EQ(narrow, 7);
    int64_t untouched = 11;
    EXPECT_FALSE(ConstString(u"\u0661\u0662").scanInt64(untouched));  // digits of other scripts
    EXPECT_EQ(untouched, 11);
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
        {"1,5,7",      0, 1.5 },
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
    EXPECT_TRUE(ConstString(("0." + std::string(500, '3')).c_str()).scanFloat(value));
    EXPECT_EQ(value, 1 / 3.);
    EXPECT_TRUE(ConstString("Information").scanFloat(value));
    EXPECT_EQ(value, HUGE_VAL);
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

struct TrailingRow {
    const char* text;
    uint32_t width;
    int32_t index;
    int64_t number;
};
constexpr TrailingRow kTrailing[] = {
    {"take 12", 0, 5,  12},
    {"take 12", 2, 5,  12},
    {"take 12", 1, -1, 12},
    {"take",    0, -1, -5},
    {"007",     0, 0,  7 },
    {"",        0, -1, -5},
};

struct IncrementRow {
    const char* text;
    uint32_t width;
    char separator;
    uint32_t minNumber;
    bool formatOnly;
    const char* expected;
};
constexpr IncrementRow kIncrements[] = {
    {"Copy",    0, ' ', 2, false, "Copy 2"  },
    {"Copy 2",  0, ' ', 2, false, "Copy 3"  },
    {"take",    2, '_', 1, false, "take_01" },
    {"take9",   3, 0,   1, false, "take010" },
    {"take_9",  0, '_', 1, true,  "take_9"  },
    {"take9",   2, '_', 1, true,  "take_09" },
    {"9",       0, '_', 1, false, "10"      },
    {"",        2, '_', 1, false, "01"      },
    {"x 99999", 0, ' ', 1, false, "x 100000"},
};

TEST(StringScan, NumbersAtTheEnd) {
    for (const TrailingRow& row : kTrailing) {
        EXPECT_EQ(ConstString(row.text).getTrailingNumberIndex(row.width), row.index) << row.text;
        EXPECT_EQ(String(String(row.text).text16()).getTrailingNumber(-5), row.number) << row.text;
    }
    for (const IncrementRow& row : kIncrements) {
        String narrow(row.text), wide(String(row.text).text16());
        EXPECT_TRUE(narrow.incrementTrailingNumber(row.width, tchar(row.separator), row.minNumber, row.formatOnly));
        EXPECT_EQ(text8Of(narrow), row.expected);
        EXPECT_TRUE(wide.incrementTrailingNumber(row.width, tchar(row.separator), row.minNumber, row.formatOnly));
        EXPECT_EQ(text16Of(wide), std::u16string(String(row.expected).text16()));
    }
    EXPECT_FALSE(String("a1").incrementTrailingNumber(33));
}

TEST(StringPrint, NumbersInTheCLocaleWhateverTheHostHas) {
    const std::pair<double, const char*> rows[] = {
        {1.0,                                     "1.0"                    },
        {2.5,                                     "2.5"                    },
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
    EXPECT_EQ(text8Of(narrow.printf("%.2f %s %d", 1.5, "x", -3)), "1.50 x -3");
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
    EXPECT_EQ(text16Of(text.printf(u"%s=%d", u"gain\u65E5", -3)), u"gain\u65E5=-3");
    EXPECT_EQ(text16Of(text.printf(u"%5s|%-4S|%.1S|%4S", "8\x8A", u"w", u"cut", u"r")), u"   8\u00E4|w   |c|   r");
    EXPECT_EQ(text16Of(text.printf(u"%c%C%%|%3c", '\x8A', u'\u65E5', 'x')), u"\u00E4\u65E5%|  x");
    EXPECT_EQ(text16Of(text.printf(u"%%s %%%s %d%%sx", u"a", 3)), u"%S %a 3%Sx");
    EXPECT_EQ(text16Of(text.printf(u"\u00E4%d: %s", 1, null)), u"\u00E41: (null)");
    EXPECT_EQ(text16Of(text.printf(u"end %")), u"end ");
    EXPECT_EQ(text16Of(text.printf(u"a%Cb", 0)), u"a");
    int32_t never = 5;
    EXPECT_EQ(text16Of(text.printf(u"a%nb%d", &never, 7)), u"ab7");
    EXPECT_EQ(never, 5);
    text = u"self";
    EXPECT_EQ(text16Of(text.printf(u"%s-%s", text.text16(), text.text16())), u"self-self");
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
