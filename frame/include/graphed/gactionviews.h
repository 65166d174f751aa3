#pragma once
#include "collect/cmqueue.h"
#include "graphed/gactionprocessor.h"

namespace Tessarine {

/** The history of another processor, as far as a filter lets actions pass: undo and redo take the nearest one of these
    that doesn't lie beyond a fork, out of order. It says what the other one says.

    Owns      neither; the other processor may go first, the filter may not. */
class GFilteredActionProcessor : public GActionProcessorBase {
public:
    DECLARE_ABSTRACT_CLASS(GFilteredActionProcessor, GActionProcessorBase)

    GFilteredActionProcessor(GActionProcessor* processor, CmObjectFilter& filter);
    ~GFilteredActionProcessor() override;

    bool pushUndo(GAction* action) override { return processor && processor->pushUndo(action); }
    bool undo() override { return !isLocked() && processor && processor->undoThisAction(peekUndo()); }
    bool redo() override { return !isLocked() && processor && processor->redoThisAction(peekRedo()); }
    GAction* peekUndo() const override { return processor ? processor->peekUndoFiltered(filter, true) : nullptr; }
    GAction* peekRedo() const override { return processor ? processor->peekRedoFiltered(filter, true) : nullptr; }
    GAction* findAction(CmObjectFilter& wanted) const override;
    void findActions(CmObjectFilter& wanted, GActionList& found) const override;
    void removeAll() override;
    bool removeAction(GAction* action) override;
    bool removeActions(CmObjectFilter& wanted) override;
    /** Also while the other one is. */
    bool isLocked() const override;

    using CmObject::update;
    void update(FUnknown* changedUnknown, int32_t message) override;

private:
    GActionProcessor* processor;  // borrowed; null after its farewell
    CmObjectFilter& filter;
};

/** Several processors as one, which undoes and redoes in the order in which things happened in them. It learns that order
    from what they say, and so knows what was done since they were added.

    Owns      none of them. Parts may go first. */
class GCombinedActionProcessor : public GActionProcessorBase {
public:
    DECLARE_CLASS(GCombinedActionProcessor, GActionProcessorBase)

    GCombinedActionProcessor() = default;
    ~GCombinedActionProcessor() override;

    /** false: null, itself, or a part already. */
    bool addActionProcessor(GActionProcessorBase* part);
    /** It isn't the one that actions are pushed to any more. */
    bool removeActionProcessor(GActionProcessorBase* part);
    /** Where actions are pushed to, borrowed; null: gActionProcessor. */
    void setExecutionProcessor(GActionProcessorBase* processor) { executionProcessor = processor; }

    bool pushUndo(GAction* action) override;
    bool undo() override { return !isLocked() && !undoParts.isEmpty() && topOf(undoParts)->undo(); }
    bool redo() override { return !isLocked() && !redoParts.isEmpty() && topOf(redoParts)->redo(); }
    GAction* peekUndo() const override { return undoParts.isEmpty() ? nullptr : topOf(undoParts)->peekUndo(); }
    GAction* peekRedo() const override { return redoParts.isEmpty() ? nullptr : topOf(redoParts)->peekRedo(); }
    GAction* findAction(CmObjectFilter& filter) const override;
    void findActions(CmObjectFilter& filter, GActionList& found) const override;
    void removeAll() override;
    bool removeAction(GAction* action) override;
    bool removeActions(CmObjectFilter& filter) override;

    using CmObject::update;
    /** Follows its parts, and passes on what they say. */
    void update(FUnknown* changedUnknown, int32_t message) override;

private:
    static GActionProcessorBase* topOf(const CmStack& stack) {
        return static_cast<GActionProcessorBase*>(stack.peek());
    }
    GActionProcessorBase* partBehind(FUnknown* unknown) const;
    /** Whether any has answered true; all are asked. */
    template <class Perform>
    bool anyPart(Perform perform);
    void follow(GActionProcessorBase* part, int32_t message);
    void forget(GActionProcessorBase* part);

    TArray<GActionProcessorBase*> parts;  // borrowed
    CmStack undoParts, redoParts;         // borrowed; a part for each of its steps, the latest on top
    GActionProcessorBase* executionProcessor = nullptr;
};

}  // namespace Tessarine
