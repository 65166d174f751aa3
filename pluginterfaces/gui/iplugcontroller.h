#pragma once
#include "pluginterfaces/base/funknown.h"

namespace Tessarine {
class IParameter;

/** The owner of a module's parameters. */
class IPlugController : public FUnknown {
public:
    /** Borrowed, or null. */
    virtual IParameter* getParameter(const char* name) = 0;
    virtual void parameterChanged(IParameter* parameter, int32_t tag) = 0;

    DECLARE_INTERFACE(IPlugController)
};

/** An owner that also hears when the user takes hold of a parameter and lets go. */
class IPlugController4 : public IPlugController {
public:
    virtual void beginEdit(IParameter* parameter) = 0;
    virtual void endEdit(IParameter* parameter) = 0;

    DECLARE_INTERFACE(IPlugController4)
};

}  // namespace Tessarine
