#include "collect/cmhashtable.h"
#include "tests/frame/source/collect/probe.h"

namespace Tessarine {
namespace {

using CmHashTableTest = CollectTest;

TEST_F(CmHashTableTest, ResizingSpreadsInTheOrderOfTheBuckets) {
    CmHashTable table(4);
    fill(table, {0, 1, 2, 3, 4, 5, 6, 7});
    EXPECT_TRUE(table.resize(-1) && table.size() == 1 && CmHashTable(-7).size() == 1);
    EXPECT_EQ(ranksOf(table), Ranks({0, 4, 1, 5, 2, 6, 3, 7}));
    EXPECT_TRUE(table.resize(8));
    EXPECT_EQ(ranksOf(table), Ranks({0, 1, 2, 3, 4, 5, 6, 7}));
    EXPECT_EQ(Ranked::living, 8);
}

class Growing : public CmHashTable {
public:
    Growing() : CmHashTable(2) { autoResize = 1; }
};

TEST_F(CmHashTableTest, GrowsTenfoldWhenTwoForEachBucketAreThereIfToldTo) {
    Growing table;
    for (const int32_t buckets : {2, 2, 2, 2, 20, 20}) {
        fill(table, {table.total()});
        EXPECT_EQ(table.size(), buckets) << table.total();
    }
    EXPECT_EQ(ranksOf(table), Ranks({0, 1, 2, 3, 4, 5}));
}

TEST_F(CmHashTableTest, AnotherFunctionIsBoundedToTheBuckets) {
    CmHashTable table(3);
    table.setHashFunction([](const CmObject* object, uint32_t) { return UINT32_MAX - uint32_t(rankOf(object)); });
    fill(table, {0, 1, 2, 3});
    EXPECT_EQ(ranksOf(table), Ranks({0, 3, 2, 1}));
    EXPECT_EQ(ranksOf(CmHashTable(table)), ranksOf(table));
}

}  // namespace
}  // namespace Tessarine
