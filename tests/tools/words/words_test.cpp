#include "tools/words/words.h"
#include <gtest/gtest.h>

namespace {
using Words = std::vector<std::string>;
}

TEST(Words, BlanksDivideAndJsonStringsHoldThem) {
    const std::pair<const char*, Words> rows[] = {
        {"",                                Words{}                                },
        {" \t\r",                           Words{}                                },
        {"get 1\tgain  3\r",                Words{"get", "1", "gain", "3"}         },
        {R"("get" "1" "a b")",              Words{"get", "1", "a b"}               },
        {R"(set 1 devName "a \"\u0062\\")", Words{"set", "1", "devName", "a \"b\\"}},
        {R"("")",                           Words{""}                              },
        {R"(a"b c)",                        Words{"a\"b", "c"}                     },
        {R"("\ud83c\udfa4")",               Words{"\xF0\x9F\x8E\xA4"}              },
    };
    for (const auto& [line, words] : rows)
        EXPECT_EQ(wordsOf(line), words) << line;
    for (const char* line :
         {R"("a)", R"("a\")", R"(")", R"("a"b)", R"("a""b")", R"("\x")", R"("\ud800")", "\"a\tb\"", "\"\xFF\""})
        EXPECT_FALSE(wordsOf(line)) << line;
}
