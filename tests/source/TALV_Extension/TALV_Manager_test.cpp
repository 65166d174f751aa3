#include "source/TALV_Extension/TALV_Manager.h"
#include "base/source/finitializer.h"
#include "tests/source/TALV_Extension/managerfixture.h"

using namespace TALV;
using namespace TALV::Test;

namespace {
using Manager = ManagerTest;

/** With one open line and a device on it, both quiet. */
class ManagerOnLine : public ManagerTest {
protected:
    void SetUp() override {
        start();
        meet(kDevice, *far);
    }
    Frames sent() { return ManagerTest::sent(*far); }

    static constexpr unsigned char kDevice = 1;
    std::unique_ptr<PseudoTerminal> far = newLine("tty.a");
};
}  // namespace

TEST_F(Manager, AnAnswerEndsTheSearch) {
    const auto far = newLine("tty.a");
    start();
    clock->advance(1300);
    EXPECT_EQ(sent(*far), Frames({kBroadcast, kBroadcast}));
    hear({0x03, 0x80, 0x05, 0x7A});
    EXPECT_EQ(sent(*far), Frames({"04 01 05 03 F6", "03 41 05 B9"}));
    EXPECT_EQ(accessor->totalDevices(), 1);
    clock->advance(1000);
    hear({0x03, 0x80, 0x06, 0x79});  // this one puts off the end
    hear({0x03, 0x80, 0x05, 0x7A});
    EXPECT_EQ(accessor->totalDevices(), 2);
    EXPECT_EQ(sent(*far).size(), 4u) << "one that is known is asked again";
    clock->advance(1099);
    EXPECT_FALSE(accessor->isReady());
    clock->advance(1);
    EXPECT_TRUE(accessor->isReady());
    clock->advance(9000);
    EXPECT_EQ(sent(*far), Frames());
    EXPECT_EQ(notices.heard.size(), 0u);
    manager->updateCOMPort();
    deliver();
    clock->advance(9000);
    EXPECT_EQ(sent(*far), Frames(4, kBroadcast)) << "the next search counts anew";
}

TEST_F(ManagerOnLine, TakesOneMessageATick) {
    arrive(frame({0x90, kDevice, 1}));
    arrive({0x00});                    // dropped, for a tick
    arrive({0x03, 0x80, 0x05, 0x7B});  // bad checksum
    arrive({0x03, 0x82, 0x05, 0x78});  // unknown
    arrive(frame({0x90, kDevice, 2}));
    constexpr int32_t clocks[] = {1, 1, 1, 1, 2};
    for (const int32_t expected : clocks) {
        clock->advance(50);
        EXPECT_EQ(value(kDevice, kPrmWordClock)->getValueInt(), expected);
    }
    EXPECT_EQ(sent(), Frames()) << "reports don't come back as settings";
    EXPECT_EQ(accessor->totalDevices(), 1);
}

TEST_F(ManagerOnLine, ADeviceMayGoWhileItsReportIsTold) {
    Listener leaver;
    leaver.then = [&] {
        FMessage change("Update COMPort Message");
        if (leaver.heard.back() == kChanged)
            manager->notify(&change);
    };
    for (const Bytes& body : {
             Bytes{0xA0, kDevice, 0, 1, 2},
             Bytes{0x81, kDevice, 2, 'n', 0, 0, 0, 0, 0, 0, 0}
    }) {
        const IPtr<IValue> kept = value(kDevice, body[0] == 0xA0 ? kPrmGain : kPrmDevMode);
        FObject::gUpdateHandler->addDependent(kept, &leaver);
        hear(frame(body));
        EXPECT_EQ(accessor->totalDevices(), 0);
        FObject::gUpdateHandler->removeDependent(kept, &leaver);
        EXPECT_EQ(UpdateHandler::instance()->countDependencies(kept), 0) << "nobody looks at a value of the past";
        meet(kDevice, *far);
    }
}

TEST_F(ManagerOnLine, RefusesValuesWithoutAWay) {
    meet(0, *far);  // nobody filters it, but it can't be told from no device
    for (IValue* each : {value(0, kPrmGain), value(kDevice, kPrmDevName), value(kDevice, kPrmMeter + 7)})
        EXPECT_EQ(manager->updateHeadAmpParam(each), kResultFalse);
    manager->update(value(kDevice, kPrmGain), kDestroyed);
    EXPECT_EQ(sent(), Frames());
}

