#include "gui/values/uvaluehooks.h"
#include "pluginterfaces/gui/ieventhook.h"
#include <algorithm>
#include <vector>

namespace Tessarine {
namespace {
constinit std::vector<IApplicationEventHook*> hooks;  // null: removed during a walk
constinit int32_t walks = 0;                          // that run now, nested

/** While one exists, no entry moves. */
struct Walk {
    Walk() { ++walks; }
    ~Walk() {
        if (--walks == 0)
            std::erase(hooks, nullptr);
    }
};

template <class Tell>
void tellAll(Tell tell) {
    if (hooks.empty())
        return;
    const Walk walk;
    const size_t count = hooks.size();  // those added on the way hear of the next event
    for (size_t i = 0; i < count; ++i)
        if (hooks[i])
            tell(*hooks[i]);
}
}  // namespace

bool UValueHooks::add(IApplicationEventHook* hook) {
    if (!hook || std::ranges::find(hooks, hook) != hooks.end())
        return false;
    hooks.push_back(hook);
    return true;
}

bool UValueHooks::remove(IApplicationEventHook* hook) {
    const auto place = std::ranges::find(hooks, hook);
    if (!hook || place == hooks.end())
        return false;
    if (walks > 0)
        *place = nullptr;
    else
        hooks.erase(place);
    return true;
}

bool UValueHooks::anybody() {
    return !hooks.empty();
}

void UValueHooks::tellValueChanged(IValue* value) {
    tellAll([value](IApplicationEventHook& hook) { hook.onValueChanged(value); });
}

void UValueHooks::tellActionExecuted(const char* category, const char* action, const tchar* title,
                                     const tchar* description) {
    tellAll([=](IApplicationEventHook& hook) { hook.onActionExecuted(category, action, title, description); });
}

void UValueHooks::tellCommandFired(const char* category, const char* command, const tchar* title) {
    tellAll([=](IApplicationEventHook& hook) { hook.onCommandFired(category, command, title); });
}

}  // namespace Tessarine
