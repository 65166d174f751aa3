#include "source/TALV_Extension/TALV_Manager.h"
#include "base/fmessage.h"
#include "base/utimer.h"
#include "pluginglue/uplugapp.h"
#include "pluginterfaces/gui/iplatform.h"
#include "pluginterfaces/gui/ivalue.h"
#include "pluginterfaces/host/idevicelist.h"
#include "pluginterfaces/host/iplugdevice.h"
#include "public.sdk/source/main/pluginfactory.h"
#include "source/TALV_Extension/COM Port/TALV_COMPortMac.h"
#include "source/TALV_Extension/HardwareSetup/MainWindowManager.h"
#include "source/TALV_Extension/TALV_PrmAccessor.h"
#include "source/TALV_Extension/TALV_Setup.h"
#include <algorithm>
#include <iterator>

using namespace Tessarine;

namespace TALV {
namespace {
constexpr uint32_t k_readPeriod = 50;     // one message a tick: this paces all that comes in
constexpr uint32_t k_devIdPeriod = 1000;  // between two broadcasts
constexpr uint32_t k_readyPeriod = 1100;  // without another answer: the search is over
constexpr int32_t k_maxRetries = 2;       // the firing beyond it is the last
constexpr int32_t k_readBufferSize = 1024;
constexpr int32_t k_sendBufferSize = 1024;

constexpr int32_t k_workingMode = 3;  // what every device found is put in
constexpr int32_t k_maxGain = 72;     // the wire counts down from here
constexpr int32_t k_trimCentre = 15;
constexpr int32_t k_firstFreqByte = 4;

constexpr const char* k_updatePortMessage = "Update COMPort Message";
constexpr const char* k_refreshPortMessage = "Refresh COMPort Message";

constinit const FUID k_managerClassId(0x00630BF2, 0x4FF049CF, 0xBF01F480, 0x3210AB96);

/** What a new device is asked for, in this order, once its mode and name are known. */
constexpr MessageType k_requests[] = {
    kMessageReqWordClock, kMessageReqGain,       kMessageReqPlus48V,       kMessageReqHPF,     kMessageReqGainTrim,
    kMessageReqPanelLock, kMessageReqBrightness, kMessageReqPlus48VMaster, kMessageReqHPFFreq,
};

/** Parameters that have a way to the hardware, each run of numbers with its sender. */
struct SendRow {
    int32_t firstId, count;
    void (*send)(const TALV_Manager& manager, const PrmInfo& info, int32_t value);
};

template <void (TALV_Manager::*Send)(const PrmInfo&, int32_t) const, int32_t Offset = 0>
void sendBy(const TALV_Manager& manager, const PrmInfo& info, int32_t value) {
    (manager.*Send)(info, value + Offset);
}

void sendMode(const TALV_Manager& manager, const PrmInfo& info, int32_t value) {
    manager.sendDeviceMode(info.devId, value);
}

constexpr auto sendFreq = sendBy<&TALV_Manager::sendHPFFreq, k_firstFreqByte>;

constexpr SendRow k_senders[] = {
    {kPrmDevMode,    1,            sendMode                             },
    {kPrmWordClock,  1,            sendBy<&TALV_Manager::sendWordClock> },
    {kPrmGain,       kNumChannels, sendBy<&TALV_Manager::sendGain>      },
    {kPrmPlus48V,    kNumChannels, sendBy<&TALV_Manager::sendPlus48V>   },
    {kPrmHPF,        kNumChannels, sendBy<&TALV_Manager::sendHPF>       },
    {kPrmGainTrim,   kNumChannels, sendBy<&TALV_Manager::sendTrim>      },
    {kPrmPanelLock,  1,            sendBy<&TALV_Manager::sendPanelLock> },
    {kPrmBrightness, 1,            sendBy<&TALV_Manager::sendBrightness>},
    {kPrmHPFFreq,    kNumChannels, sendFreq                             },
};

struct ReceiveRow {
    MessageType type;
    void (TALV_Manager::*handle)(const MessagePrm& prm);
};
constexpr ReceiveRow k_receivers[] = {
    {kMessageDevId,             &TALV_Manager::devIdReceived         },
    {kMessageReqDevModeDevName, &TALV_Manager::devModeDevNameReceived},
    {kMessageReqWordClock,      &TALV_Manager::wordClockReceived     },
    {kMessageReqGain,           &TALV_Manager::gainReceived          },
    {kMessageReqPlus48V,        &TALV_Manager::plus48VReceived       },
    {kMessageReqHPF,            &TALV_Manager::hpfReceived           },
    {kMessageReqGainTrim,       &TALV_Manager::trimReceived          },
    {kMessageReqPanelLock,      &TALV_Manager::panelLockReceived     },
    {kMessageReqBrightness,     &TALV_Manager::brightnessReceived    },
    {kMessageReqPlus48VMaster,  &TALV_Manager::plus48VMasterReceived },
    {kMessageReqHPFFreq,        &TALV_Manager::hpfFreqReceived       },
};

void toggle(IValue* value) {
    if (value)
        value->setValue2(!value->getValueInt(), true);
}

/** A channel index of a parameter in the run that begins with firstId. */
int32_t channelOf(const PrmInfo& info, int32_t firstId) {
    return std::clamp(info.paramId - firstId, 0, kNumChannels - 1);
}
}  // namespace

TALV_Manager* TALV_Manager::mp_talv = nullptr;

FUnknown* TALV_Manager::newInstance(void* /*context*/) {
    if (!mp_talv)
        mp_talv = new TALV_Manager;
    return static_cast<IPluginBase*>(mp_talv);
}

TALV_Manager::TALV_Manager() = default;

TALV_Manager::~TALV_Manager() {
    if (dataManager)  // it wasn't ended, and nobody can any more
        tearDown();
    FInstancePtr<IDeviceList2> devices(hostClasses);
    if (devices) {
        removeDevice(devices, prmAccessorDevice, ITALV_PrmAccessor::iid);
        removeDevice(devices, setupDevice, TALV_HWSetup::MainWindowManager::k_classId);
    }
    mp_talv = nullptr;
    gMessenger->killMessages(static_cast<CmObject*>(this));
    if (setup)
        setup->release();
}

/** The device goes by the face of its class. */
void TALV_Manager::removeDevice(IDeviceList2* devices, IPlugDevice*& device, const char* classId) {
    if (!device)
        return;
    void* face = nullptr;
    if (device->queryInterface(classId, &face) == kResultOk) {
        FUnknown* object = static_cast<FUnknown*>(face);
        devices->removeDevice(object);
        object->release();
    }
    device = nullptr;
}

int32_t TALV_Manager::queryInterface(const char* iid, void** obj) {
    if (FUID::same(iid, FObject::iid)) {
        addRef();
        *obj = static_cast<FObject*>(this);
        return kResultOk;
    }
    IPluginBase* first = this;
    return answerInterface<FUnknown>(first, iid, obj) || answerInterface<IPluginBase>(first, iid, obj)
               ? kResultOk
               : noInterface(obj);
}

uint32_t TALV_Manager::addRef() {
    return uint32_t(atomicAdd(refCount, 1));
}

uint32_t TALV_Manager::release() {
    const int32_t left = atomicAdd(refCount, -1);
    if (left == 0)
        delete this;
    return uint32_t(left);
}

int32_t TALV_Manager::initialize(FUnknown* context) {
    void* host = nullptr;
    if (context && context->queryInterface(IHostClasses::iid, &host) == kResultOk)
        hostClasses = static_cast<IHostClasses*>(host);
    updateHandler = FInstancePtr<IUpdateHandler>(hostClasses);
    dataManager = new TALV_DataManager(hostClasses, static_cast<CmObject*>(this));
    dataManager->intialize();
    if (updateHandler && dataManager->comPortValue)
        updateHandler->addDependent(dataManager->comPortValue, static_cast<CmObject*>(this));
    if (!gApplication && !(new UPluginApplication("VOREN TALV Extension"))->initPlugin())
        return kResultFalse;
    loadSetup();
    openFirstPort();
    FInstancePtr<IDeviceList2> devices(hostClasses);
    if (devices)
        createDevices(devices);
    readTimer = new UTimer(this, 0, k_readPeriod);
    readyTimer = new UTimer(this, 0, k_readyPeriod);
    return kResultOk;
}

/** Before there is a port, so that it opens the stored one. */
void TALV_Manager::loadSetup() {
    setup = new TALV_Setup(dataManager);
    setup->load();
}

void TALV_Manager::openFirstPort() {
    devIdTimer = new UTimer(this, 0, k_devIdPeriod);
    devIdTimer->stop();
    comPort = new TALV_COMPortMac(hostClasses, dataManager);
    comPort->initialize();
    if (comPort->openPort() != kResultOk)
        return;
    sendDeviceId();
    devIdTimer->restart(0);
}

void TALV_Manager::createDevices(IDeviceList2* devices) {
    prmAccessorDevice = devices->createDevice(ITALV_PrmAccessor::iid, nullptr, nullptr);
    if (TALV_PrmAccessor* accessor = queryAccessor()) {
        accessor->initialize(dataManager, hostClasses);
        accessor->release();
    }
    setupDevice = devices->createDevice(TALV_HWSetup::MainWindowManager::k_classId, nullptr, nullptr);
    if (auto* window = TALV_HWSetup::MainWindowManager::query(setupDevice)) {
        window->initialize(hostClasses, dataManager, static_cast<CmObject*>(this));
        window->release();
    }
}

bool TALV_Manager::hostLivesOn() const {
    FInstancePtr<IPlatform2> platform(hostClasses);
    return platform && !platform->isDone();
}

int32_t TALV_Manager::terminate() {
    if (hostLivesOn())
        return kResultFalse;
    tearDown();
    return kResultOk;
}

/** Twice does no harm. */
void TALV_Manager::tearDown() {
    if (comPort) {
        comPort->closePort();
        delete comPort;
        comPort = nullptr;
    }
    if (setup && dataManager)
        setup->save();
    forgetDataManager();
    for (UTimer* timer : {readTimer, readyTimer})
        if (timer)
            timer->stop();
    delete gApplication;
    gApplication = nullptr;
}

/** The devices live on with the host, and must not look at it any more. */
void TALV_Manager::forgetDataManager() {
    if (!dataManager)
        return;
    if (TALV_PrmAccessor* accessor = queryAccessor()) {
        accessor->forgetDataManager();
        accessor->release();
    }
    if (auto* window = TALV_HWSetup::MainWindowManager::query(setupDevice)) {
        window->initialize(hostClasses, nullptr, nullptr);
        window->release();
    }
    if (setup)
        setup->forgetDataManager();
    if (updateHandler && dataManager->comPortValue)
        updateHandler->removeDependent(dataManager->comPortValue, static_cast<CmObject*>(this));
    dataManager->removeAllCOMPort();
    delete dataManager;
    dataManager = nullptr;
}

// --- sending

int32_t TALV_Manager::send(const MessagePrm& prm) const {
    unsigned char buffer[k_sendBufferSize] = {};
    const int32_t length = TALV_MessageFactory::createMessage(prm, buffer, k_sendBufferSize);
    return comPort ? comPort->sendMessage(buffer, length) : int32_t(kResultFalse);
}

void TALV_Manager::sendDeviceId() {
    MessagePrm prm = {};
    prm.type = kMessageDevId;
    send(prm);
}

int32_t TALV_Manager::sendRequestMessage(unsigned char devId, MessageType type) {
    MessagePrm prm = {};
    prm.type = type;
    prm.devId = devId;
    prm.gainCount = prm.plus48VCount = prm.hpfCount = prm.gainTrimCount = prm.hpfFreqCount = kNumChannels;
    return send(prm);
}

void TALV_Manager::sendDeviceMode(unsigned char devId, int32_t mode) const {
    MessagePrm prm = {};
    prm.type = kMessageDevMode;
    prm.devId = devId;
    prm.devMode = mode;
    send(prm);
}

void TALV_Manager::sendChannel(MessageType type, uint8_t (MessagePrm::*bytes)[8], uint8_t MessagePrm::*start,
                               uint8_t MessagePrm::*count, const PrmInfo& info, int32_t firstId, int32_t byte) const {
    const int32_t channel = channelOf(info, firstId);
    MessagePrm prm = {};
    prm.type = type;
    prm.devId = info.devId;
    (prm.*bytes)[channel] = uint8_t(byte);
    prm.*start = uint8_t(channel);
    prm.*count = 1;
    send(prm);
}

void TALV_Manager::sendGain(const PrmInfo& info, int32_t value) const {
    sendChannel(kMessageGain, &MessagePrm::gain, &MessagePrm::gainStart, &MessagePrm::gainCount, info, kPrmGain,
                k_maxGain - value);
}

void TALV_Manager::sendPlus48V(const PrmInfo& info, int32_t value) const {
    sendChannel(kMessagePlus48V, &MessagePrm::plus48V, &MessagePrm::plus48VStart, &MessagePrm::plus48VCount, info,
                kPrmPlus48V, value);
}

void TALV_Manager::sendHPF(const PrmInfo& info, int32_t value) const {
    sendChannel(kMessageHPF, &MessagePrm::hpf, &MessagePrm::hpfStart, &MessagePrm::hpfCount, info, kPrmHPF, value);
}

void TALV_Manager::sendTrim(const PrmInfo& info, int32_t value) const {
    sendChannel(kMessageGainTrim, &MessagePrm::gainTrim, &MessagePrm::gainTrimStart, &MessagePrm::gainTrimCount, info,
                kPrmGainTrim, value - k_trimCentre);
}

void TALV_Manager::sendHPFFreq(const PrmInfo& info, int32_t value) const {
    sendChannel(kMessageHPFFreq, &MessagePrm::hpfFreq, &MessagePrm::hpfFreqStart, &MessagePrm::hpfFreqCount, info,
                kPrmHPFFreq, value);
}

void TALV_Manager::sendWordClock(const PrmInfo& info, int32_t value) const {
    MessagePrm prm = {};
    prm.type = kMessageWordClock;
    prm.devId = info.devId;
    prm.wordClock = value;
    send(prm);
}

void TALV_Manager::sendPanelLock(const PrmInfo& info, int32_t value) const {
    MessagePrm prm = {};
    prm.type = kMessagePanelLock;
    prm.devId = info.devId;
    prm.panelLock = uint8_t(value);
    send(prm);
}

void TALV_Manager::sendBrightness(const PrmInfo& info, int32_t value) const {
    MessagePrm prm = {};
    prm.type = kMessageBrightness;
    prm.devId = info.devId;
    prm.brightness = uint8_t(value);
    send(prm);
}

// --- a value has changed

void TALV_Manager::update(FUnknown* changed, int32_t message) {
    const FUnknownPtr<IValue> query(changed);
    IValue* value = query;
    if (!value || message != kChanged)
        return;
    if (dataManager && value == dataManager->comPortValue)
        updateCOMPort();
    else
        updateHeadAmpParam(value);
}

int32_t TALV_Manager::updateHeadAmpParam(IValue* value) {
    if (!value || !dataManager)
        return kResultFalse;
    const PrmInfo info = dataManager->getParamInfo(value);
    if (info.devId == 0 || info.paramId == kPrmNone)
        return kResultFalse;
    const auto row = std::ranges::find_if(k_senders, [&info](const SendRow& each) {
        return info.paramId >= each.firstId && info.paramId < each.firstId + each.count;
    });
    if (row == std::end(k_senders))
        return kResultFalse;
    row->send(*this, info, value->getValueInt());
    return kResultOk;
}

void TALV_Manager::updateCOMPort() {
    if (!comPort)
        return;
    // The accessor's reference stays with it: a notice may be on its way to someone who outlives the device list.
    if (TALV_PrmAccessor* accessor = queryAccessor()) {
        if (readyTimer)
            readyTimer->stop();
        accessor->setReady(false);
        toggle(accessor->getIsPortUpdated());
    }
    gMessenger->postMessage(static_cast<CmObject*>(this), new FMessage(k_updatePortMessage), false, 0);
}

// --- timers and messages

int32_t TALV_Manager::notify(FMessage* message) {
    if (!message)
        return CmObject::notify(message);
    if (message->isType("Timer")) {
        const CmObject* sender = message->get("Timer");
        if (sender && sender == readTimer)
            readTALVMessage();
        else if (sender && sender == readyTimer)
            onReadyTimer();
        else if (sender && sender == devIdTimer)
            onDevIdTimer();
    } else if (message->isType(k_updatePortMessage))
        changePort();
    else if (message->isType(k_refreshPortMessage))
        updateCOMPort();
    else
        return CmObject::notify(message);
    return 1;
}

/** The search is over; a change of port that it belonged to is, too. */
void TALV_Manager::onReadyTimer() {
    if (TALV_PrmAccessor* accessor = queryAccessor()) {
        accessor->setReady(true);
        if (isPortChanging) {
            isPortChanging = 0;
            toggle(accessor->getIsPortUpdated());
        }
    }
    readyTimer->stop();
}

void TALV_Manager::onDevIdTimer() {
    sendDeviceId();
    if (readyTimer)
        readyTimer->restart(0);
    if (++devIdRetryCount > k_maxRetries) {
        devIdTimer->stop();
        devIdRetryCount = 0;
    }
}

void TALV_Manager::changePort() {
    if (comPort) {
        comPort->closePort();
        comPort->updateCOMInfo();
    }
    if (dataManager)
        dataManager->removeAllParams();
    if (comPort && comPort->openPort() == kResultOk) {
        TALV_MessageFactory::clearMessageContainer();
        sendDeviceId();
        devIdTimer->restart(0);
        isPortChanging = 1;
    }
    if (readyTimer)
        readyTimer->restart(0);
}

/** With one reference; null when the host has no such device. */
TALV_PrmAccessor* TALV_Manager::queryAccessor() const {
    void* face = nullptr;
    if (!prmAccessorDevice || prmAccessorDevice->queryInterface(ITALV_PrmAccessor::iid, &face) != kResultOk)
        return nullptr;
    return static_cast<TALV_PrmAccessor*>(static_cast<ITALV_PrmAccessor*>(face));
}

// --- receiving

void TALV_Manager::readTALVMessage() {
    if (!comPort)
        return;
    unsigned char buffer[k_readBufferSize] = {};
    const int32_t count = comPort->readData(buffer, k_readBufferSize);
    MessagePrm prm = {};
    TALV_MessageFactory::parseMessage(buffer, count, prm);
    const auto row = std::ranges::find(k_receivers, prm.type, &ReceiveRow::type);
    if (row != std::end(k_receivers))
        (this->*row->handle)(prm);
}

void TALV_Manager::devIdReceived(const MessagePrm& prm) {
    if (devIdTimer) {
        devIdRetryCount = 0;
        devIdTimer->stop();
        if (readyTimer)
            readyTimer->restart(0);
    }
    if (dataManager)
        dataManager->addDevice(prm.devId);
    sendDeviceMode(prm.devId, k_workingMode);
    sendRequestMessage(prm.devId, kMessageReqDevModeDevName);
}

void TALV_Manager::devModeDevNameReceived(const MessagePrm& prm) {
    if (const IPtr<IValue> mode = valueOf(prm.devId, kPrmDevMode); mode)
        mode->setValue2(prm.devMode, true);
    if (const IPtr<IValue> name = valueOf(prm.devId, kPrmDevName); name)
        name->fromString2(String(prm.devName, sizeof(prm.devName)).text16(), true);
    for (const MessageType request : k_requests)
        sendRequestMessage(prm.devId, request);
}

IValue* TALV_Manager::valueOf(unsigned char devId, int32_t paramId) const {
    return dataManager ? dataManager->getParamIValue({devId, TALV_ParamId(paramId)}) : nullptr;
}

/** This object off the value while a report goes into it, or the report would come back to the device as a setting. Who
    hears of the report may drop the device: its values aren't depended on again. */
struct TALV_Manager::ValueReport {
    ValueReport(TALV_Manager& manager, unsigned char devId, int32_t paramId)
        : manager(manager), devId(devId), paramId(paramId),
          value(manager.updateHandler ? manager.valueOf(devId, paramId) : nullptr) {
        if (value)
            manager.updateHandler->removeDependent(value, static_cast<CmObject*>(&manager));
    }
    ~ValueReport() {
        if (value && manager.valueOf(devId, paramId) == value)
            manager.updateHandler->addDependent(value, static_cast<CmObject*>(&manager));
    }
    ValueReport(const ValueReport&) = delete;
    ValueReport& operator=(const ValueReport&) = delete;

