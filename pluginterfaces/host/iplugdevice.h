#pragma once
#include "pluginterfaces/base/funknown.h"

namespace Tessarine {
class IDependent;
class IWindow;

/** The host's view of a device. Results: kResultOk is yes, kResultFalse is no. */
class IPlugDevice : public FUnknown {
public:
    /** A text by which devices are found, or null. */
    virtual const char* getDeviceCategory() = 0;
    virtual void reset() = 0;
    virtual void loadDefaults(const char* name) = 0;
    virtual void storeDefaults(const char* name) = 0;
    virtual int32_t createSetupView(IDependent* dependent, FUnknown** view) = 0;
    virtual int32_t getClassIcon(FUnknown** icon) = 0;
    virtual int32_t providesPanel() = 0;
    /** Opens the device's window, or brings it to the front. Borrowed, null when there is none. */
    virtual IWindow* createPanel() = 0;
    virtual int32_t suspend(bool state) = 0;
    virtual int32_t resume(bool state) = 0;

    DECLARE_INTERFACE(IPlugDevice)
};

}  // namespace Tessarine
