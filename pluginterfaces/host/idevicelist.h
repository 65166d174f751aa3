#pragma once
#include "pluginterfaces/base/funknown.h"

namespace Tessarine {
class IPlugDevice;

/** The host's devices. */
class IDeviceList : public FUnknown {
public:
    virtual int32_t countDevices() = 0;
    /** Borrowed; null when the index is out of range. Its category text is the device's, or the name of its class when
        the device has none; queryInterface goes to the device. */
    virtual IPlugDevice* getDevice(int32_t index) = 0;

    DECLARE_INTERFACE(IDeviceList)
};

/** The list as the maker of devices. The host owns what it made and keeps it until removeDevice. */
class IDeviceList2 : public IDeviceList {
public:
    /** Makes a device of the class with this identifier (16 bytes) and adds it; null when no module has the class.
        Borrowed. */
    virtual IPlugDevice* createDevice(const char* cid, const char* name, FUnknown* context) = 0;
    /** Any face of the device will do. kResultFalse: not in the list. */
    virtual int32_t removeDevice(FUnknown* device) = 0;

    DECLARE_INTERFACE(IDeviceList2)
};

}  // namespace Tessarine
