#pragma once
#include "graphed/gaction.h"
#include "graphed/gactionnode.h"
#include <memory>
#include <vector>

namespace Tessarine {
class CmObjectFilter;

/** What a processor of actions tells its dependents. kChanged: an action was removed. */
enum GActionChange : int32_t {
    kActionPushed = 1000,
    kActionUndone = 1001,
    kActionRedone = 1002,
    kActionsGone = 1003,
    kMassOperationEnded = 1004,
};

using GActionList = TContainer<IPtr<GAction>>;

/** What can be undone and redone, as an edit menu sees it. Filters are shown actions. What is handed out is borrowed.
    Main thread. */
class GActionProcessorBase : public CmObject {
public:
    DECLARE_ABSTRACT_CLASS(GActionProcessorBase, CmObject)

    GActionProcessorBase() = default;
    GActionProcessorBase(const GActionProcessorBase&) = delete;
    GActionProcessorBase& operator=(const GActionProcessorBase&) = delete;
    /** Says farewell to the dependents. */
    ~GActionProcessorBase() override;

    /** Executes the action and makes it part of the history. A null title leaves the action's own. false: it failed, or
        its targets have finished for good. */
    virtual bool perform(GAction* action, const tchar* title);
    /** Makes an executed action part of the history, which shares it. false: it isn't executed, or is in a history. */
    virtual bool pushUndo(GAction* action) = 0;
    /** false: locked, nothing there, or the action failed. */
    virtual bool undo() = 0;
    virtual bool redo() = 0;
    /** What undo would take; null: nothing. */
    virtual GAction* peekUndo() const = 0;
    virtual GAction* peekRedo() const = 0;
    /** The first one that passes; null: none. */
    virtual GAction* findAction(CmObjectFilter& filter) const = 0;
    /** Adds those that pass to the container. */
    virtual void findActions(CmObjectFilter& filter, GActionList& found) const = 0;
    virtual void removeAll() = 0;
    /** false: it isn't here. */
    virtual bool removeAction(GAction* action) = 0;
    /** false: none passed. */
    virtual bool removeActions(CmObjectFilter& filter) = 0;
    /** Nested. */
    virtual void lock(bool state);
    /** undo and redo are refused. */
    virtual bool isLocked() const { return lockCount > 0; }

    /** Steps that a history keeps; -1: all, 0: there is no undo. */
    static int32_t maxUndoSteps;

protected:
    /** Has the edit menus brought up to date, once for all that happens until then. */
    static void postUpdateEditMenus();

    int32_t lockCount = 0;
};

/** Hears of every push, undo and redo of one processor. */
class IActionProcessorHook {
public:
    /** Before the action is united with another one, or becomes part of a macro. */
    virtual void actionPushed(GAction* action) = 0;
    virtual void actionUndone(GAction* action) = 0;
    virtual void actionRedone(GAction* action) = 0;

protected:
    ~IActionProcessorHook() = default;
};

/** Some actions of a history, as they were when the iterator was made. */
class GActionIterator {
public:
    bool done() const { return place >= actions.size(); }
    /** Null when done. */
    GAction* next() { return done() ? nullptr : actions[place++].get(); }

private:
    friend class GActionProcessor;
    std::vector<IPtr<GAction>> actions;
    size_t place = 0;
};

/** A history of actions: a tree, so that what was undone can be kept beside what was done instead.

    Costs     push, undo and redo don't depend on the length of the history; nothing recurses.
    Macros    while one is open, pushed actions give it their targets; the outermost finishMacro makes it one step.
    Unites    a push that follows the last one within unificationTimeout, when the targets agree. */
class GActionProcessor : public GActionProcessorBase {
public:
    DECLARE_CLASS(GActionProcessor, GActionProcessorBase)

    /** Which actions, in which order. */
    enum IteratorMode : int32_t {
        kUndoable,    // from the one that undo takes back to the first one
        kRedoable,    // from the one that redo takes to the end of its branch
        kActivePath,  // from the first one to the end of the active branch
        kAllActions,  // depth first
    };

    GActionProcessor();
    ~GActionProcessor() override;

    /** Also true when no undo steps are kept, and the action is forgotten. */
    bool pushUndo(GAction* action) override;
    bool undo() override { return undoThisAction(peekUndo()); }
    bool redo() override { return redoThisAction(peekRedo()); }
    GAction* peekUndo() const override { return currentNode->getAction(); }
    GAction* peekRedo() const override;
    GAction* findAction(CmObjectFilter& filter) const override;
    void findActions(CmObjectFilter& filter, GActionList& found) const override;
    void removeAll() override;
    bool removeAction(GAction* action) override;
    bool removeActions(CmObjectFilter& filter) override;

