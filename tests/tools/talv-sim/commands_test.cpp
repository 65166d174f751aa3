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
        "state|state 6|state x|raw|raw 0|raw zz|raw 00|raw 05 2|raw 0x05|raw 05,20|raw g0|raw 05 20 1|plug now|unplug|\"|\"\\q\"|\xff");
    for (const std::string& line : lines) {
        const Json reply = run(line);
        EXPECT_EQ(reply["event"], "error") << line;
        EXPECT_FALSE(reply["error"].get<std::string>().empty()) << line;
    }
    EXPECT_EQ(run("state 5"), before);
    EXPECT_FALSE(rig.outbox.due());
}

TEST_F(CommandsTest, ALinkIsReplacedAndAnythingElseIsKept) {
    namespace fs = std::filesystem;
    const std::string link = folder + "/tty.sim";
    std::string error;
    fs::create_symlink("/dev/pts/no-such", link);
    ASSERT_TRUE(rig.line.plug(error)) << error;
    fs::remove(link);
    fs::create_symlink("/dev/pts/other", link);
    rig.line.unplug();
    EXPECT_EQ(fs::read_symlink(link), "/dev/pts/other") << "somebody else's";
    fs::remove(link);
    fs::create_symlink(folder, link);
    EXPECT_FALSE(rig.line.plug(error));
    EXPECT_EQ(fs::read_symlink(link), folder);
    fs::remove(link);
    fs::create_directory(link);
    EXPECT_FALSE(rig.line.plug(error));
    EXPECT_TRUE(fs::is_directory(link));
    EXPECT_NE(error.find(link), std::string::npos);
    fs::remove(link);
    ASSERT_TRUE(rig.line.plug(error)) << error;
    rig.line.unplug();
    EXPECT_FALSE(fs::is_symlink(link));
}

}  // namespace
}  // namespace TalvSim
