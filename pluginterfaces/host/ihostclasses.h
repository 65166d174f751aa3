#pragma once
#include "pluginterfaces/base/funknown.h"

namespace Tessarine {

/** What a host offers: services and new objects, by the identifier of their interface. */
class IHostClasses : public FUnknown {
public:
    /** The object's face of this interface, with one reference for the caller. kResultFalse: not offered. */
    virtual int32_t createClassInstance(const char* iid, void** obj) = 0;

    DECLARE_INTERFACE(IHostClasses)
};

}  // namespace Tessarine