    void write(int32_t systemValue) {
        if (value)
            value->setValue2(systemValue, true);
    }

    TALV_Manager& manager;
    const unsigned char devId;
    const int32_t paramId;
    const IPtr<IValue> value;
};

void TALV_Manager::writeReport(unsigned char devId, int32_t paramId, int32_t value) {
    ValueReport(*this, devId, paramId).write(value);
}

void TALV_Manager::wordClockReceived(const MessagePrm& prm) {
    writeReport(prm.devId, kPrmWordClock, prm.wordClock);
}

void TALV_Manager::gainReceived(const MessagePrm& prm) {
    for (int32_t i = prm.gainStart; i < prm.gainStart + prm.gainCount; ++i) {
        IPtr<IValue> value;
        {
            ValueReport report(*this, prm.devId, kPrmGain + i);
            report.write(k_maxGain - prm.gain[i]);
            value = report.value;
            if (value)
                value->enableUpdates(false);
        }
        if (value)
            value->enableUpdates(true);
    }
}

void TALV_Manager::plus48VReceived(const MessagePrm& prm) {
    for (int32_t i = prm.plus48VStart; i < prm.plus48VStart + prm.plus48VCount; ++i)
        writeReport(prm.devId, kPrmPlus48V + i, prm.plus48V[i]);
}

void TALV_Manager::hpfReceived(const MessagePrm& prm) {
    for (int32_t i = prm.hpfStart; i < prm.hpfStart + prm.hpfCount; ++i)
        writeReport(prm.devId, kPrmHPF + i, prm.hpf[i]);
}

void TALV_Manager::trimReceived(const MessagePrm& prm) {
    for (int32_t i = prm.gainTrimStart; i < prm.gainTrimStart + prm.gainTrimCount; ++i)
        writeReport(prm.devId, kPrmGainTrim + i, int8_t(prm.gainTrim[i] + k_trimCentre));
}

void TALV_Manager::panelLockReceived(const MessagePrm& prm) {
    writeReport(prm.devId, kPrmPanelLock, prm.panelLock);
}

void TALV_Manager::brightnessReceived(const MessagePrm& prm) {
    writeReport(prm.devId, kPrmBrightness, prm.brightness);
}

void TALV_Manager::plus48VMasterReceived(const MessagePrm& prm) {
    writeReport(prm.devId, kPrmPlus48VMaster, prm.plus48VMaster);
}

void TALV_Manager::hpfFreqReceived(const MessagePrm& prm) {
    for (int32_t i = prm.hpfFreqStart; i < prm.hpfFreqStart + prm.hpfFreqCount; ++i)
        writeReport(prm.devId, kPrmHPFFreq + i, prm.hpfFreq[i] - k_firstFreqByte);
}

}  // namespace TALV

/** The module's classes: the service that the host starts, and the two that the service asks the host for. */
extern "C" Tessarine::IPluginFactory* GetPluginFactory() {
    if (gPluginFactory) {
        gPluginFactory->addRef();
        return gPluginFactory;
    }
    static const PFactoryInfo factoryInfo("Orsola Corporation", nullptr, nullptr, 0);
    static const PClassInfo2 service(TALV::k_managerClassId, 1, "Service", "Orsola VOREN TALV Extension", 0, "",
                                     nullptr, "1.0.0", nullptr);
    static const PClassInfo accessor(TALV::ITALV_PrmAccessor::iid, 1, "Private", "TALV Param Accessor");
    static const PClassInfo window(TALV_HWSetup::MainWindowManager::k_classId, 1, "Private", "VOREN HA Remote Setup");
    gPluginFactory = new CPluginFactory(factoryInfo);
    gPluginFactory->registerClass(&service, TALV::TALV_Manager::newInstance);
    gPluginFactory->registerClass(&accessor, TALV::TALV_PrmAccessor::newInstance);
    gPluginFactory->registerClass(&window, TALV_HWSetup::MainWindowManager::newInstance);
    return gPluginFactory;
}
