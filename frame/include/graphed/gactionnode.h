#pragma once
#include "base/source/tarray.h"
#include <cstdint>
#include <vector>

namespace Tessarine {
class GAction;

/** A place in a history, for who looks at it. */
class IActionNode {
public:
    /** Null for the root. Borrowed. */
    virtual GAction* getAction() const = 0;
    virtual IActionNode* getParent() const = 0;
    /** The one that redo goes to. */
    virtual IActionNode* getActiveSuccessor() const = 0;
    virtual int32_t countSuccessors() const = 0;
    /** Null out of range. */
    virtual IActionNode* getSuccessor(int32_t index) const = 0;
    /** As of the processor's last look at its branches. */
    virtual int32_t getBranchNumber() const = 0;

protected:
    ~IActionNode() = default;
};

/** A node of the tree of actions.

    Owns      a reference to its action, and all nodes behind it.
    Costs     no operation recurses, so that a chain may be of any length. */
class GActionNode final : public IActionNode {
public:
    /** A root. */
    GActionNode() = default;
    /** By make only. */
    explicit GActionNode(GAction* action) : action(action) {}
    ~GActionNode() { removeSuccessors(); }
    GActionNode(const GActionNode&) = delete;
    GActionNode& operator=(const GActionNode&) = delete;

    GAction* getAction() const override { return action; }
    GActionNode* getParent() const override { return parent; }
    GActionNode* getActiveSuccessor() const override { return activeSuccessor; }
    int32_t countSuccessors() const override {
        return successors.isEmpty() ? activeSuccessor != nullptr : successors.total();
    }
    GActionNode* getSuccessor(int32_t index) const override;
    int32_t getBranchNumber() const override { return branchNumber; }

    /** The place of an action that has none yet; in its memory, and with a reference to it. */
    static GActionNode* make(GAction* action);
    /** Of a node that nobody is behind, and that is behind none. */
    static void end(GActionNode* node);

    /** Takes the node over. The first one is active anyway; index -1 or beyond the end: behind the others. */
    void enqueueSuccessor(GActionNode* node, bool makeActive, int32_t index = -1);
    /** Gives a successor, with what is behind it, to the caller. One of those that are left becomes active in its place. */
    void takeSuccessor(GActionNode* node);
    /** Leaves the chain: its successors stand in its place, and the caller owns it. */
    void dequeue();
    /** Leaves its place, and stands between the other node and what was active behind that. */
    void moveBehind(GActionNode* other);
    void removeSuccessors();
    /** Gives those that aren't active, or all, to another node, with what is behind them. */
    void giveInactiveTo(GActionNode& other);
    void giveAllTo(GActionNode& other);
    /** One of its successors. */
    void setActiveSuccessor(GActionNode* node) { activeSuccessor = node; }
    void setBranchNumber(int32_t number) { branchNumber = number; }
    bool isBehind(const GActionNode* other) const;

private:
    using Nodes = std::vector<GActionNode*>;

    /** They are behind nobody then. */
    void dropSuccessorsTo(Nodes& nodes);
    int32_t placeOf(GActionNode* node) const { return successors.isEmpty() ? 0 : successors.index(node); }

    GAction* action = nullptr;  // a reference is held
    GActionNode* parent = nullptr;
    GActionNode* activeSuccessor = nullptr;
    TArray<GActionNode*> successors{0, 5};  // empty as long as there is only one
    int32_t branchNumber = 0;
};

}  // namespace Tessarine
