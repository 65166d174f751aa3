#pragma once
#include "pluginterfaces/base/funknown.h"
#include "pluginterfaces/gui/iwindow.h"
#include "pluginterfaces/host/ihostclasses.h"
#include "pluginterfaces/host/iplugdevice.h"
#include "public.sdk/source/main/export.h"

namespace TALV {
class TALV_DataManager;
}
namespace Tessarine {
class CmObject;
}

namespace TALV_HWSetup {

/** The setup device: what the host asks for the panel. Its window needs the host's skin service; as long as there is
    none, there is no window.

    Life      counted, owned by the host's device list. Host, data manager and manager are borrowed.
    Threads   main. */
class TALV_EXPORT MainWindowManager : public Tessarine::IPlugDevice, public Tessarine::ICloseWindowNotification {
public:
    static const Tessarine::FUID k_classId;
    /** With one reference and every pointer null. */
    static Tessarine::FUnknown* newInstance(void* context);
    /** The manager behind a device, with a reference; null when it is another device, or null. */
    static MainWindowManager* query(Tessarine::IPlugDevice* device);

    /** dataManager and manager may be null: they are gone. */
    void initialize(Tessarine::IHostClasses* hostClasses, TALV::TALV_DataManager* dataManager,
                    Tessarine::CmObject* manager);
    /** Borrowed; null without a skin service. */
    Tessarine::IWindow* openWindow();

    int32_t queryInterface(const char* iid, void** obj) override;
    uint32_t addRef() override;
    uint32_t release() override;

    // IPlugDevice
    const char* getDeviceCategory() override { return nullptr; }
    void reset() override {}
    void loadDefaults(const char* /*name*/) override {}
    void storeDefaults(const char* /*name*/) override {}
    int32_t createSetupView(Tessarine::IDependent* dependent, Tessarine::FUnknown** view) override;
    int32_t getClassIcon(Tessarine::FUnknown** icon) override;
    int32_t providesPanel() override { return Tessarine::kResultOk; }
    Tessarine::IWindow* createPanel() override { return openWindow(); }
    int32_t suspend(bool /*state*/) override { return Tessarine::kResultFalse; }
    int32_t resume(bool /*state*/) override { return Tessarine::kResultFalse; }

    // ICloseWindowNotification
    void windowClosed(Tessarine::IWindow* closed) override;

    virtual ~MainWindowManager() = default;

private:
    int32_t refCount = 1;
    Tessarine::IHostClasses* hostClasses = nullptr;
    Tessarine::IWindow* window = nullptr;  // the open one
    TALV::TALV_DataManager* dataManager = nullptr;
    Tessarine::CmObject* manager = nullptr;
};

}  // namespace TALV_HWSetup
