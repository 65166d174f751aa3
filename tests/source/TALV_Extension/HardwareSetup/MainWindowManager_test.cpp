#include "source/TALV_Extension/HardwareSetup/MainWindowManager.h"
#include "tests/source/TALV_Extension/managerfixture.h"

using namespace TALV;
using namespace TALV::Test;
using TALV_HWSetup::MainWindowManager;

namespace {
using SetupDevice = ManagerTest;
}

TEST(MainWindow, AnswersItsDeviceFacesOnly) {
    FUnknown* made = MainWindowManager::newInstance(nullptr);
    const FUID classId(0x6E722B4B, 0x59A049EE, 0x830B5211, 0x959DCD91);
    for (const FUID* iid : {&FUnknown::iid, &IPlugDevice::iid, &classId}) {
        void* face = nullptr;
        ASSERT_EQ(made->queryInterface(*iid, &face), kResultOk);
        EXPECT_EQ(face, made);
        EXPECT_EQ(made->release(), 1u);
    }
    for (const FUID* iid : {&ICloseWindowNotification::iid, &ITALV_PrmAccessor::iid, &FObject::iid}) {
        void* face = made;
        EXPECT_EQ(made->queryInterface(*iid, &face), kNoInterface);
        EXPECT_EQ(face, nullptr);
    }
    EXPECT_EQ(made->release(), 0u);
}

TEST(MainWindow, IsFoundBehindItsDeviceOnly) {
    const OPtr<IPlugDevice> device(static_cast<IPlugDevice*>(MainWindowManager::newInstance(nullptr)));
    const OPtr<MainWindowManager> found(MainWindowManager::query(device));
    EXPECT_EQ(static_cast<IPlugDevice*>(found.get()), device.get());
    EXPECT_EQ(referencesOf(device.get()), 2u);
    EXPECT_EQ(MainWindowManager::query(nullptr), nullptr);
}

TEST_F(SetupDevice, ProvidesAPanelThatHasNoWindowYet) {
    start();
    ASSERT_EQ(devices.countDevices(), 2);
    IPlugDevice* device = devices.getDevice(1);
    EXPECT_EQ(device->providesPanel(), kResultOk);
    EXPECT_EQ(device->getDeviceCategory(), nullptr);
    EXPECT_EQ(device->createSetupView(nullptr, nullptr), kResultFalse);
    EXPECT_EQ(device->getClassIcon(nullptr), kResultFalse);
    EXPECT_EQ(device->suspend(true), kResultFalse);
    EXPECT_EQ(device->resume(true), kResultFalse);
    EXPECT_EQ(device->createPanel(), nullptr);
    EXPECT_EQ(device->createPanel(), nullptr);
    EXPECT_FALSE(isPosted()) << "no window, no new look at the ports";

    const IPtr<IPlugDevice> held = device;
    finish();
    EXPECT_EQ(held->createPanel(), nullptr) << "nor when the manager is gone";
}
