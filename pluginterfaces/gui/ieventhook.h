#pragma once
#include "pluginterfaces/base/funknown.h"

namespace Tessarine {
class IValue;

/** Hears what happens in the application as a whole. */
class IApplicationEventHook : public FUnknown {
public:
    virtual void onCommandFired(const char* category, const char* command, const tchar* title) = 0;
    /** Not of one that united with the one before it. description: empty when there is none. */
    virtual void onActionExecuted(const char* category, const char* action, const tchar* title,
                                  const tchar* description) = 0;
    virtual void onValueChanged(IValue* value) = 0;
    virtual void notifyEvent(const char* event, FUnknown* object) = 0;

    DECLARE_INTERFACE(IApplicationEventHook)
};

}  // namespace Tessarine
