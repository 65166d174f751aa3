#pragma once
#include "collect/cmvariant.h"
#include <memory>
#include <vector>

/** Small text expressions as trees: read once, evaluated often.

    There is no precedence: "a + b * c" adds first. Brackets of any kind group, and any closing one ends any opening one. Every
    operand is a text, so that "+" of two of them puts one behind the other. Nothing fails: what makes no sense is empty. */

namespace Tessarine {
template <class T>
class FDataNode;
template <class T>
class FOperationNode;

/** Is shown one node; asks it for its operands to go on. */
template <class T>
class FExpressionNodeVisitor {
public:
    virtual void visitData(FDataNode<T>& node) = 0;
    virtual void visitOperation(FOperationNode<T>& node) = 0;

protected:
    ~FExpressionNodeVisitor() = default;
};

/** A node owns those below it. */
template <class T>
class FExpressionNode {
public:
    FExpressionNode() = default;
    FExpressionNode(const FExpressionNode&) = delete;
    FExpressionNode& operator=(const FExpressionNode&) = delete;
    virtual ~FExpressionNode() = default;

    /** A text of the result may be the tree's own: emancipate what outlives it. The context is the operations' affair. */
    virtual T evaluate(void* context) = 0;
    /** Appends the expression in a form that reads as the same tree. */
    virtual void toString(FString& text) = 0;
    virtual void accept(FExpressionNodeVisitor<T>& visitor) = 0;
    /** Null where there is none. Borrowed. */
    virtual FExpressionNode* getLeftOperand() { return nullptr; }
    virtual FExpressionNode* getRightOperand() { return nullptr; }
    virtual FOperationNode<T>* asOperation() { return nullptr; }
};

template <class T>
class FDataNode : public FExpressionNode<T> {
public:
    explicit FDataNode(T data) : data(std::move(data)) {}

    T evaluate(void* /*context*/) override { return borrowed(data); }
    void toString(FString& text) override;
    void accept(FExpressionNodeVisitor<T>& visitor) override { visitor.visitData(*this); }
    const T& getData() const { return data; }

private:
    T data;
};

/** Operator numbers; what isn't known is kNoOperator. */
enum ExpressionOperator : int32_t {
    kNoOperator,
    kPlus,
    kMinus,
    kTimes,
    kDivide,
    kGreater,
    kLess,
    kEquals,
    kDiffers,
    kAnd,
    kOr,
    kMatches,
    kMember,
};

/** An operator and its two operands. A chain of any length that grew to the left is evaluated, told and deleted without
    recursion; to the right, the parser bounds it. */
template <class T>
class FOperationNode : public FExpressionNode<T> {
public:
    using Node = FExpressionNode<T>;

    explicit FOperationNode(int32_t operatorNumber) : operatorNumber(operatorNumber) {}
    ~FOperationNode() override;

    /** Classes of their own change apply: a chain asks for nothing else of the operations within it. */
    T evaluate(void* context) final;
    void toString(FString& text) override;
    void accept(FExpressionNodeVisitor<T>& visitor) override { visitor.visitOperation(*this); }
    Node* getLeftOperand() override { return left.get(); }
    Node* getRightOperand() override { return right.get(); }
    FOperationNode* asOperation() override { return this; }

    int32_t getOperator() const { return operatorNumber; }
    /** Take the node over. */
    void setLeftOperand(Node* node) { left.reset(node); }
    void setRightOperand(Node* node) { right.reset(node); }

protected:
    /** The operation on the value of its left operand. Of the usual "+" on texts a chain puts many together at once. */
    virtual T apply(const T& leftValue, void* context);
    /** Whether it is the usual "+". */
    virtual bool isSum() const { return operatorNumber == kPlus && left && right; }
    /** In an expression, with blanks around it. */
    virtual const char* getOperatorString() const;

private:
    using Chain = std::vector<FOperationNode*>;
    using Place = typename Chain::reverse_iterator;
    Chain chain();
    static void joinTexts(T& value, Place& next, const Place& end, void* context);
    void appendRight(FString& text);

    int32_t operatorNumber;
    std::unique_ptr<Node> left, right;
};

/** Reads expressions. The trees are the caller's. */
template <class T>
class FExpressionParser {
public:
    using Node = FExpressionNode<T>;
    static constexpr int32_t kDeepest = 256;  // brackets in brackets

    virtual ~FExpressionParser() = default;
    /** Up to the end, or behind a closing bracket that nobody opened, where the cursor is then. Null: there is nothing, or
        it is nested too deep. */
    virtual Node* parse(const char*& cursor);
    virtual int32_t getOperator(const char* text);
    /** A leaf with a copy of the text. */
    virtual Node* createOperand(const char* text);
    /** Never null, also for kNoOperator. */
    virtual FOperationNode<T>* createOperator(int32_t operatorNumber);

private:
    class Level;
    Node* parseLevel(const char*& cursor);
    bool takeInner(const char*& cursor, Level& level);

    int32_t depth = 0;
    bool tooDeep = false;
};

/** What "." asks: where there is a context, it is one of these. */
class CmVariantContext {
public:
    /** The member owns what goes with the object. false: there is no such member. */
    virtual bool getMember(const CmVariant& object, const char* name, CmVariant& member) = 0;

protected:
    ~CmVariantContext() = default;
};

/** Adds "=~", which matches the left text with the wildcards of the right one, and ".", which asks the CmVariantContext of the
    evaluation. Text and pattern whose lengths multiplied are more than kMostMatched don't match. */
class CmVariantOperation : public FOperationNode<CmVariant> {
public:
    using FOperationNode::FOperationNode;
    static constexpr uint64_t kMostMatched = 1 << 24;

protected:
    CmVariant apply(const CmVariant& leftValue, void* context) override;
    const char* getOperatorString() const override;
};

class CmVariantExprParser : public FExpressionParser<CmVariant> {
public:
    int32_t getOperator(const char* text) override;
    FOperationNode<CmVariant>* createOperator(int32_t operatorNumber) override;
};

extern template class FDataNode<CmVariant>;
extern template class FOperationNode<CmVariant>;
extern template class FExpressionParser<CmVariant>;

}  // namespace Tessarine
