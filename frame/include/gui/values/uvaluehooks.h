#pragma once
#include "pluginterfaces/base/funknown.h"

namespace Tessarine {
class IApplicationEventHook;
class IValue;

/** The application event hooks of this copy of the framework, in order of registration.

    Owns      nothing: who registers a hook removes it before it dies.
    Threads   the main thread. A hook may add and remove hooks while it is called; one that was removed isn't called
              again. */
namespace UValueHooks {
/** false: null, or there already. */
bool add(IApplicationEventHook* hook);
/** false: it wasn't there. */
bool remove(IApplicationEventHook* hook);
/** Whether there is a hook. */
bool anybody();
/** A user has touched the value. */
void tellValueChanged(IValue* value);
/** title: as the user knows it, perhaps null. */
void tellCommandFired(const char* category, const char* command, const tchar* title);
void tellActionExecuted(const char* category, const char* action, const tchar* title, const tchar* description);
}  // namespace UValueHooks

}  // namespace Tessarine
