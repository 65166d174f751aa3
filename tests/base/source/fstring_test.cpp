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

TEST(StringCompare, AnyPairOfWidthsAgrees) {
    // the count, and the signs that are expected with and without case
    constexpr std::tuple<const char*, const char*, int32_t, int32_t, int32_t> kRows[] = {
        {"abc",  "ABC",  -1, 1,  0 },
        {"abc",  "abcd", -1, -1, -1},
        {"abcX", "abcY", 3,  0,  0 },
        {"x",    "y",    0,  0,  0 },
        {"y",    "",     -1, 1,  1 },
        {"_",    "a",    -1, -1, -1},
    };
    for (const auto& [first, second, count, matchCase, ignoreCase] : kRows) {
        const String narrow(first), other(second), wide(narrow.text16()), otherWide(other.text16());
        for (const auto& [a, b] : {
                 std::pair(&narrow, &other), {&narrow, &otherWide},
                   {&wide,   &other    },
                   {&wide,   &otherWide}
        }) {
            EXPECT_EQ(signOf(a->compare(*b, count)), matchCase) << first;
            EXPECT_EQ(signOf(a->compare(*b, count, kIgnoreCase)), ignoreCase) << first;
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
    EXPECT_EQ(ConstString("\xE4").compare("z"), 0xE4 - 'z');  // bytes compare unsigned
    // 8 bits compare as the C library does, terminator included
    EXPECT_EQ(ConstString("ab").compare("abd"), -'d');
    EXPECT_EQ(ConstString("abD").compare("ab", kIgnoreCase), 'd');
    // with a count, the start of the other text is looked for
    EXPECT_EQ(ConstString(u"abc").compare(u"ab", 5, kIgnoreCase), 0);
    EXPECT_GT(ConstString("abc").compare("ab", 5, kIgnoreCase), 0);
}

TEST(StringCompare, NaturalOrder) {
    const char* const rising[] = {
        "", "1", "a1", "a1b2", "a1b10", "a01", "a9", "a10", "a99999999999999999999998", "a99999999999999999999999"};
    for (const char* const* more = rising + 1; more != std::end(rising); ++more) {
        SCOPED_TRACE(*more);
        EXPECT_LT(strnatcmp8(more[-1], *more), 0);
        EXPECT_GT(strnatcmp8(*more, more[-1]), 0);
        EXPECT_LT(String(String(more[-1]).text16()).naturalCompare(*more), 0);
    }
    EXPECT_EQ(strnatcmp8("Port2", "pORT2", false), 0);
    EXPECT_EQ(strnatcmp16(u"\u00E9", u"\u00C9", false), 0x20);  // ASCII alone has case here
    EXPECT_LT(strnatcmp8("Port2", "port1"), 0);
}

TEST(StringFind, ForwardsAndBackwards) {
    String text("one two One two");
    for (int32_t wide = 0; wide < 2; ++wide) {
        EXPECT_EQ(text.findNext(0, "two", kMatchCase, 6), -1);
        EXPECT_EQ(text.findPrev(-1, "two"), 12);
        EXPECT_EQ(text.findPrev(11, "two"), 4);
        EXPECT_EQ(text.findPrev(3, "two"), -1);
        EXPECT_EQ(text.findPrev(-1, "one two one two and more"), -1);
        EXPECT_TRUE(text.startsWith(u"ONE", kIgnoreCase) && text.endsWith("One two"));
        EXPECT_FALSE(text.startsWith("") || text.endsWith("and One two One two"));
        EXPECT_EQ(text.countOccurences("one", 0, kIgnoreCase), 2);
        EXPECT_EQ(text.countOccurences('o', 1), 2);
        EXPECT_EQ(text.getFirstDifferent(u"ONE TOO", kIgnoreCase), 5);
        EXPECT_EQ(text.getFirstDifferent(ConstString(text)), -1);
        text.toWideString();
    }
    EXPECT_EQ(ConstString("aaaa").countOccurences("aa"), 2);
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

TEST(StringEdit, TheSourceMayBeTheStringItself) {
    String text("abc");
    text.append(text).insertAt(1, text.text8() + 4);
    EXPECT_EQ(text8Of(text), "abcbcabc");
    text.replace(0, 5, ConstString(text, 5)).assign(text.text8() + 4);
    EXPECT_EQ(text8Of(text), "bc");
    EXPECT_EQ(text.replace(text, ConstString(text, 1)), 1);
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
    text.assign("abc", 2).append('y', 3).append(u'z', 2);
    EXPECT_EQ(text16Of(text), u"abyyyzz");
}

TEST(StringEdit, InsertReplaceRemove) {
    String text("0123456789");
    EXPECT_EQ(text8Of(text.insertAt(99, "no")), "0123456789");
    EXPECT_EQ(text8Of(text.replace(1, 4, "--long--").replace(1, 8, "")), "056789");
    EXPECT_EQ(text8Of(text.replace(4, -1, "x")), "0567x");
    EXPECT_EQ(text.replace("X", "yy", kIgnoreCase), 1);
    EXPECT_EQ(text.replace("y", u"\u65E5y"), 2);
    EXPECT_EQ(text16Of(text), u"0567\u65E5y\u65E5y");
    EXPECT_EQ(text.replace("", "z"), 0);
    EXPECT_FALSE(text.extract(text, text.length()));
}

// the same text: nothing went
constexpr std::tuple<bool (*)(String&), const char*, const char*> kRemovals[] = {
    {[](String& text) { return text.removeSubString("ab"); },        "xabyabab", "xy"   },
    {[](String& text) { return text.removeSubString("ab", false); }, "xabyab",   "xyab" },
    {[](String& text) { return text.removeChars(); },                " a b ",    "ab"   },
    {[](String& text) { return text.removeChars(kAlphaNumeric); },   "(a-1)",    "a1"   },
    {[](String& text) { return text.removeChars8("abc"); },          "aXcbXb",   "XX"   },
    {[](String& text) { return text.removeChars16(u"X"); },          "XX",       ""     },
    {[](String& text) { return text.removeChars8(""); },             "abc",      "abc"  },
    {[](String& text) { return text.replaceChars8("/\\", ':'); },    "a/b\\c",   "a:b:c"},
    {[](String& text) { return text.replaceChars8("a", 0); },        "abc",      "abc"  },
};

TEST(StringEdit, TakesCharactersOut) {
    for (const auto& [edit, source, expected] : kRemovals) {
        for (String text : {String(source), String(String(source).text16())}) {
            EXPECT_EQ(edit(text), std::string(source) != expected) << source;
            EXPECT_EQ(text, ConstString(expected)) << source;
            EXPECT_EQ(text.isEmpty(), text.ptr() == nullptr);
        }
    }
    String tabs(u"a\tb\u2003");  // of 16-bit text, a tab is no white space
    tabs.removeChars();
    EXPECT_EQ(text16Of(tabs), u"a\tb");
    String mixed("\x8A/");
    EXPECT_TRUE(mixed.replaceChars16(u"\u00E4", u'\u65E5') && mixed.replaceChars8("/", '\x8A'));
    EXPECT_EQ(text16Of(mixed), u"\u65E5\u00E4");
}

TEST(StringEdit, ManySmallEditsKeepTheText) {
    std::minstd_rand random(9);
    std::string expected;
    String text;
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
    }
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
    String text("\t 1(a2)! \n "), blanks(u"   ");
    EXPECT_TRUE(text.trim() && !text.trim() && text.trim(kAlphaNumeric));
    EXPECT_EQ(text8Of(text), "1(a2");
    EXPECT_TRUE(blanks.trim() && blanks.isEmpty());

    String upper(u"a\u00E4\u00DF\u0131");
    upper.toUpper();
    EXPECT_EQ(text16Of(upper), u"A\u00C4\u00DFI");  // what would be two units stays
    String lower("\x80Zz");
    lower.toLower();
    lower.toUpper(2);
    EXPECT_EQ(text8Of(lower), "\x80zZ");

    String set("abc");
    EXPECT_TRUE(set.setChar8(0, 'X') && set.setChar16(1, u'\u65E5') && !set.setChar8(3, 'n'));
    EXPECT_EQ(text16Of(set), u"X\u65E5\u0063");
    EXPECT_TRUE(set.setChar16(1, 0) && set == u"X");
}

TEST(StringEdit, RoomIsMadeFirstAndCountedLater) {
    String text("ab");
    ASSERT_TRUE(text.resize(5, false, true) && text.length() == 2);
    text.updateLength();
    EXPECT_EQ(text8Of(text), "ab   ");
    ASSERT_TRUE(text.resize(3, true) && !text.resize(ConstString::kMaxLength + 1, true));
    std::copy_n(u"xyz", 3, text.writable16());
    text.updateLength();
    EXPECT_EQ(text16Of(text), u"xyz");
    String taken;
    taken.take(text.pass(), true);
    EXPECT_TRUE(text.isEmpty() && taken == u"xyz");
}

TEST(StringHash, MatchesTheFormula) {
    const auto formula = [](const auto& text, uint32_t n) {
        uint32_t h = 0;
        for (const auto c : text)
            h = (uint32_t(c) + (h << 6)) % n;
        return h;
    };
    std::minstd_rand random(11);
    const uint32_t limit = (1u << 26) - 1024;
    for (int32_t round = 0; round < 20000; ++round) {
        const uint32_t divisors[] = {1, 50, uint32_t(random()) % limit + 1, limit, limit + 1, UINT32_MAX};
        const uint32_t n = divisors[random() % std::size(divisors)];
        std::u16string wide(random() % 40, u'\0');
        for (char16_t& unit : wide)
            unit = char16_t(1 + random() % (random() % 4 ? 127 : 65535));
        std::string narrow(wide.begin(), wide.end());
        narrow = narrow.c_str();
        ASSERT_EQ(hashString8(narrow.c_str(), n), formula(narrow, n));
        ASSERT_EQ(hashString16(wide.c_str(), n), formula(wide, n));
    }
    EXPECT_EQ(hashString8("abc", 0) + hashString8(nullptr, 7), 0u);
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
    EXPECT_FALSE(other.fromVariant(FVariant(int64_t(3))));
    EXPECT_EQ(text16Of(other), u"\u00E4");

    unsigned char pascal[256];
    EXPECT_TRUE(other.toPascalString(pascal) == 1 && pascal[1] == 0x8A);
    EXPECT_EQ(String().assign('x', 300).toPascalString(pascal), 255);
    other.fromPascalString(pascal);
    EXPECT_EQ(text8Of(other), std::string(255, 'x'));

    EXPECT_EQ(FString("\x8A").toCFStringRef(), nullptr);  // no ASCII
    auto* ref = static_cast<IString*>(FString(u"\u00E4\U0001F600").toCFStringRef());
    String target(u"w");
    EXPECT_TRUE(target.fromCFStringRef(ref) && target == u"\u00E4\U0001F600");
    target = "n";
    EXPECT_TRUE(target.fromCFStringRef(ref, 1280));
    EXPECT_EQ(text8Of(target), "\xE4?");
    ref->release();
}

TEST(StringStorage, FormsToTheByte) {
    const std::tuple<const char*, FString, std::string> rows[] = {
        {"empty", FString(), std::string(4, '\0')},
        {"narrow", FString("a\x8A"), "\x03\0\0\0a\x8A\0"s},
        {"wide", FString(u"a\u00E4"), "\x07\0\0\0a\xC3\xA4\0\xEF\xBB\xBF"s},
        {"lost", FString(u"\xD800"), "\x05\0\0\0?\0\xEF\xBB\xBF"s},
    };
    for (const auto& [name, text, bytes] : rows) {
        SCOPED_TRACE(name);
        MemoryStreamer stream;
        ASSERT_TRUE(text.store(stream));
        EXPECT_EQ(stream.bytes, bytes);
        stream.cursor = 0;
        FString loaded("old");
        ASSERT_TRUE(loaded.load(stream) && stream.cursor == int64_t(bytes.size()));
        EXPECT_EQ(loaded, name != "lost"s ? text : FString("?"));
        EXPECT_EQ(loaded.isWideString(), text.isWideString());
        MemoryStreamer full;
        for (full.room = 0; full.room < int64_t(bytes.size()); ++full.room, full.cursor = 0)
            EXPECT_FALSE(text.store(full)) << full.room;
    }
}

TEST(StringStorage, ReadsTheMarksAndRefusesTheRest) {
    const std::tuple<const char*, std::string, bool, FString> rows[] = {
        {"mark in front",          "\x06\0\0\0\xEF\xBB\xBF\xC3\xA4\0"s, true,  FString(u"\u00E4")     },
        {"short is never marked",  "\x03\0\0\0\xEF\xBB\xBF"s,           true,  FString("\xEF\xBB\xBF")},
        {"no terminator",          "\x02\0\0\0ab"s,                     true,  FString("ab")          },
        {"only a mark and a zero", "\x04\0\0\0\0\xEF\xBB\xBF"s,         true,  FString()              },
        {"negative",               "\xFF\xFF\xFF\xFF\x61\x62"s,         false, FString("old")         },
        {"malformed stays narrow", "\x06\0\0\0\xC3z\0\xEF\xBB\xBF"s,    true,  FString("\xC3z")       },
        {"cut off",                "\x05\0\0\0ab"s,                     false, FString("old")         },
        {"no size",                "\x05\0"s,                           false, FString("old")         },
    };
    for (const auto& [name, bytes, loads, expected] : rows) {
        SCOPED_TRACE(name);
        MemoryStreamer stream(bytes);
        FString text("old");
        EXPECT_EQ(text.load(stream), loads);
        EXPECT_EQ(text, expected);
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
