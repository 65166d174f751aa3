#include "source/TALV_Extension/COM Port/TALV_CircularBuffer.h"
#include <gtest/gtest.h>
#include <numeric>
#include <thread>
#include <vector>

using namespace TALV;

namespace {
using Bytes = std::vector<unsigned char>;

Bytes counting(size_t size, unsigned char first = 0) {
    Bytes bytes(size);
    std::iota(bytes.begin(), bytes.end(), first);
    return bytes;
}

class Ring : public testing::Test {
protected:
    explicit Ring(int32_t size = 8) { ring.initialize(size); }
    int32_t write(const Bytes& bytes) { return ring.write(bytes.data(), int32_t(bytes.size())); }
    Bytes read(int32_t count) {
        Bytes bytes(100, 0xEE);
        bytes.resize(size_t(ring.read(bytes.data(), count)));
        return bytes;
    }

    TALV_CircularBuffer ring;
};
}  // namespace

TEST_F(Ring, CutsOffWhatDoesNotFit) {
    EXPECT_EQ(write(counting(20)), 8);
    EXPECT_EQ(ring.space(), 0);
    EXPECT_EQ(read(100), counting(8));
    EXPECT_EQ(read(1), Bytes());
}

TEST_F(Ring, GoesOnAtItsStart) {
    for (unsigned char first = 0; first < 40; ++first) {  // each place of the seam
        SCOPED_TRACE(int(first));
        ASSERT_EQ(write(counting(7, first)), 7);
        ASSERT_EQ(ring.avail(), 7);
        ASSERT_EQ(read(7), counting(7, first));
    }
}

TEST_F(Ring, StepsBackNoFurtherThanItHolds) {
    write(counting(6));
    read(2);
    write(counting(4, 6));  // full
    ring.stepBack(1);
    EXPECT_EQ(read(9), counting(8, 2));
    ring.clear();
    write(counting(8));
    read(8);
    write({50, 51});
    read(2);           // behind index 1
    ring.stepBack(4);  // over its start to the last byte, not to index 6
    EXPECT_EQ(read(9), Bytes({7, 50, 51, 2}));
}

TEST_F(Ring, CarriesAStreamBetweenTwoThreads) {
    constexpr size_t kTotal = 20000;
    std::thread writer([this] {
        for (size_t sent = 0; sent < kTotal;) {
            const Bytes bytes = counting(5, static_cast<unsigned char>(sent));
            sent += size_t(ring.write(bytes.data(), 5));
            std::this_thread::yield();
        }
    });
    Bytes received;
    while (received.size() < kTotal) {
        const Bytes bytes = read(3);
        received.insert(received.end(), bytes.begin(), bytes.end());
        std::this_thread::yield();
    }
    writer.join();
    for (size_t i = 0; i < received.size(); ++i)
        ASSERT_EQ(received[i], static_cast<unsigned char>(i));
}
