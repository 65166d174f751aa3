#include "source/TALV_Extension/TALV_DataManager.h"
#include <cstring>
#include <memory>

using namespace Tessarine;

namespace TALV {
namespace {
constexpr int32_t kMaxDevId = 255;

enum ValueKind : int32_t { kOnOffValue, kIntValue, kStringValue };
/** All values begin at 0. */
struct ParamRow {
    TALV_ParamId id;
    bool perChannel;
    ValueKind kind;
    int32_t max, defaultValue;  // of integers
};
constexpr ParamRow kParams[] = {
    {kPrmDevMode,       false, kIntValue,    3,   0 },
    {kPrmDevName,       false, kStringValue, 0,   0 },
    {kPrmWordClock,     false, kIntValue,    5,   0 },
    {kPrmMeterMode,     false, kOnOffValue,  1,   0 },
    {kPrmPanelLock,     false, kOnOffValue,  1,   0 },
    {kPrmBrightness,    false, kIntValue,    7,   5 },
    {kPrmPlus48VMaster, false, kOnOffValue,  1,   0 },
    {kPrmGain,          true,  kIntValue,    72,  72},
    {kPrmPlus48V,       true,  kOnOffValue,  1,   0 },
    {kPrmHPF,           true,  kOnOffValue,  1,   0 },
    {kPrmMeter,         true,  kIntValue,    127, 0 },
    {kPrmGainTrim,      true,  kIntValue,    30,  15},
    {kPrmHPFFreq,       true,  kIntValue,    59,  24},
};
}  // namespace

TALV_DataManager::TALV_DataManager(IHostClasses* hostClasses, IDependent* dependent)
    : hostClasses(hostClasses), devices(0, nullptr), dependent(dependent), updateHandler(hostClasses), comPorts(0, 10),
      connections(0, k_noItemForConnection) {}

TALV_DataManager::~TALV_DataManager() {
    removeAllParams();
}

void TALV_DataManager::intialize() {
    for (int32_t devId = 1; devId <= kMaxDevId; ++devId)
        connections.addKeyAndObject(devId, k_noItemForConnection);
    comPortValue = createValue(IHostStringValue_iid);
    isConnectionUpdated = createValue(IHostOnOffValue_iid);
    if (isConnectionUpdated)
        isConnectionUpdated->setTargetValue(0);
}

void TALV_DataManager::addDevice(unsigned char devId) {
    if (devices.lookupObject(devId))
        return;
    auto* dictionary = new ParamDictionary(kPrmNone, nullptr);
    addParams(dictionary, false, 0);
    for (int32_t channel = 0; channel < kNumChannels; ++channel)
        addParams(dictionary, true, channel);
    devices.addKeyAndObject(devId, dictionary);
}

void TALV_DataManager::addOnOffValue(ParamDictionary* dictionary, TALV_ParamId id, bool defaultValue) {
    if (!canAddTo(dictionary))
        return;
    IValue* value = createValue(IHostOnOffValue_iid);
    value->setValue2(defaultValue, false);
    addValue(dictionary, id, value);
}

void TALV_DataManager::addStringValue(ParamDictionary* dictionary, TALV_ParamId id, const char* text) {
    if (!canAddTo(dictionary) || !text)
        return;
    IValue* value = createValue(IHostStringValue_iid);
    value->fromString2(ConstStringTable::instance()->getString(text), false);
    addValue(dictionary, id, value);
}

void TALV_DataManager::addIntValue(ParamDictionary* dictionary, TALV_ParamId id, int32_t min, int32_t max,
                                   int32_t defaultValue) {
    if (!canAddTo(dictionary))
        return;
    IValue* value = createValue(IHostIntValue_iid);
    value->setMinValue(min);
    value->setMaxValue(max);
    if (const FUnknownPtr<IValue2> value2(value); value2)
        value2->setDefault(float(defaultValue));
    addValue(dictionary, id, value);
}

PrmInfo TALV_DataManager::getParamInfo(const IValue* value) const {
    PrmInfo info{0, kPrmNone};
    if (!value)
        return info;
    for (const auto& device : devices) {
        info.devId = device.key;
        for (const auto& param : *device.value)
            if (param.value == value && param.key != kPrmNone)
                return {device.key, param.key};
    }
    return info;
}

IValue* TALV_DataManager::getParamIValue(const PrmInfo& info) const {
    const ParamDictionary* dictionary = devices.lookupObject(info.devId);
    return dictionary ? dictionary->lookupObject(info.paramId).get() : nullptr;
}

void TALV_DataManager::removeAllParams() {
    for (const auto& device : devices) {
        for (const auto& param : *device.value)
            updateHandler->removeDependent(param.value, dependent);
        device.value->removeAll();  // whoever hears of a value's end may look for others
    }
    for (const auto& device : devices)
        delete device.value;
    devices.removeAll();
}

void TALV_DataManager::addCOMPort(const char* name, int32_t length) {
    auto* copy = new char[size_t(length) + 1]();
    std::memcpy(copy, name, size_t(length));
    comPorts.add(copy);
}

void TALV_DataManager::removeAllCOMPort() {
    for (const char* name : comPorts)
        delete[] name;
    comPorts.removeAll();
}

String TALV_DataManager::getCOMPort(int32_t index) const {
    return String(comPorts.at(index));
}

String TALV_DataManager::getCurrentCOMPortStr() const {
    int32_t length = 0;
    if (comPortValue)
        comPortValue->toString2(nullptr, &length);
    if (length == 0)
        return String();
    const auto text = std::make_unique<tchar[]>(size_t(length) + 1);
    comPortValue->toString2(text.get(), &length);
    return String(text.get());
}

int32_t TALV_DataManager::getDevIdByChForConnection(int32_t channel) const {
    for (const auto& connection : connections)
        if (connection.value == channel)
            return connection.key;
    return 0;
}

IValue* TALV_DataManager::createValue(const FUID& iid) const {
    void* value = nullptr;
    if (hostClasses)
        hostClasses->createClassInstance(iid, &value);
    return static_cast<IValue*>(value);
}

void TALV_DataManager::addValue(ParamDictionary* dictionary, TALV_ParamId id, IValue* value) {
    dictionary->addKeyAndObject(id, OPtr<IValue>(value));
    updateHandler->addDependent(value, dependent);
}

void TALV_DataManager::addParams(ParamDictionary* dictionary, bool perChannel, int32_t channel) {
    for (const ParamRow& row : kParams) {
        if (row.perChannel != perChannel)
            continue;
        const auto id = TALV_ParamId(row.id + channel);
        switch (row.kind) {
        case kOnOffValue:
            addOnOffValue(dictionary, id, false);
            break;
        case kIntValue:
            addIntValue(dictionary, id, 0, row.max, row.defaultValue);
            break;
        case kStringValue:
            addStringValue(dictionary, id, "");
            break;
        }
    }
}

}  // namespace TALV
