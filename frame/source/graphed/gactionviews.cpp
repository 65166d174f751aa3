#include "graphed/gactionviews.h"
#include "collect/cmobjectfilter.h"
#include <vector>

namespace Tessarine {
IMPLEMENT_ABSTRACT_CLASS(GFilteredActionProcessor, GActionProcessorBase)
IMPLEMENT_CLASS(GCombinedActionProcessor, GActionProcessorBase)

namespace {
class BothFilters final : public CmObjectFilter {
public:
    BothFilters(CmObjectFilter& first, CmObjectFilter& second) : first(first), second(second) {}
    bool test(CmObject* object) override { return first.test(object) && second.test(object); }

private:
    CmObjectFilter &first, &second;
};
}  // namespace

GFilteredActionProcessor::GFilteredActionProcessor(GActionProcessor* processor, CmObjectFilter& filter)
    : processor(processor), filter(filter) {
    if (processor)
        processor->addDependent(this);
}

GFilteredActionProcessor::~GFilteredActionProcessor() {
    if (processor)
        processor->removeDependent(this);
}

GAction* GFilteredActionProcessor::findAction(CmObjectFilter& wanted) const {
    BothFilters both(filter, wanted);
    return processor ? processor->findAction(both) : nullptr;
}

void GFilteredActionProcessor::findActions(CmObjectFilter& wanted, GActionList& found) const {
    BothFilters both(filter, wanted);
    if (processor)
        processor->findActions(both, found);
}

void GFilteredActionProcessor::removeAll() {
    if (processor)
        processor->removeActions(filter);
}

bool GFilteredActionProcessor::removeAction(GAction* action) {
    return processor && action && filter.test(action) && processor->removeAction(action);
}

bool GFilteredActionProcessor::removeActions(CmObjectFilter& wanted) {
    BothFilters both(filter, wanted);
    return processor && processor->removeActions(both);
}

bool GFilteredActionProcessor::isLocked() const {
    return lockCount > 0 || (processor && processor->isLocked());
}

void GFilteredActionProcessor::update(FUnknown* changedUnknown, int32_t message) {
    if (!processor || changedUnknown != static_cast<CmObject*>(processor))
        return;
    if (message == kDestroyed)
        processor = nullptr;
    else
        changed(message);
}

GCombinedActionProcessor::~GCombinedActionProcessor() {
    for (GActionProcessorBase* part : parts)
        part->removeDependent(this);
}

bool GCombinedActionProcessor::addActionProcessor(GActionProcessorBase* part) {
    if (!part || part == this || parts.contains(part) || !parts.add(part))
        return false;
    part->addDependent(this);
    return true;
}

bool GCombinedActionProcessor::removeActionProcessor(GActionProcessorBase* part) {
    if (!parts.remove(part))
        return false;
    part->removeDependent(this);
    forget(part);
    if (executionProcessor == part)
        executionProcessor = nullptr;
    return true;
}

bool GCombinedActionProcessor::pushUndo(GAction* action) {
    GActionProcessorBase* processor = executionProcessor ? executionProcessor : gActionProcessor;
    return processor && processor->pushUndo(action);
}

GAction* GCombinedActionProcessor::findAction(CmObjectFilter& filter) const {
    for (const GActionProcessorBase* part : parts)
        if (GAction* found = part->findAction(filter))
            return found;
    return nullptr;
}

void GCombinedActionProcessor::findActions(CmObjectFilter& filter, GActionList& found) const {
    for (const GActionProcessorBase* part : parts)
        part->findActions(filter, found);
}

template <class Perform>
bool GCombinedActionProcessor::anyPart(Perform perform) {
    bool any = false;
    for (GActionProcessorBase* part : std::vector(parts.begin(), parts.end()))  // who hears of it may remove parts
        any = (parts.contains(part) && perform(*part)) || any;
    return any;
}

void GCombinedActionProcessor::removeAll() {
    anyPart([](GActionProcessorBase& part) { return part.removeAll(), true; });
}

bool GCombinedActionProcessor::removeAction(GAction* action) {
    return anyPart([action](GActionProcessorBase& part) { return part.removeAction(action); });
}

bool GCombinedActionProcessor::removeActions(CmObjectFilter& filter) {
    return anyPart([&](GActionProcessorBase& part) { return part.removeActions(filter); });
}

void GCombinedActionProcessor::update(FUnknown* changedUnknown, int32_t message) {
    GActionProcessorBase* part = partBehind(changedUnknown);
    if (!part)
        return;
    follow(part, message);
    if (message != kDestroyed)
        changed(message);
}

GActionProcessorBase* GCombinedActionProcessor::partBehind(FUnknown* unknown) const {
    for (GActionProcessorBase* part : parts)
        if (unknown == static_cast<CmObject*>(part))
            return part;
    return nullptr;
}

void GCombinedActionProcessor::follow(GActionProcessorBase* part, int32_t message) {
    switch (message) {
    case kActionPushed:
        redoParts.removeAll();
        undoParts.push(part);
        break;
    case kActionUndone:
        redoParts.push(part);
        undoParts.removeAbs(part);
        break;
    case kActionRedone:
        undoParts.push(part);
        redoParts.removeAbs(part);
        break;
    case kActionsGone:
        forget(part);
        break;
    case kDestroyed:
        removeActionProcessor(part);
        break;
    }
}

void GCombinedActionProcessor::forget(GActionProcessorBase* part) {
    for (CmStack* stack : {&undoParts, &redoParts})
        while (stack->removeAbs(part)) {}
}

}  // namespace Tessarine
