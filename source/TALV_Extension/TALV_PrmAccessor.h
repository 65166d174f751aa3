#pragma once
#include "pluginterfaces/base/smartpointer.h"
#include "pluginterfaces/gui/ivalue.h"
#include "pluginterfaces/host/iplugdevice.h"
#include "pluginterfaces/host/italvprmaccessor.h"
#include "public.sdk/source/main/export.h"

namespace TALV {
class TALV_DataManager;

/** The device by which a host reaches the hardware's parameters. It holds none itself: it hands out what the data
    manager has, and nothing without one. It offers no panel.

    Owns      its port notice value; the data manager is borrowed.
    Faces     the first base answers ITALV_PrmAccessor, the second one FUnknown and IPlugDevice.
    Threads   the main thread, except addRef and release. */
class TALV_EXPORT TALV_PrmAccessor : public ITALV_PrmAccessor, public Tessarine::IPlugDevice {
public:
    /** One reference, for the caller. */
    static Tessarine::FUnknown* newInstance(void* context);

    TALV_PrmAccessor() = default;
    TALV_PrmAccessor(const TALV_PrmAccessor&) = delete;
    TALV_PrmAccessor& operator=(const TALV_PrmAccessor&) = delete;
    virtual ~TALV_PrmAccessor() = default;

    int32_t queryInterface(const char* iid, void** obj) override;
    uint32_t addRef() override;
    uint32_t release() override;

    // ITALV_PrmAccessor
    Tessarine::IValue* getIValue(unsigned char devId, TALV_ParamId paramId) override;
    bool isReady() const override { return ready; }
    Tessarine::IValue* getIsPortUpdated() const override { return portUpdatedValue; }
    int32_t totalDevices() const override;
    void setConnectionPrm(int32_t devId, int32_t channel) override;
    int32_t getConnectionPrm(int32_t channel) override;
    Tessarine::IValue* getIsConnectionUpdated() const override;

    // IPlugDevice
    const char* getDeviceCategory() override { return nullptr; }
    void reset() override {}
    void loadDefaults(const char* /*name*/) override {}
    void storeDefaults(const char* /*name*/) override {}
    int32_t createSetupView(Tessarine::IDependent* /*dependent*/, Tessarine::FUnknown** /*view*/) override {
        return Tessarine::kResultFalse;
    }
    int32_t getClassIcon(Tessarine::FUnknown** /*icon*/) override { return Tessarine::kResultFalse; }
    int32_t providesPanel() override { return Tessarine::kResultFalse; }
    Tessarine::IWindow* createPanel() override { return nullptr; }
    int32_t suspend(bool /*state*/) override { return Tessarine::kResultFalse; }
    int32_t resume(bool /*state*/) override { return Tessarine::kResultFalse; }

    // for the manager
    /** Makes the port notice value. */
    void initialize(TALV_DataManager* manager, Tessarine::IHostClasses* hostClasses);
    /** The data manager goes away. */
    void forgetDataManager() { dataManager = nullptr; }
    void setReady(bool state) { ready = state; }

private:
    int32_t refCount = 1;
    TALV_DataManager* dataManager = nullptr;  // borrowed
    bool ready = false;
    Tessarine::OPtr<Tessarine::IValue> portUpdatedValue;
};

}  // namespace TALV
