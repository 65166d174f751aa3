#pragma once
#include "pluginterfaces/base/funknown.h"

namespace Tessarine {

/** Messages of a change; classes use numbers from 1000 up for their own news. */
enum UpdateMessage : int32_t {
    kChanged = 1,
    kDestroyed = 2,  // the object goes away: drop every pointer to it
};

/** Someone who hears of changes. */
class IDependent : public FUnknown {
public:
    virtual void update(FUnknown* changedUnknown, int32_t message) = 0;

    DECLARE_INTERFACE(IDependent)
};

/** Knows who depends on what. Nobody is counted here: who registers must remove. A null object or dependent gives 1,
    all else 0, unless told otherwise. */
class IUpdateHandler : public FUnknown {
public:
    virtual int32_t addDependent(FUnknown* object, IDependent* dependent) = 0;
    /** A null object: from all objects. A null dependent: all dependents of the object. */
    virtual int32_t removeDependent(FUnknown* object, IDependent* dependent) = 0;
    /** Tells the dependents at once, on this thread. 1: there was none. */
    virtual int32_t triggerUpdates(FUnknown* object, int32_t message) = 0;
    /** Tells them at the next turn of the main loop; equal messages of one object merge. Any thread. */
    virtual int32_t deferUpdates(FUnknown* object, int32_t message) = 0;

    DECLARE_INTERFACE(IUpdateHandler)
};

class IUpdateManager : public FUnknown {
public:
    /** Drops what is deferred for the object. */
    virtual int32_t cancelUpdates(FUnknown* object) = 0;
    /** Delivers what is deferred for the object, null for all. */
    virtual int32_t triggerDeferedUpdates(FUnknown* object) = 0;

    DECLARE_INTERFACE(IUpdateManager)
};

}  // namespace Tessarine