TEST_F(Manager, TheFirstStartOpensOnce) {
    const auto far = newLine("tty.b");
    for (const char* stored : {"", "tty.gone", "tty.b"}) {
        SCOPED_TRACE(stored);
        if (*stored)
            putSettings(stored);
        start();
        EXPECT_FALSE(isPosted());
        deliver();
        EXPECT_EQ(port(), "tty.b");
        clock->advance(9000);
        deliver();
        EXPECT_EQ(sent(*far), Frames(4, kBroadcast));
        EXPECT_EQ(notices.heard.size(), 0u);
        EXPECT_TRUE(accessor->isReady());
        finish();
        platform.done = false;
        host.portValue = nullptr;
        clock.reset();
        clock.emplace();
    }
}

TEST_F(ManagerOnLine, AnotherPortIsAnotherSearch) {
    const auto second = newLine("tty.b");
    clock->advance(2000);
    ASSERT_TRUE(accessor->isReady());
    Listener view;
    FObject::gUpdateHandler->addDependent(value(kDevice, kPrmGain), &view);
    arrive({0x09, 0x80, 0x07});  // a frame that will never be whole
    Listener client;
    std::vector<bool> states;
    client.then = [&] { states.push_back(accessor->isReady()); };
    FObject::gUpdateHandler->addDependent(accessor->getIsPortUpdated(), &client);

    choose("tty.b");
    EXPECT_FALSE(accessor->isReady());
    EXPECT_EQ(notices.heard.size(), 1u);
    EXPECT_EQ(accessor->totalDevices(), 1) << "the change itself comes later";
    clock->advance(3000);
    EXPECT_FALSE(accessor->isReady()) << "nothing declares it ready before";

    deliver();
    EXPECT_EQ(ManagerTest::sent(*second), Frames({kBroadcast}));
    EXPECT_EQ(accessor->totalDevices(), 0);
    EXPECT_EQ(view.count(kDestroyed), 1);
    FObject::gUpdateHandler->removeDependent(nullptr, &view);
    hear(frame({0x80, 8}));
    EXPECT_EQ(accessor->totalDevices(), 1) << "what was left of the old line is gone";
    clock->advance(1099);
    EXPECT_FALSE(accessor->isReady());
    clock->advance(1);
    EXPECT_TRUE(accessor->isReady());
    EXPECT_EQ(notice(), 0) << "toggled twice";
    clock->advance(9000);
    EXPECT_EQ(states, std::vector<bool>({false, true})) << "as a client sees it when it is told";
    FObject::gUpdateHandler->removeDependent(nullptr, &client);
    EXPECT_EQ(ManagerTest::sent(*second).size(), 2u) << "the answer ended the search";
}

TEST_F(ManagerOnLine, TwoChangesAreTwoCyclesWithOneEnd) {
    const auto second = newLine("tty.b");
    choose("tty.b");
    FMessage refresh("Refresh COMPort Message");
    choose("tty.a");
    EXPECT_EQ(manager->notify(&refresh), 1);
    EXPECT_EQ(notices.heard.size(), 3u);
    clock->advance(2000);
    EXPECT_FALSE(accessor->isReady()) << "the end of the first search doesn't count any more";
    deliver();
    EXPECT_EQ(port(), "tty.a");
    EXPECT_EQ(accessor->totalDevices(), 0);
    sent();
    clock->advance(4099);
    EXPECT_FALSE(accessor->isReady());
    clock->advance(1);
    EXPECT_EQ(sent(), Frames(3, kBroadcast));
    EXPECT_EQ(notices.heard.size(), 4u);
    EXPECT_TRUE(accessor->isReady());
}

