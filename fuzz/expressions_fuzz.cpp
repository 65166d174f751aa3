// Expressions of variants. Whatever is read prints as a text that reads as the same; a chain that is evaluated in one go gives
// what its operations give one by one; nesting is bounded.
#include "base/foperatortree.h"
#include "demand.h"
#include <algorithm>
#include <string>

using namespace Tessarine;

namespace {
using Node = FExpressionNode<CmVariant>;
using Tree = std::unique_ptr<Node>;

struct Members final : CmVariantContext {
    bool getMember(const CmVariant& object, const char* name, CmVariant& member) override {
        String text;
        object.getString(text);
        member.setString(text.append(">").append(name), true);
        return *name != 'n';
    }
};
Members members;
void* const kContext = static_cast<CmVariantContext*>(&members);

std::string textOf(Node& node) {
    FString text;
    node.toString(text);
    return text.text8();
}

bool isSame(const CmVariant& a, const CmVariant& b) {
    String text, other;
    return a.getType() == b.getType() && a.getString(text) == b.getString(other) && text == other;
}

Tree leafOf(CmVariant value) {
    value.emancipate();
    return Tree(new FDataNode<CmVariant>(std::move(value)));
}

CmVariant oneByOne(Node* node) {
    FOperationNode<CmVariant>* operation = node->asOperation();
    if (!operation)
        return node->evaluate(kContext);
    CmVariantOperation single(operation->getOperator());
    if (Node* left = operation->getLeftOperand())
        single.setLeftOperand(leafOf(oneByOne(left)).release());
    if (Node* right = operation->getRightOperand())
        single.setRightOperand(leafOf(oneByOne(right)).release());
    CmVariant value = single.evaluate(kContext);
    value.emancipate();
    return value;
}

Tree parse(const std::string& text, size_t& end) {
    CmVariantExprParser parser;
    const char* cursor = text.c_str();
    Tree tree(parser.parse(cursor));
    end = size_t(cursor - text.c_str());
    return tree;
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string text = std::string(data, data + std::min<size_t>(size, 2000)).c_str();
    size_t end = 0;
    const Tree tree = parse(text, end);
    demand(end <= text.size());
    if (end < text.size() && tree)
        demand(std::string(")]}").find(text[end - 1]) != std::string::npos);
    if (!tree)
        return 0;
    const std::string printed = textOf(*tree);
    const Tree again = parse(printed, end);
    demand(again && end == printed.size() && textOf(*again) == printed);
    const CmVariant value = tree->evaluate(kContext);
    demand(isSame(value, again->evaluate(kContext)) && isSame(value, oneByOne(tree.get())));
    return 0;
}
