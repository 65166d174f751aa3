#include "source/TALV_Extension/COM Port/TALV_COMPortMac.h"
#include "source/TALV_Extension/TALV_DataManager.h"
#include "tests/source/TALV_Extension/pseudoterminal.h"
#include "tests/source/TALV_Extension/testhost.h"
#include <algorithm>
#include <chrono>
#include <gtest/gtest.h>
#include <memory>
#include <thread>

using namespace TALV;
using namespace TALV::Test;

namespace {
using Bytes = std::vector<unsigned char>;

/** What a port can do without a device: the records in its ring. */
class Records : public TALV_COMPort {
public:
    Records() { initialize(); }
    int32_t openPort() override { return 1; }
    int32_t closePort() override { return 1; }
    int32_t sendMessage(const unsigned char*, int32_t) override { return 1; }
    int32_t receiveMessage() override { return 1; }
    void updateCOMInfo() override {}

    void put(const Bytes& bytes) { ring().write(bytes.data(), int32_t(bytes.size())); }
    void putRecord(int32_t length, const Bytes& bytes) {
        ring().write(reinterpret_cast<const unsigned char*>(&length), sizeof(length));
        put(bytes);
    }
    Bytes take(int32_t size) {
        Bytes bytes(size_t(size) + 1, 0);
        bytes.resize(size_t(readData(bytes.data(), size)));
        return bytes;
    }
    TALV_CircularBuffer& ring() { return *buffer; }
};

class PortWithRing : public TALV_COMPortMac {
public:
    using TALV_COMPortMac::TALV_COMPortMac;
    TALV_CircularBuffer& ring() { return *buffer; }
};

class Port : public testing::Test {
protected:
    Port() : dataManager(&host, &manager) {
        naming.folder = folder.path.string() + "/";
        host.naming = &naming;
        host.platform = &platform;
        dataManager.intialize();
        FObject::gUpdateHandler->addDependent(dataManager.comPortValue, &manager);
    }
    ~Port() override {
        FObject::gUpdateHandler->removeDependent(dataManager.comPortValue, &manager);
        dataManager.removeAllCOMPort();
    }
    std::unique_ptr<PseudoTerminal> line(const char* name) {
        return std::make_unique<PseudoTerminal>(folder.path / name);
    }
    void choose(const char* name) { dataManager.comPortValue->fromString2(String(name).text16(), true); }
    std::string current() { return dataManager.getCurrentCOMPortStr().text8(); }
    std::vector<std::string> listed() {
        std::vector<std::string> names;
        while (dataManager.getCOMPort(int32_t(names.size())).length() > 0)
            names.emplace_back(dataManager.getCOMPort(int32_t(names.size())).text8());
        return names;
    }
    /** The reader looks twice a second. */
    Bytes receive(TALV_COMPortMac& port, size_t count) {
        Bytes bytes(1024);
        size_t total = 0;
        for (int32_t tries = 0; total < count && tries < 1000; ++tries) {
            total += size_t(port.readData(bytes.data() + total, int32_t(bytes.size() - total)));
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
        bytes.resize(total);
        return bytes;
    }

    Updates updates;
    TemporaryFolder folder;
    TestNaming naming;
    TestPlatform platform;
    TestHost host;
    Listener manager;
    TALV_DataManager dataManager;
    TALV_COMPortMac port{&host, &dataManager};
};

/** There is one line, and it is open. */
class OpenPort : public Port {
protected:
    OpenPort() {
        port.initialize();
        EXPECT_EQ(port.openPort(), 0);
    }
    ~OpenPort() override { port.closePort(); }

