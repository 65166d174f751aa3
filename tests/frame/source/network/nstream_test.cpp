#include "network/nstream.h"
#include "tests/support/scriptedserver.h"
#include <fcntl.h>
#include <netinet/in.h>
#include <numeric>
#include <sys/socket.h>
#include <unistd.h>

namespace Tessarine {
namespace {
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

TEST(NStream, CarriesBytesOverBothVersions) {
    for (const char* address : {"127.0.0.1", "::1", static_cast<const char*>(nullptr)}) {
        SCOPED_TRACE(address ? address : "by name");
        Pair pair({}, address);
        std::vector<int32_t> numbers(1000000), received(numbers.size());
        std::iota(numbers.begin(), numbers.end(), 0);
        const auto bytes = int64_t(numbers.size() * sizeof(int32_t));
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

TEST(NSocket, SaysWhyThereIsNoConnection) {
    const std::pair<const char*, NError> rows[] = {
        {"localhost",       NError::kUnreachable},
        {"no.such.invalid", NError::kUnknownHost},
        {"",                NError::kUnknownHost},
    };
    for (const auto& [host, expected] : rows) {
        NSocket socket;
        EXPECT_FALSE(socket.connect(host, 1)) << host;
        EXPECT_EQ(socket.getError(), expected);
        EXPECT_FALSE(socket.isOpen());
    }
}

/** Listens, but its queue is full: whoever else connects waits. */
struct FullServer {
    FullServer() {
        sockaddr_in address{AF_INET, 0, {htonl(INADDR_LOOPBACK)}, {}};
        auto* const place = reinterpret_cast<sockaddr*>(&address);
        socklen_t size = sizeof address;
        EXPECT_TRUE(::bind(descriptor, place, size) == 0 && ::listen(descriptor, 0) == 0 &&
                    ::getsockname(descriptor, place, &size) == 0);
        port = ntohs(address.sin_port);
        EXPECT_TRUE(first.connect("127.0.0.1", port));
    }
    ~FullServer() { ::close(descriptor); }
    const int32_t descriptor = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    uint16_t port;
    NSocket first;
};

TEST(NStream, GivesUpInTimeAndWhenCancelled) {
    FullServer full;
    char bytes[1000];
    const std::vector<char> much(64 << 20);
    const std::function<void(Pair&)> rows[] = {
        [&](Pair& pair) { EXPECT_EQ(pair.near.readRaw(bytes, 1), 0); },
        [&](Pair& pair) { EXPECT_EQ(pair.near.writeRaw(much.data(), int64_t(much.size())), 0); },
        [&](Pair& pair) {
            std::thread dripping([&] {
                while (pair.far->writeRaw("x", 1) == 1)
                    std::this_thread::sleep_for(std::chrono::milliseconds(20));
            });
            EXPECT_LT(pair.near.readRaw(bytes, sizeof bytes), 1000);
            pair.far->cancel();
            dripping.join();
        },
        [&](Pair& pair) { EXPECT_FALSE(pair.near.connect("127.0.0.1", full.port)); },
    };
    for (const bool isCancelled : {false, true})
        for (const auto& wait : rows) {
            SCOPED_TRACE(testing::Message() << &wait - rows << (isCancelled ? " cancelled" : ""));
            Pair pair(isCancelled ? NTimeouts{} : NTimeouts{200, 200, 400});
            worksShortly(pair.near, isCancelled, [&] { wait(pair); });
            EXPECT_EQ(pair.near.getError(), isCancelled ? NError::kCancelled : NError::kTimeout);
        }
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
        EXPECT_FALSE(second.listen(address, port)) << address;
        EXPECT_EQ(second.getError(), expected);
        EXPECT_EQ(second.accept(1), nullptr);
    }
}

}  // namespace
}  // namespace Tessarine
