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
    ~WatchTest() override {
        close(ends[0]);
        closeWriter();
    }
    void write(char byte) { EXPECT_EQ(::write(ends[1], &byte, 1), 1); }
    char read() {
        char byte = 0;
        return ::read(ends[0], &byte, 1) == 1 ? byte : '-';
    }
    void closeWriter() {
        if (ends[1] >= 0)
            close(std::exchange(ends[1], -1));
    }

    int ends[2] = {-1, -1};
    std::string text;
};
}  // namespace

TEST_F(WatchTest, CallsForInputAndForTheEndOfIt) {
    const auto watch = watchInput(ends[0], [&] { text += read(); });
    runFor(5);
    EXPECT_EQ(text, "");
    write('a');
    write('b');
    EXPECT_TRUE(runUntil([&] { return text == "ab"; }));
    closeWriter();
    EXPECT_TRUE(runUntil([&] { return text.starts_with("ab-"); }));
}

TEST_F(WatchTest, MayEndInItsOwnCall) {
    std::unique_ptr<Watch> watch;
    const std::string tail = "!";  // lives in the callback, which goes with the watch
    watch = watchInput(ends[0], [this, &watch, tail] {
        watch = nullptr;
        text += read() + tail;
    });
    write('a');
    write('b');
    EXPECT_TRUE(runUntil([&] { return !text.empty(); }));
    runFor(10);
    EXPECT_EQ(text, "a!");
}

TEST_F(WatchTest, CallsOnTheMainThreadForASignal) {
    const std::thread::id mainThread = std::this_thread::get_id();
    int32_t calls = 0;
    auto watch = watchSignal(SIGUSR1, [&] { calls += std::this_thread::get_id() == mainThread; });
    std::raise(SIGUSR1);
    EXPECT_TRUE(runUntil([&] { return calls == 1; }));
    std::thread([] { kill(getpid(), SIGUSR1); }).join();
    EXPECT_TRUE(runUntil([&] { return calls == 2; }));
    runFor(5);
    EXPECT_EQ(calls, 2);
}
