#pragma once
#include "pluginterfaces/base/iattributes.h"

namespace Tessarine {

/** An object that can be stored by a program that doesn't know its class. */
class IPersistent : public FUnknown {
public:
    /** Writes the 16 bytes of the class identifier. */
    virtual int32_t getClassID(char* cid) = 0;
    virtual int32_t saveAttributes(IAttributes* attributes) = 0;
    virtual int32_t loadAttributes(IAttributes* attributes) = 0;

    DECLARE_INTERFACE(IPersistent)
};

}  // namespace Tessarine
