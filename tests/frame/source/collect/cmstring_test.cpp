#include "collect/cmstring.h"
#include "collect/cmarray.h"
#include "collect/cmtokens.h"
#include "pluginterfaces/base/smartpointer.h"
#include "tests/support/uncounted.h"
#include <gtest/gtest.h>
#include <string.h>
#include <string>

namespace Tessarine {
namespace {
TEST(CmString, IsEqualAndOrderedByItsText) {
    OPtr<CmString> a(new CmString("abc")), b(new CmString(u"abc")), c(new CmString("abd"));
    OPtr<CmObject> other(new CmObject);
    EXPECT_FALSE(a->isEqual(c) || a->isEqual(other) || a->isEqual(nullptr));
    EXPECT_TRUE(a->isEqual(b) && a->compare(b.get()) == 0 && a->compare(c.get()) < 0 && c->compare(a.get()) > 0);
    EXPECT_EQ(a->compare(other.get()), -other->compare(a.get()));
    EXPECT_EQ(b->hash(50), hashString16(u"abc", 50));
    EXPECT_TRUE(b->FString::isWideString());
}

TEST(CmString, OneObjectBehindAllFaces) {
    OPtr<CmString> text(new CmString);
    FUnknownPtr<IString> face(static_cast<CmObject*>(text.get()));
    FUnknownPtr<IStringResult> result(face);
    ASSERT_TRUE(face && result);
    face->take(strdup("block"), false);
    EXPECT_STREQ(text->text8(), "block");
    ConstString(u"\u65E5").copyTo(*face);
    EXPECT_TRUE(face->isWideString());
    ConstString("view", 2).copyTo(result);
    EXPECT_STREQ(face->getText8(), "vi");
    EXPECT_EQ(std::u16string(face->getText16()), u"vi");
    EXPECT_EQ(referencesOf(text), 3u);
}

std::string joined(const CmArray& parts) {
    std::string all;
    for (int32_t i = 0; i < parts.total(); ++i)
        all += '<' + std::string(static_cast<CmString*>(parts.at(i))->text8()) + '>';
    return all;
}

TEST(CmStringSplit, DropsEmptyPartsButTheTail) {
    constexpr std::tuple<const char*, bool, bool, const char*> kRows[] = {
        {"",          true,  false, "<>"           },
        {"",          true,  true,  ""             },
        {".a..b.",    true,  false, "<a><b><>"     }, // false adds the empty tail
        {" a . . b ", true,  true,  "<a><b>"       },
        {" a . . b ", false, true,  "< a >< >< b >"},
    };
    for (const auto& [source, trim, keepEmptyTail, expected] : kRows) {
        for (const bool wide : {false, true}) {
            SCOPED_TRACE(testing::Message() << source << wide);
            String text(source);
            if (wide)
                text.toWideString();
            CmArray parts(0, -1);
            const int32_t total = CmString::split(text, parts, u'.', trim, keepEmptyTail);
            EXPECT_EQ(joined(parts), expected);
            EXPECT_TRUE(total == parts.total() && parts._ownsObjects == CmContainer::kTakesOver);
        }
    }
    CmArray full(1, 0), parts(0, -1);
    EXPECT_EQ(CmString::split8("a,b,c", full, ','), 1);  // what finds no place isn't leaked
    EXPECT_EQ(CmString::split("a\xA5"
                              "b",
                              parts, u'\u2022'),
              2);  // a delimiter of the code page's upper half
}

TEST(CmTokens, WalksAndRemembersTheDelimiter) {
    CmTokens tokens("  one, two;three");
    constexpr std::tuple<const char*, const tchar*, tchar> kRows[] = {
        {" ,",  u"one",   u','},
        {" ,;", u"two",   u';'},
        {",;",  u"three", u';'}, // the text ended
        {",;",  u"",      u';'},
    };
    for (int32_t round = 0; round < 2; ++round) {
        for (const auto& [delimiters, token, delimiter] : kRows) {
            EXPECT_EQ(std::u16string(tokens.next(delimiters)), token);
            EXPECT_EQ(tokens.getDelimiter(), delimiter);
        }
        tokens.reset();
    }
}
}  // namespace
}  // namespace Tessarine
