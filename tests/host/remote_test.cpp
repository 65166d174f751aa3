#include "host/remote.h"
#include "tests/host/hostfixture.h"
#include "tests/source/TALV_Extension/pseudoterminal.h"

using namespace Tessarine;

namespace HostTest {
namespace {
using Log = std::vector<std::string>;
using Line = TALV::Test::PseudoTerminal;

class Listener final : public RemoteListener {
public:
    void readyChanged(bool ready) override { log.push_back(ready ? "ready" : "not ready"); }
    void deviceFound(int32_t device) override { log.push_back("device " + std::to_string(device)); }
    void devicesGone() override { log.push_back("gone"); }
    void valueChanged(const ParamAddress& address) override {
        log.push_back(std::to_string(address.device) + " " + address.param->name + " " +
                      std::to_string(address.channel));
    }
    void connectionChanged() override { log.push_back("connection"); }

    Log taken() { return std::exchange(log, Log()); }

    Log log;
};

class RemoteTest : public HostFixture {
protected:
    void SetUp() override {
        load();
        start();
        remote = OPtr<Remote>(new Remote(&classes.getDevices(), listener));
        remote->start();
    }
    void TearDown() override {
        remote->stop();
        endModule();
    }
    std::unique_ptr<Line> newLine(const char* name) { return std::make_unique<Line>(folder.path / "dev" / name); }
    bool runUntilReady() {
        return Application::runUntil([this] { return remote->isReady(); }, 8000);
    }
    ParamAddress gain(int32_t device, int32_t channel) const { return {device, findParam("gain"), channel}; }

    const Application application;
    Listener listener;
    OPtr<Remote> remote;
};

Line::Bytes answerOf(unsigned char device) {
    return {0x03, 0x80, device, static_cast<unsigned char>(~(0x80 + device))};
}

class RemoteOnTwoLines : public RemoteTest {
protected:
    RemoteOnTwoLines() : one(newLine("tty.one")), two(newLine("tty.two")) {}
    void SetUp() override {
        RemoteTest::SetUp();
        one->send(answerOf(1));
        ASSERT_TRUE(runUntilReady());
    }

    const std::unique_ptr<Line> one, two;
};

TEST_F(RemoteOnTwoLines, HearsWhatHappensToDevices) {
    EXPECT_EQ(listener.log, (Log{"device 1", "ready"}));
    EXPECT_EQ(remote->getDevices(), std::set<int32_t>{1});
    IValue* value = remote->getValue(gain(1, 3));
    ASSERT_TRUE(value);
    EXPECT_FALSE(remote->getValue(gain(2, 3)));
    listener.taken();
    value->setValue2(40, true);
    EXPECT_EQ(listener.taken(), Log{"1 gain 3"}) << "at once";
    value->setValue2(40, true);
    EXPECT_EQ(listener.taken(), Log());
    EXPECT_TRUE(remote->assign(1, 8));
    EXPECT_EQ(listener.taken(), Log{"connection"});
    EXPECT_EQ(remote->getChannel(1), 8);
    EXPECT_EQ(remote->getDeviceOn(8), 1);
    EXPECT_TRUE(remote->assign(0, 8));
    EXPECT_EQ(remote->getChannel(1), -1);
}

TEST_F(RemoteOnTwoLines, APortChangeForgetsAndFindsAnew) {
    listener.taken();
    classes.portValue->fromString2(u"tty.two", true);
    EXPECT_EQ(listener.taken(), (Log{"gone", "not ready"})) << "before the values go";
    EXPECT_TRUE(remote->getDevices().empty());
    EXPECT_FALSE(remote->getValue(gain(1, 0)));
    Application::run(50);
    EXPECT_EQ(two->receive(4), (Line::Bytes{0x03, 0x00, 0x00, 0xFF}));
    two->send(answerOf(2));
    ASSERT_TRUE(runUntilReady());
    EXPECT_EQ(listener.taken(), (Log{"device 2", "ready"}));
    EXPECT_TRUE(remote->getValue(gain(2, 0)));
}
}  // namespace
}  // namespace HostTest
