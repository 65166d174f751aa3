#include "gui/os/linux/core/watches.h"
#include "tests/frame/source/gui/os/linux/core/loopfixture.h"
#include <csignal>
#include <thread>
#include <unistd.h>

using namespace Tessarine;

namespace {
class WatchTest : public LoopTest {
protected:
    WatchTest() { EXPECT_EQ(pipe(ends), 0); }
    ~WatchTest() override { close(ends[0]); }
    void write(const std::string& bytes) { EXPECT_EQ(::write(ends[1], bytes.data(), bytes.size()), int(bytes.size())); }
    char read() {
        char byte = 0;
        return ::read(ends[0], &byte, 1) == 1 ? byte : '-';
    }

    int ends[2] = {-1, -1};  // each test closes the second one
    std::string text;
};
}  // namespace

TEST_F(WatchTest, CallsForInputAndForTheEndOfIt) {
    const auto watch = watchInput(ends[0], [&] { text += read(); });
    runFor(5);
    EXPECT_EQ(text, "");
    write("ab");
    EXPECT_TRUE(runUntil([&] { return text == "ab"; }));
    close(ends[1]);
    EXPECT_TRUE(runUntil([&] { return text.starts_with("ab-"); }));
}

TEST_F(WatchTest, MayEndInItsOwnCall) {
    std::unique_ptr<Watch> watch;
    const std::string tail = "!";  // lives in the callback, which goes with the watch
    watch = watchInput(ends[0], [this, &watch, tail] {
        watch = nullptr;
        text += read() + tail;
    });
    write("ab");
    close(ends[1]);
    EXPECT_TRUE(runUntil([&] { return !text.empty(); }));
    runFor(10);
    EXPECT_EQ(text, "a!");
}

TEST_F(WatchTest, CallsOnTheMainThreadForASignal) {
    const std::thread::id mainThread = std::this_thread::get_id();
    int32_t calls = 0;
    const auto watch = watchSignal(SIGUSR1, [&] { calls += std::this_thread::get_id() == mainThread; });
    std::thread([] { kill(getpid(), SIGUSR1); }).join();
    EXPECT_TRUE(runUntil([&] { return calls == 1; }));
    runFor(5);
    EXPECT_EQ(calls, 1);
    close(ends[1]);
}
