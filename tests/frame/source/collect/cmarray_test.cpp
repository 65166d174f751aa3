#include "collect/cmarray.h"
#include "tests/frame/source/collect/probe.h"
#include <algorithm>
#include <random>

namespace Tessarine {
namespace {

using CmArrayTest = CollectTest;

struct GrowthRow {
    int32_t size, delta;
    Ranks sizes;  // each new capacity while elements are added
    bool ends;    // then refuses
};
const GrowthRow kGrowths[] = {
    {0,  -1, {10, 20, 40}, false},
    {3,  -1, {3, 6, 12},   false},
    {-5, -1, {10, 20},     false},
    {0,  10, {10, 20, 30}, false},
    {4,  1,  {4, 5, 6, 7}, false},
    {2,  0,  {2},          true },
    {4,  -2, {4},          true },
};

TEST_F(CmArrayTest, GrowsByItsStepOrRefuses) {
    for (const GrowthRow& row : kGrowths) {
        SCOPED_TRACE("size " + std::to_string(row.size) + ", delta " + std::to_string(row.delta));
        Probe probe;
        CmArray array(row.size, row.delta);
        Ranks sizes;
        while (array.total() < row.sizes.back() && array.add(&probe)) {
            if (sizes.empty() || sizes.back() != array.size())
                sizes.push_back(array.size());
        }
        EXPECT_EQ(sizes, row.sizes);
        EXPECT_EQ(array.total(), row.sizes.back());
        if (!row.ends)
            continue;
        EXPECT_FALSE(array.add(&probe));
        EXPECT_FALSE(array.insertAt(&probe, 0));
        EXPECT_EQ(array.occurrences(&probe), row.sizes.back());
    }
}

TEST_F(CmArrayTest, ResizeDropsWhatIsBeyond) {
    CmArray array(0, 10);
    fill(array, {1, 2, 3, 4, 5});
    EXPECT_FALSE(array.resize(-1));
    EXPECT_TRUE(array.resize(3));
    EXPECT_EQ(ranksOf(array), Ranks({1, 2, 3}));
    EXPECT_EQ(array.size(), 3);
    EXPECT_EQ(Probe::living, 3);
    EXPECT_TRUE(array.resize(20));
    EXPECT_EQ(ranksOf(array), Ranks({1, 2, 3}));
    EXPECT_TRUE(array.resize(0));
    EXPECT_EQ(Probe::living, 0);
    EXPECT_EQ(array.at(0), nullptr);
    fill(array, {6});
    EXPECT_EQ(ranksOf(array), Ranks({6}));
}

TEST_F(CmArrayTest, CopyKeepsCapacityAndGrowth) {
    CmArray array(7, 0);
    fill(array, {1, 2});
    const CmArray copy(array);
    EXPECT_EQ(copy.size(), 7);
    EXPECT_EQ(ranksOf(copy), Ranks({1, 2}));
    EXPECT_EQ(Probe::living, 4);
}

struct RefusalRow {
    const char* name;
    bool (*edit)(CmArray& array, CmObject* object);
};
constexpr RefusalRow kRefusals[] = {
    {"insert behind the end", [](CmArray& array, CmObject* object) { return array.insertAt(object, 4); }  },
    {"insert at -1",          [](CmArray& array, CmObject* object) { return array.insertAt(object, -1); } },
    {"insert null",           [](CmArray& array, CmObject*) { return array.insertAt(nullptr, 1); }        },
    {"replace at the end",    [](CmArray& array, CmObject* object) { return array.replaceAt(object, 3); } },
    {"replace at -1",         [](CmArray& array, CmObject* object) { return array.replaceAt(object, -1); }},
    {"replace by null",       [](CmArray& array, CmObject*) { return array.replaceAt(nullptr, 1); }       },
    {"swap with the end",     [](CmArray& array, CmObject*) { return array.swap(0, 3); }                  },
    {"swap with -1",          [](CmArray& array, CmObject*) { return array.swap(-1, 0); }                 },
};

TEST_F(CmArrayTest, RefusesPlacesThatArentThere) {
    CmArray array;
    fill(array, {1, 2, 3});
    Probe probe(9);
    for (const RefusalRow& row : kRefusals) {
        SCOPED_TRACE(row.name);
        EXPECT_FALSE(row.edit(array, &probe));
        EXPECT_EQ(ranksOf(array), Ranks({1, 2, 3}));
    }
}

TEST_F(CmArrayTest, ReplacingByItselfKeepsASharedElement) {
    CmArray array;
    array._ownsObjects = CmContainer::kShares;
    auto* probe = new Probe;
    array.add(probe);
    probe->release();
    EXPECT_TRUE(array.replaceAt(probe, 0));
    EXPECT_EQ(referencesOf(probe), 1u);
}

/** One random edit, made on the array and on its model. */
void editBoth(CmArray& array, std::vector<CmObject*>& model, std::mt19937& random) {
    const int32_t count = static_cast<int32_t>(model.size());
    const int32_t place = static_cast<int32_t>(random() % (count + 1));
    const auto at = model.begin() + place;
    CmObject* object = nullptr;
    switch (random() % 5) {
    case 0:
    case 1:
        object = new Probe(static_cast<int32_t>(random() % 50));
        ASSERT_TRUE(array.insertAt(object, place));
        model.insert(at, object);
        break;
    case 2:
        ASSERT_EQ(array.removeAt(place), place < count);
        if (place < count)
            model.erase(at);
        break;
    case 3:
        object = new Probe(static_cast<int32_t>(random() % 50));
        ASSERT_EQ(array.replaceAt(object, place), place < count);
        if (place < count)
            *at = object;
        else
            object->release();
        break;
    default:
        ASSERT_EQ(array.swap(0, place), place < count);
        if (place < count)
            std::swap(model.front(), *at);
    }
}

TEST_F(CmArrayTest, BehavesLikeAVector) {
    std::mt19937 random(7);
    CmArray array(0, 3);
    array._ownsObjects = CmContainer::kTakesOver;
    std::vector<CmObject*> model;
    for (int32_t step = 0; step < 5000; ++step) {
        SCOPED_TRACE(step);
        editBoth(array, model, random);
        ASSERT_EQ(array.total(), static_cast<int32_t>(model.size()));
        ASSERT_EQ(Probe::living, array.total());
        for (int32_t i = 0; i < array.total(); ++i)
            ASSERT_EQ(array.at(i), model[i]);
        if (model.empty())
            continue;
        CmObject* searched = model[random() % model.size()];
        const auto equal = [searched](const CmObject* other) { return searched->isEqual(other); };
        ASSERT_EQ(array.index(searched), std::ranges::find_if(model, equal) - model.begin());
        ASSERT_EQ(array.indexAbs(searched), std::ranges::find(model, searched) - model.begin());
    }
}

TEST_F(CmArrayTest, IteratorSurvivesEditsDuringAWalk) {
    CmArray array;
    fill(array, {1, 2, 3, 4});
    CmArrayIterator cursor(array);
    cursor += 3;
    array.resize(2);
    EXPECT_TRUE(cursor.done());
    EXPECT_EQ(cursor.next(), nullptr);
    fill(array, {5, 6});
    EXPECT_EQ(rankOf(cursor.next()), 6);
}

}  // namespace
}  // namespace Tessarine
