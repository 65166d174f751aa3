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

/** The program's own timers and loop. */
class ManagerInTime : public ManagerTest {
protected:
    ManagerInTime() { clock.reset(); }

    template <class Condition>
    bool runUntil(Condition condition, int32_t limitMs) {
        const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(limitMs);
        while (std::chrono::steady_clock::now() < end) {
            if (condition())
                return true;
            IPlatformEventHandler::instance()->doNextEvent();
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        return false;
    }
    /** What has arrived by now. */
    Bytes arrived(PseudoTerminal& far) {
        unsigned char bytes[1024];
        pollfd ready{far.master, POLLIN, 0};
        const ssize_t size = poll(&ready, 1, 0) > 0 ? read(far.master, bytes, sizeof(bytes)) : 0;
        return Bytes(bytes, bytes + std::max<ssize_t>(size, 0));
    }
};
}  // namespace

// --- the object

TEST_F(Manager, IsOneObjectWithItsFaces) {
    FUnknown* made = TALV_Manager::newInstance(nullptr);
    EXPECT_EQ(TALV_Manager::newInstance(nullptr), made);
    EXPECT_EQ(referencesOf(made), 1u) << "no reference for the second";
    const FUnknownPtr<IPluginBase> base(made);
    EXPECT_EQ(base.get(), made);
    EXPECT_EQ(FUnknownPtr<FUnknown>(base.get()).get(), made);
    EXPECT_EQ(FUnknownPtr<FObject>(made).get(), static_cast<CmObject*>(TALV_Manager::mp_talv));
    void* face = this;
    EXPECT_EQ(made->queryInterface(IDependent::iid, &face), kNoInterface);
    EXPECT_EQ(face, nullptr);
}

TEST_F(Manager, ThatNeverStartedLeavesTheApplicationAlone) {
    TALV_Manager::newInstance(nullptr);
    auto* other = reinterpret_cast<UApplication*>(this);  // only compared
    gApplication = other;
    EXPECT_EQ(TALV_Manager::mp_talv->release(), 0u);
    EXPECT_EQ(TALV_Manager::mp_talv, nullptr);
    EXPECT_EQ(gApplication, other);
    gApplication = nullptr;
}

// --- the search

TEST_F(Manager, SearchesFourTimesAndIsReadyThen) {
    const auto far = newLine("tty.a");
    start();
    struct Row {
        uint32_t ms;
        size_t broadcasts;
        bool isReady;
    };
    constexpr Row rows[] = {
        {0,    1, false},
        {999,  0, false},
        {1,    1, false},
        {999,  0, false},
        {1,    1, false},
        {1000, 1, false},
        {1099, 0, false},
        {1,    0, true },
        {9000, 0, true },
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.ms);
        clock->advance(row.ms);
        EXPECT_EQ(sent(*far), Frames(row.broadcasts, kBroadcast));
        EXPECT_EQ(accessor->isReady(), row.isReady);
    }
    EXPECT_EQ(accessor->totalDevices(), 0);
    EXPECT_EQ(notices.heard.size(), 0u) << "the first time isn't announced";
    EXPECT_EQ(clock->running(), 1u) << "reading goes on, the search is over";
}

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
}

TEST_F(ManagerOnLine, AsksANewDeviceInOrder) {
    const Frames requests = {
        "03 50 05 AA", "05 60 05 00 08 92", "05 61 05 00 08 91", "05 62 05 00 08 90", "05 64 05 00 08 8E",
        "03 65 05 95", "03 66 05 94",       "03 67 05 93",       "05 68 05 00 08 8A",
    };
    meet(5, *far);
    const Bytes report = {0x0C, 0x81, 0x05, 0x03, 0x48, 0x41, 0x2D, 0x38, 0x43, 0x48, 0x20, 0x20, 0xBD};
    hear(report);
    Frames expected = requests;
    expected.insert(expected.begin(), "04 01 05 03 F6");  // its mode was another one: it goes back, before the requests
    EXPECT_EQ(sent(), expected);
    EXPECT_EQ(value(5, kPrmDevMode)->getValueInt(), 3);
    tchar name[20];
    int32_t length = 20;
    value(5, kPrmDevName)->toString2(name, &length);
    EXPECT_EQ(std::u16string(name), u"HA-8CH  ");
    hear(report);
    EXPECT_EQ(sent(), requests) << "the mode is known by now";
}

