#include "base/foperatortree.h"
#include "collect/cmregexp.h"
#include <algorithm>
#include <cstring>
#include <functional>
#include <string>
#include <string_view>
#include <utility>

namespace Tessarine {
namespace {
constexpr const char* basicOperatorStrings[] = {"+", "-", "*", "/", ">", "<", "==", "!=", "&&", "||"};
constexpr const char* kVariantOperatorStrings[] = {"=~", "."};
constexpr const char* kUnknownOperator = "?";

enum CharType { kWord, kSign, kOpening, kClosing, kBlank };
struct CharTypeRow {
    CharType type;
    std::string_view characters;
};
constexpr CharTypeRow kCharTypes[] = {
    {kSign,    "+-*/&|=<>!~"},
    {kOpening, "([{"        },
    {kClosing, ")]}"        },
    {kBlank,   " \t\n\v\f\r"},
};
constexpr char kQuote = '"', kEscape = '\\';

CharType getCharType(char c) {
    for (const CharTypeRow& row : kCharTypes)
        if (row.characters.find(c) != std::string_view::npos)
            return row.type;
    return kWord;
}

/** The number of a word in a table whose first one has the number first; 0: it isn't there. */
template <size_t kCount>
int32_t numberOf(const char* word, const char* const (&words)[kCount], int32_t first) {
    const auto found =
        std::find_if(words, words + kCount, [word](const char* each) { return !std::strcmp(each, word); });
    return found == words + kCount ? int32_t(kNoOperator) : first + int32_t(found - words);
}

template <size_t kCount>
const char* wordOf(int32_t number, const char* const (&words)[kCount], int32_t first) {
    return number >= first && number < first + int32_t(kCount) ? words[number - first] : nullptr;
}

/** The cursor stands on the opening quote, and then behind the closing one. */
void takeQuoted(const char*& cursor, std::string& token) {
    for (++cursor; *cursor; token += *cursor++)
        if (*cursor == kQuote && cursor[-1] != kEscape)
            break;
    if (*cursor)
        ++cursor;
}

std::string takeToken(const char*& cursor) {
    std::string token;
    const CharType type = getCharType(*cursor);
    while (*cursor && getCharType(*cursor) == type)
        if (*cursor == kQuote)
            takeQuoted(cursor, token);
        else
            token += *cursor++;
    return token;
}

/** Quotes stand around what isn't a word by itself. */
std::string asOperand(std::string_view text) {
    std::string result;
    bool inQuotes = false;
    for (size_t i = 0; i < text.size(); ++i) {
        const bool escapes = text[i] == kEscape && i + 1 < text.size() && text[i + 1] == kQuote;
        const bool wantsQuotes = escapes || text[i] == kQuote || getCharType(text[i]) != kWord;
        if (wantsQuotes != inQuotes)
            result += kQuote;
        inQuotes = wantsQuotes;
        result += text[i];
    }
    return text.empty() ? std::string(2, kQuote) : inQuotes ? result + kQuote : result;
}

// --- operations on variants

uint64_t bits(int64_t number) {
    return uint64_t(number);
}

CmVariant concatenated(const CmVariant& a, const CmVariant& b) {
    String text, more;
    a.getString(text);
    b.getString(more);
    text.append(more);
    CmVariant result;
    result.setString(text, true);
    return result;
}

template <class Floats, class Integers>
CmVariant calculated(const CmVariant& a, const CmVariant& b, Floats floats, Integers integers) {
    if (a.is(CmVariant::kFloat) || b.is(CmVariant::kFloat))
        return CmVariant(double(floats(a.getFloat(), b.getFloat())));
    return CmVariant(int64_t(integers(bits(a.getLong()), bits(b.getLong()))));  // wraps around
}

CmVariant sum(const CmVariant& a, const CmVariant& b) {
    return a.isString() || b.isString() ? concatenated(a, b) : calculated(a, b, std::plus<>(), std::plus<>());
}

CmVariant difference(const CmVariant& a, const CmVariant& b) {
    return calculated(a, b, std::minus<>(), std::minus<>());
}

CmVariant product(const CmVariant& a, const CmVariant& b) {
    return calculated(a, b, std::multiplies<>(), std::multiplies<>());
}

CmVariant quotient(const CmVariant& a, const CmVariant& b) {
    const double divisor = b.getFloat();
    return CmVariant(divisor == 0.0 ? 0.0 : a.getFloat() / divisor);
}

using Operation = CmVariant (*)(const CmVariant& a, const CmVariant& b);
constexpr Operation kOperations[] = {
    sum,
    difference,
    product,
    quotient,
    [](const CmVariant& a, const CmVariant& b) { return CmVariant(a.compare(b) > 0); },
    [](const CmVariant& a, const CmVariant& b) { return CmVariant(a.compare(b) < 0); },
    [](const CmVariant& a, const CmVariant& b) { return CmVariant(a == b); },
    [](const CmVariant& a, const CmVariant& b) { return CmVariant(!(a == b)); },
    [](const CmVariant& a, const CmVariant& b) { return CmVariant(a.getLong() && b.getLong()); },
    [](const CmVariant& a, const CmVariant& b) { return CmVariant(a.getLong() || b.getLong()); },
};
static_assert(std::size(kOperations) == std::size(basicOperatorStrings), "each operator does something");

CmVariant matched(const CmVariant& textValue, const CmVariant& patternValue) {
    String text, pattern;
    textValue.getString(text);
    patternValue.getString(pattern);
    text.toWideString();
    pattern.toWideString();
    const uint64_t steps = uint64_t(text.length()) * pattern.length();
    return CmVariant(steps <= CmVariantOperation::kMostMatched && CmRegularExpression(pattern).match(text));
}
}  // namespace

// --- leaves

template <class T>
void FDataNode<T>::toString(FString& text) {
    String own;
    data.getString(own);
    text.append(asOperand(own.text8()).c_str());
}

// --- operations

template <class T>
FOperationNode<T>::~FOperationNode() {
    while (FOperationNode* below = left ? left->asOperation() : nullptr) {
        std::unique_ptr<Node> next = std::move(below->left);
        left = std::move(next);
    }
}

/** This operation and those that lead to its first operand, from above. */
template <class T>
typename FOperationNode<T>::Chain FOperationNode<T>::chain() {
    Chain operations;
    for (FOperationNode* each = this; each; each = each->left ? each->left->asOperation() : nullptr)
        operations.push_back(each);
    return operations;
}

template <class T>
T FOperationNode<T>::evaluate(void* context) {
    if (!left)
        return apply(T(), context);
    if (!left->asOperation())
        return apply(left->evaluate(context), context);
    Chain operations = chain();
    Node* first = operations.back()->left.get();
    T value = first ? first->evaluate(context) : T();
    for (auto next = operations.rbegin(); next != operations.rend();) {
        if ((*next)->operatorNumber == kPlus && value.isString())
            joinTexts(value, next, operations.rend(), context);
        else
            value = (*next++)->apply(value, context);
    }
    return value;
}

/** As far as sums follow each other, without copying the text at each of them. */
template <class T>
void FOperationNode<T>::joinTexts(T& value, Place& next, const Place& end, void* context) {
    if (!(*next)->isSum()) {
        value = (*next++)->apply(value, context);
        return;
    }
    String text;
    value.getString(text);
    for (; next != end && (*next)->isSum(); ++next) {
        String more;
        (*next)->right->evaluate(context).getString(more);
        text.append(more);
    }
    value.setString(text, true);
}

template <class T>
T FOperationNode<T>::apply(const T& leftValue, void* context) {
    const bool known = operatorNumber > kNoOperator && operatorNumber <= int32_t(std::size(kOperations));
    if (!known || !left || !right)
        return T();
    return kOperations[operatorNumber - 1](leftValue, right->evaluate(context));
}

/** An operation without its right operand would take the next one, and so it stands in brackets unless it is the last. */
template <class T>
void FOperationNode<T>::toString(FString& text) {
    const Chain operations = chain();
    const auto isOpen = [this](const FOperationNode* each) { return each != this && !each->right; };
    text.append('(', int32_t(std::ranges::count_if(operations, isOpen)));
    if (Node* first = operations.back()->left.get())
        first->toString(text);
    for (auto each = operations.rbegin(); each != operations.rend(); ++each) {
        text.append(" ").append((*each)->getOperatorString());
        (*each)->appendRight(text);
        text.append(isOpen(*each) ? ")" : "");
    }
}

template <class T>
void FOperationNode<T>::appendRight(FString& text) {
    if (!right)
        return;
    const bool isInner = right->asOperation();
    text.append(isInner ? " (" : " ");
    right->toString(text);
    text.append(isInner ? ")" : "");
}

template <class T>
const char* FOperationNode<T>::getOperatorString() const {
    const char* word = wordOf(operatorNumber, basicOperatorStrings, kPlus);
    return word ? word : kUnknownOperator;
}

// --- parser

/** What stands between two brackets, as far as it was read. */
template <class T>
class FExpressionParser<T>::Level {
public:
    explicit Level(FExpressionParser& parser) : parser(parser) {}
    void addWord(const char* word) {
        if (tree && !open)
            addOperator(parser.getOperator(word));
        else
            addOperand(parser.createOperand(word));
    }
    /** Takes it over. One that comes without an operator between is lost, with what it might have meant. */
    void addOperand(Node* node) {
        std::unique_ptr<Node> operand(node);
        if (!operand)
            return;
        if (!tree)
            tree = std::move(operand);
        else if (open)
            std::exchange(open, nullptr)->setRightOperand(operand.release());
        else
            addOperator(kNoOperator);
    }
    Node* release() { return tree.release(); }

private:
    void addOperator(int32_t number) {
        open = parser.createOperator(number);
        open->setLeftOperand(tree.release());
        tree.reset(open);
    }

