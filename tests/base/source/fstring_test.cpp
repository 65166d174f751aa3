#include "base/source/fstring.h"
#include "pluginterfaces/base/fvariant.h"
#include "pluginterfaces/base/istringresult.h"
#include "tests/base/source/stringtext.h"
#include "tests/support/memorystreamer.h"
#include <gtest/gtest.h>
#include <random>

namespace Tessarine {
namespace {
using std::string_literals::operator""s;

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
    String wide(u"xy");
    wide.replace(0, 1, text).append(text);
    EXPECT_EQ(wide.replace("x", text), 0);
    EXPECT_FALSE(wide.replaceChars8("x", '\x82') || wide.startsWith(text) || wide.endsWith(text));
    EXPECT_EQ(text16Of(wide), u"xy");
}

struct CompareRow {
    const char *a, *b;
    int32_t count, matchCase, ignoreCase;  // expected signs
};
constexpr CompareRow kCompares[] = {
    {"abc",  "ABC",  -1, 1,  0 },
    {"abc",  "abd",  -1, -1, -1},
    {"abc",  "abcd", -1, -1, -1},
    {"abcX", "abcY", 3,  0,  0 },
    {"x",    "y",    0,  0,  0 },
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
    EXPECT_EQ(ConstString("port.A").compareAt(5, "a", -1, kIgnoreCase), 0);
    EXPECT_EQ(ConstString("port.A").compareAt(99, "x"), -1);
    EXPECT_EQ(ConstString("\xE4").compare("z"), 0xE4 - 'z');  // bytes compare unsigned
    // 8 bits compare as the C library does, terminator included
    EXPECT_EQ(ConstString("ab").compare("abd"), -'d');
    EXPECT_EQ(ConstString("abD").compare("ab", kIgnoreCase), 'd');
    EXPECT_EQ(ConstString(u"ab").compare(u"abd"), -1);
    // with a count, the start of the other text is looked for
    EXPECT_EQ(ConstString(u"abc").compare(u"ab", 5, kIgnoreCase), 0);
    EXPECT_GT(ConstString("abc").compare("ab", 5, kIgnoreCase), 0);
    EXPECT_EQ(ConstString(u"abcdef").compare(u"ABC", 5, kIgnoreCase), 0);
    EXPECT_GT(ConstString(u"abcdef").compare(u"abc", 5), 0);
}

constexpr std::pair<const char*, const char*> kNatural[] = {
    {"a9",                       "a10"                     },
    {"a1",                       "a01"                     },
    {"a1b2",                     "a1b10"                   },
    {"ttyS9",                    "ttyS10"                  },
    {"a",                        "a1"                      },
    {"",                         "1"                       },
    {"0",                        "00"                      },
    {"x99999999999999999999998", "x99999999999999999999999"},
};

TEST(StringCompare, NaturalOrder) {
    for (const auto& [less, more] : kNatural) {
        SCOPED_TRACE(more);
        EXPECT_LT(strnatcmp8(less, more), 0);
        EXPECT_GT(strnatcmp8(more, less), 0);
        EXPECT_EQ(strnatcmp8(more, more), 0);
        String wide(less);
        EXPECT_LT(strnatcmp16(wide.text16(), String(more).text16()), 0);
        EXPECT_LT(wide.naturalCompare(more), 0);
    }
    EXPECT_EQ(strnatcmp8("Port2", "pORT2", false), 0);
    EXPECT_EQ(strnatcmp16(u"\u00E9", u"\u00C9", false), 0x20);  // ASCII alone has case here
    EXPECT_EQ(strnatcmp16(u"\u0661", u"\u0662"), -1);
    EXPECT_LT(strnatcmp8("Port2", "port1"), 0);
    EXPECT_EQ(strnatcmp8(nullptr, ""), 0);
}

TEST(StringFind, ForwardsAndBackwards) {
    String text("one two One two");
    for (int32_t wide = 0; wide < 2; ++wide) {
        EXPECT_EQ(text.findNext(0, "two", kMatchCase, 6), -1);
        EXPECT_EQ(text.findNext(-5, 'o'), 0);
        EXPECT_EQ(text.findPrev(-1, "two"), 12);
        EXPECT_EQ(text.findPrev(11, "two"), 4);
        EXPECT_EQ(text.findPrev(3, "two"), -1);
        EXPECT_EQ(text.findPrev(-1, "one two one two and more"), -1);
        EXPECT_TRUE(text.startsWith(u"ONE", kIgnoreCase));
        EXPECT_FALSE(text.startsWith(""));
        EXPECT_TRUE(text.endsWith("One two"));
        EXPECT_FALSE(text.endsWith("and One two One two"));
        text.toWideString();
    }
    EXPECT_TRUE(ConstString().startsWith(""));
}

// Against the plain way, with texts longer than what is looked at in one go.
TEST(StringFind, PlacesAreThoseOfThePlainSearch) {
    std::minstd_rand random(5);
    const auto someText = [&random](size_t size) {
        std::u16string text(random() % (size + 1), u'\0');
        for (char16_t& unit : text)
            unit = u"abABkK\u212As"[random() % (random() % 8 ? 4 : 8)];
        return text;
    };
    for (int32_t round = 0; round < 20000; ++round) {
        const std::u16string text = someText(60), what = someText(4);
        const size_t start = random() % 40;
        std::u16string folded = text, foldedWhat = what;
        for (std::u16string* each : {&folded, &foldedWhat})
            for (char16_t& unit : *each)
                unit = unit == 0x212A ? u'k' : ConstString::toLower(unit);
        const auto place = [start](const std::u16string& where, const std::u16string& sought) {
            return sought.empty() ? -1 : int32_t(where.find(sought, start));
        };
        String ours(text.c_str()), sought(what.c_str());
        ASSERT_EQ(ours.findNext(int32_t(start), sought), place(text, what));
        ASSERT_EQ(ours.findNext(int32_t(start), sought, kIgnoreCase), place(folded, foldedWhat));
        if (!ours.toMultiByte(1) || !sought.toMultiByte(1) || ours.contains("?") || sought.contains("?"))
            continue;
        ASSERT_EQ(ours.findNext(int32_t(start), sought), place(text, what));
        ASSERT_EQ(ours.findNext(int32_t(start), sought, kIgnoreCase), place(folded, foldedWhat));
    }
}

TEST(StringFind, CountsAndDifferences) {
    String text("aXaxaX");
    for (int32_t wide = 0; wide < 2; ++wide) {
        EXPECT_EQ(text.countOccurences("ax", 0, kIgnoreCase), 3);
        EXPECT_EQ(text.countOccurences('a', 1), 2);
        EXPECT_EQ(text.getFirstDifferent("aXaXaX", kIgnoreCase), -1);
        EXPECT_EQ(text.getFirstDifferent(u"aXa"), 3);
        EXPECT_EQ(text.testChar8(1, 'X'), !wide);
        EXPECT_EQ(text.testChar16(1, u'X'), wide != 0);
        text.toWideString();
    }
    EXPECT_EQ(ConstString("aaaa").countOccurences("aa"), 2);
    EXPECT_EQ(ConstString(u"\u00C9x").getFirstDifferent(u"\u00E9y", kIgnoreCase), 1);
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
    EXPECT_EQ(text8Of(text.insertAt(99, "no")), "0123456789");
    EXPECT_EQ(text8Of(text.replace(1, 4, "--long--").replace(1, 8, "")), "056789");
    EXPECT_EQ(text8Of(text.replace(4, -1, "x")), "0567x");
    EXPECT_EQ(text.replace("X", "yy", kIgnoreCase), 1);
    EXPECT_EQ(text8Of(text), "0567yy");
    EXPECT_EQ(text.replace("y", u"\u65E5y"), 2);
    EXPECT_EQ(text16Of(text), u"0567\u65E5y\u65E5y");
    EXPECT_EQ(text.replace("", "z"), 0);
    EXPECT_FALSE(text.extract(text, text.length()));
}

struct RemoveRow {
    bool (*edit)(String&);
    const char *text, *expected;  // the same text: nothing went
};
constexpr RemoveRow kRemovals[] = {
    {[](String& text) { return text.removeSubString("ab"); },        "xabyabab", "xy"   },
    {[](String& text) { return text.removeSubString("ab", false); }, "xabyab",   "xyab" },
    {[](String& text) { return text.removeSubString(u"ab"); },       "ba",       "ba"   },
    {[](String& text) { return text.removeChars(); },                " a b ",    "ab"   },
    {[](String& text) { return text.removeChars(kAlphaNumeric); },   "(a-1)",    "a1"   },
    {[](String& text) { return text.removeChars(kAlphabetic); },     "(a-1)",    "a"    },
    {[](String& text) { return text.removeChars8("abc"); },          "aXcbXb",   "XX"   },
    {[](String& text) { return text.removeChars16(u"X"); },          "XX",       ""     },
    {[](String& text) { return text.removeChars8(""); },             "abc",      "abc"  },
    {[](String& text) { return text.replaceChars8("/\\", ':'); },    "a/b\\c",   "a:b:c"},
    {[](String& text) { return text.replaceChars16(u"xy", u'.'); },  "axbyc",    "a.b.c"},
    {[](String& text) { return text.replaceChars8("a", 0); },        "abc",      "abc"  },
};

TEST(StringEdit, TakesCharactersOut) {
    for (const RemoveRow& row : kRemovals) {
        for (int32_t wide = 0; wide < 2; ++wide) {
            String text(row.text), expected(row.expected);
            if (wide)
                text.toWideString();
            EXPECT_EQ(row.edit(text), row.text != std::string(row.expected)) << row.text;
            EXPECT_EQ(text, expected) << row.text;
            EXPECT_EQ(text.isEmpty(), text.ptr() == nullptr);
        }
    }
    String tabs(u"a\tb\u2003");  // of 16-bit text, a tab is no white space
    tabs.removeChars();
    EXPECT_EQ(text16Of(tabs), u"a\tb");
    String mixed("\x8A/");
    EXPECT_TRUE(mixed.replaceChars16(u"\u00E4", u'\u65E5'));
    EXPECT_EQ(text16Of(mixed), u"\u65E5/");
    EXPECT_TRUE(mixed.replaceChars8("/", '\x8A'));
    EXPECT_EQ(text16Of(mixed), u"\u65E5\u00E4");
}

TEST(StringEdit, ManySmallEditsKeepTheText) {
    std::minstd_rand random(9);
    std::string expected;
    String text, wide(u"");
    for (int32_t round = 0; round < 5000; ++round) {
        const std::string piece(random() % 40, char('a' + round % 26));
        const size_t at = random() % (expected.size() + 1), gone = random() % 60;
        switch (random() % 4) {
        case 0:
            expected.erase(at, gone);
            text.remove(uint32_t(at), int32_t(gone));
            break;
        case 1:
            expected += 'z';
            text.append('z');
            break;
        case 2:
            expected.insert(at, piece);
            text.insertAt(uint32_t(at), String(piece.c_str()));
            break;
        default:
            expected += piece;
            text.append(piece.c_str());
        }
        ASSERT_EQ(text8Of(text), expected);
        ASSERT_EQ(text.length(), expected.size());
        if (round % 50 == 0) {
            wide.append(text).append(u'!');
            String copy(wide);
            copy.take(wide.pass(), true);
            wide = copy;
        }
    }
    EXPECT_EQ(wide.countOccurences(u'!'), 100);
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
    String lower("\x80Zz");
    lower.toLower();
    lower.toUpper(2);
    EXPECT_EQ(text8Of(lower), "\x80zZ");

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

TEST(StringEdit, CopiesOut) {
    const ConstString text(u"a\u00E4c");
    char bytes[8];
    tchar units[8];
    EXPECT_EQ(text.copyTo8(bytes, 1), 2);
    EXPECT_STREQ(bytes, "\x8A\x63");
    EXPECT_EQ(text.copyTo8(bytes, 5), 0);
    EXPECT_STREQ(bytes, "");
    EXPECT_EQ(ConstString("\x8A\x62\x63").copyTo16(units, 0, 2), 2);
    EXPECT_EQ(std::u16string(units), u"\u00E4b");
    EXPECT_EQ(ConstString(ConstString("tail"), 2), "il");
    EXPECT_TRUE(ConstString(ConstString("tail"), 9).isEmpty());
    EXPECT_EQ(ConstString(FVariant(u"v")), "v");
    EXPECT_TRUE(ConstString(FVariant(int64_t(3))).isEmpty());
}

template <class Char, class Signed>
uint32_t formula(const std::basic_string<Char>& text, uint32_t n) {
    uint32_t h = 0;
    for (const Char c : text)
        h = (uint32_t(Signed(c)) + (h << 6)) % n;
    return h;
}

TEST(StringHash, MatchesTheFormula) {
    std::minstd_rand random(11);
    const uint32_t limit = (1u << 26) - 1024;
    for (int32_t round = 0; round < 20000; ++round) {
        const uint32_t divisors[] = {1,     2,         50,         1009,       uint32_t(random()) % limit + 1,
                                     limit, limit + 1, UINT32_MAX, 0x80000000, uint32_t(random()) * 2 + 1};
        const uint32_t n = divisors[random() % std::size(divisors)];
        std::u16string wide(random() % 40, u'\0');
        for (char16_t& unit : wide)
            unit = char16_t(1 + random() % (random() % 4 ? 127 : 65535));
        std::string narrow(wide.begin(), wide.end());
        narrow = narrow.c_str();
        ASSERT_EQ(hashString8(narrow.c_str(), n), (formula<char, int8_t>(narrow, n)));
        ASSERT_EQ(hashString16(wide.c_str(), n), (formula<char16_t, uint16_t>(wide, n)));
    }
    EXPECT_EQ(hashString8("\xFF", 50), UINT32_MAX % 50);
    EXPECT_EQ(hashString8("abc", 0), 0u);
    EXPECT_EQ(hashString8(nullptr, 7), 0u);
    EXPECT_EQ(hashString16(u"", 7), 0u);
}

TEST(StringBorder, VariantsPascalAndSystemStrings) {
    FVariant value;
    String text(u"\u00E4"), other("old");
    text.toVariant(value);
    EXPECT_FALSE(value.isOwner());
    EXPECT_TRUE(other.fromVariant(value));
    text.passToVariant(value);
    EXPECT_TRUE(value.isOwner() && text.isEmpty());
    EXPECT_EQ(std::u16string(value.getString16()), u"\u00E4");
    String().passToVariant(value);
    EXPECT_FALSE(value.isOwner());
    EXPECT_STREQ(value.getString8(), "");
    EXPECT_FALSE(other.fromVariant(FVariant(int64_t(3))));
    EXPECT_EQ(text16Of(other), u"\u00E4");

    unsigned char pascal[256];
    EXPECT_EQ(other.toPascalString(pascal), 1);
    EXPECT_EQ(pascal[1], 0x8A);
    EXPECT_EQ(String().assign('x', 300).toPascalString(pascal), 255);
    other.fromPascalString(pascal);
    EXPECT_EQ(text8Of(other), std::string(255, 'x'));

    const FString narrow("\x8A"), wide(u"\u00E4\U0001F600");
    EXPECT_EQ(narrow.toCFStringRef(), nullptr);  // no ASCII
    IString* ref = static_cast<IString*>(narrow.toCFStringRef(29));
    EXPECT_EQ(std::u16string(ref->getText16()), u"\u00E4");
    ref->release();
    ref = static_cast<IString*>(wide.toCFStringRef());
    String target(u"w");
    EXPECT_TRUE(target.fromCFStringRef(ref));
    EXPECT_EQ(target, wide);
    target = "n";
    EXPECT_TRUE(target.fromCFStringRef(ref, 1280));
    EXPECT_EQ(text8Of(target), "\xE4?");
    EXPECT_FALSE(target.fromCFStringRef(nullptr));
    ref->release();
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
        {"negative",               "\xFF\xFF\xFF\xFF\x61\x62"s,         false, FString()              },
        {"malformed stays narrow", "\x06\0\0\0\xC3z\0\xEF\xBB\xBF"s,    true,  FString("\xC3z")       },
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

TEST(StringStorage, AZeroInsideIsStoredAsItWasLoaded) {
    MemoryStreamer stream("\4\0\0\0a\0b\0"s), again;
    FString text;
    ASSERT_TRUE(text.load(stream) && text.store(again));
    EXPECT_EQ(again.bytes, stream.bytes);
    EXPECT_EQ(String(u"x").append(text).length(), 2u);  // 16-bit text has none
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
    EXPECT_EQ(stream.bytes, "\0\0\0\0\0\0\0\0\3\0\0\0ab\0\5\0\0\0a\0\xEF\xBB\xBF"s);
}
}  // namespace
}  // namespace Tessarine
