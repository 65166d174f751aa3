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

void UValueHooks::tellValueChanged(IValue* value) {
    if (hooks.empty())
        return;
    Walk walk;
    const size_t count = hooks.size();  // those added on the way hear of the next value
    for (size_t i = 0; i < count; ++i)
        if (hooks[i])
            hooks[i]->onValueChanged(value);
}

}  // namespace Tessarine
