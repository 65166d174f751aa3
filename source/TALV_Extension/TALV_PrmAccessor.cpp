#include "source/TALV_Extension/TALV_PrmAccessor.h"
#include "source/TALV_Extension/TALV_DataManager.h"

using namespace Tessarine;

namespace TALV {

FUnknown* TALV_PrmAccessor::newInstance(void* /*context*/) {
    return static_cast<IPlugDevice*>(new TALV_PrmAccessor);
}

int32_t TALV_PrmAccessor::queryInterface(const char* iid, void** obj) {
    IPlugDevice* device = this;
    if (answerInterface<FUnknown>(device, iid, obj) || answerInterface<IPlugDevice>(device, iid, obj) ||
        answerInterface<ITALV_PrmAccessor>(this, iid, obj))
        return kResultOk;
    return noInterface(obj);
}

uint32_t TALV_PrmAccessor::addRef() {
    return uint32_t(FUnknown::atomicAdd(refCount, 1));
}

uint32_t TALV_PrmAccessor::release() {
    const int32_t left = FUnknown::atomicAdd(refCount, -1);
    if (left == 0)
        delete this;
    return uint32_t(left);
}

IValue* TALV_PrmAccessor::getIValue(unsigned char devId, TALV_ParamId paramId) {
    return dataManager ? dataManager->getParamIValue({devId, paramId}) : nullptr;
}

int32_t TALV_PrmAccessor::totalDevices() const {
    return dataManager ? dataManager->devices.total() : 0;
}

void TALV_PrmAccessor::setConnectionPrm(int32_t devId, int32_t channel) {
    if (!dataManager)
        return;
    if (channel != k_noItemForConnection) {
        const int32_t holder = dataManager->getDevIdByChForConnection(channel);
        if (holder != 0)
            dataManager->connections.replace(holder, k_noItemForConnection);
    }
    if (devId != 0)
        dataManager->connections.replace(devId, channel);
}

int32_t TALV_PrmAccessor::getConnectionPrm(int32_t channel) {
    return dataManager ? dataManager->getDevIdByChForConnection(channel) : 0;
}

IValue* TALV_PrmAccessor::getIsConnectionUpdated() const {
    return dataManager ? dataManager->isConnectionUpdated.get() : nullptr;
}

void TALV_PrmAccessor::initialize(TALV_DataManager* manager, IHostClasses* hostClasses) {
    dataManager = manager;
    void* value = nullptr;
    hostClasses->createClassInstance(IHostOnOffValue_iid, &value);
    portUpdatedValue = static_cast<IValue*>(value);
}

}  // namespace TALV
