#include "graphed/gaction.h"
#include "collect/cmobjectfilter.h"
#include "graphed/hooks.h"
#include "pluginterfaces/base/identifiers.h"
#include <algorithm>
#include <string_view>

namespace Tessarine {
DEFINE_IID_ROW(IActionTarget, kIActionTargetID);
DEFINE_IID_ROW(IActionDispatcher, kIActionDispatcherID);
IMPLEMENT_ABSTRACT_CLASS(GActionTarget, CmObject)
IMPLEMENT_CLASS(GAction, CmObject)

constinit ActionHooks gActionHooks;
constinit IActionDispatcher* GAction::dispatcher = nullptr;

namespace {
void appendLine(FString& all, IActionTarget* target) {
    FString line;
    if (!target->getDescription(line) || line.isEmpty())
        return;
    if (!all.isEmpty())
        all.append(u"\n");
    all.append(line);
}
}  // namespace

int32_t GActionTarget::queryInterface(const char* iid, void** obj) {
    if (answerInterface<IActionTarget>(this, iid, obj))
        return kResultOk;
    return CmObject::queryInterface(iid, obj);
}

bool GActionTarget::performOperation(Operation operation) {
    struct Row {
        bool (GActionTarget::*perform)();
        ExecutionState then;
    };
    static constexpr Row kRows[] = {
        {&GActionTarget::execute, kExecuted},
        {&GActionTarget::undo,    kUndone  },
        {&GActionTarget::redo,    kExecuted},
    };
    const bool isKnown = operation >= kExecute && operation <= kRedo;
    const Row& row = kRows[isKnown ? operation : kExecute];
    const bool done = isKnown && (this->*row.perform)();
    if (!done)
        state = kFailed;
    else if (operation != kExecute || state != kFinished)
        state = row.then;
    return done;
}

bool GActionTarget::applyFilter(CmObjectFilter& filter, FilterTask task, TContainer<IPtr<FUnknown>>* found) {
    if (!filter.test(this))
        return false;
    if (task == kCollect && found)
        found->add(static_cast<CmObject*>(this));
    return true;
}

GActionName::GActionName(const char* name) {
    const std::string_view source(name ? name : "");
    char* place = shortText.data();
    if (source.size() >= shortText.size()) {
        longText = std::make_unique<char[]>(source.size() + 1);
        place = longText.get();
    }
    *std::ranges::copy(source, place).out = 0;
}

bool GActionTargets::add(IActionTarget* target) {
    if (first)
        return others.add(target);
    first = target;
    return true;
}

void GActionTargets::removeAt(int32_t index) {
    if (index > 0) {
        others.removeAt(index - 1);
        return;
    }
    const IPtr<IActionTarget> removed(std::move(first));  // dies last: it may come back
    first = others.at(0);
    others.removeAt(0);
}

void GActionTargets::removeAll() {
    const IPtr<IActionTarget> removed(std::move(first));
    others.removeAll();
}

GAction::GAction(const char* category, const char* name) : category(category), name(name) {}

bool GAction::addTarget(IActionTarget* target, bool addRef) {
    if (!target)
        return false;
    if (targets.isEmpty())
        state = target->getState();
    if (!targets.add(target))
        return false;
    if (!addRef)
        target->release();
    return true;
}

void GAction::transferTargetsFrom(GAction* other) {
    if (other == this)
        return;
    for (int32_t i = 0, count = other->countTargets(); i < count; ++i)
        targets.add(other->targets.at(i));
    other->targets.removeAll();
}

bool GAction::uniteWith(GAction* later) {
    const int32_t count = targets.total();
    if (later->targets.total() != count)
        return false;
    int32_t united = 0;
    while (united < count && targets.at(united)->uniteWith(later->targets.at(united)))
        ++united;
    if (united == count)
        return true;
    while (--united >= 0)
        targets.at(united)->revokeUnification(later->targets.at(united));
    return false;
}

bool GAction::applyFilter(CmObjectFilter& filter, IActionTarget::FilterTask task, TContainer<IPtr<FUnknown>>* found) {
    bool passes = filter.test(this);
    if (passes && task == IActionTarget::kCollect && found)
        found->add(IPtr<FUnknown>(this));
    for (int32_t i = 0; i < targets.total(); ++i)
        passes = targets.at(i)->applyFilter(filter, task, found) || passes;
    return passes;
}

bool GAction::performAll(IActionTarget::Operation operation, IActionTarget::Operation opposite, bool backward) {
    const int32_t count = targets.total();
    const auto perform = [&](int32_t step, IActionTarget::Operation what) {
        const IPtr<IActionTarget> target(targets.at(backward ? count - 1 - step : step));
        return !target || target->performOperation(what);  // another one may have taken it out
    };
    int32_t done = 0;
    while (done < count && perform(done, operation))
        ++done;
    if (done == count)
        return true;
    while (--done >= 0)
        perform(done, opposite);
    return false;
}

void GAction::removeFinishedTargets() {
    for (int32_t i = targets.total() - 1; i >= 0; --i)
        if (targets.at(i)->getState() == IActionTarget::kFinished)
            targets.removeAt(i);
}

bool GAction::execute() {
    if (state != IActionTarget::kNotExecuted)
        return false;
    if (!targets.isEmpty())
        state = performAll(IActionTarget::kExecute, IActionTarget::kUndo, false) ? IActionTarget::kExecuted
                                                                                 : IActionTarget::kFailed;
    removeFinishedTargets();
    if (targets.isEmpty())
        state = IActionTarget::kFinished;
    return state == IActionTarget::kExecuted;
}

bool GAction::undo() {
    if (state != IActionTarget::kExecuted || !performAll(IActionTarget::kUndo, IActionTarget::kRedo, true))
        return false;
    state = IActionTarget::kUndone;
    return true;
}

bool GAction::redo() {
    if (state != IActionTarget::kUndone || !performAll(IActionTarget::kRedo, IActionTarget::kUndo, false))
        return false;
    state = IActionTarget::kExecuted;
    return true;
}

int32_t GAction::dispatch(bool perform) {
    if (!dispatcher)
        return -1;
    const OPtr<FMessage> message(new FMessage(perform ? "Interpret" : "CanInterpret"));
    message->add("Action", this, false);
    return dispatcher->dispatchActionMessage(message);
}

bool GAction::getDescription(FString& text) const {
    FString all(description);
    if (all.isEmpty())
        for (int32_t i = 0; i < targets.total(); ++i)
            appendLine(all, targets.at(i));
    if (all.isEmpty())
        return false;
    text = std::move(all);
    return true;
}

bool GAction::getData(const char* key, const void*& data, uint32_t& size) const {
    return values && values->getData(key, data, size);
}

uint32_t GAction::getKey() const {
    int32_t key = 0;
    if (values)
        values->getInt(kKeyEntry, key);
    return uint32_t(key);
}

FMessage& GAction::valuesForChange() {
    if (!values)
        values = new FMessage(isA());
    return *values;
}

GAction* GAction::getPrevious() const {
    return node && node->getParent() ? node->getParent()->getAction() : nullptr;
}

int32_t GAction::countSuccessors() const {
    return node ? node->countSuccessors() : 0;
}

}  // namespace Tessarine
