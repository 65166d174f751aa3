#include "base/source/fbitset.h"
#include <algorithm>
#include <functional>
#include <gtest/gtest.h>
#include <random>
#include <vector>

namespace Tessarine {
namespace {
using Model = std::vector<bool>;

int32_t firstOf(const Model& model, bool value) {
    const auto found = std::ranges::find(model, value);
    return found == model.end() ? -1 : int32_t(found - model.begin());
}

BitSet everyThird(uint32_t size) {
    BitSet set(size);
    for (uint32_t i = 0; i < size; i += 3)
        set.setBit(i);
    return set;
}

void expectSame(const BitSet& set, const Model& model) {
    ASSERT_EQ(set.getSize(), model.size());
    EXPECT_EQ(set.countChunks(), (model.size() + 31) / 32);
    for (uint32_t i = 0; i < model.size() + 40; ++i)
        ASSERT_EQ(set.getBit(i), i < model.size() && model[i]) << i;
    EXPECT_EQ(set.getFirstSet(), firstOf(model, true));
    EXPECT_EQ(set.getFirstNotSet(), firstOf(model, false));
    const int32_t last = firstOf(Model(model.rbegin(), model.rend()), true);
    EXPECT_EQ(set.getLastSet(), last < 0 ? -1 : int32_t(model.size()) - 1 - last);
    for (const int32_t limit : {-1, 0, 31, 32, 33, 1000}) {
        const size_t end = limit < 0 ? model.size() : std::min(model.size(), size_t(limit));
        EXPECT_EQ(set.countSetBits(limit), std::count(model.begin(), model.begin() + int64_t(end), true)) << limit;
    }
}

TEST(BitSet, AgreesWithAPlainModel) {
    std::mt19937 random(1);
    BitSet set;
    Model model;
    const auto reach = [&](uint32_t size) { model.resize(std::max<size_t>(model.size(), size)); };
    const std::function<void(uint32_t)> actions[] = {
        [&](uint32_t i) { set.setBit(i), reach(i + 1), model[i] = true; },
        [&](uint32_t i) { set.toggleBit(i), reach(i + 1), model[i].flip(); },
        [&](uint32_t i) { set.clearBit(i), i < model.size() ? void(model[i] = false) : void(); },
        [&](uint32_t i) { set.setSize(i), model.resize(i); },
        [&](uint32_t) { set.setAll(), model.assign(model.size(), true); },
        [&](uint32_t) { set.clearAll(), model.assign(model.size(), false); },
        [&](uint32_t i) {
            EXPECT_EQ(set.setChunk(i / 32, 0x8000'0101), i / 32 < set.countChunks());
            for (uint32_t bit = i / 32 * 32; bit < std::min<size_t>(model.size(), i / 32 * 32 + 32); ++bit)
                model[bit] = 0x8000'0101 >> bit % 32 & 1;
        },
        [&](uint32_t i) {
            const BitSet other = everyThird(i);
            set &= other;
            for (uint32_t bit = 0; bit < model.size(); ++bit)
                model[bit] = model[bit] && other.getBit(bit);
        },
        [&](uint32_t i) {
            const BitSet other = everyThird(i);
            i % 2 ? set |= other : set ^= other;
            reach(i);
            for (uint32_t bit = 0; bit < i; ++bit)
                model[bit] = i % 2 ? model[bit] || other.getBit(bit) : model[bit] != other.getBit(bit);
        },
    };
    for (int32_t step = 0; step < 600; ++step) {
        SCOPED_TRACE(step);
        actions[random() % std::size(actions)](uint32_t(random() % 200));
        expectSame(set, model);
        ASSERT_TRUE(BitSet(set) == set);
    }
}

TEST(BitSet, RefusesWhatNoResultCouldName) {
    BitSet set(33);
    for (const uint32_t index : {UINT32_MAX, BitSet::kMaxBits})
        EXPECT_FALSE(set.setBit(index) || set.toggleBit(index) || set.setSize(UINT32_MAX) || set.getSize() != 33);
}

TEST(IDSet, HandsOutTheLowestFreeNumber) {
    IDSet ids(1000, 128);
    for (int32_t i = 0; i < 300; ++i)
        ASSERT_EQ(ids.newID(), 1000 + i);
    EXPECT_EQ(ids.getSize(), 384u);
    for (const int32_t id : {1200, 1007, 999, INT32_MIN, INT32_MAX})
        ids.releaseID(id);
    for (const int32_t lowest : {1007, 1200, 1300})
        EXPECT_EQ(ids.newID(), lowest);
    IDSet last(INT32_MAX, 0);
    EXPECT_TRUE(last.newID() == INT32_MAX && last.newID() == -1);
}
}  // namespace
}  // namespace Tessarine
