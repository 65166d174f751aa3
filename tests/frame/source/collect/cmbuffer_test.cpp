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
    EXPECT_EQ(fitting->getSize(), 64u);
    EXPECT_EQ(made->getSize(), 100u);
    EXPECT_EQ(empty->getSize(), 0u);
    EXPECT_EQ(sizesOf(pool), Sizes({16, 32}));
    pool.reduceBuffers(1);
    EXPECT_EQ(sizesOf(pool), Sizes({16}));
    EXPECT_EQ(pool._ownsObjects, CmContainer::kBorrows);
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
    EXPECT_TRUE(pool.configBuffer(none, 5));
    EXPECT_EQ(none.data(), memory);
    EXPECT_EQ(none.getFillSize(), 0u);
    EXPECT_TRUE(pool.isEmpty());
    EXPECT_TRUE(pool.configBuffer(none, 50));
    EXPECT_EQ(none.getSize(), 50u);
    EXPECT_TRUE(pool.configBuffer(buffer, 7));
    EXPECT_EQ(buffer.getSize(), 7u);
}

}  // namespace
}  // namespace Tessarine
