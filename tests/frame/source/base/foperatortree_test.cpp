#include "base/foperatortree.h"
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

struct Row {
    const char* expression;
    const char* tree;  // as it prints
    uint16_t type;
    const char* value;
};
constexpr uint16_t kText = CmVariant::kString8, kWhole = CmVariant::kInteger, kReal = CmVariant::kFloat, kNothing = 0;

TEST(Expressions, AreReadFromTheLeftAndEvaluated) {
    const Row rows[] = {
        {"a",                       "a",                       kText,    "a"           },
        {"1 + 2",                   "1 + 2",                   kText,    "12"          },
        {"1+2*3",                   "1 + 2 * 3",               kWhole,   "36"          },
        {"1+(2*3)",                 "1 + (2 * 3)",             kText,    "16"          },
        {"{1-2]*[3-(5}}",           "1 - 2 * (3 - 5)",         kWhole,   "2"           },
        {"1.5 * 2",                 "1.5 * 2",                 kWhole,   "2"           },
        {"7 / 2",                   "7 / 2",                   kReal,    "3.50"        },
        {"7 / 2 * 2",               "7 / 2 * 2",               kReal,    "7.00"        },
        {"7 / 0",                   "7 / 0",                   kReal,    "0.00"        },
        {"7 / x",                   "7 / x",                   kReal,    "0.00"        },
        {"3 > 10",                  "3 > 10",                  kWhole,   "1"           },
        {"3 < 10",                  "3 < 10",                  kWhole,   "0"           },
        {"A == a",                  "A == a",                  kWhole,   "1"           },
        {"A != a",                  "A != a",                  kWhole,   "0"           },
        {"2 && 0 || 1",             "2 && 0 || 1",             kWhole,   "1"           },
        {"x && 1",                  "x && 1",                  kWhole,   "0"           },
        {"9223372036854775807 * 2", "9223372036854775807 * 2", kWhole,   "-2"          },
        {"panel =~ \"p*l\"",        "panel =~ p\"*\"l",        kWhole,   "1"           },
        {"panel =~ q?",             "panel =~ q?",             kWhole,   "0"           },
        {"a . b",                   "a . b",                   kText,    "a's b"       },
        {"a.b",                     "a.b",                     kText,    "a.b"         },
        {"a . none",                "a . none",                kNothing, ""            },
        {"-5",                      "\"-\" ?",                 kNothing, ""            }, // the sign is an operand, and the number no operator
        {"a b c",                   "a ? c",                   kNothing, ""            },
        {"a (b) c",                 "a ? c",                   kNothing, ""            },
        {"1 -",                     "1 -",                     kNothing, ""            },
        {"1 + ()",                  "1 +",                     kNothing, ""            },
        {"((1 +) -) 2",             "((1 +) -) ?",             kNothing, ""            },
        {"(1 +) - 2",               "(1 +) - 2",               kWhole,   "-2"          },
        {"() 1",                    "1",                       kText,    "1"           },
        {"\"1 + 2\"",               "1\" + \"2",               kText,    "1 + 2"       },
        {"\"say \\\"(\" + b",       "say\" \\\"(\" + b",       kText,    "say \\\"(b"  },
        {"\"\" == \"\"",            "\"\" == \"\"",            kWhole,   "1"           },
        {"a\"b c\"d",               "ab\" \"cd",               kText,    "ab cd"       },
        {"\"never closed",          "never\" \"closed",        kText,    "never closed"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.expression);
        Members members;
        const std::unique_ptr<Node> tree = parse(row.expression);
        ASSERT_TRUE(tree);
        const CmVariant value = tree->evaluate(static_cast<CmVariantContext*>(&members));
        String text;
        value.getString(text);
        EXPECT_STREQ(text.text8(), row.value);
        EXPECT_EQ(value.getType(), row.type);
        EXPECT_EQ(toString(tree.get()), row.tree);
        EXPECT_EQ(toString(parse(row.tree).get()), row.tree);
    }
    EXPECT_TRUE(parse("a . b")->evaluate(nullptr).isEmpty());
    for (const char* nothing : {"", "  ", "()", "([{}])"})
        EXPECT_FALSE(parse(nothing)) << nothing;
}

TEST(Expressions, EndAtABracketThatNobodyOpened) {
    CmVariantExprParser parser;
    const char* cursor = "1 - 2) * 3";
    const std::unique_ptr<Node> tree(parser.parse(cursor));
    EXPECT_EQ(toString(tree.get()), "1 - 2");
    EXPECT_STREQ(cursor, " * 3");
}

TEST(Expressions, AreBoundedInDepthAndNotInLength) {
    const auto nested = [](size_t depth) { return std::string(depth, '(') + "1 - 2" + std::string(depth, ')'); };
    EXPECT_EQ(toString(parse(nested(256)).get()), "1 - 2");
    for (const size_t depth : {257, 10000})
        EXPECT_FALSE(parse(nested(depth)));
    EXPECT_TRUE(parse(nested(1))) << "the next one is another matter";
    std::string inner = "1", chain = "1";
    for (int i = 0; i < 255; ++i)
        inner = "1 - (" + inner + ")";
    for (int i = 0; i < 50000; ++i)
        chain += " - 1";
    EXPECT_EQ(parse(inner)->evaluate(nullptr).getLong(), 0);
    const std::unique_ptr<Node> deep = parse(chain);
    EXPECT_EQ(deep->evaluate(nullptr).getLong(), -49999);
    EXPECT_EQ(toString(deep.get()), chain);
}

TEST(Expressions, ShowTheirNodes) {
    struct Printer final : FExpressionNodeVisitor<CmVariant> {
        void visitData(FDataNode<CmVariant>& node) override { text += node.getData().getString8(); }
        void visitOperation(FOperationNode<CmVariant>& node) override {
            node.getRightOperand()->accept(*this);
            node.getLeftOperand()->accept(*this);
            text += std::to_string(node.getOperator());
        }
        std::string text;
    } printer;
    parse("a + b =~ c")->accept(printer);
    EXPECT_EQ(printer.text, "cba111");
    FExpressionParser<CmVariant> basic;
    EXPECT_EQ(basic.getOperator("=~"), kNoOperator);
    EXPECT_EQ(basic.getOperator("||"), kOr);
}

}  // namespace
}  // namespace Tessarine
