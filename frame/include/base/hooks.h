#pragma once
#include "pluginterfaces/base/funknown.h"

namespace Tessarine {
class CmObject;
class FModule;

/** What wrapped components ask of the floors above. Null until they fill it: then no component can be made, and modules
    count no instances. */
struct ComponentHooks {
    /** A new component of the class, with a reference for the caller; null when there is none. Main thread. */
    FUnknown* (*createComponent)(const FUID& classID) = nullptr;
    /** The module stays loaded as long as one of its instances is known. */
    void (*addInstance)(FModule* module, CmObject* instance) = nullptr;
    void (*releaseInstance)(FModule* module, CmObject* instance) = nullptr;
};
extern ComponentHooks gComponentHooks;

}  // namespace Tessarine
