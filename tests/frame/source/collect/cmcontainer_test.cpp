#include "collect/cmcontainer.h"
#include "collect/cmarray.h"
#include "collect/cmbtree.h"
#include "collect/cmqueue.h"
#include "pluginterfaces/base/smartpointer.h"
#include "tests/frame/source/collect/probe.h"
#include <functional>

namespace Tessarine {
namespace {

template <class Container>
CmContainer* make() {
    return new Container;
}

struct ContainerRow {
    const char* name;
    CmContainer* (*create)();
};
constexpr ContainerRow kContainers[] = {
    {"CmArray",      make<CmArray>     },
    {"CmLinkedList", make<CmLinkedList>},
    {"CmQueue",      make<CmQueue>     },
    {"CmStack",      make<CmStack>     },
    {"CmBTree",      make<CmBTree>     },
};

struct RemovalRow {
    const char* name;
    void (*removeOne)(CmContainer& container, CmObject* object);
};
void removeAtCursor(CmContainer& container, CmObject*) {
    const std::unique_ptr<CmIterator> cursor(container.newIterator());
    EXPECT_TRUE(container.remove(*cursor));
}

void removeAllOfAnother(CmContainer& container, CmObject* object) {
    CmArray gone;
    gone.add(object);
    EXPECT_TRUE(container.removeAllFrom(&gone));
}

constexpr RemovalRow kRemovals[] = {
    {"remove", [](CmContainer& all, CmObject* object) { EXPECT_TRUE(all.remove(object)); }},
    {"removeAt", [](CmContainer& all, CmObject*) { EXPECT_TRUE(all.removeAt(0)); }},
    {"removeAll", [](CmContainer& all, CmObject*) { all.removeAll(); }},
    {"iterator", removeAtCursor},
    {"from all", removeAllOfAnother},
    {"from self", [](CmContainer& all, CmObject*) { EXPECT_TRUE(all.removeAllFrom(&all)); }},
};

struct OwnershipRow {
    CmContainer::Ownership mode;
    uint32_t whileHeld, afterRemoval;  // the test starts with two references
};
constexpr OwnershipRow kOwnerships[] = {
    {CmContainer::kBorrows,   2, 2},
    {CmContainer::kTakesOver, 2, 1},
    {CmContainer::kShares,    3, 2},
};

using CmContainerTest = CollectTest;

void forEachContainer(const std::function<void(CmContainer&)>& check) {
    for (const ContainerRow& row : kContainers) {
        SCOPED_TRACE(row.name);
        const OPtr<CmContainer> container(row.create());
        check(*container);
    }
}

void checkCounts(CmContainer& container, const OwnershipRow& ownership, const RemovalRow& removal) {
    SCOPED_TRACE(removal.name + std::string(" with ownership ") + std::to_string(ownership.mode));
    container._ownsObjects = ownership.mode;
    auto* probe = new Probe;
    probe->addRef();
    ASSERT_TRUE(container.add(probe));
    EXPECT_EQ(referencesOf(probe), ownership.whileHeld);
    removal.removeOne(container, probe);
    EXPECT_TRUE(container.isEmpty());
    ASSERT_EQ(referencesOf(probe), ownership.afterRemoval);
    while (probe->release() > 0) {}
}

TEST_F(CmContainerTest, CountsEachReferenceOnce) {
    for (const OwnershipRow& ownership : kOwnerships) {
        for (const RemovalRow& removal : kRemovals)
            forEachContainer([&](CmContainer& container) { checkCounts(container, ownership, removal); });
    }
}

TEST_F(CmContainerTest, GivesUpItsElementsAtItsEnd) {
    for (const ContainerRow& row : kContainers) {
        SCOPED_TRACE(row.name);
        CmContainer* container = row.create();
        fill(*container, {3, 1, 2, 5, 4});
        EXPECT_EQ(Probe::living, 5);
        container->release();
        EXPECT_EQ(Probe::living, 0);
    }
}

TEST_F(CmContainerTest, SharedElementLivesUntilTheLastContainerLetsGo) {
    CmArray array;
    CmLinkedList list;
    array._ownsObjects = list._ownsObjects = CmContainer::kShares;
    auto* probe = new Probe;
    array.add(probe);
    list.add(probe);
    probe->release();
    array.removeAll();
    EXPECT_EQ(Probe::living, 1);
    list.removeAll();
    EXPECT_EQ(Probe::living, 0);
}

TEST_F(CmContainerTest, RefusesWhatIsNotThere) {
    forEachContainer([](CmContainer& container) {
        EXPECT_FALSE(container.add(nullptr));
        fill(container, {1, 2, 3});
        Probe other(7);
        EXPECT_FALSE(container.remove(nullptr));
        EXPECT_FALSE(container.remove(&other));
        for (const int32_t index : {-1, 3, 1000}) {
            EXPECT_FALSE(container.removeAt(index));
            EXPECT_EQ(container.at(index), nullptr);
        }
        EXPECT_EQ(container.lookup(&other), nullptr);
        EXPECT_EQ(container.lookup(nullptr), nullptr);
        EXPECT_FALSE(container.contains(&other));
        EXPECT_FALSE(container.containsAbs(&other));
        EXPECT_EQ(container.occurrences(nullptr), 0);
        EXPECT_EQ(container.getIndex(&other), -1);
        EXPECT_EQ(container.getIndex(nullptr), 0);
        EXPECT_FALSE(container.addAllFrom(nullptr));
        EXPECT_FALSE(container.addAllFrom(&container));
        EXPECT_FALSE(container.takeAllFrom(&container, true));
        const std::unique_ptr<CmIterator> cursor(container.newIterator());
        *cursor += 3;
        EXPECT_FALSE(container.remove(*cursor));
        EXPECT_EQ(container.total(), 3);
    });
}

TEST_F(CmContainerTest, FindsEqualElementsAndTheVeryObject) {
    forEachContainer([](CmContainer& container) {
        fill(container, {1, 2, 2, 2, 3});
        Probe two(2);
        CmObject* last = container.at(3);
        EXPECT_EQ(rankOf(container.lookup(&two)), 2);
        EXPECT_TRUE(container.contains(&two));
        EXPECT_FALSE(container.containsAbs(&two));
        EXPECT_TRUE(container.containsAbs(last));
        EXPECT_EQ(container.occurrences(&two), 3);
        EXPECT_EQ(container.getIndex(&two), 1);
        const OPtr<CmLinkedList> equal(container.lookupAll(&two));
        EXPECT_EQ(ranksOf(*equal), Ranks({2, 2, 2}));
        EXPECT_EQ(equal->_ownsObjects, CmContainer::kBorrows);
    });
}

TEST_F(CmContainerTest, CopiesAsItsOwnershipSays) {
    for (const OwnershipRow& ownership : kOwnerships) {
        forEachContainer([&](CmContainer& source) {
            SCOPED_TRACE(ownership.mode);
            const bool clones = ownership.mode == CmContainer::kTakesOver;
            source._ownsObjects = ownership.mode;
            auto* probe = new Probe(5);
            ASSERT_TRUE(source.add(probe));
            {
                CmArray byCopy;
                fill(byCopy, {8, 9});
                EXPECT_TRUE(byCopy.copy(source));
                EXPECT_EQ(byCopy._ownsObjects, ownership.mode);
                EXPECT_EQ(byCopy.containsAbs(probe), !clones);
                EXPECT_EQ(ranksOf(byCopy), Ranks({5}));
                EXPECT_TRUE(byCopy.copy(byCopy));
                EXPECT_EQ(byCopy.total(), 1);

                const OPtr<CmObject> byClone(source.newCopy());
                ASSERT_TRUE(byClone);
                EXPECT_STREQ(byClone->isA(), source.isA());
                auto* clone = static_cast<CmContainer*>(byClone.get());
                EXPECT_EQ(clone->_ownsObjects, ownership.mode);
                EXPECT_EQ(clone->containsAbs(probe), !clones);
                EXPECT_EQ(ranksOf(*clone), Ranks({5}));
                EXPECT_EQ(clone->total(), 1);
                EXPECT_EQ(Probe::living, clones ? 3 : 1);
            }
            EXPECT_EQ(Probe::living, 1);
            source.removeAll();
            if (!clones)
                probe->release();
        });
    }
}

TEST_F(CmContainerTest, AddingAllKeepsTheOwnershipAndCopiesOnlyToOwn) {
    CmArray source;
    fill(source, {1, 2, 3});
    forEachContainer([&](CmContainer& target) {
        EXPECT_TRUE(target.addAllFrom(&source));
        EXPECT_EQ(target._ownsObjects, CmContainer::kBorrows);
        EXPECT_EQ(Probe::living, 3);
        target.removeAll();
        target._ownsObjects = CmContainer::kTakesOver;
        EXPECT_TRUE(target.addAllFrom(&source));
        EXPECT_EQ(Probe::living, 6);
    });
    CmArray full(2, 0);
    full._ownsObjects = CmContainer::kTakesOver;
    EXPECT_FALSE(full.addAllFrom(&source));
    EXPECT_EQ(Probe::living, 5) << "the copy that found no place is gone";
}

struct TakingRow {
    CmContainer::Ownership mode;
    bool alreadyOwned;
    uint32_t references;  // of an object that had three
};
constexpr TakingRow kTakings[] = {
    {CmContainer::kBorrows,   true,  2},
    {CmContainer::kTakesOver, true,  2},
    {CmContainer::kShares,    true,  4},
    {CmContainer::kBorrows,   false, 3},
    {CmContainer::kTakesOver, false, 3},
    {CmContainer::kShares,    false, 3},
};

TEST_F(CmContainerTest, TakingAllSettlesTheReferences) {
    for (const TakingRow& row : kTakings) {
        SCOPED_TRACE(std::to_string(row.mode) + (row.alreadyOwned ? " already owned" : " not owned"));
        auto* probe = new Probe;
        probe->addRef();
        probe->addRef();
        CmArray source;
        source.add(probe);
        CmLinkedList target;
        target._ownsObjects = row.mode;
        EXPECT_TRUE(target.takeAllFrom(&source, row.alreadyOwned));
        EXPECT_EQ(referencesOf(probe), row.references);
        EXPECT_EQ(source.total(), 1);
        target.removeAll();
        while (probe->release() > 0) {}
    }
}

TEST_F(CmContainerTest, RemovesOneForEachOfAnother) {
    forEachContainer([](CmContainer& container) {
        fill(container, {1, 2, 2, 3});
        CmArray gone;
        fill(gone, {2, 3, 9});
        EXPECT_FALSE(container.removeAllFrom(&gone)) << "9 wasn't there";
        Ranks left = ranksOf(container);
        std::sort(left.begin(), left.end());
        EXPECT_EQ(left, Ranks({1, 2}));
    });
}

/** Comes back to its container while it dies. */
class Visitor : public Probe {
public:
    explicit Visitor(CmContainer& home) : home(home) {}
    ~Visitor() override {
        EXPECT_FALSE(home.containsAbs(this));
        seen = home.total();
    }
    CmContainer& home;
    inline static int32_t seen = -1;
};

TEST_F(CmContainerTest, DyingElementIsOutOfItsContainer) {
    for (const RemovalRow& removal : kRemovals) {
        SCOPED_TRACE(removal.name);
        forEachContainer([&](CmContainer& container) {
            container._ownsObjects = CmContainer::kTakesOver;
            auto* visitor = new Visitor(container);
            container.add(visitor);
            Visitor::seen = -1;
            removal.removeOne(container, visitor);
            EXPECT_EQ(Visitor::seen, 0);
        });
    }
}

TEST_F(CmContainerTest, IteratorWalksBothWaysAndStaysOutOnceOut) {
    forEachContainer([](CmContainer& container) {
        fill(container, {1, 2, 3, 4, 5, 6, 7, 8, 9});
        const Ranks forward = ranksOf(container);
        const std::unique_ptr<CmIterator> cursor(container.newIterator());
        Ranks backward;
        for (cursor->last(); !cursor->done();)
            backward.insert(backward.begin(), rankOf(cursor->previous()));
        EXPECT_EQ(backward, forward);
        EXPECT_EQ(cursor->current(), nullptr);
        EXPECT_EQ(cursor->next(), nullptr);
        EXPECT_EQ(cursor->previous(), nullptr);
        EXPECT_EQ(*cursor += 2, nullptr);

        cursor->first();
        EXPECT_EQ(rankOf(cursor->next()), forward[0]);
        EXPECT_EQ(rankOf(cursor->previous()), forward[1]);
        EXPECT_EQ(rankOf(cursor->current()), forward[0]);
        EXPECT_EQ(rankOf(*cursor += 5), forward[5]);
        EXPECT_EQ(rankOf(*cursor += 0), forward[5]);
        EXPECT_EQ(rankOf(*cursor -= 3), forward[2]);
        EXPECT_EQ(*cursor += INT32_MAX, nullptr);
        EXPECT_TRUE(cursor->done());
        cursor->last();
        EXPECT_EQ(*cursor -= INT32_MAX, nullptr);
        EXPECT_TRUE(cursor->done());
    });
}

TEST_F(CmContainerTest, IteratorFindsObjectsAndMatches) {
    forEachContainer([](CmContainer& container) {
        fill(container, {1, 2, 2, 3});
        const std::unique_ptr<CmIterator> cursor(container.newIterator());
        CmObject* third = container.at(2);
        EXPECT_TRUE(cursor->setCurrent(third));
        EXPECT_EQ(cursor->current(), third);
        Probe two(2), nine(9);
        EXPECT_FALSE(cursor->setCurrent(&two));
        EXPECT_TRUE(cursor->done());

        cursor->first();
        EXPECT_EQ(cursor->next(&two), container.at(1));
        EXPECT_EQ(cursor->next(&two), third);
        EXPECT_EQ(cursor->current(), container.at(3));
        EXPECT_EQ(cursor->next(&nine), nullptr);
        EXPECT_TRUE(cursor->done());
        cursor->last();
        EXPECT_EQ(cursor->previous(&two), third);
        EXPECT_EQ(cursor->previous(&two), container.at(1));
        EXPECT_EQ(cursor->previous(&nine), nullptr);
        EXPECT_EQ(cursor->next(static_cast<CmObject*>(nullptr)), nullptr);
    });
}

TEST_F(CmContainerTest, RemovalAtTheCursorTakesThatVeryPlace) {
    forEachContainer([](CmContainer& container) {
        fill(container, {1, 2, 2, 2, 3});
        const std::unique_ptr<CmIterator> cursor(container.newIterator());
        *cursor += 2;
        const IPtr<CmObject> gone(cursor->current());
        CmObject* before = container.at(1);
        CmObject* following = container.at(3);
        const std::unique_ptr<CmIterator> foreign(CmArray().newIterator());
        EXPECT_FALSE(container.remove(*foreign));
        EXPECT_TRUE(container.remove(*cursor));
        EXPECT_EQ(cursor->current(), following);
        EXPECT_EQ(container.at(1), before);
        EXPECT_FALSE(container.containsAbs(gone));
        EXPECT_EQ(container.total(), 4);
        for (cursor->first(); !cursor->done();)
            EXPECT_TRUE(container.remove(*cursor));
        EXPECT_TRUE(container.isEmpty());
        EXPECT_FALSE(container.remove(*cursor));
    });
}

TEST_F(CmContainerTest, ClassesAreKnownByName) {
    for (const ContainerRow& row : kContainers) {
        SCOPED_TRACE(row.name);
        const OPtr<CmContainer> container(row.create());
        EXPECT_STREQ(container->isA(), row.name);
        EXPECT_TRUE(container->isTypeOf("CmContainer", true));
        const OPtr<FUnknown> byName(ClassFactory::instance(true)->createObjectByName(row.name));
        ASSERT_TRUE(byName);
        EXPECT_TRUE(frameworkObject(byName)->isA(row.name));
    }
    EXPECT_FALSE(ClassFactory::instance(true)->createObjectByName("CmContainer"));
}

}  // namespace
}  // namespace Tessarine
