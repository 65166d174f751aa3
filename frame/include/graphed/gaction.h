#pragma once
#include "base/fmessage.h"
#include "base/source/fstring.h"
#include "base/source/tarray.h"
#include "collect/cmdate.h"
#include "graphed/gactionnode.h"
#include "pluginterfaces/base/smartpointer.h"
#include <array>
#include <memory>
#include <optional>

namespace Tessarine {
class CmObjectFilter;
class GAction;

/** What does, undoes and redoes one piece of work. Main thread. */
class IActionTarget : public FUnknown {
public:
    enum Operation : int32_t { kExecute, kUndo, kRedo };
    enum ExecutionState : int32_t {
        kNotExecuted,
        kExecuted,  // can be undone
        kUndone,    // can be redone
        kFinished,  // for good: there is nothing to undo, and the target leaves its action
        kFailed,
    };
    enum FilterTask : int32_t { kTest, kCollect };

    virtual bool performOperation(Operation operation) = 0;
    virtual ExecutionState getState() = 0;
    /** false, and text as it was: it has none. */
    virtual bool getDescription(FString& text) = 0;
    /** Takes over what another one of its kind, done right after this, has done: undo then takes back both. false: it can't. */
    virtual bool uniteWith(IActionTarget* later) = 0;
    /** The other one is on its own again. */
    virtual void revokeUnification(IActionTarget* later) = 0;
    /** Whether the filter lets any object of the target pass; with kCollect these are put into the container. */
    virtual bool applyFilter(CmObjectFilter& filter, FilterTask task, TContainer<IPtr<FUnknown>>* found) = 0;

    DECLARE_INTERFACE(IActionTarget)
};

/** The base of all targets. An operation that succeeds sets the state, one that fails makes it kFailed. */
class GActionTarget : public CmObject, public IActionTarget {
public:
    DECLARE_ABSTRACT_CLASS(GActionTarget, CmObject)
    FORWARD_REFCOUNT(CmObject)
    int32_t queryInterface(const char* iid, void** obj) override;

    bool performOperation(Operation operation) override;
    ExecutionState getState() override { return state; }
    bool getDescription(FString& /*text*/) override { return false; }
    bool uniteWith(IActionTarget* /*later*/) override { return false; }
    void revokeUnification(IActionTarget* /*later*/) override {}
    /** The target itself is its one object. */
    bool applyFilter(CmObjectFilter& filter, FilterTask task, TContainer<IPtr<FUnknown>>* found) override;

    /** May set the state to kFinished. */
    virtual bool execute() = 0;
    virtual bool undo() = 0;
    virtual bool redo() = 0;
    void setState(ExecutionState newState) { state = newState; }

protected:
    ExecutionState state = kNotExecuted;
};

/** Where the actions of commands go. */
class IActionDispatcher : public FUnknown {
public:
    /** Above 0: it was, or can be, done. */
    virtual int32_t dispatchActionMessage(FMessage* message) = 0;

    DECLARE_INTERFACE(IActionDispatcher)
};

/** A name that stays as it is; mostly short, and then without memory of its own. */
class GActionName {
public:
    explicit GActionName(const char* name);
    const char* text() const { return longText ? longText.get() : shortText.data(); }

private:
    std::unique_ptr<char[]> longText;  // null: it is a short one
    std::array<char, 24> shortText{};
};

/** Targets in the order of execution; the first one, mostly the only one, needs no memory of its own. */
class GActionTargets {
public:
    int32_t total() const { return first ? 1 + others.total() : 0; }
    bool isEmpty() const { return !first; }
    /** Null out of range. */
    IActionTarget* at(int32_t index) const { return index == 0 ? first.get() : others.at(index - 1).get(); }
    bool contains(IActionTarget* target) const { return target && (target == first || others.contains(target)); }
    bool add(IActionTarget* target);
    void removeAt(int32_t index);
    void removeAll();

private:
    IPtr<IActionTarget> first;
    TArray<IPtr<IActionTarget>> others{0, -1};
};

/** Something that a user does, made of targets which do the work, and named values for who interprets it.

    Owns      its targets. The node is that of the processor whose history it is part of.
    States    undo needs kExecuted, redo kUndone. Either takes all targets along or, when one fails, none: those that went
              before it are turned back, and the state stays.
    Threads   main. */
class GAction : public CmObject {
public:
    DECLARE_CLASS(GAction, CmObject)
    using State = IActionTarget::ExecutionState;

