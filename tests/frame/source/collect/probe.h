#pragma once
#include "collect/cmidlinkedlist.h"
#include "collect/cmilinkedlist.h"
#include "tests/support/uncounted.h"
#include <gtest/gtest.h>
#include <memory>
#include <vector>

namespace Tessarine {

/** What all probes have: they count their living kin. */
struct Ranked {
    explicit Ranked(int32_t rank) : rank(rank) { ++living; }
    Ranked(const Ranked& source) : Ranked(source.rank) {}
    virtual ~Ranked() { --living; }

    int32_t rank;
    inline static int32_t living = 0;
};

inline int32_t rankOf(const CmObject* object) {
    const auto* ranked = dynamic_cast<const Ranked*>(object);
    return ranked ? ranked->rank : -1;
}

/** An element, or one that is a link too; equal, ordered and hashed by rank alone. */
template <class Base>
class ProbeOf : public Base, public Ranked {
public:
    explicit ProbeOf(int32_t rank = 0) : Ranked(rank) {}

    bool isEqual(const CmObject* other) const override { return compare(other) == 0; }
    int32_t compare(const CmObject* other) const override { return rank - rankOf(other); }
    uint32_t hash(uint32_t buckets) const override { return uint32_t(rank) % buckets; }
    DECLARE_NEWCOPY(ProbeOf)
};
using Probe = ProbeOf<CmObject>;

/** Of the kind that the container takes. */
inline CmObject* newProbe(const CmContainer& container, int32_t rank) {
    if (container.isA("CmILinkedList"))
        return new ProbeOf<CmILink>(rank);
    if (container.isA("CmIDLinkedList"))
        return new ProbeOf<CmIDLink>(rank);
    return new Probe(rank);
}

/** Fails each test that leaves objects behind. */
class CollectTest : public testing::Test {
protected:
    void SetUp() override { Ranked::living = 0; }
    void TearDown() override { EXPECT_EQ(Ranked::living, 0) << "objects left behind"; }
};

/** The ranks as the iterator gives them. */
inline std::vector<int32_t> ranksOf(const CmContainer& container) {
    std::vector<int32_t> ranks;
    const std::unique_ptr<CmIterator> cursor(container.newIterator());
    while (!cursor->done())
        ranks.push_back(rankOf(cursor->next()));
    return ranks;
}

/** The same from the last to the first. */
inline std::vector<int32_t> backwardRanksOf(const CmContainer& container) {
    std::vector<int32_t> ranks;
    const std::unique_ptr<CmIterator> cursor(container.newIterator());
    for (cursor->last(); !cursor->done();)
        ranks.insert(ranks.begin(), rankOf(cursor->previous()));
    return ranks;
}

/** Hands over probes of these ranks; the container owns them. */
inline void fill(CmContainer& container, const std::vector<int32_t>& ranks) {
    container._ownsObjects = CmContainer::kTakesOver;
    for (const int32_t rank : ranks)
        ASSERT_TRUE(container.add(newProbe(container, rank)));
}

using Ranks = std::vector<int32_t>;

/** The three ownerships, and what they do to an object of two references. */
struct OwnershipRow {
    CmContainer::Ownership mode;
    uint32_t whileHeld, afterRemoval;
};
constexpr OwnershipRow kOwnerships[] = {
    {CmContainer::kBorrows,   2, 2},
    {CmContainer::kTakesOver, 2, 1},
    {CmContainer::kShares,    3, 2},
};

/** The ways in which the one element, or pair of this key, of a container goes. */
struct RemovalRow {
    const char* name;
    void (*removeOne)(CmContainer& container, CmObject* object);
};
inline void removeAtCursor(CmContainer& container, CmObject*) {
    const std::unique_ptr<CmIterator> cursor(container.newIterator());
    EXPECT_TRUE(container.remove(*cursor));
}
constexpr RemovalRow kRemovals[] = {
    {"remove", [](CmContainer& all, CmObject* object) { EXPECT_TRUE(all.remove(object)); }},
    {"removeAt", [](CmContainer& all, CmObject*) { EXPECT_TRUE(all.removeAt(0)); }},
    {"removeAll", [](CmContainer& all, CmObject*) { all.removeAll(); }},
    {"iterator", removeAtCursor},
};
}  // namespace Tessarine
