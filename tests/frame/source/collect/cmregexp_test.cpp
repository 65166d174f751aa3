#include "collect/cmregexp.h"
#include "collect/cmcontainer.h"
#include "pluginterfaces/base/smartpointer.h"
#include "storage/fpersistent.h"
#include "tests/frame/source/storage/archiveprobes.h"

namespace Tessarine {
namespace {

TEST(CmRegularExpression, MatchesByItsThreeOperators) {
    constexpr std::tuple<const tchar*, const tchar*, bool>
        kRows[] =
            {
                {u"",       u"a",      false},
                {u"?",      u"xy",     false},
                {u"ab??",   u"ab",     true }, // the text ends before the pattern
                {u"*?",     u"",       true },
                {u"a*b",    u"abab",   true },
                {u"a*b",    u"aba",    false},
                {u"a\\*",   u"ab",     false},
                {u"\\**",   u"*ab",    true },
                {u"\\\\*",  u"\\*",    true }, // the star too, as a backslash stands before it
                {u"\\\\*",  u"\\ab",   false},
                {u"a\\",    u"a",      true }, // nothing left to make literal
                {u"a**",    u"a**",    true }, // invalid: plain text
                {u"a**",    u"abc",    false},
                {u"\u00C9", u"\u00E9", false},
    };
    for (const auto& [pattern, text, matches] : kRows) {
        const OPtr<CmRegularExpression> expression(new CmRegularExpression(pattern));
        EXPECT_EQ(expression->match(text), matches) << ConstString(pattern).length() << testing::PrintToString(pattern);
    }
}

TEST(CmRegularExpression, IgnoresCaseInAnyWidth) {
    const OPtr<CmRegularExpression> expression(new CmRegularExpression("A?\x8E", false));  // code page 0: e acute
    EXPECT_TRUE(expression->match(u"ab\u00C9"));
    EXPECT_TRUE(expression->match("ab\x83"));  // its capital
    EXPECT_FALSE(expression->match(u"b\u00C9"));
}

TEST(CmRegularExpression, TakesTimeInProportion) {
    std::u16string pattern;
    for (int32_t i = 0; i < 100; ++i)
        pattern += u"*a";
    const OPtr<CmRegularExpression> expression(new CmRegularExpression((pattern + u"b").c_str()));
    EXPECT_FALSE(expression->match(std::u16string(5000, u'a').c_str()));
}

TEST(CmRegularExpression, IsRestoredWholeOrNotAtAll) {
    const OPtr<CmRegularExpression> source(new CmRegularExpression(u"a*\u65E5", false)),
        target(new CmRegularExpression("b"));
    FAttributes bag;
    ASSERT_TRUE(source->storeAttributes(bag));
    EXPECT_TRUE(target->restoreAttributes(bag) && target->match(u"A\u65E5"));

    FMemoryStream stream;
    ValueArchive archive(stream);
    ASSERT_TRUE(source->externalize(archive));
    for (int64_t size = stream.getSize(); size >= 0; --size) {
        *target = CmRegularExpression("b");
        stream.setSize(size);
        stream.rewind();
        const bool whole = target->internalize(archive);
        EXPECT_EQ(whole, size == 4 + 5 + 1 + 3 + 2);
        EXPECT_EQ(target->match(u"A\u65E5"), whole);
        EXPECT_EQ(target->match(u"b"), !whole);
    }
}

}  // namespace
}  // namespace Tessarine
