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

Line::Bytes answerOf(unsigned char device) {
    return {0x03, 0x80, device, static_cast<unsigned char>(~(0x80 + device))};
}

class RemoteOnTwoLines : public HostFixture {
protected:
    void SetUp() override {
        load();
        start();
        remote->start();
        one.send(answerOf(1));
        ASSERT_TRUE(runUntilReady());
    }
    void TearDown() override {
        remote->stop();
        endModule();
    }
    bool runUntilReady() {
        return Application::runUntil([this] { return remote->isReady(); }, 8000);
    }
    ParamAddress gain(int32_t device) const { return {device, findParam("gain"), 0}; }

    const Application application;
    Line one{folder.path / "dev/tty.one"}, two{folder.path / "dev/tty.two"};
    Listener listener;
    const OPtr<Remote> remote{new Remote(&classes.getDevices(), listener)};
};

TEST_F(RemoteOnTwoLines, APortChangeForgetsAndFindsAnew) {
    EXPECT_EQ(listener.taken(), (Log{"device 1", "ready"}));
    classes.portValue->fromString2(u"tty.two", true);
    EXPECT_EQ(listener.taken(), (Log{"gone", "not ready"})) << "before the values go";
    EXPECT_TRUE(remote->getDevices().empty());
    EXPECT_FALSE(remote->getValue(gain(1)));
    Application::run(50);
    EXPECT_EQ(two.receive(4), (Line::Bytes{0x03, 0x00, 0x00, 0xFF}));
    two.send(answerOf(2));
    ASSERT_TRUE(runUntilReady());
    EXPECT_EQ(listener.taken(), (Log{"device 2", "ready"}));
    EXPECT_TRUE(remote->getValue(gain(2)));
}
}  // namespace
}  // namespace HostTest
