#pragma once
#include "pluginterfaces/base/funknown.h"

namespace Tessarine {

/** The folder that a module was loaded from, as its entry gets it. Paths are UTF-8, without a closing "/", and live as long as
    the object. */
class IModuleBundle : public FUnknown {
public:
    /** The bundle's own folder. */
    virtual const char* getPath() const = 0;
    /** The folder of its resources. */
    virtual const char* getResourcePath() const = 0;

    DECLARE_INTERFACE(IModuleBundle)
};

}  // namespace Tessarine
