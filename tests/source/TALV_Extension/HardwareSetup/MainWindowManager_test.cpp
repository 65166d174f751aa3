#include "source/TALV_Extension/HardwareSetup/MainWindowManager.h"
#include "tests/source/TALV_Extension/managerfixture.h"

using namespace TALV;
using namespace TALV::Test;

namespace {
using SetupDevice = ManagerTest;
}

TEST_F(SetupDevice, ProvidesAPanelThatHasNoWindowYet) {
    start();
    ASSERT_EQ(devices.countDevices(), 2);
    IPlugDevice* device = devices.getDevice(1);
    EXPECT_EQ(device->providesPanel(), kResultOk);
    EXPECT_EQ(device->createPanel(), nullptr);
    const IPtr<IPlugDevice> held = device;
    finish();
    EXPECT_EQ(held->createPanel(), nullptr) << "nor when the manager is gone";
}
