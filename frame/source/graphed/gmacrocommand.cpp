#include "graphed/gmacrocommand.h"
#include "graphed/gactionprocessor.h"
#include "graphed/hooks.h"

namespace Tessarine {
IMPLEMENT_CLASS(GMacroCommand, GCommand)

namespace {
constexpr const char* kNotInMacros[] = {"Undo", "Redo"};
constexpr tchar kNotAllowed[] = u"This command is not allowed to be used in a macro!";

class Running {
public:
    explicit Running(bool& flag) : flag(flag) { flag = true; }
    ~Running() { flag = false; }
    Running(const Running&) = delete;

private:
    bool& flag;
};

bool suspendMouse(bool state) {
    return gActionHooks.suspendMouse && gActionHooks.suspendMouse(state);
}
}  // namespace

GMacroCommand::GMacroCommand(const ConstString& name) : GCommand(ConstString(kCategory), name) {
    commands._ownsObjects = CmContainer::kShares;
}

int32_t GMacroCommand::fire(uint32_t /*key*/) {
    if (running || commands.isEmpty() || (gActionHooks.isModal && gActionHooks.isModal()))
        return kNotDone;
    const Running guard(running);
    const IPtr<GMacroCommand> held(this);
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
    for (int32_t i = 0; i < commands.total() && answer != kDisabled; ++i) {
        const IPtr<GCommand> command(static_cast<GCommand*>(commands.at(i)));
        answer = command->fire(0);
        if (gActionHooks.idle)
            gActionHooks.idle();
    }
    return answer;
}

bool GMacroCommand::canPerform(FMessage* message) const {
    if (running || commands.isEmpty())
        return false;
    const Running guard(running);
    return static_cast<GCommand*>(commands.at(0))->canPerform(message);
}

bool GMacroCommand::allowCommand(const ConstString& category, const ConstString& name) {
    bool allowed = true;
    if (category.compare("Edit") == 0)
        for (const char* refused : kNotInMacros)
            allowed = allowed && name.compare(refused) != 0;
    if (!allowed && gActionHooks.showText)
        gActionHooks.showText(kNotAllowed);
    return allowed;
}

bool GMacroCommand::addCommand(GCommand* command) {
    return command && allowCommand(command->category, command->name) && commands.add(command);
}

}  // namespace Tessarine