TEST_F(ManagerOnLine, AModeComesBackBounded) {
    hear(frame({0x81, kDevice, 9, 'a', 'b', 'c', 'd', 'e', 'f', 'g', 0x8A}));
    EXPECT_EQ(sent().front(), "04 01 01 03 FA");
    tchar name[20];
    int32_t length = 20;
    value(kDevice, kPrmDevName)->toString2(name, &length);
    EXPECT_EQ(std::u16string(name), u"abcdefg\u00E4") << "eight characters, in the code page of the line";
}

// --- reports

TEST_F(ManagerOnLine, TakesReportsAndDoesNotSendThemBack) {
    struct Row {
        const char* name;
        int32_t id, before;
        Bytes body;
        int32_t after;
    };
    const Row rows[] = {
        {"gain of byte 0",       kPrmGain,          1, {0xA0, kDevice, 0, 0},                   72},
        {"gain of byte 72",      kPrmGain + 7,      1, {0xA0, kDevice, 7, 72},                  0 },
        {"gain below",           kPrmGain,          1, {0xA0, kDevice, 0, 73},                  0 },
        {"gain far below",       kPrmGain,          1, {0xA0, kDevice, 0, 0xFF},                0 },
        {"+48V",                 kPrmPlus48V + 3,   0, {0xA1, kDevice, 3, 1},                   1 },
        {"filter",               kPrmHPF + 2,       1, {0xA2, kDevice, 2, 0},                   0 },
        {"trim -5",              kPrmGainTrim,      0, {0xA4, kDevice, 0, 0xFB},                10},
        {"trim 0",               kPrmGainTrim + 1,  0, {0xA4, kDevice, 1, 0},                   15},
        {"trim 15",              kPrmGainTrim,      0, {0xA4, kDevice, 0, 15},                  30},
        {"trim -15",             kPrmGainTrim,      9, {0xA4, kDevice, 0, 0xF1},                0 },
        {"trim 16",              kPrmGainTrim,      9, {0xA4, kDevice, 0, 16},                  30},
        {"trim of byte 0x80",    kPrmGainTrim,      9, {0xA4, kDevice, 0, 0x80},                0 },
        {"trim of byte 0x71",    kPrmGainTrim,      9, {0xA4, kDevice, 0, 0x71},                0 },
        {"trim of byte 0x70",    kPrmGainTrim,      9, {0xA4, kDevice, 0, 0x70},                30},
        {"frequency 80 Hz",      kPrmHPFFreq + 4,   0, {0xA8, kDevice, 4, 28},                  24},
        {"frequency below",      kPrmHPFFreq,       9, {0xA8, kDevice, 0, 3},                   0 },
        {"frequency at the top", kPrmHPFFreq,       9, {0xA8, kDevice, 0, 63},                  59},
        {"frequency far above",  kPrmHPFFreq,       9, {0xA8, kDevice, 0, 0xFF},                59},
        {"word clock",           kPrmWordClock,     0, {0x90, kDevice, 4},                      4 },
        {"word clock above",     kPrmWordClock,     0, {0x90, kDevice, 200},                    5 },
        {"panel lock",           kPrmPanelLock,     0, {0xA5, kDevice, 1},                      1 },
        {"brightness",           kPrmBrightness,    0, {0xA6, kDevice, 7},                      7 },
        {"+48V master",          kPrmPlus48VMaster, 0, {0xA7, kDevice, 1},                      1 },
        {"meters are dropped",   kPrmMeter + 1,     5, {0xA3, kDevice, 1, 2, 3, 4, 5, 6, 7, 8}, 5 },
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        IValue* const target = value(kDevice, row.id);
        target->setValue2(row.before, true);
        sent();
        Listener view;
        FObject::gUpdateHandler->addDependent(target, &view);
        hear(frame(row.body));
        EXPECT_EQ(target->getValueInt(), row.after);
        EXPECT_EQ(sent(), Frames());
        EXPECT_EQ(view.heard.size(), row.before == row.after ? 0u : 1u) << "others hear of it";
        FObject::gUpdateHandler->removeDependent(target, &view);
    }
}

