#pragma once
#include "base/fmessage.h"
#include "base/source/hooks.h"
#include "base/source/timer.h"
#include "gui/os/linux/core/platformcore.h"
#include "gui/uapp.h"
#include "gui/uctrler.h"
#include "pluginterfaces/host/idevicelist.h"
#include "pluginterfaces/host/iplugdevice.h"
#include "public.sdk/source/main/pluginfactory.h"
#include "source/TALV_Extension/TALV_Manager.h"
#include "tests/source/TALV_Extension/pseudoterminal.h"
#include "tests/source/TALV_Extension/testhost.h"
#include <algorithm>
#include <chrono>
#include <gtest/gtest.h>
#include <optional>

/** The whole extension on a pseudo-terminal, with a host that a test can take to pieces and a clock that it moves. */

namespace TALV::Test {

/** The hand of time: timers fire by their due time, and not at all without a controller. */
class TestClock {
public:
    TestClock() : before(gRunLoopHooks.createTimer) {
        current = this;
        gRunLoopHooks.createTimer = create;
    }
    ~TestClock() {
        gRunLoopHooks.createTimer = before;
        for (ManualTimer* timer : timers)  // a manager's timers stay to the end of the program
            timer->clock = nullptr;
    }
    TestClock(const TestClock&) = delete;

    void advance(uint32_t ms) {
        const uint32_t end = now + ms;
        while (ManualTimer* timer = gController ? earliest() : nullptr) {
            if (timer->due > end)
                break;
            now = timer->due;
            timer->due += timer->period;
            const IPtr<ManualTimer> held = timer;  // it may be stopped and started anew
            timer->callback->onTimer(timer);
        }
        now = end;
    }

private:
    class ManualTimer : public Timer {
    public:
        ManualTimer(TestClock& clock, ITimerCallback* callback, uint32_t period)
            : clock(&clock), callback(callback), period(period), due(clock.now + period) {}
        void stop() override {
            if (clock)
                std::erase(clock->timers, this);
        }

        TestClock* clock;  // null when it is gone
        ITimerCallback* callback;
        uint32_t period, due;
    };

    static Timer* create(ITimerCallback* callback, uint32_t period) {
        auto* timer = new ManualTimer(*current, callback, period);
        current->timers.push_back(timer);
        return timer;
    }
    /** Of equal ones the one that was started first. */
    ManualTimer* earliest() const {
        const auto found = std::ranges::min_element(timers, {}, &ManualTimer::due);
        return found == timers.end() ? nullptr : *found;
    }

    static inline TestClock* current = nullptr;
    Timer* (*before)(ITimerCallback*, uint32_t);
    uint32_t now = 0;
    std::vector<ManualTimer*> timers;  // those that run
};

/** The host's devices, made by the module's own factory and found again by identity. */
class TestDevices : public Uncounted<IDeviceList2> {
public:
    int32_t countDevices() override { return int32_t(devices.size()); }
    IPlugDevice* getDevice(int32_t index) override { return devices.at(size_t(index)); }
    IPlugDevice* createDevice(const char* cid, const char*, FUnknown*) override {
        const OPtr<IPluginFactory> factory(GetPluginFactory());
        void* face = nullptr;
        if (factory->createInstance(cid, IPlugDevice::iid, &face) != kResultOk)
            return nullptr;
        devices.push_back(OPtr<IPlugDevice>(static_cast<IPlugDevice*>(face)));
        return devices.back();
    }
    int32_t removeDevice(FUnknown* face) override {
        const FUnknownPtr<FUnknown> identity(face);
        const auto isIt = [&](const IPtr<IPlugDevice>& each) {
            return FUnknownPtr<FUnknown>(each).get() == identity.get();
        };
        return std::erase_if(devices, isIt) == 1 ? kResultOk : kResultFalse;
    }

    std::vector<IPtr<IPlugDevice>> devices;
};

class ManagerHost : public TestHost {
public:
    int32_t createClassInstance(const char* iid, void** obj) override {
        if (FUID::same(iid, IDeviceList2::iid))
            return deviceList && answerInterface<IDeviceList2>(deviceList, iid, obj) ? kResultOk : kResultFalse;
        const int32_t result = TestHost::createClassInstance(iid, obj);
        if (result == kResultOk && !portValue && FUID::same(iid, IHostStringValue_iid))
            portValue = static_cast<IValue*>(*obj);
        return result;
    }

    TestDevices* deviceList = nullptr;
    IValue* portValue = nullptr;  // the first text that is asked for: the name of the port
};

class ManagerTest : public testing::Test {
protected:
    using Bytes = PseudoTerminal::Bytes;
    using Frames = std::vector<std::string>;

    ManagerTest() {
        std::filesystem::create_directory(folder.path / "dev");
        setenv("XDG_CONFIG_HOME", folder.path.c_str(), 1);
        installTessarinePlatformCore();
        clock.emplace();
        naming.folder = (folder.path / "dev").string() + "/";
        host.naming = &naming;
        host.platform = &platform;
        host.deviceList = &devices;
        TALV_MessageFactory::clearMessageContainer();
    }
    ~ManagerTest() override {
        finish();
        clock.reset();
        unsetenv("XDG_CONFIG_HOME");
    }

