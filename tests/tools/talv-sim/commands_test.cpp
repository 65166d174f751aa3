#include "tools/talv-sim/commands.h"
#include "tests/support/pieces.h"
#include <filesystem>
#include <gtest/gtest.h>
#include <unistd.h>

namespace TalvSim {
namespace {
struct CommandsTest : testing::Test {
    CommandsTest() { rig.devices.emplace(5, Device(5, "HA-8CH")); }
    ~CommandsTest() override { std::filesystem::remove_all(folder); }

    static std::string newFolder() {
        std::string path = testing::TempDir() + "talv-sim-XXXXXX";
        return mkdtemp(path.data());
    }
    Json run(const std::string& line) { return commands.run(line, {}); }

    std::string folder = newFolder();
    Rig rig{{}, Line(folder + "/tty.sim"), Outbox({})};
    Commands commands{rig};
};

TEST_F(CommandsTest, RefusedOnesSayWhyAndChangeNothing) {
    const Json before = run("state 5");
    const std::vector<std::string> lines = piecesOf(
        "bogus|turn|turn 5 gain 3|turn 5 gain 8 1|turn 5 gain -1 1|turn 5 gain x 1|turn 5 gain 3 loud|"
        "turn 5 gain 3 1.5|turn 5 brightness 0 3|turn 5 nothing 3|turn 6 gain 3 1|turn 0 gain 3 1|"
        "turn 300 gain 3 1|turn 5 devName \"open|turn 5 devName \"\\u00e9\"|turn 5 gain 3 99999999999999999999|"
        "state|state 6|state x|raw|raw 0|raw zz|raw 00|plug now|unplug|\"|\"\\q\"|\xff");
    for (const std::string& line : lines) {
        const Json reply = run(line);
        EXPECT_EQ(reply["event"], "error") << line;
        EXPECT_FALSE(reply["error"].get<std::string>().empty()) << line;
    }
    EXPECT_EQ(run("state 5"), before);
    EXPECT_FALSE(rig.outbox.due());
}

struct TurnRow {
    const char* command;
    Json value, report;
};

TEST_F(CommandsTest, TurnsChangeTheDeviceAndSendItsReport) {
    std::string error;
    ASSERT_TRUE(rig.line.plug(error)) << error;
    const TurnRow rows[] = {
        {"turn 5 gain 3 40",           40,          "05 A0 05 03 20 37"                     },
        {"turn 5 gain 3 -7",           0,           "05 A0 05 03 48 0F"                     },
        {"turn 5  gainTrim\t2 10",     10,          "05 A4 05 02 FB 59"                     },
        {"turn 5 plus48VMaster 1",     1,           "04 A7 05 01 52"                        },
        {"turn 5 devMode 3",           3,           "0C 81 05 03 48 41 2D 38 43 48 20 20 BD"},
        {"turn 5 devName \"A \\\"B\"", "A \"B    ", "0C 81 05 03 41 20 22 42 20 20 20 20 31"},
        {"turn 5 meter 7 127",         127,         "0B A3 05 00 00 00 00 00 00 00 7F D8"   },
        {"turn 5 meterMode 1",         1,           nullptr                                 },
    };
    for (const TurnRow& row : rows) {
        const Json reply = run(row.command);
        EXPECT_EQ(reply["event"], "turned") << row.command;
        EXPECT_EQ(reply["value"], row.value) << row.command;
        EXPECT_EQ(reply["report"], row.report) << row.command;
        EXPECT_EQ(rig.outbox.due().has_value(), !row.report.is_null()) << row.command;
        if (rig.outbox.due()) {
            EXPECT_EQ(toHex(rig.outbox.piece()), row.report.get<std::string>());
        }
        rig.outbox.clear();
    }
}

TEST_F(CommandsTest, ALinkIsReplacedAndAnythingElseIsKept) {
    namespace fs = std::filesystem;
    const std::string link = folder + "/tty.sim";
    std::string error;
    const auto plugged = [&] {
        const bool done = rig.line.plug(error);
        rig.line.unplug();
        return done;
    };
    fs::create_symlink("/dev/pts/no-such", link);
    EXPECT_TRUE(plugged()) << error;
    EXPECT_FALSE(fs::is_symlink(link));
    fs::create_symlink(folder, link);
    EXPECT_FALSE(plugged()) << "a link to something else";
    EXPECT_EQ(fs::read_symlink(link), folder);
    fs::remove(link);
    fs::create_directory(link);
    EXPECT_FALSE(plugged());
    EXPECT_TRUE(fs::is_directory(link));
    EXPECT_NE(error.find(link), std::string::npos);
}

TEST_F(CommandsTest, ALinkOfSomebodyElseOutlivesTheLine) {
    namespace fs = std::filesystem;
    const std::string link = folder + "/tty.sim";
    std::string error;
    ASSERT_TRUE(rig.line.plug(error)) << error;
    fs::remove(link);
    fs::create_symlink("/dev/pts/other", link);
    rig.line.unplug();
    EXPECT_EQ(fs::read_symlink(link), "/dev/pts/other");
}

}  // namespace
}  // namespace TalvSim