TEST_F(ManagerOnLine, AReportLeavesTheWayOutAsItWas) {
    hear(frame({0xA0, kDevice, 3, 10, 20}));
    hear(frame({0xA0, kDevice, 3}));
    EXPECT_EQ(sent(), Frames());
    value(kDevice, kPrmGain + 3)->setValue2(40, true);
    value(kDevice, kPrmGain + 4)->setValue2(52, true);  // as the report has set it
    EXPECT_EQ(sent(), Frames({"05 20 01 03 20 BB"})) << "once, and updates are on";
}

TEST_F(ManagerOnLine, AReportOfManyChannelsFillsJustThese) {
    meet(5, *far);
    hear({0x0C, 0xA0, 0x05, 0x00, 0x48, 0x3C, 0x32, 0x28, 0x1E, 0x14, 0x0A, 0x00, 0x40});
    hear({0x06, 0xA8, 0x05, 0x00, 0x1C, 0x2C, 0x0A});
    for (int32_t i = 0; i < kNumChannels; ++i) {
        constexpr int32_t gains[] = {0, 12, 22, 32, 42, 52, 62, 72};
        EXPECT_EQ(value(5, kPrmGain + i)->getValueInt(), gains[i]);
        EXPECT_EQ(value(5, kPrmHPFFreq + i)->getValueInt(), i == 0 ? 24 : i == 1 ? 40 : 0);
        EXPECT_EQ(value(kDevice, kPrmGain + i)->getValueInt(), 0) << "another device";
    }
    hear(frame({0xA0, 5, 6, 1, 2, 3}));  // beyond the last channel
    EXPECT_EQ(value(5, kPrmGain + 6)->getValueInt(), 62);
    EXPECT_EQ(sent(), Frames());
}

TEST_F(ManagerOnLine, StrangersAreNotAdded) {
    hear(frame({0xA0, 9, 0, 1}));
    hear(frame({0x90, 9, 1}));
    EXPECT_EQ(sent(), Frames());
    hear(frame({0x81, 9, 3, 'n', 'a', 'm', 'e', ' ', ' ', ' ', ' '}));
    EXPECT_EQ(sent().size(), 9u) << "who says its name is asked";
    EXPECT_EQ(accessor->totalDevices(), 1);
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
    EXPECT_EQ(accessor->totalDevices(), 1);
}

