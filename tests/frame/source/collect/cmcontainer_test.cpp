#include "collect/cmcontainer.h"
#include "collect/cmarray.h"
#include "collect/cmbtree.h"
#include "collect/cmdlinkedlist.h"
#include "collect/cmhashtable.h"
#include "collect/cmobjectfilter.h"
#include "collect/cmqueue.h"
#include "pluginterfaces/base/smartpointer.h"
#include "tests/frame/source/collect/probe.h"
#include <algorithm>
#include <functional>
#include <mutex>
#include <numeric>
#include <set>
#include <thread>

namespace Tessarine {
namespace {

constexpr const char* kContainers[] = {"CmArray",       "CmOrderedArray", "CmLinkedList", "CmDLinkedList",
                                       "CmILinkedList", "CmIDLinkedList", "CmHashTable",  "CmBTree",
                                       "CmQueue",       "CmStack"};

using CmContainerTest = CollectTest;

/** The class record makes them, so that names, records and default sizes are tested along. */
void forEachContainer(const std::function<void(CmContainer&)>& check) {
    for (const char* name : kContainers) {
        SCOPED_TRACE(name);
        const OPtr<FUnknown> made(ClassFactory::instance(true)->createObjectByName(name));
        ASSERT_TRUE(made);
        auto* container = classCast<CmContainer>(commonObject(made));
        ASSERT_TRUE(container && container->isA(name));
        check(*container);
    }
}

void checkCounts(CmContainer& container, const OwnershipRow& ownership, const RemovalRow& removal) {
    SCOPED_TRACE(removal.name + std::string(" with ownership ") + std::to_string(ownership.mode));
    container._ownsObjects = ownership.mode;
    CmObject* probe = newProbe(container, 0);
    probe->addRef();
    ASSERT_TRUE(container.add(probe));
    EXPECT_EQ(referencesOf(probe), ownership.whileHeld);
    removal.removeOne(container, probe);
    EXPECT_TRUE(container.isEmpty());
    ASSERT_EQ(referencesOf(probe), ownership.afterRemoval);
    while (probe->release() > 0) {}
}

TEST_F(CmContainerTest, CountsEachReferenceOnce) {
    forEachContainer([](CmContainer& container) {
        for (const OwnershipRow& ownership : kOwnerships) {
            for (const RemovalRow& removal : kRemovals)
                checkCounts(container, ownership, removal);
        }
    });
}

TEST_F(CmContainerTest, FindsEqualElementsAndRefusesWhatIsNotThere) {
    forEachContainer([](CmContainer& container) {
        fill(container, {1, 2, 2, 2, 3});
        Probe two(2), other(7);
        EXPECT_TRUE(rankOf(container.lookup(&two)) == 2 && container.contains(&two) && !container.containsAbs(&two));
        EXPECT_TRUE(container.occurrences(&two) == 3 && container.getIndex(&two) == 1);
        EXPECT_EQ(ranksOf(*OPtr<CmLinkedList>(container.lookupAll(&two))), Ranks({2, 2, 2}));
        EXPECT_FALSE(container.add(nullptr) || container.remove(nullptr) || container.remove(&other));
        for (const int32_t index : {-1, 5, 1000})
            EXPECT_FALSE(container.removeAt(index) || container.at(index));
        EXPECT_FALSE(container.lookup(&other) || container.lookup(nullptr) || container.occurrences(nullptr));
        EXPECT_TRUE(!container.contains(&other) && container.getIndex(&other) == -1);
        EXPECT_FALSE(container.addAllFrom(&container) || container.takeAllFrom(&container, true));
        CmArray gone;
        EXPECT_TRUE(gone.add(&other) && gone.add(container.at(4)));
        EXPECT_FALSE(container.removeAllFrom(&gone)) << "one wasn't here";
        EXPECT_EQ(container.total(), 4);
        EXPECT_TRUE(container.removeAllFrom(&container) && container.isEmpty());
    });
}

void checkCopies(CmContainer& source, CmContainer::Ownership mode) {
    SCOPED_TRACE(mode);
    const bool clones = mode == CmContainer::kTakesOver;
    const bool intrusive = dynamic_cast<CmILinkedList*>(&source) || dynamic_cast<CmIDLinkedList*>(&source);
    source._ownsObjects = mode;
    CmObject* probe = newProbe(source, 5);
    ASSERT_TRUE(source.add(probe));
    CmArray array;
    fill(array, {8, 9});
    EXPECT_TRUE(array.copy(source) && array.copy(array));
    const OPtr<CmObject> made(source.newCopy());
    auto* clone = classCast<CmContainer>(made.get());
    ASSERT_TRUE(clone && clone->isA(source.isA()));
    for (CmContainer* copy : {static_cast<CmContainer*>(&array), clone}) {
        EXPECT_EQ(copy->_ownsObjects, mode);
        const bool cantShare = intrusive && !clones && copy == clone;
        EXPECT_EQ(ranksOf(*copy), cantShare ? Ranks() : Ranks({5}));
        EXPECT_EQ(copy->containsAbs(probe), !clones && !cantShare);
    }
    EXPECT_EQ(Ranked::living, clones ? 3 : 1);
    for (CmContainer* each : {static_cast<CmContainer*>(&array), clone, &source})
        each->removeAll();
    if (!clones)
        probe->release();
}

TEST_F(CmContainerTest, CopiesAsItsOwnershipSays) {
    for (const OwnershipRow& ownership : kOwnerships)
        forEachContainer([&](CmContainer& source) { checkCopies(source, ownership.mode); });
}

TEST_F(CmContainerTest, AddingAllKeepsTheOwnershipAndCopiesOnlyToOwn) {
    forEachContainer([](CmContainer& target) {
        CmArray source(3, 0);
        source._ownsObjects = CmContainer::kTakesOver;
        for (const int32_t rank : {1, 2, 3})
            source.add(newProbe(target, rank));
        EXPECT_TRUE(target.addAllFrom(&source));
        EXPECT_TRUE(target._ownsObjects == CmContainer::kBorrows && Ranked::living == 3);
        target.removeAll();
        target._ownsObjects = CmContainer::kTakesOver;
        EXPECT_TRUE(target.addAllFrom(&source));
        EXPECT_EQ(Ranked::living, 6);
        EXPECT_FALSE(source.addAllFrom(&target));
        EXPECT_EQ(Ranked::living, 6) << "the copy that found no place is gone";
        target.removeAll();
    });
}

/** Comes back to its container while it dies. */
struct Visitor : Probe {
    explicit Visitor(CmContainer& home) : home(home) {}
    ~Visitor() override { EXPECT_TRUE(home.isEmpty() && home.add(newProbe(home, 1))); }
    CmContainer& home;
};

TEST_F(CmContainerTest, DyingElementIsOutOfItsContainerAndMayFillItAgain) {
    for (const RemovalRow& removal : kRemovals) {
        SCOPED_TRACE(removal.name);
        forEachContainer([&](CmContainer& container) {
            if (container.isA("CmILinkedList") || container.isA("CmIDLinkedList"))
                return;
            container._ownsObjects = CmContainer::kTakesOver;
            auto* visitor = new Visitor(container);
            EXPECT_TRUE(container.add(visitor));
            removal.removeOne(container, visitor);
            EXPECT_EQ(ranksOf(container), Ranks({1}));
            container.removeAll();
        });
    }
}

TEST_F(CmContainerTest, IteratorWalksBothWaysAndStaysOutOnceOut) {
    forEachContainer([](CmContainer& container) {
        fill(container, {1, 2, 3, 4, 5, 6, 7, 8, 9});
        const Ranks forward = ranksOf(container);
        const std::unique_ptr<CmIterator> cursor(container.newIterator());
        EXPECT_EQ(backwardRanksOf(container), forward);
        EXPECT_EQ(rankOf(cursor->next()), forward[0]);
        EXPECT_EQ(rankOf(cursor->previous()), forward[1]);
        EXPECT_EQ(rankOf(*cursor += 5), forward[5]);
        EXPECT_EQ(rankOf(*cursor -= 3), forward[2]);
        EXPECT_TRUE(!(*cursor += INT32_MAX) && cursor->done());
        EXPECT_TRUE(!cursor->current() && !cursor->next() && !cursor->previous() && !(*cursor += 2));
        cursor->last();
        EXPECT_TRUE(!(*cursor -= INT32_MAX) && cursor->done());
        EXPECT_TRUE(cursor->setCurrent(container.at(2)) && cursor->current() == container.at(2));
        Probe three(3);
        EXPECT_TRUE(!cursor->setCurrent(&three) && cursor->done());
    });
}

TEST_F(CmContainerTest, IteratorFindsMatches) {
    forEachContainer([](CmContainer& container) {
        fill(container, {1, 2, 2, 3});
        const std::unique_ptr<CmIterator> cursor(container.newIterator());
        CmObject* third = container.at(2);
        Probe two(2), nine(9);
        EXPECT_TRUE(cursor->next(&two) == container.at(1) && cursor->next(&two) == third);
        EXPECT_TRUE(cursor->current() == container.at(3) && !cursor->next(&nine) && cursor->done());
        cursor->last();
        EXPECT_TRUE(cursor->previous(&two) == third && cursor->previous(&two) == container.at(1));
        EXPECT_TRUE(!cursor->previous(&nine) && !cursor->next(static_cast<CmObject*>(nullptr)));
    });
}

TEST_F(CmContainerTest, RemovalAtTheCursorTakesThatVeryPlace) {
    forEachContainer([](CmContainer& container) {
        fill(container, {1, 2, 2, 2, 3});
        const std::unique_ptr<CmIterator> cursor(container.newIterator());
        *cursor += 2;
        const IPtr<CmObject> gone(cursor->current());
        CmObject *before = container.at(1), *following = container.at(3);
        EXPECT_FALSE(container.remove(*std::unique_ptr<CmIterator>(CmArray().newIterator())));
        EXPECT_TRUE(container.remove(*cursor) && cursor->current() == following && container.at(1) == before);
        EXPECT_FALSE(container.containsAbs(gone));
        for (cursor->first(); !cursor->done();)
            EXPECT_TRUE(container.remove(*cursor));
        EXPECT_TRUE(container.isEmpty() && !container.remove(*cursor));
    });
}

TEST_F(CmContainerTest, FiltersTellElementsApart) {
    CmArray inner, objects;
    fill(objects, {1, 2, 3});
    objects.add((inner.addRef(), &inner));
    CmIdentityFilter second(objects.at(1));
    CmTypeFilter containers("CmContainer");
    CmIsAFilter plain("CmObject");
    CmHasInterfaceFilter framework(FObject::iid), stranger("no such interface");
    CmMacroFilter odd([](CmObject* object) { return rankOf(object) % 2 == 1; });
    const std::pair<CmObjectFilter*, Ranks> passing[] = {
        {&second,     {2}          },
        {&containers, {-1}         },
        {&plain,      {1, 2, 3}    },
        {&framework,  {1, 2, 3, -1}},
        {&stranger,   {}           },
        {&odd,        {1, 3}       },
    };
    for (const auto& [filter, ranks] : passing) {
        SCOPED_TRACE(filter - passing[0].first);
        CmLinkedList found;
        EXPECT_TRUE(objects.query(*filter, found));
        EXPECT_EQ(ranksOf(found), ranks);
        EXPECT_EQ(objects.firstThat(*filter), found.at(0));
        EXPECT_EQ(objects.lastThat(*filter), found.at(found.total() - 1));
    }
    EXPECT_EQ(referencesOf(&inner), 2u) << "an interface filter gives back what it was answered";
    CmArray full(0, 0);
    EXPECT_FALSE(objects.query(plain, full));
}

/** Answers false at one rank, and keeps who was shown on which threads. */
struct Recorder final : CmObjectFilter {
    explicit Recorder(int32_t stopRank) : stopRank(stopRank) {}
    bool test(CmObject* object) override {
        const std::lock_guard guard(lock);
        ranks.push_back(rankOf(object));
        threads.insert(std::this_thread::get_id());
        return rankOf(object) != stopRank;
    }