    const std::unique_ptr<PseudoTerminal> far = line("tty.a");
    const termios before = far->settings();
};
}  // namespace

TEST(PortRecords, AreTakenWhole) {
    Records records;
    const Bytes first(60, 1), second(60, 2);
    for (int32_t round = 0; round < 2; ++round) {
        records.putRecord(60, first);
        records.putRecord(0, {});
        records.putRecord(60, second);
        EXPECT_EQ(records.take(59), Bytes());
        if (round == 0) {
            EXPECT_EQ(records.take(100), first);
            EXPECT_EQ(records.take(100), second);
        } else {
            EXPECT_EQ(records.take(120).size(), 120u);
        }
    }
    EXPECT_EQ(records.readData(nullptr, 100), 0);
    // those that were cut, as at the end of a full ring, count with the length they claim
    records.putRecord(10, {1, 2, 3});
    EXPECT_EQ(records.take(100), Bytes({1, 2, 3, 0, 0, 0, 0, 0, 0, 0}));
    records.put({2, 0});  // not even a whole header
    EXPECT_EQ(records.take(100), Bytes({0, 0}));
}

TEST(PortRecords, ThatClaimTooMuchStay) {
    for (const int32_t length : {-1, INT32_MIN, INT32_MAX, 101}) {
        SCOPED_TRACE(length);
        Records records;
        records.putRecord(3, {1, 2, 3});
        records.putRecord(length, {4});
        EXPECT_EQ(records.take(100), Bytes({1, 2, 3}));
        EXPECT_EQ(records.take(100), Bytes());
        EXPECT_EQ(records.ring().avail(), 5);
    }
}

TEST_F(OpenPort, SetsUpTheLineAndPutsItBack) {
    const termios open = far->settings();
    EXPECT_EQ(open.c_iflag, tcflag_t(IGNPAR));
    EXPECT_EQ(open.c_oflag | open.c_lflag, 0u);
    EXPECT_EQ(open.c_cflag & (CSIZE | CREAD | CLOCAL | PARENB | CSTOPB | CRTSCTS), tcflag_t(CS8 | CREAD | CLOCAL));
    EXPECT_TRUE(cfgetispeed(&open) == B38400 && cfgetospeed(&open) == B38400);
    EXPECT_EQ(open.c_cc[VMIN], 0);
    EXPECT_EQ(open.c_cc[VTIME], 1);
    EXPECT_EQ(open.c_cc[VINTR], before.c_cc[VINTR]);
    EXPECT_EQ(port.closePort(), 0);
    const termios after = far->settings();
    EXPECT_EQ(after.c_iflag, before.c_iflag);
    EXPECT_EQ(after.c_lflag, before.c_lflag);
    EXPECT_EQ(after.c_cflag, before.c_cflag);
}

TEST_F(Port, ClosesOnceAndLosesWhatWasNotTaken) {
    const auto far = line("tty.a");
    PortWithRing port(&host, &dataManager);
    port.initialize();
    EXPECT_EQ(port.closePort(), 1);
    ASSERT_TRUE(far->send({'o', 'l', 'd', '\n'}));
    pollfd waiting{far->slave, POLLIN, 0};
    ASSERT_EQ(poll(&waiting, 1, 5000), 1);
    ASSERT_EQ(port.openPort(), 0);  // what came before is lost too
    ASSERT_TRUE(far->send(Bytes(20, 7)));
    ASSERT_EQ(receive(port, 20).size(), 20u);
    ASSERT_TRUE(far->send(Bytes(20, 8)));
    while (port.ring().avail() == 0)
        std::this_thread::yield();
    EXPECT_EQ(port.closePort(), 0);
    EXPECT_EQ(port.closePort(), 1);
    EXPECT_EQ(port.openPort(), 0);  // the same object again
    unsigned char bytes[100];
    EXPECT_EQ(port.readData(bytes, sizeof(bytes)), 0);
    EXPECT_EQ(port.closePort(), 0);
}

TEST_F(OpenPort, DropsChunksThatFindNoRoom) {
    size_t sent = 0;
    for (unsigned char chunk = 0; chunk < 40; ++chunk) {
        ASSERT_TRUE(far->send(Bytes(255, chunk)));
        sent += 255;
        port.receiveMessage();
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    Bytes bytes(sent);
    const size_t kept = size_t(port.readData(bytes.data(), int32_t(bytes.size())));
    EXPECT_LE(kept, 4096u);
    EXPECT_GT(kept, 3000u);
    EXPECT_TRUE(std::is_sorted(bytes.begin(), bytes.begin() + ptrdiff_t(kept)));
}

TEST_F(Port, AChunkThatFitsWithoutItsCountIsCutNotDropped) {
    const auto far = line("tty.a");
    PortWithRing port(&host, &dataManager);
    port.initialize();
    ASSERT_EQ(port.openPort(), 0);
    for (const int32_t room : {9, 8, 5}) {
        port.ring().clear();
        const Bytes filler(size_t(port.ring().size() - room));
        port.ring().write(filler.data(), int32_t(filler.size()));
        ASSERT_TRUE(far->send(Bytes(5, 7)));
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(5);
        while (port.ring().space() > 0 && std::chrono::steady_clock::now() < end)
            port.receiveMessage();
        EXPECT_EQ(port.ring().space(), 0) << room;
    }
    port.closePort();
}

TEST_F(Port, WithoutADeviceNothingWorksAndNothingHangs) {
    port.initialize();
    choose("tty.missing");
    EXPECT_EQ(port.openPort(), 1);
    const int32_t looks = platform.looks;
    EXPECT_EQ(port.sendMessage(Bytes{1}.data(), 1), 1);
    EXPECT_EQ(platform.looks, looks);
    EXPECT_EQ(port.receiveMessage(), 1);
    const auto far = line("tty.missing");
    for (int32_t i = 0; i < 60; ++i)  // beyond the room of a path
        naming.folder += "././";
    EXPECT_EQ(port.openPort(), 1);
}

TEST_F(OpenPort, SpinsTwoSecondsOnADeviceThatTakesNothing) {
    platform.step = 20;
    const auto send = [this](size_t size) {
        const uint32_t start = platform.ticks;
        EXPECT_EQ(port.sendMessage(Bytes(size).data(), int32_t(size)), 1);
        EXPECT_GE(platform.ticks - start, 2000u);
        EXPECT_LE(platform.ticks - start, 2040u);
    };
    send(1000000);  // full
    far->hangUp();
    send(6);
    EXPECT_EQ(port.closePort(), 0) << "it stays open";
}

TEST_F(Port, ListsWhatOpensInNaturalOrder) {
    std::vector<std::unique_ptr<PseudoTerminal>> lines;
    for (const char* name : {"ttyS10", "ttyS9", "tty.b", "tty.\xFC", "ttyT1", "xtty.a", "TTY.a", "tty.no"})
        lines.push_back(line(name));
    std::filesystem::create_symlink(folder.path / "nowhere", folder.path / "tty.dangling");
    std::filesystem::create_directory(folder.path / "tty.folder");
    naming.refused = "tty.no";
    port.initialize();
    std::vector<std::string> names = listed();
    EXPECT_EQ(std::erase(names, "tty.\xFC"), 1u) << "raw bytes";
    EXPECT_EQ(names, (std::vector<std::string>{"tty.b", "ttyS9", "ttyS10"}));
    choose("tty.\xFC");
    EXPECT_EQ(port.openPort(), 0);
    EXPECT_EQ(port.closePort(), 0);
    lines.erase(lines.begin());
    port.updateCOMInfo();
    EXPECT_EQ(listed().size(), 3u) << "anew";
}

TEST(PortNaming, HasItsOwnPlacesWithoutAHost) {
    const TALV_PortNaming naming(nullptr);
    for (const char* name : {"tty.usb", "ttyS0", "ttyUSB12", "ttyACM3"})
        EXPECT_TRUE(naming.accepts(name)) << name;
    for (const char* name : {"tty", "tty0", "ttyU", "cu.usb", "TTYS0", "xttyS0", ""})
        EXPECT_FALSE(naming.accepts(name)) << name;
}
