#pragma once
#include "collect/cmcontainer.h"
#include <gtest/gtest.h>
#include <memory>
#include <vector>

namespace Tessarine {

/** An element that counts its living kin; equal and ordered by rank alone. */
class Probe : public CmObject {
public:
    explicit Probe(int32_t rank = 0) : rank(rank) { ++living; }
    Probe(const Probe& source) : CmObject(source), rank(source.rank) { ++living; }
    ~Probe() override { --living; }

    bool isEqual(const CmObject* other) const override { return compare(other) == 0; }
    int32_t compare(const CmObject* other) const override { return rank - static_cast<const Probe*>(other)->rank; }
    DECLARE_NEWCOPY(Probe)

    const int32_t rank;
    inline static int32_t living = 0;
};

/** Fails each test that leaves objects behind. */
class CollectTest : public testing::Test {
protected:
    void SetUp() override { Probe::living = 0; }
    void TearDown() override { EXPECT_EQ(Probe::living, 0) << "objects left behind"; }
};

inline uint32_t referencesOf(FObject* object) {
    object->addRef();
    return object->release();
}

inline int32_t rankOf(const CmObject* object) {
    return object ? static_cast<const Probe*>(object)->rank : -1;
}

/** The ranks as the iterator gives them. */
inline std::vector<int32_t> ranksOf(const CmContainer& container) {
    std::vector<int32_t> ranks;
    const std::unique_ptr<CmIterator> cursor(container.newIterator());
    while (!cursor->done())
        ranks.push_back(rankOf(cursor->next()));
    return ranks;
}

/** Hands over probes of these ranks; the container owns them. */
inline void fill(CmContainer& container, std::initializer_list<int32_t> ranks) {
    container._ownsObjects = CmContainer::kTakesOver;
    for (const int32_t rank : ranks)
        ASSERT_TRUE(container.add(new Probe(rank)));
}

using Ranks = std::vector<int32_t>;
}  // namespace Tessarine
