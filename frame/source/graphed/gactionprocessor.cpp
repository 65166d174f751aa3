#include "graphed/gactionprocessor.h"
#include "base/utimer.h"
#include "collect/cmobjectfilter.h"
#include "graphed/hooks.h"
#include "gui/values/uvaluehooks.h"
#include <algorithm>
#include <ctime>
#include <ranges>
#include <utility>

namespace Tessarine {
namespace {
constexpr int32_t kTickMask = 0x7FFFFFFF;  // where ticks begin anew
constexpr tchar kBranchesGo[] = u"This will remove all inactive branches of the edit history!";

/** The time now, which is asked for once a tick and whose date is worked out once a second at most. */
const CmTime& timeOfPush(int32_t ticks) {
    static int32_t latestTicks = -1;
    static time_t latest = -1;
    static CmTime timeOfLatest;
    if (std::exchange(latestTicks, ticks) == ticks)
        return timeOfLatest;
    const time_t now = time(nullptr);
    if (now != latest)
        timeOfLatest = CmTime::fromUnixTime(now);
    latest = now;
    return timeOfLatest;
}

void tellExecuted(const GAction& action) {
    if (!UValueHooks::anybody())
        return;
    FString description;
    action.getDescription(description);
    UValueHooks::tellActionExecuted(action.getCategory(), action.getName(), action.getTitle().text16(),
                                    description.text16());
}
}  // namespace

IMPLEMENT_ABSTRACT_CLASS(GActionProcessorBase, CmObject)
IMPLEMENT_CLASS(GActionProcessor, GActionProcessorBase)

constinit int32_t GActionProcessorBase::maxUndoSteps = -1;
constinit int32_t GActionProcessor::unificationTimeout = 800;
constinit bool GActionProcessor::gAllowBranches = false;
constinit bool GActionProcessor::gRunningGlobalMacro = false;
constinit GActionProcessor* GActionProcessor::gMacroActionProcessor = nullptr;
constinit std::vector<GActionProcessor*> GActionProcessor::gProcessors;
constinit GActionProcessor* gActionProcessor = nullptr;

GActionProcessorBase::~GActionProcessorBase() {
    GActionProcessorBase::changed(kDestroyed);
}

bool GActionProcessorBase::perform(GAction* action, const tchar* title) {
    if (!action)
        return false;
    if (title)
        action->setTitle(title);
    return action->execute() && pushUndo(action);
}

void GActionProcessorBase::lock(bool state) {
    const int32_t before = lockCount;
    lockCount = state ? before + 1 : std::max(before - 1, 0);
    if ((before > 0) != (lockCount > 0))
        postUpdateEditMenus();
}

void GActionProcessorBase::postUpdateEditMenus() {
    constexpr char kMessage[] = "UpdateEditMenus";
    CmObject* application = gActionHooks.application ? gActionHooks.application() : nullptr;
    if (application)
        gMessenger->postMessage(application, new FMessage(kMessage), true);
}

GActionProcessor::GActionProcessor() {
    gProcessors.push_back(this);
}

GActionProcessor::~GActionProcessor() {
    GActionProcessor::removeAll();
    std::erase(gProcessors, this);
    if (gMacroActionProcessor == this)
        gMacroActionProcessor = nullptr;
    if (gActionProcessor == this)
        gActionProcessor = nullptr;
}

bool GActionProcessor::pushUndo(GAction* action) {
    if (!action || action->getState() != IActionTarget::kExecuted || action->getNode())
        return false;
    if (hook)
        hook->actionPushed(action);
    if (gRunningGlobalMacro && !gMacroActionProcessor) {
        gMacroActionProcessor = this;
        beginMacro();
    }
    if (macroAction) {
        macroAction->transferTargetsFrom(action);
        macroAction->setState(action->getState());
        return true;
    }
    const int32_t now = UTicks::coarseNow();
    if (unitesWithTop(action, now))
        return true;
    tellExecuted(*action);
    doPushUndo(action, now);
    return true;
}

bool GActionProcessor::unitesWithTop(GAction* action, int32_t now) {
    GAction* top = peekUndo();
    if (!top)
        return false;
    const int32_t elapsed = (now - lastPushTicks) & kTickMask;
    if (elapsed >= unificationTimeout || !top->uniteWith(action))
        return false;
    top->setTitle(action->getTitle().text16());
    lastPushTicks = now;
    return true;
}

bool GActionProcessor::doPushUndo(GAction* action, int32_t now) {
    if (maxUndoSteps == 0) {
        removeAll();
        return false;
    }
    if (action->getNode())
        return false;  // who was told of it has put it somewhere
    lastPushTicks = now;
    action->time = timeOfPush(now);
    GActionNode* node = GActionNode::make(action);
    if (!gAllowBranches)
        currentNode->removeSuccessors();
    if (currentNode->getActiveSuccessor())
        flags |= kMayFork;  // also when one that died has undone something
    currentNode->enqueueSuccessor(node, true);
    currentNode = node;
    if (pathLength != kUnknownLength)
        ++pathLength;
    trim();
    branchesHaveChanged();
    postUpdateEditMenus();
    changed(kActionPushed);
    return true;
}

/** Cuts off what is older than maxUndoSteps. */
void GActionProcessor::trim() {
    const int32_t excess = maxUndoSteps > 0 ? countPath() - maxUndoSteps : 0;
    if (excess <= 0)
        return;
    GActionNode* kept = oldestKept(excess);
    kept->getParent()->takeSuccessor(kept);
    pathLength = maxUndoSteps;
    GActionNode doomed;  // ends when all is in order again: who dies may come back
    rootNode.giveAllTo(doomed);
    rootNode.enqueueSuccessor(kept, true);
}

/** From the end of the path that is the shorter way. */
GActionNode* GActionProcessor::oldestKept(int32_t excess) const {
    if (flags & kMayFork) {
        GActionNode* node = currentNode;
        for (int32_t i = 1; i < maxUndoSteps; ++i)
            node = node->getParent();
        return node;
    }
    GActionNode* node = rootNode.getActiveSuccessor();
    for (; excess > 0; --excess)
        node = node->getActiveSuccessor();
    return node;
}

int32_t GActionProcessor::countPath() {
    if (pathLength == kUnknownLength) {
        pathLength = 0;
        for (const GActionNode* node = currentNode; node != &rootNode; node = node->getParent())
            ++pathLength;
    }
    return pathLength;
}

void GActionProcessor::branchesHaveChanged() {
    flags = (flags | kBranchesChanged) & ~uint32_t(kBranchesValid);
}

GAction* GActionProcessor::peekRedo() const {
    const GActionNode* next = currentNode->getActiveSuccessor();
    return next ? next->getAction() : nullptr;
}

bool GActionProcessor::canTurn(const GAction* action, GAction::State state) const {
    if (isLocked() || !action || action->getState() != state)
        return false;
    const GActionNode* node = action->getNode();
    return node && (node == currentNode || node->getParent() == currentNode || isMine(node));
}

bool GActionProcessor::undoThisAction(GAction* action) {
    const IPtr<GAction> held(action);
    if (!canTurn(action, IActionTarget::kExecuted) || !action->undo())
        return false;
    GActionNode* node = action->getNode();
    if (!node)
        return true;  // a target has removed it
    if (node != currentNode)
        moveBehindCurrent(node);
    turned(action, node->getParent(), -1, kActionUndone, &IActionProcessorHook::actionUndone);
    return true;
}

bool GActionProcessor::redoThisAction(GAction* action) {
    const IPtr<GAction> held(action);
    if (!canTurn(action, IActionTarget::kUndone) || !action->redo())
        return false;
    GActionNode* node = action->getNode();
    if (!node)
        return true;
    if (node != currentNode->getActiveSuccessor())
        moveBehindCurrent(node);
    turned(action, node, 1, kActionRedone, &IActionProcessorHook::actionRedone);
    return true;
}

/** Where it stood, before or behind, says nothing: others may have turned the action. */
void GActionProcessor::moveBehindCurrent(GActionNode* node) {
    pathLength = kUnknownLength;
    node->moveBehind(currentNode);
    branchesHaveChanged();
}

void GActionProcessor::turned(GAction* action, GActionNode* newCurrent, int32_t steps, int32_t change,
                              void (IActionProcessorHook::*tell)(GAction*)) {
    currentNode = newCurrent;
    if (pathLength != kUnknownLength)
        pathLength += steps;
    postUpdateEditMenus();
    changed(change);
    if (hook)
        (hook->*tell)(action);
}

GAction* GActionProcessor::findAction(CmObjectFilter& filter) const {
    GAction* found = nearest(kUndoable, filter, false);
    return found ? found : nearest(kAllActions, filter, false);
}

GAction* GActionProcessor::nearest(int32_t mode, CmObjectFilter& filter, bool stopAtBranch) const {
    GAction* found = nullptr;
    walk(mode, [&](GAction* action) {
        if (filter.test(action)) {
            found = action;
            return false;
        }
        return !stopAtBranch || action->countSuccessors() <= 1;
    });
    return found;
}

void GActionProcessor::findActions(CmObjectFilter& filter, GActionList& found) const {
    collectActionsFiltered(found, kAllActions, filter);
}

GAction* GActionProcessor::peekUndoFiltered(CmObjectFilter& filter, bool stopAtBranch) const {
    return nearest(kUndoable, filter, stopAtBranch);
}

GAction* GActionProcessor::peekRedoFiltered(CmObjectFilter& filter, bool stopAtBranch) const {
    return nearest(kRedoable, filter, stopAtBranch);
}

bool GActionProcessor::undoMultiple(CmObjectFilter& filter) {
    return stepUntil(peekUndoFiltered(filter, false), IActionTarget::kUndone, &GActionProcessor::undo);
}

bool GActionProcessor::redoMultiple(CmObjectFilter& filter) {
    return stepUntil(peekRedoFiltered(filter, false), IActionTarget::kExecuted, &GActionProcessor::redo);
}

bool GActionProcessor::stepUntil(GAction* last, GAction::State wanted, bool (GActionProcessor::*step)()) {
    if (!last)
        return false;
    const IPtr<GAction> held(last);
    setMassOperation(true);
    bool done = true;
    while (done && last->getNode() && last->getState() != wanted)
        done = (this->*step)();
    setMassOperation(false);
    return done;
}

void GActionProcessor::setMassOperation(bool state) {
    flags = state ? flags | kMassOperation : flags & ~uint32_t(kMassOperation);
    if (!state)
        changed(kMassOperationEnded);
}

void GActionProcessor::removeAll() {
    const bool anyActions = rootNode.getActiveSuccessor();
    currentNode = &rootNode;
    pathLength = 0;
    flags &= ~uint32_t(kMayFork);
    rootNode.removeSuccessors();
    branchesHaveChanged();
    if (!anyActions)
        return;
    postUpdateEditMenus();
    changed(kActionsGone);
}

void GActionProcessor::removeNode(GActionNode* node) {
    if (node == currentNode)
        currentNode = node->getParent();
    pathLength = kUnknownLength;
    node->dequeue();
    branchesHaveChanged();
    GActionNode::end(node);
}

void GActionProcessor::removalDone() {
    postUpdateEditMenus();
    changed(kChanged);
}

bool GActionProcessor::removeAction(GAction* action) {
    if (!action || !action->getNode() || !isMine(action->getNode()))
        return false;
    removeNode(action->getNode());
    removalDone();
    return true;
}

bool GActionProcessor::removeActions(CmObjectFilter& filter) {
    TArray<IPtr<GAction>> leaving(0, -1);
    findActions(filter, leaving);
    for (const IPtr<GAction>& action : leaving)
        if (action->getNode())
            removeNode(action->getNode());
    if (leaving.isEmpty())
        return false;
    removalDone();
    return true;
}

void GActionProcessor::beginMacro() {
    if (!macroAction)
        macroAction = new GAction;
    ++macroDepth;
}

bool GActionProcessor::finishMacro(const tchar* title) {
    if (!macroAction || --macroDepth > 0)
        return false;
    const OPtr<GAction> macro(std::move(macroAction));
    if (macro->countTargets() == 0)
        return false;
    macro->setTitle(title);
    doPushUndo(macro, UTicks::coarseNow());
    return true;
}

bool GActionProcessor::beginMacroGlobal() {
    if (gRunningGlobalMacro)
        return false;
    gRunningGlobalMacro = true;
    gMacroActionProcessor = nullptr;
    return true;
}

bool GActionProcessor::finishMacroGlobal(const tchar* title) {
    gRunningGlobalMacro = false;
    GActionProcessor* processor = std::exchange(gMacroActionProcessor, nullptr);
    return processor && processor->finishMacro(title);
}

void GActionProcessor::updateBranchInfos() {
    if (flags & kBranchesValid)
        return;
    int32_t highest = 0;
    walkAll([&](GActionNode* node) {
        const GActionNode* parent = node->getParent();
        node->setBranchNumber(parent->getSuccessor(0) == node ? parent->getBranchNumber() : ++highest);
        return true;
    });
    branchCount = highest + 1;
    activeBranch = endOfPath()->getBranchNumber();
    flags = (flags | kBranchesValid) & ~uint32_t(kBranchesChanged);
}

int32_t GActionProcessor::countBranches() {
    updateBranchInfos();
    return branchCount;
}

int32_t GActionProcessor::getActiveBranch() {
    updateBranchInfos();
    return activeBranch;
}

GActionNode* GActionProcessor::endOfPath() const {
    GActionNode* end = currentNode;
    while (end->getActiveSuccessor())
        end = end->getActiveSuccessor();
    return end;
}

GActionNode* GActionProcessor::endOfBranch(int32_t number) {
    updateBranchInfos();
    GActionNode* end = number == 0 ? &rootNode : nullptr;
    walkAll([&](GActionNode* node) {
        end = node->getBranchNumber() == number ? node : end;
        return true;
    });
    return end;
}

bool GActionProcessor::setActiveBranch(int32_t number) {
    GActionNode* end = isLocked() ? nullptr : endOfBranch(number);
    if (!end)
        return false;
    setMassOperation(true);
    const bool done = goTo(end);
    setMassOperation(false);
    return done;
}

bool GActionProcessor::goTo(GActionNode* target) {
    const IPtr<GAction> held(target->getAction());
    const Path here = pathTo(currentNode), there = pathTo(target);
    const GActionNode* fork = *(std::ranges::mismatch(here, there).in1 - 1);
    while (currentNode != fork)
        if (!undo())
            return false;
    if (held && !held->getNode())
        return false;  // a target has removed it
    makeActive(pathTo(target));
    branchesHaveChanged();
    while (currentNode != target)
        if (!redo())
            return false;
    return true;
}

/** From the root to the node. */
GActionProcessor::Path GActionProcessor::pathTo(GActionNode* node) {
    Path path;
    for (; node; node = node->getParent())
        path.push_back(node);
    std::ranges::reverse(path);
    return path;
}

void GActionProcessor::makeActive(const Path& path) {
    for (size_t i = 1; i < path.size(); ++i)
        path[i - 1]->setActiveSuccessor(path[i]);
}

void GActionProcessor::removeInactiveBranches() {
    const Path kept = pathTo(endOfPath());
    makeActive(kept);
    GActionNode doomed;
    for (GActionNode* node : kept)
        node->giveInactiveTo(doomed);
    flags &= ~uint32_t(kMayFork);
    if (!doomed.getActiveSuccessor())
        return;
    branchesHaveChanged();
    doomed.removeSuccessors();
    removalDone();
}

void GActionProcessor::enableBranches(bool state) {
    gAllowBranches = state;
    if (state)
        return;
    const std::vector<IPtr<GActionProcessor>> living(gProcessors.begin(), gProcessors.end());
    if (gActionHooks.showText && std::ranges::any_of(living, &GActionProcessor::anyBranchesPresent))
        gActionHooks.showText(kBranchesGo);
    for (const IPtr<GActionProcessor>& processor : living)
        processor->removeInactiveBranches();
}

/** Depth first, the root apart, for as long as visit answers true. */
template <class Visit>
void GActionProcessor::walkAll(Visit visit) const {
    std::vector<GActionNode*> waiting;
    const GActionNode* node = &rootNode;
    for (bool goesOn = true; goesOn;) {
        for (int32_t i = node->countSuccessors() - 1; i >= 0; --i)
            waiting.push_back(node->getSuccessor(i));
        if (waiting.empty())
            return;
        GActionNode* next = waiting.back();
        waiting.pop_back();
        goesOn = visit(next);
        node = next;
    }
}

template <class Visit>
void GActionProcessor::walk(int32_t mode, Visit visit) const {
    const auto visitNode = [&](const GActionNode* node) { return visit(node->getAction()); };
    switch (mode) {
    case kUndoable:
        for (const GActionNode* node = currentNode; node != &rootNode && visitNode(node);)
            node = node->getParent();
        break;
    case kRedoable:
        for (const GActionNode* node = currentNode->getActiveSuccessor(); node && visitNode(node);)
            node = node->getActiveSuccessor();
        break;
    case kActivePath:
        static_cast<void>(std::ranges::all_of(pathTo(endOfPath()) | std::views::drop(1), visitNode));
        break;
    case kAllActions:
        walkAll(visitNode);
        break;
    }
}

std::unique_ptr<GActionIterator> GActionProcessor::createIterator(int32_t mode) const {
    auto iterator = std::make_unique<GActionIterator>();
    walk(mode, [&](GAction* action) {
        iterator->actions.emplace_back(action);
        return true;
    });
    return iterator;
}

void GActionProcessor::collectActions(GActionList& actions, int32_t mode) const {
    walk(mode, [&](GAction* action) { return actions.add(action); });
}

void GActionProcessor::collectActionsFiltered(GActionList& actions, int32_t mode, CmObjectFilter& filter) const {
    walk(mode, [&](GAction* action) { return !filter.test(action) || actions.add(action); });
}

}  // namespace Tessarine
