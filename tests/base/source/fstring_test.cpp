#include "base/source/fstring.h"
#include "pluginterfaces/base/fvariant.h"
#include "tests/support/memorystreamer.h"
#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <locale.h>
#include <stdlib.h>

namespace Tessarine {
namespace {
using std::string_literals::operator""s;

std::string text8Of(const String& text) {
    return text.isWideString() ? "(wide)" : text.text8();
}
std::u16string text16Of(const String& text) {
    return text.isWideString() ? text.text16() : u"(narrow)";
}
int32_t signOf(int32_t number) {
    return (number > 0) - (number < 0);
}

/** Sets code page 0 to the end of the block. */
class DefaultEncoding {
public:
    explicit DefaultEncoding(uint32_t encoding) { kDefaultSystemEncoding = encoding; }
    ~DefaultEncoding() { kDefaultSystemEncoding = 0; }
};

/** A thread locale whose decimal mark is a comma, when the machine has one. */
class CommaLocale {
public:
    CommaLocale() {
        for (const char* name : {"de_DE.UTF-8", "de_DE.utf8", "fr_FR.UTF-8"})
            if (!locale)
                locale = newlocale(LC_ALL_MASK, name, nullptr);
        if (locale)
            before = uselocale(locale);
    }
    ~CommaLocale() {
        if (!locale)
            return;
        uselocale(before);
        freelocale(locale);
    }
    bool exists() const { return locale; }

private:
    locale_t locale = nullptr, before = nullptr;
};

TEST(StringWidth, EmptyTextIsNeverNull) {
    const ConstString views[] = {{}, static_cast<const char*>(nullptr), static_cast<const tchar*>(nullptr), ""};
    for (const ConstString& view : views) {
        EXPECT_STREQ(view.text8(), "");
        EXPECT_EQ(view.text16()[0], 0);
        EXPECT_TRUE(view.isEmpty());
    }
    String text("x");
    text.remove();
    EXPECT_EQ(text.ptr(), nullptr);
    EXPECT_STREQ(text.text8(), "");
    EXPECT_EQ(*text.text16(), 0);
    EXPECT_TRUE(text.isWideString());
    EXPECT_STREQ(FEmptyString.text8(), "");
}

TEST(StringWidth, ReadingInTheOtherWidthConvertsInPlace) {
    const String text("caf\x8E");  // Mac Roman
    EXPECT_EQ(text.getChar16(3), u'\u00E9');
    EXPECT_TRUE(text.isWideString());
    EXPECT_EQ(text.length(), 4u);
    EXPECT_EQ(text.getChar8(3), '\x8E');
    EXPECT_FALSE(text.isWideString());
    EXPECT_EQ(text.getChar8(4), 0);
    const ConstString view("abc");
    EXPECT_EQ(view.getChar16(0), 0);
    EXPECT_FALSE(view.isWideString());
}

TEST(StringWidth, UnconvertibleTextReadsAsEmptyAndStays) {
    const DefaultEncoding japanese(1576);
    const String text("ab\x82");  // cut off behind a lead byte
    EXPECT_EQ(*text.text16(), 0);
    EXPECT_EQ(text8Of(text), "ab\x82");
}

struct PageRow {
    uint32_t codePage;
    std::string bytes;
    std::u16string units;
};
const PageRow kRoundTrips[] = {
    {kCodePageDefault,          "\x8A\xA9\xD0",              u"\u00E4\u00A9\u2013"        },
    {kCodePageMacRoman,         "a\xE7z",                    u"a\u00C1z"                  },
    {kCodePageShiftJIS,         "\x93\xFA\x96{\xB1\x1A\x7F", u"\u65E5\u672C\uFF71\x1A\x7F"},
    {kCodePageLatin1,           "\x80\xE4",                  u"\u20AC\u00E4"              },
    {kCodePageMacCentralEurope, "\x8Bx",                     u"\u010Dx"                   },
    {kCodePageUTF8,             "a\u00E4\u20AC\U0001F600",   u"a\u00E4\u20AC\U0001F600"   },
    {12345,                     "plain",                     u"plain"                     },
};

TEST(StringCodePage, ConvertsBothWays) {
    for (const PageRow& row : kRoundTrips) {
        SCOPED_TRACE(row.codePage);
        String text(row.bytes.c_str());
        ASSERT_TRUE(text.toWideString(row.codePage));
        EXPECT_EQ(text16Of(text), row.units);
        ASSERT_TRUE(text.toMultiByte(row.codePage));
        EXPECT_EQ(text8Of(text), row.bytes);
        EXPECT_EQ(text.length(), row.bytes.size());
    }
}

TEST(StringCodePage, ALostCharacterIsOneQuestionMark) {
    const std::u16string lost = u"a\u65E5b\U0001F600c" + std::u16string(1, char16_t(0xD800)) + u"d" + char16_t(0xDC00);
    for (const uint32_t codePage : {kCodePageMacRoman, kCodePageLatin1, kCodePageMacCentralEurope, CodePage(1)}) {
        String text(lost.c_str());
        ASSERT_TRUE(text.toMultiByte(codePage));
        EXPECT_EQ(text8Of(text), "a?b?c?d?") << codePage;
    }
    String text(lost.c_str());
    ASSERT_TRUE(text.toMultiByte(kCodePageUTF8));
    EXPECT_EQ(text8Of(text), "a\u65E5b\U0001F600c?d?");
    String japanese(lost.c_str());
    ASSERT_TRUE(japanese.toMultiByte(kCodePageShiftJIS));
    EXPECT_EQ(text8Of(japanese), "a\x93\xFA"s + "b?c?d?");
}

TEST(StringCodePage, MalformedInputKeepsTheOldText) {
    const char* malformed[] = {"\x80",
                               "a\xC3",
                               "\xC0\xAF",
                               "\xE0\x80\x80",
                               "\xED\xA0\x80",
                               "\xF4\x90\x80\x80",
                               "\xF8\x88\x80\x80\x80",
                               "long enough text \xFF",
                               "\xE2\x82",
                               "\xF0\x9F\x98"};
    for (const char* bytes : malformed) {
        SCOPED_TRACE(bytes);
        String text("old");
        EXPECT_FALSE(text.fromUTF8(bytes));
        EXPECT_EQ(text8Of(text), "old");
        EXPECT_EQ(ConstString::multiByteToWideString(nullptr, bytes, 0, kCodePageUTF8), 0);
    }
    String shiftJIS("\x81");
    EXPECT_FALSE(shiftJIS.toWideString(kCodePageShiftJIS));
    String ascii("\xE4");
    EXPECT_FALSE(ascii.toWideString(12345));
    EXPECT_EQ(text8Of(ascii), "\xE4");
}

TEST(StringCodePage, ANarrowStringIsTakenAsTheDefaultPage) {
    String text("\x8A");
    ASSERT_TRUE(text.toMultiByte(kCodePageUTF8));
    EXPECT_EQ(text8Of(text), "\u00E4");
}

TEST(StringCodePage, HelpersCutAtWholeCharacters) {
    tchar units[4];
    EXPECT_EQ(ConstString::multiByteToWideString(units, "ab\U0001F600", 4, kCodePageUTF8), 3);
    EXPECT_EQ(std::u16string(units), u"ab");
    EXPECT_EQ(ConstString::multiByteToWideString(nullptr, "ab\U0001F600", 0, kCodePageUTF8), 5);
    char bytes[5];
    EXPECT_EQ(ConstString::wideStringToMultiByte(bytes, u"a\u20AC\u20AC", 5, kCodePageUTF8), 5);
    EXPECT_STREQ(bytes, "a\u20AC");
    EXPECT_GE(ConstString::wideStringToMultiByte(nullptr, u"a\u20AC\u20AC", 0, kCodePageUTF8), 8);
}

// Lengths around the words that are looked at as one, with the odd character at every place.
TEST(StringCodePage, FindsTheOddCharacterAtEveryPlace) {
    for (size_t length = 1; length < 20; ++length) {
        for (size_t at = 0; at < length; ++at) {
            std::u16string units(length, u'x');
            units[at] = u'\u00E9';
            String text(units.c_str());
            EXPECT_FALSE(text.isAsciiString());
            ASSERT_TRUE(text.toMultiByte(kCodePageUTF8));
            EXPECT_EQ(text.length(), length + 1);
            ASSERT_TRUE(text.toWideString(kCodePageUTF8));
            EXPECT_EQ(text16Of(text), units);
        }
    }
}

struct CompareRow {
    const char *a, *b;
    int32_t count, matchCase, ignoreCase;  // expected signs
};
constexpr CompareRow kCompares[] = {
    {"abc",  "abc",  -1, 0,  0 },
    {"abc",  "ABC",  -1, 1,  0 },
    {"abc",  "abd",  -1, -1, -1},
    {"abc",  "abcd", -1, -1, -1},
    {"abcd", "abc",  -1, 1,  1 },
    {"abcX", "abcY", 3,  0,  0 },
    {"x",    "y",    0,  0,  0 },
    {"",     "y",    -1, -1, -1},
    {"y",    "",     -1, 1,  1 },
    {"",     "",     -1, 0,  0 },
    {"_",    "a",    -1, -1, -1},
};

TEST(StringCompare, AnyPairOfWidthsAgrees) {
    for (const CompareRow& row : kCompares) {
        for (int32_t widths = 0; widths < 4; ++widths) {
            SCOPED_TRACE(testing::Message() << row.a << " / " << row.b << " widths " << widths);
            String a(row.a), b(row.b);
            if (widths & 1)
                a.toWideString();
            if (widths & 2)
                b.toWideString();
            EXPECT_EQ(signOf(a.compare(b, row.count)), row.matchCase);
            EXPECT_EQ(signOf(a.compare(b, row.count, kIgnoreCase)), row.ignoreCase);
        }
    }
}

TEST(StringCompare, WideTextByUnitsAndByFolding) {
    EXPECT_EQ(ConstString(u"a").compare(u"d"), -3);
    EXPECT_EQ(ConstString(u"\u00C4B").compare(u"\u00E4b", kIgnoreCase), 0);
    EXPECT_EQ(ConstString(u"\u00C4").compare(ConstString("\x8A"), kIgnoreCase), 0);
    EXPECT_EQ(ConstString(u"Stra\u00DFe").compare(u"STRASSE", kIgnoreCase), 0);
    EXPECT_EQ(ConstString(u"\u212Aelvin").compare(u"kelvin", kIgnoreCase), 0);
    EXPECT_EQ(ConstString("\xE4").compare("z"), 0xE4 - 'z');  // bytes compare unsigned
    // with a count, the start of the other text is looked for
    EXPECT_EQ(ConstString(u"abcdef").compare(u"ABC", 5, kIgnoreCase), 0);
    EXPECT_GT(ConstString(u"abcdef").compare(u"abc", 5), 0);
}

TEST(StringCompare, AtAnIndex) {
    const ConstString text("port.A");
    EXPECT_EQ(text.compareAt(5, "A"), 0);
    EXPECT_EQ(text.compareAt(5, "a", -1, kIgnoreCase), 0);
    EXPECT_EQ(text.compareAt(0, "portal", 4), 0);
    EXPECT_EQ(text.compareAt(6, ""), 0);
    EXPECT_EQ(text.compareAt(99, "x"), -1);
}

struct NaturalRow {
    const char *less, *more;
};
constexpr NaturalRow kNatural[] = {
    {"a9",                       "a10"                     },
    {"a1",                       "a01"                     },
    {"a01",                      "a2"                      },
    {"a1b2",                     "a1b10"                   },
    {"ttyS9",                    "ttyS10"                  },
    {"ttyUSB1",                  "ttyUSB2"                 },
    {"a",                        "a1"                      },
    {"",                         "1"                       },
    {"0",                        "00"                      },
    {"x99999999999999999999998", "x99999999999999999999999"},
};

TEST(StringCompare, NaturalOrder) {
    for (const NaturalRow& row : kNatural) {
        SCOPED_TRACE(row.more);
        EXPECT_LT(strnatcmp8(row.less, row.more), 0);
        EXPECT_GT(strnatcmp8(row.more, row.less), 0);
        EXPECT_EQ(strnatcmp8(row.more, row.more), 0);
        String wide(row.less);
        EXPECT_LT(strnatcmp16(wide.text16(), String(row.more).text16()), 0);
        EXPECT_LT(wide.naturalCompare(row.more), 0);
    }
    EXPECT_EQ(strnatcmp8("Port2", "pORT2", false), 0);
    EXPECT_LT(strnatcmp8("Port2", "port1"), 0);
    EXPECT_EQ(strnatcmp8(nullptr, ""), 0);
}

TEST(StringFind, ForwardsAndBackwards) {
    String text("one two One two");
    for (int32_t wide = 0; wide < 2; ++wide) {
        EXPECT_EQ(text.findNext(0, "two"), 4);
        EXPECT_EQ(text.findNext(5, "two"), 12);
        EXPECT_EQ(text.findNext(5, u"two"), 12);
        EXPECT_EQ(text.findNext(0, "One", kIgnoreCase), 0);
        EXPECT_EQ(text.findNext(0, "two", kMatchCase, 6), -1);
        EXPECT_EQ(text.findNext(0, "two", kIgnoreCase, 7), 4);
        EXPECT_EQ(text.findNext(-5, 'o'), 0);
        EXPECT_EQ(text.findNext(13, u'O', kIgnoreCase), 14);
        EXPECT_EQ(text.findNext(15, 'o'), -1);
        EXPECT_EQ(text.findNext(0, ""), -1);
        EXPECT_EQ(text.findPrev(-1, "two"), 12);
        EXPECT_EQ(text.findPrev(11, "two"), 4);
        EXPECT_EQ(text.findPrev(3, "two"), -1);
        EXPECT_EQ(text.findPrev(99, 'O', kMatchCase), 8);
        EXPECT_EQ(text.findPrev(-1, "one two one two and more"), -1);
        EXPECT_TRUE(text.contains("TWO", kIgnoreCase));
        EXPECT_FALSE(text.contains("TWO"));
        EXPECT_TRUE(text.startsWith("one"));
        EXPECT_TRUE(text.startsWith(u"ONE", kIgnoreCase));
        EXPECT_FALSE(text.startsWith(""));
        EXPECT_TRUE(text.endsWith("One two"));
        EXPECT_FALSE(text.endsWith("and One two One two"));
        text.toWideString();
    }
    EXPECT_TRUE(ConstString().startsWith(""));
}

TEST(StringEdit, TheSourceMayBeTheStringItself) {
    String text("abc");
    text.append(text);
    EXPECT_EQ(text8Of(text), "abcabc");
    text.insertAt(1, text.text8() + 4);
    EXPECT_EQ(text8Of(text), "abcbcabc");
    text.replace(0, 5, ConstString(text, 5));
    EXPECT_EQ(text8Of(text), "abcabc");
    text.assign(text.text8() + 4);
    EXPECT_EQ(text8Of(text), "bc");
    text.assign(text.text8(), 1);
    EXPECT_EQ(text8Of(text), "bc");
    EXPECT_EQ(text.replace(text, ConstString(text, 1)), 1);
    EXPECT_EQ(text8Of(text), "c");
    text = *&text;
    text.printf("%s-%s", text.text8(), text.text8());
    EXPECT_EQ(text8Of(text), "c-c");
    EXPECT_TRUE(text.extract(text, 0, 1));
    EXPECT_EQ(text8Of(text), "c");
}

TEST(StringEdit, WidthFollowsTheRules) {
    String text("caf\x8E");
    text.append(u"\u65E5");
    EXPECT_EQ(text16Of(text), u"caf\u00E9\u65E5");
    text.append("\x8A", 1).insertAt(0, 'x');
    EXPECT_EQ(text16Of(text), u"xcaf\u00E9\u65E5\u00E4");
    text.remove();
    EXPECT_TRUE(text.isWideString());
    text.append("narrow");
    EXPECT_EQ(text8Of(text), "narrow");
    text = u"";
    EXPECT_TRUE(text.isWideString());
    text.assign("abc", 2);
    EXPECT_EQ(text8Of(text), "ab");
    text.assign('y', 3).append(u'z', 2);
    EXPECT_EQ(text16Of(text), u"yyyzz");
}

TEST(StringEdit, InsertReplaceRemove) {
    String text("0123456789");
    EXPECT_EQ(text8Of(text.remove(8).remove(0, 2)), "234567");
    EXPECT_EQ(text8Of(text.remove(6).remove(99, 1)), "234567");
    EXPECT_EQ(text8Of(text.insertAt(6, "8").insertAt(0, "1").insertAt(99, "no")), "12345678");
    EXPECT_EQ(text8Of(text.replace(1, 2, "--long--").replace(1, 8, "")), "145678");
    EXPECT_EQ(text8Of(text.replace(4, -1, "x")), "1456x");
    EXPECT_EQ(text.replace("X", "yy"), 0);
    EXPECT_EQ(text.replace("X", "yy", kIgnoreCase), 1);
    EXPECT_EQ(text8Of(text), "1456yy");
    EXPECT_EQ(text.replace("y", u"\u65E5y"), 2);
    EXPECT_EQ(text16Of(text), u"1456\u65E5y\u65E5y");
    EXPECT_EQ(text.replace("", "z"), 0);
    EXPECT_TRUE(text.extract(text, 4, 1));
    EXPECT_EQ(text16Of(text), u"\u65E5");
    EXPECT_FALSE(text.extract(text, 1));
}

TEST(StringEdit, TwoByteCharactersShortenWhenWidened) {
    const DefaultEncoding japanese(1576);
    String text("\x93\xFA\x96{");
    text.append(u"!");
    EXPECT_EQ(text16Of(text), u"\u65E5\u672C!");
    String narrow("\x93\xFA=\x93\xFA=");
    EXPECT_EQ(narrow.replace(u"=", u"\u672C"), 2);
    EXPECT_EQ(text16Of(narrow), u"\u65E5\u672C\u65E5\u672C");
}

TEST(StringEdit, CharactersAndCase) {
    String text("\t trim\n ");
    EXPECT_TRUE(text.trim());
    EXPECT_FALSE(text.trim());
    EXPECT_EQ(text8Of(text), "trim");
    String wide(u"\u3000\u00A0\tx\u2003");  // a tab is no blank of 16-bit text
    wide.trim();
    EXPECT_EQ(text16Of(wide), u"\tx");
    String mixed("1(a2)!");
    mixed.trim(kAlphaNumeric);
    EXPECT_EQ(text8Of(mixed), "1(a2");
    mixed.trim(kAlphabetic);
    EXPECT_EQ(text8Of(mixed), "a");
    String blanks(u"   ");
    EXPECT_TRUE(blanks.trim());
    EXPECT_TRUE(blanks.isEmpty() && blanks.isWideString());

    String upper(u"a\u00E4\u00DF\u0131");
    upper.toUpper();
    EXPECT_EQ(text16Of(upper), u"A\u00C4\u00DFI");  // what would be two units stays
    String lower("\x80Z");
    lower.toLower();
    EXPECT_EQ(text8Of(lower), "\x80z");
    lower.toUpper(1);
    EXPECT_EQ(text8Of(lower), "\x80Z");
    EXPECT_EQ(ConstString::toLower(u'\u0130'), u'\u0130');

    String set("abc");
    EXPECT_TRUE(set.setChar8(0, 'X'));
    EXPECT_TRUE(set.setChar16(1, u'\u65E5'));
    EXPECT_TRUE(set.setChar8(2, 'Z'));
    EXPECT_FALSE(set.setChar8(3, 'n'));
    EXPECT_EQ(text16Of(set), u"X\u65E5Z");
    EXPECT_TRUE(set.setChar16(1, 0));
    EXPECT_EQ(text16Of(set), u"X");
}

TEST(StringEdit, RoomIsMadeFirstAndCountedLater) {
    String text("ab");
    ASSERT_TRUE(text.resize(5, false, true));
    EXPECT_EQ(text.length(), 2u);
    text.updateLength();
    EXPECT_EQ(text8Of(text), "ab   ");
    ASSERT_TRUE(text.resize(3, true));
    ASSERT_NE(text.writable16(), nullptr);
    EXPECT_EQ(text.writable8(), nullptr);
    std::copy_n(u"xyz", 3, text.writable16());
    text.updateLength();
    EXPECT_EQ(text16Of(text), u"xyz");
    EXPECT_FALSE(text.resize(ConstString::kMaxLength + 1, true));
    EXPECT_EQ(text16Of(text), u"xyz");
    EXPECT_TRUE(text.resize(0, false));
    EXPECT_EQ(text.ptr(), nullptr);
}

TEST(StringEdit, HandsBlocksOver) {
    String text("abc");
    text.take(strdup("taken"), false);
    EXPECT_EQ(text8Of(text), "taken");
    String other(u"other");
    text.swapContent(other);
    EXPECT_EQ(text16Of(text), u"other");
    text.take(other);
    EXPECT_EQ(text8Of(text), "taken");
    EXPECT_TRUE(other.isEmpty());
    char* block = static_cast<char*>(text.pass());
    EXPECT_STREQ(block, "taken");
    free(block);
    EXPECT_TRUE(text.isEmpty());
    EXPECT_EQ(text.pass(), nullptr);
    text.take(nullptr, true);
    EXPECT_TRUE(text.isEmpty());
}

TEST(StringEdit, CopiesOut) {
    const ConstString text(u"a\u00E4c");
    char bytes[8];
    tchar units[8];
    EXPECT_EQ(text.copyTo8(bytes, 1), 2);
    EXPECT_STREQ(bytes,
                 "\x8A"
                 "c");
    EXPECT_EQ(text.copyTo8(bytes, 5), 0);
    EXPECT_STREQ(bytes, "");
    EXPECT_EQ(ConstString("\x8A"
                          "bc")
                  .copyTo16(units, 0, 2),
              2);
    EXPECT_EQ(std::u16string(units), u"\u00E4b");
    EXPECT_EQ(ConstString(ConstString("tail"), 2), "il");
    EXPECT_TRUE(ConstString(ConstString("tail"), 9).isEmpty());
    EXPECT_EQ(ConstString(FVariant(u"v")), "v");
    EXPECT_TRUE(ConstString(FVariant(int64_t(3))).isEmpty());
}

struct ScanRow {
    const char* text;
    uint32_t offset;
    bool toEnd, found;
    int64_t value;
};
constexpr ScanRow kScans[] = {
    {"42",                    0, false, true,  42        },
    {" \t-7x",                0, false, true,  -7        },
    {"+5x",                   0, false, true,  5         },
    {"x",                     0, false, false, 0         },
    {"",                      0, true,  false, 0         },
    {"12",                    2, true,  false, 0         },
    {"ab12",                  0, false, false, 0         },
    {"ab-12",                 0, true,  true,  -12       },
    {"ab12",                  3, false, true,  2         },
    {"- 3",                   0, true,  true,  3         },
    {"--",                    0, true,  false, 0         },
    {"   ",                   0, true,  false, 0         },
    {"9223372036854775808",   0, false, true,  INT64_MAX },
    {"-9223372036854775808",  0, false, true,  INT64_MIN },
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
    uint64_t number = 0;
    EXPECT_TRUE(ConstString("-1").scanUInt64(number));
    EXPECT_EQ(number, UINT64_MAX);
    EXPECT_TRUE(ConstString("99999999999999999999").scanUInt64(number));
    EXPECT_EQ(number, UINT64_MAX);
    uint32_t number32 = 0;
    EXPECT_TRUE(ConstString("4294967295").scanUInt32(number32));
    EXPECT_EQ(number32, UINT32_MAX);
    int64_t untouched = 11;
    EXPECT_FALSE(ConstString(u"\u0661\u0662").scanInt64(untouched));  // digits of other scripts
    EXPECT_EQ(untouched, 11);
}

TEST(StringScan, Hexadecimal) {
    const std::pair<const char*, int32_t> rows[] = {
        {"ff",                  0xFF},
        {"0x1F",                0x1F},
        {"0xg",                 0   },
        {"1234",                0x34},
        {"-1",                  0xFF},
        {"g",                   -1  },
        {"fffffffffffffffffff", 0xFF},
    };
    for (const auto& [text, expected] : rows) {
        uint8_t value = 0x77;
        EXPECT_EQ(ConstString(text).scanHex(value, 0, false), expected >= 0) << text;
        EXPECT_EQ(value, expected < 0 ? 0x77 : expected) << text;
    }
}

TEST(StringScan, FloatsWithPointOrComma) {
    const CommaLocale foreign;
    const std::pair<const char*, double> rows[] = {
        {"1,5",          1.5     },
        {"1.5",          1.5     },
        {"x -2,25e2 dB", -225    },
        {"1,5,7",        1.5     },
        {".5",           .5      },
        {"1e400",        HUGE_VAL},
        {"0x1p4",        16      },
    };
    for (const auto& [text, expected] : rows) {
        String both(text);
        for (int32_t wide = 0; wide < 2; ++wide) {
            double value = 0;
            EXPECT_TRUE(both.scanFloat(value)) << text;
            EXPECT_EQ(value, expected) << text;
            both.toWideString();
        }
    }
    double value = 4;
    EXPECT_FALSE(ConstString("x1").scanFloat(value, 0, false));
    EXPECT_FALSE(ConstString("dB").scanFloat(value));
    EXPECT_FALSE(ConstString("1").scanFloat(value, 1));
    EXPECT_EQ(value, 4);
}

TEST(StringPrint, InTheCLocaleWhateverTheHostHas) {
    const CommaLocale foreign;
    if (!foreign.exists())
        GTEST_LOG_(INFO) << "this machine has no locale with a decimal comma";
    String narrow, wide(u"w");
    EXPECT_EQ(text8Of(narrow.printf("%.2f %s %d", 1.5, "x", -3)), "1.50 x -3");
    const std::pair<double, const char*> rows[] = {
        {1.0,                                     "1.0"                    },
        {2.5,                                     "2.5"                    },
        {2.0,                                     "2.0"                    },
        {100,                                     "100.0"                  },
        {-0.125,                                  "-0.125"                 },
        {1e-9,                                    "0.0"                    },
        {1e20,                                    "100000000000000000000.0"},
        {std::numeric_limits<double>::infinity(), "inf"                    },
    };
    for (const auto& [value, expected] : rows) {
        EXPECT_EQ(text8Of(narrow.printFloat(value)), expected);
        EXPECT_EQ(text16Of(wide.printFloat(value)), std::u16string(String(expected).text16()));
    }
    EXPECT_EQ(text8Of(narrow.printInt64(INT64_MIN)), "-9223372036854775808");
    EXPECT_EQ(text16Of(wide.printInt64(INT64_MIN)), u"-9223372036854775808");
}

TEST(StringPrint, SixteenBitFormats) {
    String text;
    EXPECT_EQ(text16Of(text.printf(u"%s=%d", u"gain\u65E5", -3)), u"gain\u65E5=-3");
    EXPECT_EQ(text16Of(text.printf(u"%5s|%-4S|%.1S", "8\x8A", u"w", u"cut")), u"   8\u00E4|w   |c");
    EXPECT_EQ(text16Of(text.printf(u"%c%C%%", '\x8A', u'\u65E5')), u"\u00E4\u65E5%");
    EXPECT_EQ(text16Of(text.printf(u"%05d %+lld %llu %hhx %lX", 42, 7LL, UINT64_MAX, 0x1FF, 255L)),
              u"00042 +7 18446744073709551615 ff FF");
    EXPECT_EQ(text16Of(text.printf(u"%*d|%-*d|%.*f", 4, 1, 3, 2, 2, 1.005)), u"   1|2  |1.00");
    EXPECT_EQ(text16Of(text.printf(u"%.3f %e %g %Lf", 2.0, 1.0, 0.5, 1.5L)), u"2.000 1.000000e+00 0.5 1.500000");
    EXPECT_EQ(text16Of(text.printf(u"\u00E4%d: %s", 1, static_cast<const tchar*>(nullptr))), u"\u00E41: (null)");
    EXPECT_EQ(text16Of(text.printf(u"end %")), u"end ");
}

TEST(StringPrint, CutsAtTheBuffer) {
    String source, text;
    source.assign('x', 5000);
    EXPECT_EQ(text.printf("%s", source.text8()).length(), 4095u);
    EXPECT_EQ(text.printf(u"%s", source.text16()).length(), 4095u);
    EXPECT_EQ(text.printf(u"%99999d", 1).length(), 4095u);
    EXPECT_EQ(text.printf(u"%.99999f", 1.0).length(), 4095u);
}

TEST(StringHash, MatchesTheFormula) {
    EXPECT_EQ(hashString8("ab", 1000), ('b' + ('a' << 6)) % 1000u);
    EXPECT_EQ(hashString8("\xFF", 50), UINT32_MAX % 50);
    EXPECT_EQ(hashString16(u"\xFF", 50), 0xFFu % 50);
    EXPECT_EQ(hashString8(nullptr, 7), 0u);
    EXPECT_EQ(hashString16(u"", 7), 0u);
}

struct StoreRow {
    const char* name;
    FString text;
    std::string bytes;
};

TEST(StringStorage, FormsToTheByte) {
    const StoreRow rows[] = {
        {"empty", FString(), std::string(4, '\0')},
        {"narrow", FString("a\x8A"), "\x03\0\0\0a\x8A\0"s},
        {"wide", FString(u"a\u00E4"), "\x07\0\0\0a\xC3\xA4\0\xEF\xBB\xBF"s},
        {"lost", FString(u"\xD800"), "\x05\0\0\0?\0\xEF\xBB\xBF"s},
    };
    for (const StoreRow& row : rows) {
        SCOPED_TRACE(row.name);
        MemoryStreamer stream;
        ASSERT_TRUE(row.text.store(stream));
        EXPECT_EQ(stream.bytes, row.bytes);
        stream.cursor = 0;
        FString loaded("old");
        ASSERT_TRUE(loaded.load(stream));
        EXPECT_EQ(stream.cursor, int64_t(row.bytes.size()));
        if (row.name != "lost"s) {
            EXPECT_EQ(loaded, row.text);
            EXPECT_EQ(loaded.isWideString(), row.text.isWideString());
        }
        for (int64_t room = 0; room < int64_t(row.bytes.size()); ++room) {
            MemoryStreamer full;
            full.room = room;
            EXPECT_FALSE(row.text.store(full)) << room;
        }
    }
}

TEST(StringStorage, ReadsTheMarksAndRefusesTheRest) {
    struct {
        const char* name;
        std::string bytes;
        bool loads;
        FString expected;
    } const rows[] = {
        {"mark in front",          "\x06\0\0\0\xEF\xBB\xBF\xC3\xA4\0"s, true,  FString(u"\u00E4")     },
        {"short is never marked",  "\x03\0\0\0\xEF\xBB\xBF"s,           true,  FString("\xEF\xBB\xBF")},
        {"no terminator",          "\x02\0\0\0ab"s,                     true,  FString("ab")          },
        {"more terminators",       "\x04\0\0\0ab\0\0"s,                 true,  FString("ab")          },
        {"only a mark and a zero", "\x04\0\0\0\0\xEF\xBB\xBF"s,         true,  FString()              },
        {"negative",
         "\xFF\xFF\xFF\xFF"
         "ab"s,                                                         false, FString()              },
        {"malformed",              "\x06\0\0\0\xC3z\0\xEF\xBB\xBF"s,    false, FString()              },
        {"cut off",                "\x05\0\0\0ab"s,                     false, FString()              },
        {"no size",                "\x05\0"s,                           false, FString()              },
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        MemoryStreamer stream(row.bytes);
        FString text("old");
        EXPECT_EQ(text.load(stream), row.loads);
        EXPECT_EQ(text, row.loads ? row.expected : FString("old"));
        EXPECT_EQ(text.length(), (row.loads ? row.expected : FString("old")).length());
    }
}

TEST(StringStorage, ATooLongTextIsWrittenButSkippedInReading) {
    for (const int32_t length : {49999, 50000}) {
        MemoryStreamer stream;
        FString written, read;
        written.assign('x', length);
        ASSERT_TRUE(written.store(stream));
        stream.writeInt32(77);
        stream.cursor = 0;
        EXPECT_EQ(read.load(stream), length == 49999);
        int32_t behind = 0;
        EXPECT_TRUE(stream.readInt32(behind));
        EXPECT_EQ(behind, 77);
    }
}

TEST(StringStorage, RawTextWithCounts) {
    MemoryStreamer stream;
    EXPECT_TRUE(FString::storeString8(stream, nullptr) && FString::storeString16(stream, nullptr));
    EXPECT_TRUE(FString::storeString8(stream, "abc", 2) && FString::storeString16(stream, u"abc", 1));
    EXPECT_EQ(stream.bytes, std::string(8, '\0') + "\3\0\0\0ab\0"s + "\5\0\0\0a\0\xEF\xBB\xBF"s);
}
}  // namespace
}  // namespace Tessarine
