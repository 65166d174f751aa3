#pragma once
#include "pluginterfaces/base/funknown.h"

namespace Tessarine {
class IWindow;

/** Hears that a window was closed. */
class ICloseWindowNotification : public FUnknown {
public:
    virtual void windowClosed(IWindow* window) = 0;

    DECLARE_INTERFACE(ICloseWindowNotification)
};

}  // namespace Tessarine
