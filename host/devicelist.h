#pragma once
#include "base/source/fobject.h"
#include "pluginterfaces/base/ipluginbase.h"
#include "pluginterfaces/base/smartpointer.h"
#include "pluginterfaces/host/idevicelist.h"
#include "pluginterfaces/host/iplugdevice.h"
#include <string>
#include <vector>

/** The host's devices, made on request from the classes of a module.

    Owns      one reference of each device until removeDevice or clear.
    Threads   main. */
class DeviceList : public Tessarine::FObject, public Tessarine::IDeviceList2 {
public:
    DeviceList();
    ~DeviceList() override;
    FORWARD_REFCOUNT(FObject)
    int32_t queryInterface(const char* iid, void** obj) override;

    /** Where classes come from; null when the module goes. Borrowed. */
    void setFactory(Tessarine::IPluginFactory* source) { factory = source; }
    void clear();

    int32_t countDevices() override { return int32_t(entries.size()); }
    Tessarine::IPlugDevice* getDevice(int32_t index) override;
    Tessarine::IPlugDevice* createDevice(const char* cid, const char* name, Tessarine::FUnknown* context) override;
    int32_t removeDevice(Tessarine::FUnknown* device) override;

private:
    class Entry;

    Tessarine::IPluginFactory* factory = nullptr;
    std::vector<Tessarine::OPtr<Entry>> entries;
};
