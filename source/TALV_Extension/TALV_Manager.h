#pragma once
#include "base/source/cmobject.h"
#include "pluginterfaces/base/ipluginbase.h"
#include "pluginterfaces/base/smartpointer.h"
#include "pluginterfaces/host/ihostclasses.h"
#include "public.sdk/source/main/export.h"
#include "source/TALV_Extension/TALV_DataManager.h"
#include "source/TALV_Extension/TALV_MessageFactory.h"

namespace Tessarine {
class IDeviceList2;
class IPlugDevice;
class UTimer;
}  // namespace Tessarine

namespace TALV {
class TALV_COMPort;
class TALV_PrmAccessor;
class TALV_Setup;

/** The extension's service. It builds everything else, owns the port, finds the devices on the line, keeps the values in
    step with the hardware both ways, and follows when another port is chosen.

    Life      one in a module. A host that lives on can't end it: terminate refuses until the host is quitting.
    Out       a value changes → one frame, written at once, on the same thread. Nothing waits for an answer.
    In        each tick of readTimer takes one message off the line and writes it into its value, which this object
              doesn't depend on for that moment: reports aren't echoed. Only a new device mode goes back to the device.
    Search    a broadcast when the port opens and three more, a second apart, until a device answers; ready 1.1 seconds
              after the last broadcast or answer.
    Threads   main. */
class TALV_EXPORT TALV_Manager : public Tessarine::IPluginBase, public Tessarine::CmObject {
public:
    /** The one manager, made at the first call. No reference is added for one that is there already. */
    static Tessarine::FUnknown* newInstance(void* context);
    static TALV_Manager* mp_talv;

    TALV_Manager();
    TALV_Manager(const TALV_Manager&) = delete;
    TALV_Manager& operator=(const TALV_Manager&) = delete;

    // the first base
    int32_t queryInterface(const char* iid, void** obj) override;
    uint32_t addRef() override;
    uint32_t release() override;
    /** kResultFalse: start-up failed, and there is no port. */
    int32_t initialize(Tessarine::FUnknown* context) override;
    /** kResultFalse: the host isn't quitting, and everything goes on. */
    int32_t terminate() override;
    ~TALV_Manager() override;

    using CmObject::update;
    void update(Tessarine::FUnknown* changed, int32_t message) override;
    int32_t notify(Tessarine::FMessage* message) override;

    // sending; what the port answers isn't looked at
    void sendDeviceId();
    /** What the port answers; kResultFalse without a port. */
    int32_t sendRequestMessage(unsigned char devId, MessageType type);
    void sendDeviceMode(unsigned char devId, int32_t mode) const;
    void sendGain(const PrmInfo& info, int32_t value) const;
    void sendPlus48V(const PrmInfo& info, int32_t value) const;
    void sendHPF(const PrmInfo& info, int32_t value) const;
    void sendTrim(const PrmInfo& info, int32_t value) const;
    /** value is the index of the frequency and 4. */
    void sendHPFFreq(const PrmInfo& info, int32_t value) const;
    void sendWordClock(const PrmInfo& info, int32_t value) const;
    void sendPanelLock(const PrmInfo& info, int32_t value) const;
    void sendBrightness(const PrmInfo& info, int32_t value) const;

    // receiving
    void devIdReceived(const MessagePrm& prm);
    void devModeDevNameReceived(const MessagePrm& prm);
    void wordClockReceived(const MessagePrm& prm);
    void gainReceived(const MessagePrm& prm);
    void plus48VReceived(const MessagePrm& prm);
    void hpfReceived(const MessagePrm& prm);
    void trimReceived(const MessagePrm& prm);
    void panelLockReceived(const MessagePrm& prm);
    void brightnessReceived(const MessagePrm& prm);
    void plus48VMasterReceived(const MessagePrm& prm);
    void hpfFreqReceived(const MessagePrm& prm);

    /** Takes what the port has, and handles one message. */
    void readTALVMessage();
    /** Sends the value's parameter; kResultFalse: it is none, or one without a way to the hardware. */
    int32_t updateHeadAmpParam(Tessarine::IValue* value);
    /** Not ready from now on; the change of port itself is posted. */
    void updateCOMPort();

private:
    struct ValueReport;

    void loadSetup();
    void openFirstPort();
    void createDevices(Tessarine::IDeviceList2* devices);
    void removeDevice(Tessarine::IDeviceList2* devices, Tessarine::IPlugDevice*& device, const char* classId);
    bool hostLivesOn() const;
    void forgetDataManager();
    void tearDown();

    void onReadyTimer();
    void onDevIdTimer();
    void changePort();
    TALV_PrmAccessor* queryAccessor() const;

    int32_t send(const MessagePrm& prm) const;
    void sendChannel(MessageType type, uint8_t (MessagePrm::*bytes)[8], uint8_t MessagePrm::*start,
                     uint8_t MessagePrm::*count, const PrmInfo& info, int32_t firstId, int32_t byte) const;
    Tessarine::IValue* valueOf(unsigned char devId, int32_t paramId) const;
    void writeReport(unsigned char devId, int32_t paramId, int32_t value);

    int32_t refCount = 1;
    Tessarine::IHostClasses* hostClasses = nullptr;  // the reference of its query is kept
    Tessarine::IPtr<Tessarine::IUpdateHandler> updateHandler;
    TALV_COMPort* comPort = nullptr;                      // owned
    TALV_DataManager* dataManager = nullptr;              // owned
    Tessarine::IPlugDevice* prmAccessorDevice = nullptr;  // the host's
    Tessarine::UTimer* readTimer = nullptr;               // this and the next two go with the timers of the module
    Tessarine::UTimer* devIdTimer = nullptr;
    Tessarine::UTimer* readyTimer = nullptr;
    Tessarine::IPlugDevice* setupDevice = nullptr;  // the host's
    int32_t devIdRetryCount = 0;                    // broadcasts of devIdTimer since an answer or the last of them
    int32_t isPortChanging = 0;                     // a change of port awaits its completion notice
    TALV_Setup* setup = nullptr;                    // owned
};

}  // namespace TALV