TEST_F(ManagerOnLine, ADeviceMayGoWhileItsReportIsTold) {
    class Leaver : public Listener {
    public:
        explicit Leaver(TALV_Manager* manager) : manager(manager) {}
        void update(FUnknown* changedUnknown, int32_t message) override {
            Listener::update(changedUnknown, message);
            FMessage change("Update COMPort Message");
            if (message == kChanged)
                manager->notify(&change);
        }
        TALV_Manager* manager;
    } leaver(manager);
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

// --- settings

TEST_F(ManagerOnLine, SendsWhatHasAWay) {
    struct Row {
        const char* name;
        int32_t id, value;
        const char* frame;
    };
    constexpr Row rows[] = {
        {"mode",               kPrmDevMode,       3,   "04 01 01 03 FA"   },
        {"mode above",         kPrmDevMode,       99,  nullptr            }, // bounded to what it is
        {"word clock",         kPrmWordClock,     2,   "04 10 01 02 EC"   },
        {"gain",               kPrmGain + 3,      40,  "05 20 01 03 20 BB"},
        {"gain at the top",    kPrmGain,          99,  "05 20 01 00 00 DE"},
        {"gain at the bottom", kPrmGain,          -99, "05 20 01 00 48 96"},
        {"gain unchanged",     kPrmGain,          0,   nullptr            },
        {"+48V",               kPrmPlus48V,       1,   "05 21 01 00 01 DC"},
        {"filter",             kPrmHPF + 7,       1,   "05 22 01 07 01 D4"},
        {"trim",               kPrmGainTrim + 2,  10,  "05 24 01 02 FB DD"},
        {"trim at the bottom", kPrmGainTrim + 2,  0,   "05 24 01 02 F1 E7"},
        {"trim at the top",    kPrmGainTrim + 2,  31,  "05 24 01 02 0F C9"},
        {"panel lock",         kPrmPanelLock,     1,   "04 25 01 01 D8"   },
        {"brightness",         kPrmBrightness,    5,   "04 26 01 05 D3"   },
        {"frequency",          kPrmHPFFreq + 4,   24,  "05 28 01 04 1C B6"},
        {"lowest frequency",   kPrmHPFFreq + 4,   0,   "05 28 01 04 04 CE"},
        {"highest frequency",  kPrmHPFFreq + 4,   60,  "05 28 01 04 3F 93"},
        {"meter mode",         kPrmMeterMode,     1,   nullptr            },
        {"meter",              kPrmMeter,         9,   nullptr            },
        {"+48V master",        kPrmPlus48VMaster, 1,   nullptr            },
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        value(kDevice, row.id)->setValue2(row.value, true);
        EXPECT_EQ(sent(), row.frame ? Frames({row.frame}) : Frames());
    }
    value(kDevice, kPrmDevName)->fromString2(u"other", true);
    EXPECT_EQ(sent(), Frames());
}

TEST_F(ManagerOnLine, RefusesValuesWithoutAWay) {
    for (const int32_t id : {int32_t(kPrmDevName), int32_t(kPrmMeterMode), int32_t(kPrmMeter), int32_t(kPrmMeter) + 7,
                             int32_t(kPrmPlus48VMaster)})
        EXPECT_EQ(manager->updateHeadAmpParam(value(kDevice, id)), kResultFalse) << id;
    EXPECT_EQ(manager->updateHeadAmpParam(nullptr), kResultFalse);
    EXPECT_EQ(manager->updateHeadAmpParam(accessor->getIsConnectionUpdated()), kResultFalse);
    meet(0, *far);  // nobody filters it, but it can't be told from no device
    EXPECT_EQ(manager->updateHeadAmpParam(value(0, kPrmGain)), kResultFalse);
    EXPECT_EQ(sent(), Frames());
    EXPECT_EQ(manager->updateHeadAmpParam(value(kDevice, kPrmHPFFreq)), kResultOk);
    for (const int32_t message : {int32_t(kDestroyed), 0, 3})
        manager->update(value(kDevice, kPrmGain), message);
    manager->update(static_cast<CmObject*>(manager), kChanged);  // no value
    manager->update(static_cast<FUnknown*>(nullptr), kChanged);
    EXPECT_EQ(sent(), Frames({"05 28 01 00 04 D2"})) << "a value that is asked for goes, changed or not";
}

TEST_F(ManagerOnLine, PassesOnWhatItDoesNotKnow) {
    FMessage other("Other"), timer("Timer");
    timer.add("Timer", static_cast<CmObject*>(manager), false);  // nobody's timer
    EXPECT_EQ(manager->notify(nullptr), 0);
    EXPECT_EQ(manager->notify(&other), 0);
    EXPECT_EQ(manager->notify(&timer), 1);
    FMessage empty("Timer");
    EXPECT_EQ(manager->notify(&empty), 1);
    EXPECT_EQ(manager->sendRequestMessage(kDevice, kMessageReqGain), 0);
    EXPECT_EQ(sent(), Frames({"05 60 01 00 08 96"}));
}

// --- ports

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
        EXPECT_EQ(clock->starts(1000), 2u) << "made, and started by the one opening";
        EXPECT_EQ(sent(*far), Frames(4, kBroadcast));
        EXPECT_EQ(notices.heard.size(), 0u);
        EXPECT_EQ(notice(), 0);
        EXPECT_TRUE(accessor->isReady());
        finish();
        platform.done = false;
        host.portValue = nullptr;
        clock.reset();
        clock.emplace();
    }
}