    /** Also out of order: the action moves to the end of what is done, or to the front of what is undone. */
    bool undoThisAction(GAction* action);
    bool redoThisAction(GAction* action);
    /** The nearest one that passes. stopAtBranch: a fork is the last one that is looked at. */
    GAction* peekUndoFiltered(CmObjectFilter& filter, bool stopAtBranch) const;
    GAction* peekRedoFiltered(CmObjectFilter& filter, bool stopAtBranch) const;
    /** All up to the nearest one that passes. false: none does, or one failed. */
    bool undoMultiple(CmObjectFilter& filter);
    bool redoMultiple(CmObjectFilter& filter);
    /** Around many operations; the end is told. */
    void setMassOperation(bool state);
    bool isMassOperation() const { return flags & kMassOperation; }

    /** Nested. */
    void beginMacro();
    /** false: nothing became part of the history, since the macro is empty, none, or within another one. */
    bool finishMacro(const tchar* title);
    /** A macro of the processor that is first pushed to. false: one is open. */
    static bool beginMacroGlobal();
    static bool finishMacroGlobal(const tchar* title);

    /** Has no action. */
    GActionNode* getRootNode() { return &rootNode; }
    /** 1 without forks. Numbers go depth first; a first successor keeps its parent's. */
    int32_t countBranches();
    int32_t getActiveBranch();
    /** Goes to the end of that branch. false: there is none of that number, locked, or an action failed on the way. */
    bool setActiveBranch(int32_t number);
    bool anyBranchesPresent() { return countBranches() > 1; }
    void removeInactiveBranches();
    /** Of all processors. Off: their inactive branches are lost, which the user is told before. */
    static void enableBranches(bool state);
    static bool branchesEnabled() { return gAllowBranches; }

    std::unique_ptr<GActionIterator> createIterator(int32_t mode) const;
    void collectActions(GActionList& actions, int32_t mode) const;
    void collectActionsFiltered(GActionList& actions, int32_t mode, CmObjectFilter& filter) const;

    /** Borrowed; null: none. */
    void setHook(IActionProcessorHook* newHook) { hook = newHook; }

    static int32_t unificationTimeout;  // milliseconds
    static bool gAllowBranches;
    static bool gRunningGlobalMacro;
    static GActionProcessor* gMacroActionProcessor;     // that the global macro has latched onto; borrowed
    static std::vector<GActionProcessor*> gProcessors;  // that live; borrowed

private:
    enum Flag : uint32_t {
        kMassOperation = 1,
        kBranchesValid = 2,
        kBranchesChanged = 4,
        kMayFork = 8,  // there were branches since the history was last without any
    };
    static constexpr int32_t kUnknownLength = -1;

    using Path = std::vector<GActionNode*>;

    bool isMine(const GActionNode* node) const { return node->isBehind(&rootNode); }
    bool canTurn(const GAction* action, GAction::State state) const;
    void moveBehindCurrent(GActionNode* node);
    void turned(GAction* action, GActionNode* newCurrent, int32_t steps, int32_t change,
                void (IActionProcessorHook::*tell)(GAction*));
    GAction* nearest(int32_t mode, CmObjectFilter& filter, bool stopAtBranch) const;
    bool stepUntil(GAction* last, GAction::State wanted, bool (GActionProcessor::*step)());
    bool unitesWithTop(GAction* action, int32_t now);
    bool doPushUndo(GAction* action, int32_t now);
    void trim();
    GActionNode* oldestKept(int32_t excess) const;
    int32_t countPath();
    void removeNode(GActionNode* node);
    void removalDone();
    void branchesHaveChanged();
    void updateBranchInfos();
    GActionNode* endOfPath() const;
    GActionNode* endOfBranch(int32_t number);
    bool goTo(GActionNode* target);
    static Path pathTo(GActionNode* node);
    static void makeActive(const Path& path);
    template <class Visit>
    void walk(int32_t mode, Visit visit) const;
    template <class Visit>
    void walkAll(Visit visit) const;

    GActionNode rootNode;
    GActionNode* currentNode = &rootNode;  // whose action undo takes
    int32_t branchCount = 1;
    int32_t activeBranch = 0;
    uint32_t flags = 0;
    int32_t lastPushTicks = 0;  // milliseconds
    IActionProcessorHook* hook = nullptr;
    OPtr<GAction> macroAction;  // while a macro is open
    int32_t macroDepth = 0;
    int32_t pathLength = 0;  // actions from the root to currentNode, or kUnknownLength
};

/** The application's current one, borrowed. */
extern GActionProcessor* gActionProcessor;

}  // namespace Tessarine
