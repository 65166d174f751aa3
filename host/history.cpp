#include "host/history.h"
#include "host/texts.h"
#include <cstdio>
#include <ranges>

using namespace Tessarine;

namespace {
/** Puts all changes of one step. */
class RemoteChanges : public GActionTarget {
public:
    DECLARE_ABSTRACT_CLASS(RemoteChanges, GActionTarget)

    RemoteChanges(Remote& changed, Changes made, int64_t ofGesture)
        : remote(changed), changes(std::move(made)), gesture(ofGesture) {
        setState(kExecuted);
    }

    const Changes& getChanges() const { return changes; }
    bool execute() override { return redo(); }
    bool undo() override {
        for (const Change& change : changes | std::views::reverse)
            putSetting(remote, change.place, change.before);
        return true;
    }
    bool redo() override {
        for (const Change& change : changes)
            putSetting(remote, change.place, change.after);
        return true;
    }
    /** What both have changed is one change. */
    bool uniteWith(IActionTarget* later) override {
        const auto* other = classCast<RemoteChanges>(commonObject(later));
        if (!other || other->gesture != gesture)
            return false;
        for (const Change& change : other->changes) {
            const auto mine = std::ranges::find(changes, change.place, &Change::place);
            if (mine == changes.end())
                changes.push_back(change);
            else
                mine->after = change.after;
        }
        return true;
    }

private:
    Remote& remote;
    Changes changes;
    const int64_t gesture;
};
IMPLEMENT_ABSTRACT_CLASS(RemoteChanges, GActionTarget)

/** A step of the history: an action that knows its one target. */
class RemoteStep : public GAction {
public:
    DECLARE_ABSTRACT_CLASS(RemoteStep, GAction)

    RemoteStep(const char* source, RemoteChanges* only) : GAction(source), target(only) { addTarget(only, false); }
    const Changes& getChanges() const { return target->getChanges(); }

private:
    const RemoteChanges* target;  // one of its targets
};
IMPLEMENT_ABSTRACT_CLASS(RemoteStep, GAction)

std::string timeOf(const CmTime& time) {
    const CmDate& date = time.getDate();
    char text[32];
    std::snprintf(text, sizeof(text), "%04d-%02d-%02dT%02d:%02d:%02d", date.getYear(), date.getMonth(), date.getDay(),
                  time.getHour(), time.getMinute(), time.getSecond());
    return text;
}
}  // namespace

History::History(Remote& watched) : remote(watched), processor(new GActionProcessor) {
    GActionProcessorBase::maxUndoSteps = kMaxSteps;
}

void History::add(const char* source, const std::string& title, Changes changes) {
    if (changes.empty())
        return;
    const OPtr<RemoteStep> step(new RemoteStep(source, new RemoteChanges(remote, std::move(changes), gesture)));
    String wide;
    if (wideOf(title, wide))
        step->setTitle(wide.text16());
    processor->pushUndo(step);
}

const Changes* History::changesOf(GAction* action) {
    const auto* step = classCast<RemoteStep>(action);
    return step ? &step->getChanges() : nullptr;
}

std::vector<History::Entry> History::entries() const {
    std::vector<Entry> found;
    for (const auto walk = processor->createIterator(GActionProcessor::kActivePath); !walk->done();) {
        const GAction* action = walk->next();
        found.push_back({utf8Of(action->getTitle()), timeOf(action->getTime()), action->getCategory()});
    }
    return found;
}

size_t History::position() const {
    size_t count = 0;
    for (const auto walk = processor->createIterator(GActionProcessor::kUndoable); !walk->done(); walk->next())
        ++count;
    return count;
}