TEST_F(Manager, OpensTheStoredPort) {
    const auto first = newLine("tty.a"), second = newLine("tty.b");
    putSettings("tty.b");
    start();
    EXPECT_EQ(sent(*second), Frames({kBroadcast}));
    finish();
    EXPECT_NE(settings().find("<ComPortName str=\"tty.b\"/>"), std::string::npos);
}

TEST_F(ManagerOnLine, AnotherPortIsAnotherSearch) {
    const auto second = newLine("tty.b");
    clock->advance(2000);
    ASSERT_TRUE(accessor->isReady());
    Listener view;
    FObject::gUpdateHandler->addDependent(value(kDevice, kPrmGain), &view);
    arrive({0x09, 0x80, 0x07});  // a frame that will never be whole

    choose("tty.b");
    EXPECT_FALSE(accessor->isReady());
    EXPECT_EQ(notices.heard.size(), 1u);
    EXPECT_EQ(accessor->totalDevices(), 1) << "the change itself comes later";
    clock->advance(3000);
    EXPECT_FALSE(accessor->isReady()) << "nothing declares it ready before";

    deliver();
    EXPECT_EQ(ManagerTest::sent(*second), Frames({kBroadcast}));
    EXPECT_EQ(accessor->totalDevices(), 0);
    EXPECT_EQ(view.count(kDestroyed), 1u);
    FObject::gUpdateHandler->removeDependent(nullptr, &view);
    hear(frame({0x80, 8}));
    EXPECT_EQ(accessor->totalDevices(), 1) << "what was left of the old line is gone";
    clock->advance(1099);
    EXPECT_EQ(notices.heard.size(), 1u);
    clock->advance(1);
    EXPECT_TRUE(accessor->isReady());
    EXPECT_EQ(notices.heard.size(), 2u);
    EXPECT_EQ(notice(), 0) << "toggled twice";
    clock->advance(9000);
    EXPECT_EQ(notices.heard.size(), 2u);
    EXPECT_EQ(ManagerTest::sent(*second).size(), 2u) << "the answer ended the search";
}

TEST_F(ManagerOnLine, TwoChangesAreTwoCyclesWithOneEnd) {
    const auto second = newLine("tty.b");
    const size_t before = clock->starts(1000);
    choose("tty.b");
    choose("tty.a");
    EXPECT_EQ(notices.heard.size(), 2u);
    clock->advance(2000);
    EXPECT_FALSE(accessor->isReady()) << "the end of the first search doesn't count any more";
    deliver();
    EXPECT_EQ(clock->starts(1000), before + 2);
    EXPECT_EQ(port(), "tty.a");
    sent();
    clock->advance(4099);
    EXPECT_EQ(notices.heard.size(), 2u);
    clock->advance(1);
    EXPECT_EQ(sent(), Frames(3, kBroadcast));
    EXPECT_EQ(notices.heard.size(), 3u);
    EXPECT_TRUE(accessor->isReady());
}

TEST_F(ManagerOnLine, ARefreshOpensTheSamePortAnew) {
    FMessage refresh("Refresh COMPort Message");
    EXPECT_EQ(manager->notify(&refresh), 1);
    EXPECT_EQ(notices.heard.size(), 1u);
    deliver();
    EXPECT_EQ(sent(), Frames({kBroadcast}));
    EXPECT_EQ(accessor->totalDevices(), 0);
    clock->advance(4100);
    EXPECT_EQ(sent(), Frames(3, kBroadcast));
    EXPECT_EQ(notices.heard.size(), 2u);
}

TEST_F(Manager, AChangeAmidASearchKeepsItsCount) {
    const auto far = newLine("tty.a");
    start();
    clock->advance(2000);
    EXPECT_EQ(sent(*far), Frames(3, kBroadcast));
    choose("tty.b");
    deliver();  // back to the one that there is
    EXPECT_EQ(port(), "tty.a");
    EXPECT_EQ(sent(*far), Frames({kBroadcast}));
    clock->advance(9000);
    EXPECT_EQ(sent(*far), Frames({kBroadcast})) << "the third retry of the old search";
    EXPECT_EQ(notices.heard.size(), 2u);
}

