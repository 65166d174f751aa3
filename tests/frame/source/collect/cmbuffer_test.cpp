#include "collect/cmbuffer.h"
#include "pluginterfaces/base/smartpointer.h"
#include <gtest/gtest.h>

namespace Tessarine {
namespace {

std::vector<uint32_t> sizesOf(const CmBufferPool& pool) {
    std::vector<uint32_t> sizes;
    for (CmObject* buffer : pool)
        sizes.push_back(static_cast<CmBuffer*>(buffer)->getSize());
    return sizes;
}

using Sizes = std::vector<uint32_t>;

TEST(CmBufferPool, HandsOutTheFirstThatIsLargeEnough) {
    CmBufferPool pool;
    for (const uint32_t size : {16, 64, 32})
        pool.deleteBuffer(new CmBuffer(size));
    pool.deleteBuffer(new CmBuffer);
    pool.deleteBuffer(nullptr);
    EXPECT_EQ(sizesOf(pool), Sizes({16, 64, 32}));
    const OPtr<CmBuffer> fitting(pool.allocateBuffer(17)), made(pool.allocateBuffer(100)),
        empty(pool.allocateBuffer(0));
    EXPECT_EQ(Sizes({fitting->getSize(), made->getSize(), empty->getSize()}), Sizes({64, 100, 0}));
    EXPECT_EQ(sizesOf(pool), Sizes({16, 32}));
    pool.reduceBuffers(1);
    EXPECT_EQ(sizesOf(pool), Sizes({16}));
}

TEST(CmBufferPool, MemoryPassesThroughPlainBuffers) {
    CmBufferPool pool;
    Buffer buffer(11), none;
    buffer.setFillSize(7);
    const char* memory = buffer.data();
    pool.freeBuffer(buffer);
    pool.freeBuffer(none);
    EXPECT_EQ(buffer.data(), nullptr);
    EXPECT_EQ(sizesOf(pool), Sizes({11}));
    EXPECT_TRUE(pool.configBuffer(none, 5) && pool.isEmpty());
    EXPECT_TRUE(none.data() == memory && none.getFillSize() == 0);
    EXPECT_TRUE(pool.configBuffer(none, 50) && none.getSize() == 50);
}

}  // namespace
}  // namespace Tessarine
