#include "base/source/fstringconvert.h"
#include "tests/base/source/stringtext.h"
#include "tests/support/pieces.h"
#include <gtest/gtest.h>
#include <random>
#include <unicode/uchar.h>
#include <unicode/ucnv.h>
#include <unicode/ustring.h>

namespace Tessarine {
namespace {
using std::string_literals::operator""s;

const std::tuple<uint32_t, std::string, std::u16string> kRoundTrips[] = {
    {kCodePageDefault,          "\x8A\xA9\xD0",              u"\u00E4\u00A9\u2013"        },
    {kCodePageShiftJIS,         "\x93\xFA\x96{\xB1\x1A\x7F", u"\u65E5\u672C\uFF71\x1A\x7F"},
    {kCodePageLatin1,           "\x80\xE4",                  u"\u20AC\u00E4"              },
    {kCodePageMacCentralEurope, "\x8Bx",                     u"\u010Dx"                   },
    {kCodePageUTF8,             "a\u00E4\u20AC\U0001F600",   u"a\u00E4\u20AC\U0001F600"   },
    {12345,                     "plain",                     u"plain"                     },
};

TEST(StringCodePage, ConvertsBothWays) {
    for (const auto& [codePage, bytes, units] : kRoundTrips) {
        SCOPED_TRACE(codePage);
        String text(bytes.c_str());
        ASSERT_TRUE(text.toWideString(codePage));
        EXPECT_EQ(text16Of(text), units);
        ASSERT_TRUE(text.toMultiByte(codePage));
        EXPECT_EQ(text8Of(text), bytes);
    }
}

constexpr std::pair<uint32_t, const char*> kConverters[] = {
    {kCodePageMacRoman,         "macintosh"         },
    {kCodePageShiftJIS,         "ibm-943_P15A-2003" },
    {kCodePageLatin1,           "ibm-5348_P100-1997"},
    {kCodePageMacCentralEurope, "macos-29-10.2"     },
    {1,                         "US-ASCII"          },
};

TEST(StringCodePage, EveryUnitIsWhatTheServiceSays) {
    for (const auto& [codePage, name] : kConverters) {
        UErrorCode error = U_ZERO_ERROR;
        UConverter* converter = ucnv_open(name, &error);
        ucnv_setFromUCallBack(converter, UCNV_FROM_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &error);
        ASSERT_TRUE(U_SUCCESS(error)) << name;
        for (uint32_t code = 0x80; code <= 0xFFFF; ++code) {  // ASCII is itself, also where the service turns controls
            if (code == 0xF86F)
                continue;  // a private use that the service maps in this direction alone
            const tchar unit = tchar(code);
            char expected[8] = {}, bytes[8] = {};
            error = U_ZERO_ERROR;
            const int32_t size = ucnv_fromUChars(converter, expected, 8, &unit, 1, &error);
            const int64_t got = encodeText({&unit, 1}, bytes, 8, codePage);
            ASSERT_EQ(std::string(bytes, size_t(got)),
                      U_SUCCESS(error) && size > 0 ? std::string(expected, size_t(size)) : "?")
                << name << ' ' << code;
        }
        ucnv_close(converter);
    }
}

TEST(StringCodePage, ALostCharacterIsOneQuestionMark) {
    const std::u16string lost = u"a\u65E5b\U0001F600c" + std::u16string(1, char16_t(0xD800)) + u"d" + char16_t(0xDC00);
    const std::pair<uint32_t, std::string> rows[] = {
        {kCodePageMacRoman, "a?b?c?d?"              },
        {1,                 "a?b?c?d?"              },
        {kCodePageUTF8,     "a\u65E5b\U0001F600c?d?"},
        {kCodePageShiftJIS, "a\x93\xFA"s + "b?c?d?" },
    };
    for (const auto& [codePage, expected] : rows) {
        String text(lost.c_str());
        ASSERT_TRUE(text.toMultiByte(codePage));
        EXPECT_EQ(text8Of(text), expected) << codePage;
    }
}

constexpr char kMalformed[] =
    "\x80|\xC3|\xC3(|\xC0\xAF|\xC1\xBF|\xE0\x80\x80|\xE0\x9F\xBF|\xED\xA0\x80|\xF0\x8F\xBF\xBF|"
    "\xF4\x90\x80\x80|\xF8\x88\x80\x80\x80|\xFF|\xE2\x82|\xE2\x82(|\xF0\x9F\x98";

TEST(StringCodePage, MalformedInputAnywhereKeepsTheOldText) {
    for (const std::string& bytes : piecesOf(kMalformed)) {
        for (size_t before = 0; before < 36; ++before) {
            const std::string utf8 = std::string(before, 'x') + bytes + std::string(before / 2, 'y');
            String text("old");
            EXPECT_TRUE(!text.fromUTF8(utf8.c_str()) && text8Of(text) == "old") << utf8;
            EXPECT_EQ(ConstString::multiByteToWideString(nullptr, utf8.c_str(), 0, kCodePageUTF8), 0);
        }
    }
    for (const auto& [codePage, bytes] : {
             std::pair(kCodePageShiftJIS, "\x81"), {CodePage(12345), "\xE4"}
    }) {
        String text(bytes);
        EXPECT_TRUE(!text.toWideString(codePage) && text8Of(text) == bytes) << codePage;
    }
}

TEST(StringCodePage, HelpersCutAtWholeCharacters) {
    const std::u16string units = u"ab\U0001F600\u20AC and much more, to the end of some vectors";
    const std::string utf8 = "ab\U0001F600\u20AC and much more, to the end of some vectors";
    for (int32_t room = 1; room < 50; ++room) {
        std::vector<tchar> wide(size_t(room), u'#');
        const int32_t count = ConstString::multiByteToWideString(wide.data(), utf8.c_str(), room, kCodePageUTF8);
        EXPECT_EQ(count, room == 4 ? 3 : std::min(room, int32_t(units.size()) + 1));
        EXPECT_EQ(std::u16string(wide.data()), units.substr(0, size_t(count) - 1));
        std::vector<char> narrow(size_t(room), '#');
        const int32_t bytes = ConstString::wideStringToMultiByte(narrow.data(), units.c_str(), room, kCodePageUTF8);
        const bool inside = (room > 3 && room < 7) || (room > 7 && room < 10);
        EXPECT_EQ(bytes, inside ? (room < 7 ? 3 : 7) : std::min(room, int32_t(utf8.size()) + 1));
        EXPECT_EQ(std::string(narrow.data()), utf8.substr(0, size_t(bytes) - 1));
    }
    EXPECT_GE(ConstString::wideStringToMultiByte(nullptr, units.c_str(), 0, kCodePageUTF8), int32_t(utf8.size()) + 1);
}

// Lengths around the vectors and counted pieces, with the odd character at every place.
TEST(StringCodePage, FindsTheOddCharacterAtEveryPlace) {
    for (const std::u16string odd : {u"\u00E9", u"\u20AC", u"\U0001F600", u"\xD800", u"\xDC00"}) {
        for (size_t length : {1, 2, 7, 15, 16, 17, 31, 32, 33, 129}) {
            for (size_t at = 0; at < length; ++at) {
                std::u16string units(length, u'x');
                units.replace(at, 1, odd);
                String text(units.c_str());
                EXPECT_FALSE(text.isAsciiString());
                ASSERT_TRUE(text.toMultiByte(kCodePageUTF8));
                ASSERT_TRUE(text.toWideString(kCodePageUTF8));
                if (odd[0] == 0xD800 || odd[0] == 0xDC00)
                    units[at] = u'?';
                EXPECT_EQ(text16Of(text), units);
            }
        }
    }
}

TEST(StringUnicode, CaseIsMappedUnitByUnitAsTheRootHasIt) {
    for (uint32_t code = 1; code <= 0xFFFF; ++code) {
        const tchar unit = tchar(code);
        UErrorCode error = U_ZERO_ERROR;
        UChar mapped[4];
        const int32_t upper = u_strToUpper(mapped, 4, &unit, 1, "", &error);
        ASSERT_EQ(ConstString::toUpper(unit), upper == 1 ? mapped[0] : unit) << code;
        const int32_t lower = u_strToLower(mapped, 4, &unit, 1, "", &error);
        ASSERT_EQ(ConstString::toLower(unit), lower == 1 ? mapped[0] : unit) << code;
        ASSERT_EQ(foldUnit(unit), tchar(u_foldCase(unit, U_FOLD_CASE_DEFAULT))) << code;
    }
    for (int32_t c = -128; c < 128; ++c) {
        const bool letter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
        EXPECT_EQ(ConstString::isCharAlpha(char(c)), letter) << c;
        EXPECT_EQ(ConstString::toUpper(char(c)), c >= 'a' && c <= 'z' ? c - 32 : c) << c;
        EXPECT_EQ(ConstString::isCharSpace(char(c)), c == 32 || (c >= 9 && c <= 13)) << c;
    }
}

TEST(StringUnicode, Normalizes) {
    String text(u"e\u0301\uFB01");
    EXPECT_TRUE(text.isNormalized(kNormalizationD) && !text.isNormalized(kNormalizationC));
    for (const auto& [form, expected] : {
             std::pair(kNormalizationC, u"\u00E9\uFB01"),
             {kNormalizationKC, u"\u00E9fi" },
             {kNormalizationKD, u"e\u0301fi"}
    }) {
        ASSERT_TRUE(text.normalize(form));
        EXPECT_EQ(text16Of(text), expected);
    }
    EXPECT_FALSE(String("e").normalize());
}

/** Texts from letters that differ in case, in number of units and in the way they fold; pairs may come apart. */
std::u16string randomText(std::minstd_rand& random) {
    static const std::u16string letters =
        u"aAkK\u212AsS\u017F\u00DF\u1E9E\u0130\u0131iI\u00E9\u00C9\u03C3\u03C2\u03A3\U00010400\U00010428x_\u0149n";
    std::u16string text;
    for (size_t length = random() % 24; length > 0; --length)
        text += letters[random() % (random() % 4 ? 8 : letters.size())];
    return text;
}

std::u16string foldedText(const std::u16string& text) {
    UChar folded[128];
    UErrorCode error = U_ZERO_ERROR;
    return {folded, size_t(u_strFoldCase(folded, 128, text.data(), int32_t(text.size()), U_FOLD_CASE_DEFAULT, &error))};
}

TEST(StringUnicode, ComparesIgnoringCaseByTheServicesFolding) {
    std::minstd_rand random(7);
    for (int32_t round = 0; round < 20000; ++round) {
        const std::u16string a = u'a' + randomText(random),
                             b = random() % 3 ? u'A' + randomText(random) : a + u"\u00DF";
        const std::u16string foldedA = foldedText(a), foldedB = foldedText(b);
        const int32_t expected = signOf(foldedA.compare(foldedB));
        const String ours(a.c_str());
        ASSERT_EQ(ours.compare(String(b.c_str()), kIgnoreCase), expected) << round;
        ASSERT_EQ(ours.compare(String(b.c_str()), int32_t(b.size()), kIgnoreCase),
                  foldedA.starts_with(foldedB) ? 0 : expected);
    }
}
}  // namespace
}  // namespace Tessarine
