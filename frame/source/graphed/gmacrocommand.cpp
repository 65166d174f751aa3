#include "graphed/gmacrocommand.h"
#include "graphed/gactionprocessor.h"
#include "graphed/gcommandmanager.h"
#include "graphed/hooks.h"
#include <algorithm>

namespace Tessarine {
IMPLEMENT_CLASS(GMacroCommand, GCommand)

namespace {
constexpr const char* kNotInMacros[] = {"Undo", "Redo"};
constexpr tchar kNotAllowed[] = u"This command is not allowed to be used in a macro!";

int32_t depth = 0;  // of the macros that run
int32_t fired = 0;  // commands, since the outermost one began

bool suspendMouse(bool state) {
    return gActionHooks.suspendMouse && gActionHooks.suspendMouse(state);
}
}  // namespace

class GMacroCommand::Running {
public:
    explicit Running(const GMacroCommand& macro) : macro(macro) {
        macro.running = true;
        if (depth++ == 0)
            fired = 0;
    }
    ~Running() {
        macro.running = false;
        --depth;
    }
    Running(const Running&) = delete;

private:
    const GMacroCommand& macro;
};

GMacroCommand::GMacroCommand(const ConstString& name) : GCommand(ConstString(kCategory), name) {
    commands._ownsObjects = CmContainer::kShares;
}

bool GMacroCommand::canRun() const {
    return !running && depth < kDeepest && !commands.isEmpty();
}

int32_t GMacroCommand::fire(uint32_t /*key*/) {
    if (!canRun() || (gActionHooks.isModal && gActionHooks.isModal()))
        return kNotDone;
    const IPtr<GMacroCommand> held(this);
    const Running guard(*this);
    const bool startedHere = GActionProcessor::beginMacroGlobal();
    const bool wasSuspended = suspendMouse(true);
    const int32_t answer = fireAll();
    suspendMouse(wasSuspended);
    if (startedHere)
        GActionProcessor::finishMacroGlobal(FString(shownTitle()).text16());
    return answer;
}

int32_t GMacroCommand::fireAll() {
    int32_t answer = kNotDone;
    for (int32_t i = 0; i < commands.total() && answer != kDisabled && fired < kMostFired; ++i) {
        ++fired;
        const IPtr<GCommand> command(currentCommand(i));
        if (!command)
            continue;
        answer = command->fire(0);
        if (gActionHooks.idle)
            gActionHooks.idle();
    }
    return answer;
}

bool GMacroCommand::canPerform(FMessage* message) const {
    if (!canRun())
        return false;
    const Running guard(*this);
    const IPtr<GCommand> first(currentCommand(0));
    return first && first->canPerform(message);
}

GCommand* GMacroCommand::currentCommand(int32_t index) const {
    auto* added = static_cast<GCommand*>(commands.at(index));
    GCommand* known = gCommandManager ? gCommandManager->findCommandWithHistory(added->category, added->name) : nullptr;
    GCommand* current = known ? known : added;
    return isAllowed(current->category, current->name) ? current : nullptr;
}

bool GMacroCommand::isAllowed(const ConstString& category, const ConstString& name) {
    return category.compare("Edit") != 0 ||
           std::ranges::none_of(kNotInMacros, [&](const char* refused) { return name.compare(refused) == 0; });
}

bool GMacroCommand::allowCommand(const ConstString& category, const ConstString& name) {
    const bool allowed = isAllowed(category, name);
    if (!allowed && gActionHooks.showText)
        gActionHooks.showText(kNotAllowed);
    return allowed;
}

bool GMacroCommand::addCommand(GCommand* command) {
    return command && allowCommand(command->category, command->name) && commands.add(command);
}

void GMacroCommand::removeCommands(const ConstString& ofCategory, const ConstString& ofName) {
    const GCommand wanted(ofCategory, ofName);  // a copy: they may be the names of one that goes
    for (int32_t i = commands.total() - 1; i >= 0; --i)
        if (static_cast<GCommand*>(commands.at(i))->isNamed(wanted.category, wanted.name))
            commands.removeAt(i);
}

}  // namespace Tessarine