    const int32_t stopRank;
    std::mutex lock;
    Ranks ranks;
    std::set<std::thread::id> threads;
};

// the number of threads that saw elements comes last; 0: any
constexpr std::tuple<const char*, int32_t, int32_t, int32_t, bool, size_t> kConcurrency[] = {
    {"one thread is stopped: false",        1,         1,  4,  false, 1},
    {"too few elements stay on the caller", 8,         60, -1, true,  1},
    {"several threads are stopped: true",   3,         1,  4,  true,  0},
    {"fewer threads until each has enough", INT32_MAX, 25, -1, false, 4},
};

TEST_F(CmContainerTest, ConcurrentIterationMeansTheOppositeOnSeveralThreads) {
    for (const auto& [name, threads, minPerThread, stopRank, result, onThreads] : kConcurrency) {
        SCOPED_TRACE(name);
        forEachContainer([&](CmContainer& container) {
            Ranks all(100);
            std::iota(all.begin(), all.end(), 0);
            fill(container, all);
            Recorder recorder(stopRank);
            EXPECT_EQ(container.concurrentIteration(recorder, threads, minPerThread), result);
            EXPECT_TRUE(onThreads == 0 || recorder.threads.size() == onThreads);
            std::sort(recorder.ranks.begin(), recorder.ranks.end());
            EXPECT_TRUE(stopRank >= 0 || recorder.ranks == all);
            EXPECT_EQ(std::unique(recorder.ranks.begin(), recorder.ranks.end()), recorder.ranks.end());
        });
    }
    Recorder recorder(-1);
    EXPECT_FALSE(CmArray().concurrentIteration(recorder, 2, 0)) << "nothing for two threads";
}

}  // namespace
}  // namespace Tessarine
