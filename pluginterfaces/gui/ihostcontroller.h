#pragma once
#include "pluginterfaces/base/funknown.h"

namespace Tessarine {
class IValue;

/** A controller of the host, as a module sees it. */
class IHostController : public FUnknown {
public:
    /** The value of this name, with one reference for the caller; null: there is none. */
    virtual IValue* createParamInterface(const char* name) = 0;

    DECLARE_INTERFACE(IHostController)
};

}  // namespace Tessarine