TEST_F(ManagerOnLine, AChangeWithoutAPortHasNoEndToTell) {
    choose("tty.b");
    deliver();
    clock->advance(4100);
    ASSERT_EQ(notices.heard.size(), 2u) << "a change that is over";
    notices.heard.clear();

    far.reset();
    arrive(frame({0x80, 9}));
    choose("tty.b");
    EXPECT_EQ(notices.heard.size(), 1u);
    deliver();
    EXPECT_EQ(port(), "");
    EXPECT_EQ(accessor->totalDevices(), 0);
    EXPECT_EQ(manager->sendRequestMessage(kDevice, kMessageReqGain), kResultFalse);
    clock->advance(50);
    EXPECT_EQ(accessor->totalDevices(), 1) << "what had come before is still read";
    clock->advance(1100);
    EXPECT_TRUE(accessor->isReady());
    EXPECT_EQ(notices.heard.size(), 1u);

    far = newLine("tty.c");
    choose("tty.c");
    deliver();
    EXPECT_EQ(sent(), Frames({kBroadcast}));
    far.reset();  // lost again, before it was told
    choose("tty.d");
    deliver();
    EXPECT_EQ(notices.heard.size(), 3u);
    clock->advance(9000);
    EXPECT_EQ(notices.heard.size(), 4u) << "the earlier change is told now";
}

TEST_F(Manager, WithoutAPortItIsReadyAllTheSame) {
    start();
    EXPECT_EQ(clock->starts(1000), 1u) << "made and stopped";
    clock->advance(1099);
    EXPECT_FALSE(accessor->isReady());
    clock->advance(1);
    EXPECT_TRUE(accessor->isReady());
    const auto far = newLine("tty.a");
    choose("tty.a");
    deliver();
    EXPECT_EQ(sent(*far), Frames({kBroadcast}));
}

TEST_F(ManagerOnLine, AVanishedLineIsLeftAlone) {
    platform.step = 500;  // two seconds are over soon
    far->hangUp();
    value(kDevice, kPrmGain)->setValue2(40, true);
    EXPECT_EQ(manager->sendRequestMessage(kDevice, kMessageReqGain), kResultFalse);
    clock->advance(500);
    EXPECT_EQ(accessor->totalDevices(), 1);
    EXPECT_EQ(notices.heard.size(), 0u) << "nobody tells of it";
    platform.step = 1;
    far = newLine("tty.b");
    choose("tty.b");
    deliver();
    EXPECT_EQ(sent(), Frames({kBroadcast}));
}

// --- hosts with less

TEST_F(Manager, WithoutADeviceListItWorksUnseen) {
    const auto first = newLine("tty.a");
    host.deviceList = nullptr;
    start();
    EXPECT_EQ(accessor, nullptr);
    meet(5, *first);
    clock->advance(2000);
    hear(frame({0x81, 5, 3, 'n', 'a', 'm', 'e', ' ', ' ', ' ', ' '}));
    EXPECT_EQ(sent(*first).size(), 10u);
    const auto second = newLine("tty.b");
    choose("tty.b");
    deliver();
    EXPECT_EQ(sent(*second), Frames({kBroadcast}));
    clock->advance(9000);
}

TEST_F(Manager, WithoutAPlatformNothingIsSentAndNothingKeepsItAlive) {
    const auto far = newLine("tty.a");
    host.platform = nullptr;
    start();
    EXPECT_EQ(manager->sendRequestMessage(1, kMessageReqGain), kResultFalse);
    EXPECT_EQ(manager->terminate(), kResultOk);
    EXPECT_TRUE(far->receive(0).empty());
    pollfd ready{far->master, POLLIN, 0};
    EXPECT_EQ(poll(&ready, 1, 0), 0);
}