    explicit GAction(const char* category = nullptr, const char* name = nullptr);
    GAction(const GAction&) = delete;
    GAction& operator=(const GAction&) = delete;

    // targets
    /** Behind the others; the first one sets the action's state. addRef: the caller keeps its reference. */
    bool addTarget(IActionTarget* target, bool addRef);
    bool containsTarget(IActionTarget* target) const { return targets.contains(target); }
    int32_t countTargets() const { return targets.total(); }
    /** Behind those that are here; the other one is left without. */
    void transferTargetsFrom(GAction* other);
    /** Drops the targets. */
    void removeAll() { targets.removeAll(); }
    /** false, and nobody united: another number of targets, or one refused. */
    bool uniteWith(GAction* later);
    /** The action itself and all of its targets. */
    bool applyFilter(CmObjectFilter& filter, IActionTarget::FilterTask task, TContainer<IPtr<FUnknown>>* found);

    // work
    /** false: kFailed, with what was done taken back, or kFinished, with nothing left to undo. */
    bool execute();
    bool undo();
    bool redo();
    State getState() const { return state; }
    void setState(State newState) { state = newState; }
    /** What the dispatcher answers to "Interpret" or, without perform, "CanInterpret"; -1: there is none. */
    int32_t dispatch(bool perform);

    // names
    const char* getCategory() const { return category.text(); }
    const char* getName() const { return name.text(); }
    /** What the menu shows. */
    const FString& getTitle() const { return title; }
    void setTitle(const tchar* text) { title.assign(text); }
    void setDescription(const tchar* text) { description.assign(text); }
    /** Its own one, or those of its targets, one a line; false: none. */
    bool getDescription(FString& text) const;
    /** When it became part of a history. */
    const CmTime& getTime() const { return time; }

    // named values, as those of a message
    void add(const char* key, CmObject* object, bool own) { valuesForChange().add(key, object, own); }
    CmObject* get(const char* key) const { return values ? values->get(key) : nullptr; }
    void addPointer(const char* key, void* pointer) { valuesForChange().addPointer(key, pointer); }
    void* getPointer(const char* key) const { return values ? values->getPointer(key) : nullptr; }
    void addString(const char* key, const ConstString& text) { valuesForChange().addString(key, text); }
    bool getString(const char* key, String& text) const { return values && values->getString(key, text); }
    void addFloat(const char* key, double value) { valuesForChange().addFloat(key, value); }
    bool getFloat(const char* key, double& value) const { return values && values->FMessage::getFloat(key, value); }
    void addData(const char* key, const void* data, uint32_t size) { valuesForChange().addData(key, data, size); }
    bool getData(const char* key, const void*& data, uint32_t& size) const;
    /** The code of the key that was pressed for it; 0: none. */
    uint32_t getKey() const;
    void setKey(uint32_t key) { valuesForChange().addInt(kKeyEntry, int32_t(key)); }

    // history
    /** Null outside of a history. Borrowed. */
    GActionNode* getNode() { return node ? &*node : nullptr; }
    const GActionNode* getNode() const { return node ? &*node : nullptr; }
    /** The action that was done before it; null for the first one. */
    GAction* getPrevious() const;
    /** How many paths go on from here. */
    int32_t countSuccessors() const;

    /** Borrowed. */
    static IActionDispatcher* dispatcher;

private:
    friend class GActionNode;
    friend class GActionProcessor;
    static constexpr const char* kKeyEntry = "Key";

    FMessage& valuesForChange();
    /** All in the order of execution or, backward, from the last one; after a failure those before it are turned back. */
    bool performAll(IActionTarget::Operation operation, IActionTarget::Operation opposite, bool backward);
    void removeFinishedTargets();

    GActionTargets targets;
    State state = IActionTarget::kNotExecuted;
    OPtr<FMessage> values;  // made on first use
    GActionName category, name;
    FString title, description;
    CmTime time;
    std::optional<GActionNode> node;  // its place in a history; while there, it holds a reference to the action
};

}  // namespace Tessarine