    // life
    int32_t tryStart() {
        TALV_Manager::newInstance(nullptr);
        manager = TALV_Manager::mp_talv;
        return manager->initialize(&host);
    }
    void start() {
        ASSERT_EQ(tryStart(), kResultOk);
        if (!devices.devices.empty())
            accessor = FUnknownPtr<ITALV_PrmAccessor>(devices.devices[0].get());
        if (accessor)
            FObject::gUpdateHandler->addDependent(accessor->getIsPortUpdated(), &notices);
    }
    /** A host that quits; what the notices leave behind with the accessor is given back. */
    void finish() {
        platform.done = true;
        if (manager) {
            EXPECT_EQ(manager->terminate(), kResultOk);
            end();
        }
        FObject::gUpdateHandler->removeDependent(nullptr, &notices);
        if (ITALV_PrmAccessor* last = accessor.detach())
            while (last->release() > 0) {}
    }
    /** The end of the manager alone. */
    void end() {
        EXPECT_EQ(manager->release(), 0u);
        manager = nullptr;
        EXPECT_EQ(TALV_Manager::mp_talv, nullptr);
        EXPECT_EQ(gApplication, nullptr);
        EXPECT_EQ(gController, nullptr);
        EXPECT_EQ(platform.references, 0);
        EXPECT_EQ(naming.references, 0);
        EXPECT_EQ(devices.references, 0);
        EXPECT_TRUE(devices.devices.empty());
    }

    // the line
    std::unique_ptr<PseudoTerminal> newLine(const char* name) {
        return std::make_unique<PseudoTerminal>(folder.path / "dev" / name);
    }
    static Bytes frame(const Bytes& body) {
        Bytes bytes = {static_cast<unsigned char>(body.size() + 1)};
        bytes.insert(bytes.end(), body.begin(), body.end());
        bytes.push_back(TALV_MessageFactory::calcChecksum(body.data(), int32_t(body.size())));
        return bytes;
    }
    static std::string text(const Bytes& bytes) {
        std::string digits;
        char each[4];
        for (const unsigned char byte : bytes)
            digits.append(each, size_t(std::snprintf(each, sizeof(each), digits.empty() ? "%02X" : " %02X", byte)));
        return digits;
    }
    /** The frames since the last look, seen at the far end of the open line; a frame of our own ends them. */
    Frames sent(PseudoTerminal& far) {
        const std::string last = "04 01 FE 00 00";
        manager->sendDeviceMode(0xFE, 0);
        Frames frames;
        for (;;) {
            Bytes bytes = far.receive(1);
            if (bytes.empty())
                return frames.push_back("the line is silent"), frames;
            const Bytes rest = far.receive(bytes[0]);
            bytes.insert(bytes.end(), rest.begin(), rest.end());
            if (text(bytes) == last)
                return frames;
            frames.push_back(text(bytes));
        }
    }
    /** As if the port had read these bytes; nothing is handled yet. */
    static void arrive(const Bytes& bytes) {
        unsigned char none[1];
        TALV_MessageFactory::ajustmentMessage(bytes.data(), int32_t(bytes.size()), none, 0);
    }
    void hear(const Bytes& bytes) {
        arrive(bytes);
        manager->readTALVMessage();
    }
    /** A device that is known, with nothing of it left on the line. */
    void meet(unsigned char devId, PseudoTerminal& far) {
        hear(frame({0x80, devId}));
        sent(far);
    }

    // what a host sees
    IValue* value(unsigned char devId, int32_t id) { return accessor->getIValue(devId, TALV_ParamId(id)); }
    void choose(const char* port) { host.portValue->fromString2(String(port).text16(), true); }
    std::string port() {
        tchar name[128] = {};
        int32_t length = 128;
        host.portValue->toString2(name, &length);
        return String(name).text8();
    }
    static void deliver() { gController->updateDependencies(); }
    bool isPosted() { return gMessenger->areMessagesPosted(static_cast<CmObject*>(manager)); }
    int32_t notice() { return accessor->getIsPortUpdated()->getValueInt(); }
    std::filesystem::path settingsFile() { return folder.path / "VOREN TALV Extension" / "Setup.xml"; }
    std::string settings() { return contentOf(settingsFile()); }
    void putSettings(const std::string& port) {
        std::filesystem::create_directory(settingsFile().parent_path());
        std::ofstream(settingsFile()) << "<VOREN-HA-Remote><ComPortName str=\"" << port << "\"/></VOREN-HA-Remote>";
    }

    static constexpr const char* kBroadcast = "03 00 00 FF";

    Updates updates;
    TemporaryFolder folder;
    TestNaming naming;
    TestPlatform platform;
    TestDevices devices;
    ManagerHost host;
    Listener notices;  // of the port notice
    std::optional<TestClock> clock;
    TALV_Manager* manager = nullptr;
    IPtr<ITALV_PrmAccessor> accessor;
};

}  // namespace TALV::Test
