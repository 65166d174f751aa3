#include "graphed/gactionnode.h"
#include "graphed/gaction.h"
#include <algorithm>

namespace Tessarine {

GActionNode* GActionNode::make(GAction* action) {
    action->addRef();
    return &action->node.emplace(action);
}

void GActionNode::end(GActionNode* node) {
    GAction* action = node->action;
    action->node.reset();
    action->release();
}

GActionNode* GActionNode::getSuccessor(int32_t index) const {
    if (successors.isEmpty())
        return index == 0 ? activeSuccessor : nullptr;
    return successors.at(index);
}

void GActionNode::enqueueSuccessor(GActionNode* node, bool makeActive, int32_t index) {
    node->parent = this;
    if (!activeSuccessor) {
        activeSuccessor = node;
        return;
    }
    if (successors.isEmpty())
        successors.add(activeSuccessor);
    successors.add(node);
    if (index >= 0 && index < successors.total())
        std::rotate(successors.begin() + index, successors.end() - 1, successors.end());
    if (makeActive)
        activeSuccessor = node;
}

void GActionNode::takeSuccessor(GActionNode* node) {
    const int32_t place = placeOf(node);
    node->parent = nullptr;
    successors.removeAt(place);
    if (activeSuccessor == node)
        activeSuccessor = successors.at(std::min(place, successors.total() - 1));
    if (successors.total() == 1) {
        activeSuccessor = successors.at(0);
        successors.resize(0);
    }
}

void GActionNode::dropSuccessorsTo(Nodes& nodes) {
    for (int32_t i = 0, count = countSuccessors(); i < count; ++i) {
        nodes.push_back(getSuccessor(i));
        nodes.back()->parent = nullptr;
    }
    activeSuccessor = nullptr;
    successors.resize(0);
}

void GActionNode::dequeue() {
    GActionNode* above = parent;
    GActionNode* active = activeSuccessor;
    const bool wasActive = above->activeSuccessor == this;
    int32_t place = above->placeOf(this);
    Nodes behind;
    dropSuccessorsTo(behind);
    above->takeSuccessor(this);
    for (GActionNode* each : behind)
        above->enqueueSuccessor(each, wasActive && each == active, place++);
}

void GActionNode::moveBehind(GActionNode* other) {
    if (parent == other || this == other)
        return;
    dequeue();
    GActionNode* old = other->activeSuccessor;
    const int32_t place = other->placeOf(old);
    if (old)
        other->takeSuccessor(old);
    other->enqueueSuccessor(this, true, place);
    if (old)
        enqueueSuccessor(old, true);
}

void GActionNode::removeSuccessors() {
    if (!activeSuccessor)
        return;
    Nodes doomed;
    dropSuccessorsTo(doomed);
    while (!doomed.empty()) {  // each is touched once: long chains are larger than the processor's caches
        GActionNode* node = doomed.back();
        doomed.pop_back();
        node->dropSuccessorsTo(doomed);
        end(node);
    }
}

void GActionNode::giveInactiveTo(GActionNode& other) {
    if (successors.isEmpty())
        return;
    GActionNode* kept = activeSuccessor;
    takeSuccessor(kept);
    giveAllTo(other);
    enqueueSuccessor(kept, true);
}

void GActionNode::giveAllTo(GActionNode& other) {
    Nodes given;
    dropSuccessorsTo(given);
    for (GActionNode* node : given)
        other.enqueueSuccessor(node, false);
}

bool GActionNode::isBehind(const GActionNode* other) const {
    const GActionNode* above = parent;
    while (above && above != other)
        above = above->parent;
    return above != nullptr;
}

}  // namespace Tessarine
