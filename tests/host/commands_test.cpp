#include "host/commands.h"
#include "tests/host/hostfixture.h"
#include "tests/support/pieces.h"

using namespace Tessarine;

namespace HostTest {
namespace {
/** Without a module: no device is there, nothing is ready. */
class CommandsTest : public HostFixture {
protected:
    CommandsTest()
        : remote(new Remote(&classes.getDevices(), listener)),
          commands(new Commands(
              *remote, module, [this](const Json& reply) { replies.push_back(reply); }, [this] { ++quits; })) {}

    Json ask(const std::string& line) {
        const size_t before = replies.size();
        commands->take(line);
        return replies.size() == before + 1 ? replies.back() : Json();
    }

    const Application application;
    SilentListener listener;
    const OPtr<Remote> remote;
    std::vector<Json> replies;
    int32_t quits = 0;
    OPtr<Commands> commands;
};

TEST_F(CommandsTest, EachRefusalIsOneNumberedReply) {
    std::vector<std::string> lines = piecesOf(
        "bogus|\"\"|\"|ready 1|wait|wait ready|wait ready x|wait ready -1|wait ready 0|wait steady 1|"
        "wait ready 1 1|devices 1|get|get 1|get 1 gain|get 1 gain 0 0|get x gain 0|get 0 gain 0|get 256 gain 0|"
        "get 4294967297 gain 0|get 1 Gain 0|get 1 gain 8|get 1 gain -1|get 1 gain 1x|get 1 brightness 0|"
        "get 1 gain 0|set 1 gain 0|set 1 gain 0 1|set 1 gain 0 1 1|set 1 brightness|assign|assign 1|assign -1 0|"
        "assign 256 0|assign 1 -2|assign 1 2040|assign 1 0|assign 1 0 0|connection|connection -1|"
        "connection 2040|connection x|sleep|sleep x|sleep -1|sleep +-1|sleep 1.5|factory 1|help 1|quit 1|\xFF\xFE");
    lines.insert(lines.end(), {std::string(70000, 'x'), std::string("ready\0x", 7)});
    int64_t number = 0;
    for (const std::string& line : lines) {
        SCOPED_TRACE(line.substr(0, 40));
        const Json reply = ask(line);
        ASSERT_TRUE(reply.is_object());
        EXPECT_EQ(reply["reply"], ++number);
        EXPECT_EQ(reply["ok"], false);
        EXPECT_TRUE(reply["error"].is_string() && !reply["error"].empty());
        EXPECT_NO_THROW(lineOf(reply));
    }
    EXPECT_EQ(quits, 0);
}

TEST_F(CommandsTest, OneAfterTheOther) {
    commands->take("# no command");
    commands->take("   ");
    commands->take("sleep 30");
    commands->take("ready");
    commands->take("wait ready 99999999999999999999");
    commands->take("help");
    EXPECT_TRUE(replies.empty());
    EXPECT_FALSE(commands->isIdle());
    EXPECT_TRUE(Application::runUntil([this] { return replies.size() == 2; }, 2000));
    EXPECT_EQ(replies[0].dump(), R"({"reply":1,"ok":true})");
    EXPECT_EQ(replies[1].dump(), R"({"reply":2,"ok":true,"ready":false})");
    commands->end();
    ASSERT_EQ(replies.size(), 3u) << "who waits is told, and what is behind doesn't come";
    EXPECT_EQ(replies[2]["ok"], false);
    EXPECT_EQ(replies[2]["reply"], 3);
    EXPECT_TRUE(commands->isIdle());
}

TEST_F(CommandsTest, NothingComesBehindAQuit) {
    for (const char* line : {"sleep 1", "quit", "ready"})
        commands->take(line);
    EXPECT_TRUE(Application::runUntil([this] { return quits > 0; }, 2000));
    commands->take("ready");  // read in the same block
    ASSERT_EQ(replies.size(), 2u);
    EXPECT_EQ(replies[1].dump(), R"({"reply":2,"ok":true})");
}
}  // namespace
}  // namespace HostTest
