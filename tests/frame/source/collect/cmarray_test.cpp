#include "collect/cmarray.h"
#include "tests/frame/source/collect/probe.h"
#include <algorithm>
#include <random>

namespace Tessarine {
namespace {

template <class Array>
class CmArrayTest : public CollectTest {};
using Arrays = testing::Types<CmArray, CmOrderedArray>;
TYPED_TEST_SUITE(CmArrayTest, Arrays);

TYPED_TEST(CmArrayTest, ResizeDropsWhatIsBeyond) {
    TypeParam array(0, 10);
    fill(array, {1, 2, 3, 4, 5});
    EXPECT_TRUE(!array.resize(-1) && array.resize(3));
    EXPECT_EQ(Ranked::living, 3);
    EXPECT_TRUE(array.resize(20));
    EXPECT_EQ(ranksOf(array), Ranks({1, 2, 3}));
    const TypeParam copy(array);
    EXPECT_EQ(copy.size(), 20);
    EXPECT_TRUE(array.resize(0) && !array.at(0));
    fill(array, {6});
    EXPECT_EQ(ranksOf(array), Ranks({6}));
    EXPECT_EQ(ranksOf(copy), Ranks({1, 2, 3}));
}

using CmSortTest = CollectTest;

TEST_F(CmSortTest, PutsAnyOrderRight) {
    std::mt19937 random(5);
    for (const int32_t count : {0, 1, 2, 3, 16, 17, 1000}) {
        for (const int32_t ranks : {1, 3, 1000000}) {
            SCOPED_TRACE(std::to_string(count) + " elements of " + std::to_string(ranks));
            CmArray array(0, -1);
            CmOrderedArray ordered(0, -1);
            Ranks sorted;
            for (int32_t i = 0; i < count; ++i)
                sorted.push_back(static_cast<int32_t>(random()) % ranks);
            fill(array, sorted);
            fill(ordered, sorted);
            std::sort(sorted.begin(), sorted.end());
            for (int32_t again = 0; again < 2; ++again) {
                array.quickSort();
                EXPECT_EQ(ranksOf(array), sorted);
            }
            for (CmObject* element : ordered)
                static_cast<Probe*>(element)->rank *= -1;
            ordered.resort();
            std::ranges::transform(sorted, sorted.begin(), std::negate<>());
            std::reverse(sorted.begin(), sorted.end());
            EXPECT_EQ(ranksOf(ordered), sorted);
        }
    }
}

/** No order at all: as an association against a stranger answers. */
class Disorderly : public Probe {
public:
    explicit Disorderly(int32_t kind) : kind(kind) {}
    int32_t compare(const CmObject*) const override {
        const int32_t answers[] = {-1, 1, 0, static_cast<int32_t>(++asked * 2654435761u >> 31) * 2 - 1};
        return answers[kind];
    }
    const int32_t kind;
    inline static uint32_t asked = 0;
};

TEST_F(CmSortTest, StaysInsideAndLosesNothingWhateverCompareSays) {
    for (int32_t kind = 0; kind < 4; ++kind) {
        SCOPED_TRACE(kind);
        CmArray array(0, -1), merged(0, -1);
        CmOrderedArray ordered(0, -1);
        array._ownsObjects = CmContainer::kTakesOver;
        for (int32_t i = 0; i < 2000; ++i) {
            array.add(new Disorderly(kind));
            merged.add(array.at(i));
            ordered.add(array.at(i));
        }
        EXPECT_TRUE(merged.mergeSorted(array));
        EXPECT_EQ(merged.total(), 4000);
        merged.quickSort();
        ordered.resort();
        ordered.index(array.at(0));
        EXPECT_TRUE(std::is_permutation(array.begin(), array.end(), ordered.begin(), ordered.end()));
        for (CmObject* object : array)
            ASSERT_EQ(std::ranges::count(merged, object), 2);
    }
}

TEST_F(CmSortTest, ShouldGoLooksAtItsPartOnly) {
    CmArray array;
    fill(array, {1, 3, 3, 5, 7});
    const Probe three(3);
    const int32_t places[][3] = {
        {0,  -1, 3},
        {0,  1,  1},
        {3,  5,  3},
        {4,  99, 4},
        {-7, 0,  0}
    };
    for (const auto& [from, to, place] : places)
        EXPECT_EQ(array.shouldGo(&three, from, to), place) << from << ".." << to;
    CmOrderedArray full(1, 0);
    full.add(array.at(0));
    EXPECT_TRUE(array.shouldGo(nullptr) == -1 && full.shouldGo(&three) == -1);
}

TEST_F(CmSortTest, MergesInPlaceAndKeepsTheOrderOfEqualOnes) {
    std::mt19937 random(3);
    for (int32_t round = 0; round < 300; ++round) {
        SCOPED_TRACE(round);
        Ranks ranks;
        const int32_t low = static_cast<int32_t>(random() % 3) * 10;  // before, among or behind the others
        for (size_t i = random() % 15 + random() % 15; i > 0; --i)
            ranks.push_back(static_cast<int32_t>(random() % 10) + (i % 2 ? low : 10));
        std::sort(ranks.begin(), ranks.end());
        std::vector<Probe> probes(ranks.begin(), ranks.end());
        std::vector<CmObject*> sorted;
        CmArray array(0, 0), other(20, 0);
        array._ownsObjects = CmContainer::kShares;
        for (size_t i = 0; i < probes.size(); ++i) {
            if (i % 2)
                other.add(&probes[i]);
            else
                ASSERT_TRUE(array.resize(array.total() + 1) && array.add(&probes[i]));
        }
        for (const CmArray* each : {&array, &other})
            sorted.insert(sorted.end(), each->begin(), each->end());
        std::ranges::stable_sort(sorted, {}, [](CmObject* object) { return rankOf(object); });
        EXPECT_TRUE(array.mergeSorted(other));
        EXPECT_TRUE(std::ranges::equal(array, sorted));
        EXPECT_FALSE(!array.isEmpty() && array.mergeSorted(array));
        for (Probe& probe : probes)
            EXPECT_EQ(referencesOf(&probe), 2u);
    }
}

}  // namespace
}  // namespace Tessarine
