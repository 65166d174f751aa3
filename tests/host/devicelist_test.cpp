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
    const FUnknownPtr<TALV::ITALV_PrmAccessor> face(second), ofEntry(list.getDevice(1));
    ASSERT_TRUE(face);
    EXPECT_NE(static_cast<void*>(face.get()), static_cast<void*>(second)) << "another address";
    EXPECT_EQ(ofEntry.get(), face.get()) << "questions go to the device";
    const uint32_t held = referencesOf(face.get());
    EXPECT_EQ(list.removeDevice(face), kResultOk);
    EXPECT_EQ(referencesOf(face.get()), held - 1);
    EXPECT_EQ(list.countDevices(), 1);
    EXPECT_EQ(list.removeDevice(face), kResultFalse);
    EXPECT_EQ(list.removeDevice(nullptr), kResultFalse);
    EXPECT_EQ(list.removeDevice(list.getDevice(0)), kResultOk) << "the entry is the device, too";
    EXPECT_EQ(list.countDevices(), 0);
}

TEST_F(DeviceListTest, ADeviceWithoutACategoryHasTheNameOfItsClass) {
    DeviceList& list = classes.getDevices();
    IPlugDevice* made = list.createDevice(TALV::ITALV_PrmAccessor::iid, nullptr, nullptr);
    ASSERT_TRUE(made);
    EXPECT_EQ(made->getDeviceCategory(), nullptr);
    EXPECT_STREQ(list.getDevice(0)->getDeviceCategory(), "TALV Param Accessor");
    EXPECT_EQ(list.getDevice(1), nullptr);
    EXPECT_EQ(list.getDevice(-1), nullptr);
    EXPECT_EQ(list.createDevice(IValue::iid, nullptr, nullptr), nullptr) << "no such class";
    EXPECT_EQ(list.createDevice(nullptr, nullptr, nullptr), nullptr);
    EXPECT_EQ(list.countDevices(), 1);
}

TEST_F(DeviceListTest, EachServiceIsItsOwnFaceWithOneReference) {
    const FUID* const kServices[] = {
        &IDeviceList::iid, &IDeviceList2::iid, &IPortRegistry2::iid, &ISerialPortNaming::iid,
        &IPlatform::iid,   &IPlatform2::iid,   &IUpdateHandler::iid,
    };
    for (const FUID* iid : kServices) {
        void *first = nullptr, *second = nullptr;
        ASSERT_EQ(classes.createClassInstance(*iid, &first), kResultOk);
        ASSERT_EQ(classes.createClassInstance(*iid, &second), kResultOk);
        EXPECT_EQ(first, second);
        auto* face = static_cast<FUnknown*>(first);
        const uint32_t held = referencesOf(face);
        face->release();
        const uint32_t left = referencesOf(face);
        EXPECT_TRUE(left == held - 1 || left == held) << "static objects don't count";
        void* same = nullptr;
        ASSERT_EQ(face->queryInterface(*iid, &same), kResultOk);
        EXPECT_EQ(same, first);
        face->release();
        face->release();
    }
    void* none = &none;
    EXPECT_NE(classes.createClassInstance(TALV::ITALV_PrmAccessor::iid, &none), kResultOk);
    EXPECT_EQ(none, nullptr);
    EXPECT_NE(classes.createClassInstance(nullptr, &none), kResultOk);
}

}  // namespace
}  // namespace HostTest
