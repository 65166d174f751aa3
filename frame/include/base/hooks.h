#pragma once
#include "pluginterfaces/base/funknown.h"

namespace Tessarine {
class CmObject;
class FModule;

/** What is asked of the floors above about components. Null until they fill it: then none can be made but those of
    the program itself, and modules count no instances. */
struct ComponentHooks {
    /** A new component of the class, with a reference for the caller; null when there is none. Main thread. */
    FUnknown* (*createComponent)(const FUID& classID) = nullptr;
    /** The module stays loaded as long as one of its instances is known. */
    void (*addInstance)(FModule* module, CmObject* instance) = nullptr;
    void (*releaseInstance)(FModule* module, CmObject* instance) = nullptr;
    /** A new component of the index-th class of a category, of the program or of a module, which stays loaded as long;
        null when it can't be made or is switched off. With a reference for the caller. false: there are not so many.
        Main thread. */
    bool (*createOfCategory)(const char* category, int32_t index, FUnknown** component) = nullptr;
};
extern ComponentHooks gComponentHooks;

}  // namespace Tessarine
