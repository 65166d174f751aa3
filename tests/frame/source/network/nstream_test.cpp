#include "network/nstream.h"
#include "network/nserver.h"
#include <chrono>
#include <fcntl.h>
#include <functional>
#include <gtest/gtest.h>
#include <numeric>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace Tessarine {
namespace {
constexpr NTimeouts kShort = {200, 200, 400};

/** The two ends of a connection. */
struct Pair {
    explicit Pair(const NTimeouts& timeouts = {}, const char* address = nullptr) : near(timeouts) {
        EXPECT_TRUE(server.listen(address, 0));
        EXPECT_TRUE(near.connect(address ? address : "localhost", server.getPort()));
        far = new NStream(server.accept(5000));
    }
    NServer server;
    NStream near;
    OPtr<NStream> far;
};

int64_t millisecondsOf(const std::function<void()>& work) {
    const int64_t begin = NClock::nowMs();
    work();
    return NClock::nowMs() - begin;
}

TEST(NStream, CarriesBytesOverBothVersions) {
    for (const char* address : {"127.0.0.1", "::1", static_cast<const char*>(nullptr)}) {
        SCOPED_TRACE(address ? address : "by name");
        Pair pair({}, address);
        std::vector<int32_t> numbers(1000000), received(numbers.size());
        std::iota(numbers.begin(), numbers.end(), 0);
        const int64_t bytes = int64_t(numbers.size() * sizeof(int32_t));
        std::thread writer([&] {
            EXPECT_EQ(pair.near.writeRaw("one\r\ntwo\n\nrest", 14), 14);
            EXPECT_EQ(pair.near.writeRaw(numbers.data(), bytes), bytes);
            pair.near.close();
        });
        std::string line;
        for (const char* expected : {"one", "two", ""}) {
            EXPECT_TRUE(pair.far->readLine(line, 4));
            EXPECT_EQ(line, expected);
        }
        EXPECT_EQ(pair.far->tell(), 10);
        EXPECT_EQ(pair.far->seek(4, kFromCurrent), 14);
        EXPECT_EQ(pair.far->seek(0, kFromStart), -1);
        EXPECT_EQ(pair.far->readRaw(received.data(), bytes), bytes);
        EXPECT_EQ(received, numbers);
        EXPECT_EQ(pair.far->readRaw(received.data(), 1), 0);
        EXPECT_TRUE(pair.far->verify());
        writer.join();
    }
}

TEST(NStream, EndsWithItsContent) {
    const std::tuple<int64_t, const char*, bool> rows[] = {
        {-1,        "abcdefgh", true },
        {8,         "abcdefgh", true },
        {3,         "abc",      true },
        {0,         "",         true },
        {9,         "abcdefgh", false},
        {INT64_MAX, "abcdefgh", false},
    };
    for (const bool isReadAhead : {false, true})
        for (const auto& [length, expected, good] : rows) {
            SCOPED_TRACE(std::to_string(length) + (isReadAhead ? " read ahead" : ""));
            Pair pair;
            std::string line;
            pair.near.writeRaw("head\nabcdefgh", isReadAhead ? 13 : 5);
            EXPECT_TRUE(pair.far->readLine(line, 100));
            pair.far->beginContent(length);
            pair.near.writeRaw("abcdefgh", isReadAhead ? 0 : 8);
            pair.near.close();
            std::string content(100, 0);
            content.resize(size_t(pair.far->readRaw(content.data(), 100)));
            EXPECT_EQ(content, expected);
            EXPECT_EQ(pair.far->verify(), good);
        }
}

TEST(NStream, BoundsLines) {
    Pair pair;
    const std::string text(40000, 'x');
    std::string line;
    pair.near.writeRaw((text + "\n" + text + "\n").data(), 80002);
    EXPECT_TRUE(pair.far->readLine(line, 40000));
    EXPECT_EQ(line, text);
    EXPECT_FALSE(pair.far->readLine(line, 39999));
}

TEST(NSocket, SaysWhyThereIsNoConnection) {
    NServer server;
    ASSERT_TRUE(server.listen(nullptr, 0));
    const uint16_t port = server.getPort();
    server.close();
    const std::tuple<const char*, NError> rows[] = {
        {"127.0.0.1",       NError::kUnreachable},
        {"localhost",       NError::kUnreachable},
        {"no.such.invalid", NError::kUnknownHost},
        {"",                NError::kUnknownHost},
        {"bad host",        NError::kUnknownHost},
    };
    for (const auto& [host, expected] : rows) {
        SCOPED_TRACE(host);
        NSocket socket;
        EXPECT_FALSE(socket.connect(host, port));
        EXPECT_EQ(socket.getError(), expected);
        EXPECT_FALSE(socket.isOpen());
    }
}

TEST(NSocket, GivesUpInTime) {
    Pair silent(kShort), busy(kShort), slow(kShort);
    char byte = 0;
    const std::vector<char> much(64 << 20);
    std::atomic<bool> ended{false};
    std::thread dripping([&] {
        for (int32_t i = 0; i < 100 && !ended; ++i) {
            slow.far->writeRaw("x", 1);
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        }
    });
    char all[100];
    const std::pair<NStream*, std::function<void()>> rows[] = {
        {&silent.near, [&] { EXPECT_EQ(silent.near.readRaw(&byte, 1), 0); }                        },
        {&busy.near,   [&] { EXPECT_EQ(busy.near.writeRaw(much.data(), int64_t(much.size())), 0); }},
        {&slow.near,   [&] { EXPECT_LT(slow.near.readRaw(all, 100), 100); }                        },
    };
    for (const auto& [stream, wait] : rows) {
        EXPECT_LT(millisecondsOf(wait), 3000);
        EXPECT_EQ(stream->getError(), NError::kTimeout);
    }
    ended = true;
    dripping.join();
}

TEST(NSocket, LeavesLookupsThatTakeTooLong) {
    for (const char* host : {"localhost", "no.such.invalid"})
        for (int32_t i = 0; i < 20; ++i) {
            NSocket hasty({1, 0, 0});
            EXPECT_FALSE(hasty.connect(host, 1));  // of whatever kind: the lookup may be quicker
        }
    NSocket cancelled;
    cancelled.cancel();
    EXPECT_FALSE(cancelled.connect("no.such.invalid", 1));
    EXPECT_EQ(cancelled.getError(), NError::kCancelled);
}

TEST(NSocket, IsCancelledByAnotherThread) {
    Pair pair;
    NServer idle;
    ASSERT_TRUE(idle.listen(nullptr, 0));
    const std::vector<char> much(64 << 20);
    char byte = 0;
    const std::pair<std::function<void()>, std::function<void()>> rows[] = {
        {[&] { pair.far->readRaw(&byte, 1); },                           [&] { pair.far->cancel(); }},
        {[&] { pair.near.writeRaw(much.data(), int64_t(much.size())); }, [&] { pair.near.cancel(); }},
        {[&] { EXPECT_EQ(idle.accept(0), nullptr); },                    [&] { idle.cancel(); }     },
    };
    for (const auto& [work, cancel] : rows) {
        std::thread worker(work);
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        EXPECT_LT(millisecondsOf([&] {
                      cancel();
                      worker.join();
                  }),
                  3000);
    }
    EXPECT_EQ(pair.far->getError(), NError::kCancelled);
    EXPECT_EQ(pair.near.getError(), NError::kCancelled);
    EXPECT_EQ(idle.getError(), NError::kCancelled);
    EXPECT_FALSE(pair.near.connect("127.0.0.1", idle.getPort()));  // for good
    EXPECT_EQ(pair.near.getError(), NError::kCancelled);
}

TEST(NSocket, OutlivesItsPartnerAndIsNotInherited) {
    int32_t ends[2];
    ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM, 0, ends), 0);
    NSocket socket(ends[0], {});
    EXPECT_TRUE(::fcntl(ends[0], F_GETFD) & FD_CLOEXEC);
    EXPECT_TRUE(::fcntl(ends[0], F_GETFL) & O_NONBLOCK);
    ::close(ends[1]);
    EXPECT_FALSE(socket.send("x", 1));  // a signal would end the test
    EXPECT_EQ(socket.getError(), NError::kBroken);
    EXPECT_FALSE(socket.secure("localhost"));
    EXPECT_FALSE(socket.isOpen());  // nothing is sent in the open instead
}

TEST(NServer, RefusesAddressesThatItCannotHave) {
    NServer first, second;
    ASSERT_TRUE(first.listen("::1", 0));
    const std::tuple<const char*, uint16_t, NError> rows[] = {
        {"::1",       first.getPort(), NError::kNoMeans    },
        {"localhost", 0,               NError::kUnknownHost},
        {"192.0.2.1", 0,               NError::kNoMeans    },
    };
    for (const auto& [address, port, expected] : rows) {
        EXPECT_FALSE(second.listen(address, port));
        EXPECT_EQ(second.getError(), expected);
        EXPECT_EQ(second.getPort(), 0);
        EXPECT_EQ(second.accept(1), nullptr);
    }
    EXPECT_EQ(first.accept(1), nullptr);
    EXPECT_EQ(first.getError(), NError::kTimeout);
}

}  // namespace
}  // namespace Tessarine
