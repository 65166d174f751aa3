#include "base/foperatortree.h"
#include <chrono>
#include <gtest/gtest.h>
#include <string>

namespace Tessarine {
namespace {
using Node = FExpressionNode<CmVariant>;

std::unique_ptr<Node> parse(const std::string& text) {
    CmVariantExprParser parser;
    const char* cursor = text.c_str();
    return std::unique_ptr<Node>(parser.parse(cursor));
}

std::string toString(Node* node) {
    FString text;
    if (node)
        node->toString(text);
    return text.text8();
}

/** Knows one member of everything. */
struct Members final : CmVariantContext {
    bool getMember(const CmVariant& object, const char* name, CmVariant& member) override {
        String text;
        object.getString(text);
        member.setString(text.append("'s ").append(name), true);
        return std::string(name) != "none";
    }
};

constexpr uint16_t kText = CmVariant::kString8, kWhole = CmVariant::kInteger, kReal = CmVariant::kFloat, kNothing = 0;

TEST(Expressions, AreReadFromTheLeftAndEvaluated) {
    // with the tree as it prints
    const std::tuple<const char*, const char*, uint16_t, const char*> rows[] = {
        {"1 + 2",                   "1 + 2",                   kText,    "12"          },
        {"1+2*3",                   "1 + 2 * 3",               kWhole,   "36"          },
        {"1+(2*3)",                 "1 + (2 * 3)",             kText,    "16"          },
        {"{1-2]*[3-(5}}",           "1 - 2 * (3 - 5)",         kWhole,   "2"           },
        {"7 / 2",                   "7 / 2",                   kReal,    "3.50"        },
        {"7 / x",                   "7 / x",                   kReal,    "0.00"        },
        {"3 > 10",                  "3 > 10",                  kWhole,   "1"           },
        {"A == a",                  "A == a",                  kWhole,   "1"           },
        {"2 && 0 || 1",             "2 && 0 || 1",             kWhole,   "1"           },
        {"9223372036854775807 * 2", "9223372036854775807 * 2", kWhole,   "-2"          },
        {"panel =~ \"p*l\"",        "panel =~ p\"*\"l",        kWhole,   "1"           },
        {"a . b",                   "a . b",                   kText,    "a's b"       },
        {"a.b",                     "a.b",                     kText,    "a.b"         },
        {"a . none",                "a . none",                kNothing, ""            },
        {"-5",                      "\"-\" ?",                 kNothing, ""            }, // the sign is an operand, and the number no operator
        {"a b c",                   "a ? c",                   kNothing, ""            },
        {"1 + ()",                  "1 +",                     kNothing, ""            },
        {"((1 +) -) 2",             "((1 +) -) ?",             kNothing, ""            },
        {"(1 +) - 2",               "(1 +) - 2",               kWhole,   "-2"          },
        {"\"1 + 2\"",               "1\" + \"2",               kText,    "1 + 2"       },
        {"\"say \\\"(\" + b",       "say\" \\\"(\" + b",       kText,    "say \\\"(b"  },
        {"\"never closed",          "never\" \"closed",        kText,    "never closed"},
    };
    for (const auto& [expression, printed, type, expected] : rows) {
        SCOPED_TRACE(expression);
        Members members;
        const std::unique_ptr<Node> tree = parse(expression);
        ASSERT_TRUE(tree);
        const CmVariant value = tree->evaluate(static_cast<CmVariantContext*>(&members));
        String text;
        value.getString(text);
        EXPECT_STREQ(text.text8(), expected);
        EXPECT_EQ(value.getType(), type);
        EXPECT_EQ(toString(tree.get()), printed);
        EXPECT_EQ(toString(parse(printed).get()), printed);
    }
    EXPECT_TRUE(parse("a . b")->evaluate(nullptr).isEmpty());
    for (const char* nothing : {"", "  ", "()", "([{}])"})
        EXPECT_FALSE(parse(nothing)) << nothing;
}

TEST(Expressions, AreBoundedInDepthAndNotInLength) {
    const auto nested = [](size_t depth) { return std::string(depth, '(') + "1 - 2" + std::string(depth, ')'); };
    EXPECT_EQ(toString(parse(nested(256)).get()), "1 - 2");
    for (const size_t depth : {257, 10000})
        EXPECT_FALSE(parse(nested(depth)));
    std::string inner = "1", chain = "1";
    for (int i = 0; i < 255; ++i)
        inner = "1 - (" + inner + ")";
    for (int i = 0; i < 50000; ++i)
        chain += " - 1";
    EXPECT_EQ(parse(inner)->evaluate(nullptr).getLong(), 0);
    const std::unique_ptr<Node> deep = parse(chain);
    EXPECT_EQ(deep->evaluate(nullptr).getLong(), -49999);
    EXPECT_EQ(toString(deep.get()), chain);
    CmVariantExprParser parser;
    const char* cursor = "1 - 2) * 3";
    EXPECT_EQ(toString(std::unique_ptr<Node>(parser.parse(cursor)).get()), "1 - 2");
    EXPECT_STREQ(cursor, " * 3") << "behind a bracket that nobody opened";
}

TEST(Expressions, PutLongTextsTogetherAndCompareThemInTime) {
    constexpr int kOperands = 400000;
    using Clock = std::chrono::steady_clock;
    std::string chain = "a";
    for (int i = 1; i < kOperands; ++i)
        chain += "+b";
    const auto start = Clock::now();
    const std::unique_ptr<Node> tree = parse(chain);
    const auto parsed = Clock::now();
    EXPECT_EQ(tree->evaluate(nullptr).getText(), ConstString(("a" + std::string(kOperands - 1, 'b')).c_str()));
    EXPECT_LT(Clock::now() - parsed, 3 * (parsed - start)) << "the work grows with the number of operands";
    for (const auto& [length, matches] : {std::pair(1000, 1), std::pair(100000, 0)}) {
        const std::string text(length, 'a');
        EXPECT_EQ(parse(text + " =~ " + text)->evaluate(nullptr).getLong(), matches);
    }
}

}  // namespace
}  // namespace Tessarine