    FExpressionParser& parser;
    std::unique_ptr<Node> tree;
    FOperationNode<T>* open = nullptr;  // of the tree; it waits for its right operand
};

template <class T>
FExpressionNode<T>* FExpressionParser<T>::parse(const char*& cursor) {
    if (depth == 0)
        tooDeep = false;
    ++depth;
    Node* tree = parseLevel(cursor);
    --depth;
    return tree;
}

template <class T>
FExpressionNode<T>* FExpressionParser<T>::parseLevel(const char*& cursor) {
    Level level(*this);
    while (*cursor) {
        const CharType type = getCharType(*cursor);
        if (type == kWord || type == kSign)
            level.addWord(takeToken(cursor).c_str());
        else if (++cursor; type == kClosing)
            break;
        else if (type == kOpening && !takeInner(cursor, level))
            return nullptr;
    }
    return level.release();
}

template <class T>
bool FExpressionParser<T>::takeInner(const char*& cursor, Level& level) {
    tooDeep = tooDeep || depth > kDeepest;
    if (tooDeep)
        return false;
    std::unique_ptr<Node> inner(parse(cursor));
    if (!tooDeep)
        level.addOperand(inner.release());
    return !tooDeep;
}

template <class T>
int32_t FExpressionParser<T>::getOperator(const char* text) {
    return numberOf(text, basicOperatorStrings, kPlus);
}

template <class T>
FExpressionNode<T>* FExpressionParser<T>::createOperand(const char* text) {
    return new FDataNode<T>(T(text, true));
}

template <class T>
FOperationNode<T>* FExpressionParser<T>::createOperator(int32_t operatorNumber) {
    return new FOperationNode<T>(operatorNumber);
}

template class FDataNode<CmVariant>;
template class FOperationNode<CmVariant>;
template class FExpressionParser<CmVariant>;

// --- variants

CmVariant CmVariantOperation::apply(const CmVariant& leftValue, void* context) {
    Node *leftOperand = getLeftOperand(), *rightOperand = getRightOperand();
    if (!leftOperand || !rightOperand)
        return CmVariant();
    if (getOperator() == kMatches)
        return matched(leftValue, rightOperand->evaluate(context));
    if (getOperator() != kMember)
        return FOperationNode::apply(leftValue, context);
    String name;
    CmVariant member;
    rightOperand->evaluate(context).getString(name);
    auto* members = static_cast<CmVariantContext*>(context);
    return members && members->getMember(leftValue, name.text8(), member) ? member : CmVariant();
}

const char* CmVariantOperation::getOperatorString() const {
    const char* word = wordOf(getOperator(), kVariantOperatorStrings, kMatches);
    return word ? word : FOperationNode::getOperatorString();
}

int32_t CmVariantExprParser::getOperator(const char* text) {
    const int32_t basic = FExpressionParser::getOperator(text);
    return basic ? basic : numberOf(text, kVariantOperatorStrings, kMatches);
}

FOperationNode<CmVariant>* CmVariantExprParser::createOperator(int32_t operatorNumber) {
    return new CmVariantOperation(operatorNumber);
}

}  // namespace Tessarine
