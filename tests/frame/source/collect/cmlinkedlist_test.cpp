#include "collect/cmlinkedlist.h"
#include "collect/cmarray.h"
#include "collect/cmdlinkedlist.h"
#include "collect/cmqueue.h"
#include "tests/frame/source/collect/probe.h"
#include <algorithm>
#include <random>

namespace Tessarine {
namespace {

/** All that keep the place that an element was given. */
template <class List>
class CmListTest : public CollectTest {
protected:
    using Element = std::conditional_t<std::is_same_v<List, CmILinkedList>, CmILink,
                                       std::conditional_t<std::is_same_v<List, CmIDLinkedList>, CmIDLink, CmObject>>;
    static Element* make(int32_t rank) { return new ProbeOf<Element>(rank); }
};
using Lists = testing::Types<CmLinkedList, CmDLinkedList, CmILinkedList, CmIDLinkedList>;
TYPED_TEST_SUITE(CmListTest, Lists);

template <class List>
class CmSequenceTest : public CmListTest<List> {};
using Sequences = testing::Types<CmArray, CmLinkedList, CmDLinkedList, CmILinkedList, CmIDLinkedList>;
TYPED_TEST_SUITE(CmSequenceTest, Sequences);

TYPED_TEST(CmListTest, InsertsBesideTheVeryNeighbour) {
    using L = TypeParam;
    using E = typename TestFixture::Element;
    // whether the object 9 is taken, and what becomes of 1, 2
    const std::tuple<const char*, bool (*)(L&, E*), bool, Ranks> edits[] = {
        {"before the first", [](L& l, E* o) { return l.insertBefore(o, l.at(0)); }, true,  {9, 1, 2, 10}},
        {"before nothing",   [](L& l, E* o) { return l.insertBefore(o, nullptr); }, false, {1, 2, 10}   },
        {"after the last",   [](L& l, E* o) { return l.insertAfter(o, l.at(1)); },  true,  {1, 2, 9, 10}},
        {"after a stranger", [](L& l, E* o) { return l.insertAfter(o, o); },        false, {1, 2, 10}   },
    };
    for (const auto& [name, edit, takes, expected] : edits) {
        SCOPED_TRACE(name);
        L list;
        fill(list, {1, 2});
        E* object = TestFixture::make(9);
        EXPECT_EQ(edit(list, object), takes);
        if (!takes)
            object->release();
        fill(list, {10});  // behind the end, wherever that is now
        EXPECT_EQ(ranksOf(list), expected);
    }
}

/** One random edit, made on the list and on its model. */
template <class List, class Element>
void editBoth(List& list, std::vector<Element*>& model, std::mt19937& random, Element* object) {
    const int32_t count = static_cast<int32_t>(model.size());
    const int32_t place = static_cast<int32_t>(random() % (count + 1));
    const auto at = model.begin() + place;
    const uint32_t edit = random() % 4;
    bool taken = false;
    if (edit < 2) {
        ASSERT_TRUE(taken = list.insertAt(object, place));
        model.insert(at, object);
    } else if (edit == 2) {
        ASSERT_EQ(taken = list.replaceAt(object, place), place < count);
        if (taken)
            *at = object;
    } else {
        ASSERT_EQ(list.removeAt(place), place < count);
        if (place < count)
            model.erase(at);
    }
    if (!taken)
        object->release();
}

TYPED_TEST(CmSequenceTest, BehavesLikeAVector) {
    std::mt19937 random(7);
    TypeParam list;
    list._ownsObjects = CmContainer::kTakesOver;
    std::vector<typename TestFixture::Element*> model;
    for (int32_t step = 0; step < 2500; ++step) {
        SCOPED_TRACE(step);
        editBoth(list, model, random, TestFixture::make(static_cast<int32_t>(random() % 50)));
        ASSERT_EQ(list.total(), static_cast<int32_t>(model.size()));
        ASSERT_EQ(Ranked::living, list.total());
        const std::unique_ptr<CmIterator> cursor(list.newIterator());
        for (CmObject* object : model)
            ASSERT_EQ(cursor->next(), object);
        cursor->last();
        for (auto at = model.rbegin(); at != model.rend(); ++at)
            ASSERT_EQ(cursor->previous(), *at);
        if (model.empty())
            continue;
        const size_t place = random() % model.size();
        CmObject* searched = model[place];
        const auto equal = [searched](const CmObject* other) { return searched->isEqual(other); };
        ASSERT_EQ(list.index(searched), std::ranges::find_if(model, equal) - model.begin());
        ASSERT_EQ(list.indexAbs(searched), static_cast<int32_t>(place));
        ASSERT_EQ(list.at(static_cast<int32_t>(place)), searched);
    }
}

TYPED_TEST(CmListTest, WhatIsTakenOutKeepsItsReferenceInEveryMode) {
    for (const OwnershipRow& row : kOwnerships) {
        SCOPED_TRACE(row.mode);
        TypeParam list;
        EXPECT_TRUE(!list.removeFirst() && !list.removeLast());
        list._ownsObjects = row.mode;
        for (const int32_t rank : {1, 2, 3}) {
            auto* probe = TestFixture::make(rank);
            probe->addRef();
            list.add(probe);
        }
        for (CmObject* object : {list.removeFirst(), list.removeLast(), list.removeLast()}) {
            EXPECT_EQ(referencesOf(object), row.whileHeld);
            while (object->release() > 0) {}
        }
        fill(list, {4, 5});
        EXPECT_EQ(ranksOf(list), Ranks({4, 5}));
    }
}

using CmLinkedListTest = CollectTest;

TEST_F(CmLinkedListTest, SortsWhatComesBehindEqualOnes) {
    ProbeOf<CmIDLink> probes[4] = {ProbeOf<CmIDLink>(3), ProbeOf<CmIDLink>(1), ProbeOf<CmIDLink>(2),
                                   ProbeOf<CmIDLink>(1)};
    CmLinkedList list;
    CmIDLinkedList links;
    for (auto& probe : probes)
        ASSERT_TRUE(list.addSorted(&probe) && links.addSorted(&probe));
    for (const int32_t place : {1, 3, 2, 0})
        EXPECT_TRUE(list.removeFirst() == &probes[place] && links.removeFirst() == &probes[place]);
}

TEST_F(CmLinkedListTest, LinkIsInOneListAtATime) {
    ProbeOf<CmIDLink> probe, second(2);
    Probe plain;
    CmIDLinkedList list, other;
    EXPECT_TRUE(list.add(&probe) && other.add(&second));
    EXPECT_FALSE(list.add(&plain) || list.add(&probe) || other.add(&probe) || other.replaceAt(&probe, 0));
    EXPECT_FALSE(other.removeAbs(&probe) || other.containsAbs(&probe));
    EXPECT_TRUE(list.removeAbs(&probe) && other.add(&probe));
}

// what becomes of 1, 2 and a source of 8, 9
const std::tuple<const char*, void (*)(CmIDLinkedList&, CmIDLinkedList&), Ranks> kMoves[] = {
    {"append",      [](CmIDLinkedList& list, CmIDLinkedList& source) { list.appendList(source); },  {1, 2, 8, 9}},
    {"prepend",     [](CmIDLinkedList& list, CmIDLinkedList& source) { list.prependList(source); }, {8, 9, 1, 2}},
    {"take over",   [](CmIDLinkedList& list, CmIDLinkedList& source) { list.takeOver(source); },    {8, 9}      },
    {"from itself", [](CmIDLinkedList& list, CmIDLinkedList&) { list.takeOver(list); },             {1, 2}      },
};

TEST_F(CmLinkedListTest, WholeListsMoveWithTheirReferences) {
    for (const auto& [name, move, expected] : kMoves) {
        for (const auto mode : {CmContainer::kTakesOver, CmContainer::kShares}) {
            SCOPED_TRACE(name);
            CmIDLinkedList list, source;
            fill(list, {1, 2});
            fill(source, {8, 9});
            list._ownsObjects = mode;
            move(list, source);
            EXPECT_EQ(ranksOf(list), expected);
            EXPECT_EQ(list.total() + source.total(), Ranked::living);
            EXPECT_EQ(backwardRanksOf(list), expected);
            for (int32_t i = 0; i < list.total(); ++i)
                EXPECT_EQ(referencesOf(list.at(i)), 1u);
        }
    }
}

TEST_F(CmLinkedListTest, AnyTwoLinksChangePlaces) {
    CmIDLinkedList list;
    Ranks expected = {0, 1, 2, 3};
    fill(list, expected);
    const auto link = [&](int32_t at) { return static_cast<CmIDLink*>(list.at(at)); };
    ProbeOf<CmIDLink> stranger;
    EXPECT_FALSE(list.swap(&stranger, link(0)));
    for (int32_t pair = 0; pair < 16; ++pair) {
        std::swap(expected[pair / 4], expected[pair % 4]);
        EXPECT_TRUE(list.swap(link(pair / 4), link(pair % 4)));
        EXPECT_TRUE(ranksOf(list) == expected && backwardRanksOf(list) == expected) << pair;
    }
}

TEST_F(CmLinkedListTest, QueueAndStackTakeFromTheirEnds) {
    CmQueue queue;
    CmStack stack;
    EXPECT_TRUE(!queue.peek() && !queue.dequeue() && !stack.peek() && !stack.pop());
    Probe probes[] = {Probe(0), Probe(1), Probe(2)};
    for (Probe& probe : probes)
        EXPECT_TRUE(queue.enqueue(&probe) && stack.push(&probe));
    EXPECT_TRUE(queue.peek() == &probes[0] && queue.dequeue() == &probes[0]);
    EXPECT_TRUE(stack.peek() == &probes[2] && stack.pop() == &probes[2] && stack.removeBottom() == &probes[0]);
}

}  // namespace
}  // namespace Tessarine
