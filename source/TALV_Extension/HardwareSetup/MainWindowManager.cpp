#include "source/TALV_Extension/HardwareSetup/MainWindowManager.h"

using namespace Tessarine;

namespace TALV_HWSetup {

constinit const FUID MainWindowManager::k_classId(0x6E722B4B, 0x59A049EE, 0x830B5211, 0x959DCD91);

FUnknown* MainWindowManager::newInstance(void* /*context*/) {
    return static_cast<IPlugDevice*>(new MainWindowManager);
}

MainWindowManager* MainWindowManager::query(IPlugDevice* device) {
    void* face = nullptr;
    if (!device || device->queryInterface(k_classId, &face) != kResultOk)
        return nullptr;
    return static_cast<MainWindowManager*>(static_cast<IPlugDevice*>(face));
}

void MainWindowManager::initialize(IHostClasses* host, TALV::TALV_DataManager* store, CmObject* service) {
    hostClasses = host;
    dataManager = store;
    manager = service;
}

IWindow* MainWindowManager::openWindow() {
    return window;
}

int32_t MainWindowManager::queryInterface(const char* iid, void** obj) {
    IPlugDevice* first = this;
    if (FUID::same(iid, k_classId)) {
        addRef();
        *obj = first;
        return kResultOk;
    }
    return answerInterface<FUnknown>(first, iid, obj) || answerInterface<IPlugDevice>(first, iid, obj)
               ? kResultOk
               : noInterface(obj);
}

uint32_t MainWindowManager::addRef() {
    return uint32_t(atomicAdd(refCount, 1));
}

uint32_t MainWindowManager::release() {
    const int32_t left = atomicAdd(refCount, -1);
    if (left == 0)
        delete this;
    return uint32_t(left);
}

int32_t MainWindowManager::createSetupView(IDependent* /*dependent*/, FUnknown** /*view*/) {
    return kResultFalse;
}

int32_t MainWindowManager::getClassIcon(FUnknown** /*icon*/) {
    return kResultFalse;
}

void MainWindowManager::windowClosed(IWindow* closed) {
    if (closed == window)
        window = nullptr;
}

}  // namespace TALV_HWSetup
