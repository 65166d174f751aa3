#pragma once
#include "pluginterfaces/base/funknown.h"

namespace Tessarine {

/** A port of the host's audio or MIDI world. */
class IPort : public FUnknown {
public:
    /** "audio" or another type name. */
    virtual bool isType(const char* type) = 0;
    virtual bool isInput() = 0;

    DECLARE_INTERFACE(IPort)
};

/** All ports of the host. It is an object of change notification: dependents hear of a new set of ports. */
class IPortRegistry2 : public FUnknown {
public:
    virtual int32_t countPorts() = 0;
    /** Borrowed; null when the index is out of range. */
    virtual IPort* getPort(int32_t index) = 0;

    DECLARE_INTERFACE(IPortRegistry2)
};

}  // namespace Tessarine
