#include "host/devicelist.h"
#include <algorithm>

using namespace Tessarine;

namespace {
/** What says that two faces are one object. */
FUnknown* identityOf(FUnknown* face) {
    const FUnknownPtr<FUnknown> identity(face);
    return identity;
}

std::string nameOfClass(IPluginFactory* factory, const char* cid) {
    PClassInfo info;
    for (int32_t i = 0; i < factory->countClasses(); ++i)
        if (factory->getClassInfo(i, &info) == kResultOk && FUID::same(info.cid, cid))
            return info.name;
    return "";
}
}  // namespace

/** A device with its name: it is found by the name of its class when it has no category of its own. All questions
    about faces go to the device. */
class DeviceList::Entry : public IPlugDevice {
public:
    /** Takes the device's reference over. */
    Entry(IPlugDevice* made, const std::string& className) : device(made), name(className) {}
    virtual ~Entry() = default;

    bool is(FUnknown* face) const { return identityOf(device) == identityOf(face); }

    int32_t queryInterface(const char* iid, void** obj) override { return device->queryInterface(iid, obj); }
    uint32_t addRef() override { return uint32_t(atomicAdd(refCount, 1)); }
    uint32_t release() override {
        const int32_t left = atomicAdd(refCount, -1);
        if (left == 0)
            delete this;
        return uint32_t(left);
    }
    const char* getDeviceCategory() override {
        const char* category = device->getDeviceCategory();
        return category ? category : name.c_str();
    }
    void reset() override { device->reset(); }
    void loadDefaults(const char* file) override { device->loadDefaults(file); }
    void storeDefaults(const char* file) override { device->storeDefaults(file); }
    int32_t createSetupView(IDependent* dependent, FUnknown** view) override {
        return device->createSetupView(dependent, view);
    }
    int32_t getClassIcon(FUnknown** icon) override { return device->getClassIcon(icon); }
    int32_t providesPanel() override { return device->providesPanel(); }
    IWindow* createPanel() override { return device->createPanel(); }
    int32_t suspend(bool state) override { return device->suspend(state); }
    int32_t resume(bool state) override { return device->resume(state); }

private:
    int32_t refCount = 1;
    OPtr<IPlugDevice> device;
    std::string name;
};

DeviceList::DeviceList() = default;
DeviceList::~DeviceList() = default;

void DeviceList::clear() {
    entries.clear();
}

int32_t DeviceList::queryInterface(const char* iid, void** obj) {
    const bool known = answerInterface<IDeviceList2>(this, iid, obj) || answerInterface<IDeviceList>(this, iid, obj);
    return known ? int32_t(kResultOk) : FObject::queryInterface(iid, obj);
}

IPlugDevice* DeviceList::getDevice(int32_t index) {
    return index >= 0 && index < countDevices() ? entries[size_t(index)].get() : nullptr;
}

IPlugDevice* DeviceList::createDevice(const char* cid, const char* name, FUnknown* /*context*/) {
    void* made = nullptr;
    if (!factory || !cid || factory->createInstance(cid, IPlugDevice::iid, &made) != kResultOk)
        return nullptr;
    auto* device = static_cast<IPlugDevice*>(made);
    entries.emplace_back(new Entry(device, name ? name : nameOfClass(factory, cid)));
    return device;
}

int32_t DeviceList::removeDevice(FUnknown* device) {
    const auto found = std::ranges::find_if(entries, [device](const OPtr<Entry>& each) { return each->is(device); });
    if (found == entries.end())
        return kResultFalse;
    const OPtr<Entry> kept = *found;  // to the end of the call
    entries.erase(found);
    return kResultOk;
}