TEST_F(Manager, AStartThatFailsIsTakenBack) {
    const auto far = newLine("tty.a");
    const OneTimeProcedure failing(
        true, [] { return false; }, "failing", 50);
    EXPECT_EQ(tryStart(), kResultFalse);
    EXPECT_EQ(clock->starts(50) + clock->starts(1000) + clock->starts(1100), 0u);
    EXPECT_TRUE(devices.devices.empty());
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

// --- the end

TEST_F(ManagerOnLine, RefusesToEndWhileTheHostLives) {
    EXPECT_EQ(manager->terminate(), kResultFalse);
    EXPECT_EQ(sent(), Frames()) << "the port is open";
    EXPECT_EQ(settings(), "");
    clock->advance(1100);
    EXPECT_TRUE(accessor->isReady());
    value(kDevice, kPrmGain)->setValue2(40, true);
    EXPECT_EQ(sent().size(), 1u);
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
    EXPECT_EQ(gApplication, nullptr);
    EXPECT_EQ(accessor->getIValue(kDevice, kPrmGain), nullptr);
    EXPECT_EQ(accessor->totalDevices(), 0);
    EXPECT_EQ(devices.countDevices(), 2) << "they are the host's";

    std::filesystem::remove(settingsFile());
    EXPECT_EQ(manager->terminate(), kResultOk);
    EXPECT_EQ(settings(), "") << "there is nothing to save any more";
    manager->readTALVMessage();
    manager->updateCOMPort();
    EXPECT_FALSE(isPosted());
    end();
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

TEST_F(ManagerOnLine, KeepsAReferenceForEachNoticeAndOneOnTheHost) {
    const IPtr<IPlugDevice> window = devices.devices[1];
    constexpr uint32_t mine = 1, theList = 1;
    EXPECT_EQ(referencesOf(accessor.get()), mine + theList) << "starting up gives back";
    EXPECT_EQ(host.references(), 2u);
    uint32_t kept = 0;
    const auto check = [&](const char* step) {
        EXPECT_EQ(referencesOf(accessor.get()), mine + theList + ++kept) << step;
    };
    clock->advance(1100);
    check("ready");
    choose("tty.b");
    check("a change begins");
    deliver();
    clock->advance(9000);
    check("ready again");
    EXPECT_EQ(manager->terminate(), kResultFalse);
    platform.done = true;
    EXPECT_EQ(manager->terminate(), kResultOk);
    EXPECT_EQ(referencesOf(accessor.get()), mine + theList + kept) << "the end gives back";
    end();
    EXPECT_EQ(referencesOf(accessor.get()), mine + kept);
    EXPECT_EQ(referencesOf(window.get()), 1u);
    EXPECT_EQ(host.references(), 2u) << "for good";
}

// --- in real time

TEST_F(ManagerInTime, FindsADeviceAndMirrorsItsFrontPanel) {
    const auto far = newLine("tty.a");
    start();
    EXPECT_EQ(text(far->receive(4)), kBroadcast);
    ASSERT_TRUE(far->send(frame({0x80, 5})));
    ASSERT_TRUE(runUntil([&] { return accessor->totalDevices() == 1; }, 990)) << "before the second broadcast";
    const auto found = std::chrono::steady_clock::now();
    EXPECT_EQ(text(far->receive(9)), "04 01 05 03 F6 03 41 05 B9");
    ASSERT_TRUE(far->send(frame({0xA0, 5, 2, 32})));
    EXPECT_TRUE(runUntil([&] { return value(5, kPrmGain + 2)->getValueInt() == 40; }, 700));
    ASSERT_TRUE(runUntil([&] { return accessor->isReady(); }, 3000));
    EXPECT_GE(std::chrono::steady_clock::now() - found, std::chrono::milliseconds(1095));
    EXPECT_EQ(text(arrived(*far)), "");
    const auto second = newLine("tty.b");
    choose("tty.b");
    EXPECT_TRUE(runUntil([&] { return text(arrived(*second)) == kBroadcast; }, 2000)) << "posts wake the loop";
}

TEST_F(ManagerInTime, ARunningSearchDiesWithIt) {
    const auto far = newLine("tty.a");
    start();
    EXPECT_EQ(text(far->receive(4)), kBroadcast);
    EXPECT_TRUE(runUntil([&] { return text(arrived(*far)) == kBroadcast; }, 2000)) << "the second";
    finish();
    runUntil([] { return false; }, 1300);
    EXPECT_EQ(text(arrived(*far)), "");
}