TEST_F(ManagerOnLine, AChangeWithoutAPortHasNoEndToTell) {
    choose("tty.b");
    deliver();
    clock->advance(4100);
    notices.heard.clear();  // a change that is over

    far.reset();
    arrive(frame({0x80, 9}));
    choose("tty.b");
    deliver();
    EXPECT_EQ(port(), "");
    EXPECT_EQ(manager->sendRequestMessage(kDevice, kMessageReqGain), kResultFalse);
    clock->advance(50);
    EXPECT_EQ(accessor->totalDevices(), 1) << "what had come before is still read";
    clock->advance(1100);
    EXPECT_TRUE(accessor->isReady());
    EXPECT_EQ(notices.heard.size(), 1u);

    choose("tty.c");
    deliver();
    clock->advance(1100);
    EXPECT_TRUE(accessor->isReady()) << "without a port and without a search";
}

TEST_F(Manager, WithoutADeviceListItWorksUnseen) {
    const auto far = newLine("tty.a");
    host.deviceList = nullptr;
    start();
    meet(5, *far);
    clock->advance(2000);
    hear(frame({0x81, 5, 3, 'n', 'a', 'm', 'e', ' ', ' ', ' ', ' '}));
    EXPECT_EQ(sent(*far).size(), 10u);
    manager->updateCOMPort();
    deliver();
    EXPECT_EQ(sent(*far), Frames({kBroadcast}));
    clock->advance(9000);
}

TEST_F(Manager, AStartThatFailsIsTakenBack) {
    const auto far = newLine("tty.a");
    const OneTimeProcedure failing(
        true, [] { return false; }, "failing", 50);
    EXPECT_EQ(tryStart(), kResultFalse);
    manager->readTALVMessage();
    manager->updateCOMPort();
    EXPECT_FALSE(isPosted());
    EXPECT_EQ(manager->sendRequestMessage(1, kMessageReqGain), kResultFalse);
    FMessage change("Update COMPort Message");
    EXPECT_EQ(manager->notify(&change), 1);
    EXPECT_EQ(manager->terminate(), kResultFalse) << "the host lives on";
    finish();
    EXPECT_EQ(settings(), "");

    platform.done = false;
    start();  // and another one starts
    EXPECT_EQ(sent(*far), Frames({kBroadcast}));
}

TEST_F(ManagerOnLine, EndsWithAHostThatQuits) {
    const termios open = far->settings();
    accessor->setConnectionPrm(5, 8);
    choose("tty.b");  // is on its way
    platform.done = true;
    EXPECT_EQ(manager->terminate(), kResultOk);
    EXPECT_NE(far->settings().c_lflag, open.c_lflag) << "the line is as it was before";
    EXPECT_NE(settings().find("<ComPortName str=\"tty.b\"/>"), std::string::npos);
    EXPECT_NE(settings().find("<DevId-Ch id=\"5\" ch=\"8\"/>"), std::string::npos);
    EXPECT_FALSE(isPosted());
    EXPECT_EQ(accessor->getIValue(kDevice, kPrmGain), nullptr);
    EXPECT_EQ(accessor->getIsConnectionUpdated(), nullptr);
    EXPECT_EQ(devices.countDevices(), 2) << "they are the host's";
    std::filesystem::remove(settingsFile());
    EXPECT_EQ(manager->terminate(), kResultOk);
    EXPECT_EQ(settings(), "") << "there is nothing to save any more";
    manager->readTALVMessage();
    manager->updateCOMPort();
    EXPECT_FALSE(isPosted());
}

TEST_F(ManagerOnLine, ThatIsReleasedUnendedTakesAllWithIt) {
    choose("tty.b");
    ASSERT_TRUE(isPosted());
    auto* const receiver = static_cast<CmObject*>(manager);
    end();
    EXPECT_FALSE(gMessenger->areMessagesPosted(receiver));
    EXPECT_EQ(accessor->totalDevices(), 0);
    EXPECT_NE(settings(), "");
}

TEST_F(Manager, ARunningSearchDiesWithIt) {
    clock.reset();
    const auto far = newLine("tty.a");
    start();
    EXPECT_EQ(text(far->receive(4)), kBroadcast);
    finish();
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(1300);
    for (; std::chrono::steady_clock::now() < end; std::this_thread::sleep_for(std::chrono::milliseconds(1)))
        IPlatformEventHandler::instance()->doNextEvent();
    pollfd ready{far->master, POLLIN, 0};
    EXPECT_EQ(poll(&ready, 1, 0), 0);
}
