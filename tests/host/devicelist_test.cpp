#include "pluginterfaces/gui/iplatform.h"
#include "pluginterfaces/host/iplugdevice.h"
#include "tests/host/hostfixture.h"

using namespace Tessarine;

namespace HostTest {
namespace {
/** Devices of the real module, whose service isn't started. */
class DeviceListTest : public HostFixture {
protected:
    void SetUp() override { load(); }
    void TearDown() override {
        classes.getDevices().clear();
        endModule();
    }

    const Application application;
};

TEST_F(DeviceListTest, FindsADeviceByAnyOfItsFaces) {
    DeviceList& list = classes.getDevices();
    IPlugDevice* first = list.createDevice(TALV::ITALV_PrmAccessor::iid, nullptr, nullptr);
    IPlugDevice* second = list.createDevice(TALV::ITALV_PrmAccessor::iid, nullptr, nullptr);
    ASSERT_TRUE(first && second);
    ASSERT_EQ(list.countDevices(), 2);
    EXPECT_EQ(second->getDeviceCategory(), nullptr);
    EXPECT_STREQ(list.getDevice(1)->getDeviceCategory(), "TALV Param Accessor") << "the name of its class";
    EXPECT_EQ(list.createDevice(IValue::iid, nullptr, nullptr), nullptr) << "no such class";
    const FUnknownPtr<TALV::ITALV_PrmAccessor> face(second), ofEntry(list.getDevice(1));
    ASSERT_TRUE(face);
    EXPECT_NE(static_cast<void*>(face.get()), static_cast<void*>(second)) << "another address";
    EXPECT_EQ(ofEntry.get(), face.get()) << "questions go to the device";
    const uint32_t held = referencesOf(face.get());
    EXPECT_EQ(list.removeDevice(face), kResultOk);
    EXPECT_EQ(referencesOf(face.get()), held - 1);
    EXPECT_EQ(list.countDevices(), 1);
    EXPECT_EQ(list.removeDevice(face), kResultFalse);
    EXPECT_EQ(list.removeDevice(list.getDevice(0)), kResultOk) << "the entry is the device, too";
    EXPECT_EQ(list.countDevices(), 0);
}

TEST_F(DeviceListTest, EachServiceIsItsOwnFaceWithOneReference) {
    for (const FUID* iid : {&IDeviceList::iid, &IDeviceList2::iid, &IPortRegistry2::iid, &ISerialPortNaming::iid,
                            &IPlatform::iid, &IPlatform2::iid, &IUpdateHandler::iid}) {
        void *first = nullptr, *second = nullptr, *same = nullptr;
        ASSERT_EQ(classes.createClassInstance(*iid, &first), kResultOk);
        ASSERT_EQ(classes.createClassInstance(*iid, &second), kResultOk);
        auto* face = static_cast<FUnknown*>(first);
        const uint32_t held = referencesOf(face);
        face->release();
        const uint32_t left = referencesOf(face);
        EXPECT_TRUE(left == held - 1 || left == held) << "static objects don't count";
        ASSERT_EQ(face->queryInterface(*iid, &same), kResultOk);
        EXPECT_TRUE(first == second && first == same);
        face->release();
        face->release();
    }
    void* none = &none;
    EXPECT_NE(classes.createClassInstance(TALV::ITALV_PrmAccessor::iid, &none), kResultOk);
    EXPECT_EQ(none, nullptr);
}

}  // namespace
}  // namespace HostTest
