#include "collect/cmlinkedlist.h"
#include "collect/cmqueue.h"
#include "tests/frame/source/collect/probe.h"
#include <algorithm>
#include <random>

namespace Tessarine {
namespace {

using CmLinkedListTest = CollectTest;

struct ListEditRow {
    const char* name;
    bool (*edit)(CmLinkedList& list, CmObject* object);
    bool takes;
    Ranks expected;  // of a list of 1, 2, 3 and an object 9
};
const ListEditRow kEdits[] = {
    {"append",           [](CmLinkedList& l, CmObject* o) { return l.append(o); },                true,  {1, 2, 3, 9}},
    {"prepend",          [](CmLinkedList& l, CmObject* o) { return l.prepend(o); },               true,  {9, 1, 2, 3}},
    {"insert first",     [](CmLinkedList& l, CmObject* o) { return l.insertAt(o, 0); },           true,  {9, 1, 2, 3}},
    {"insert last",      [](CmLinkedList& l, CmObject* o) { return l.insertAt(o, 3); },           true,  {1, 2, 3, 9}},
    {"insert between",   [](CmLinkedList& l, CmObject* o) { return l.insertAt(o, 2); },           true,  {1, 2, 9, 3}},
    {"insert beyond",    [](CmLinkedList& l, CmObject* o) { return l.insertAt(o, 4); },           false, {1, 2, 3}   },
    {"insert below",     [](CmLinkedList& l, CmObject* o) { return l.insertAt(o, -1); },          false, {1, 2, 3}   },
    {"before the first", [](CmLinkedList& l, CmObject* o) { return l.insertBefore(o, l.at(0)); }, true,  {9, 1, 2, 3}},
    {"before the last",  [](CmLinkedList& l, CmObject* o) { return l.insertBefore(o, l.at(2)); }, true,  {1, 2, 9, 3}},
    {"before nothing",   [](CmLinkedList& l, CmObject* o) { return l.insertBefore(o, nullptr); }, false, {1, 2, 3}   },
    {"after the last",   [](CmLinkedList& l, CmObject* o) { return l.insertAfter(o, l.at(2)); },  true,  {1, 2, 3, 9}},
    {"after the first",  [](CmLinkedList& l, CmObject* o) { return l.insertAfter(o, l.at(0)); },  true,  {1, 9, 2, 3}},
    {"after a stranger", [](CmLinkedList& l, CmObject* o) { return l.insertAfter(o, o); },        false, {1, 2, 3}   },
    {"replace",          [](CmLinkedList& l, CmObject* o) { return l.replaceAt(o, 1); },          true,  {1, 9, 3}   },
    {"replace beyond",   [](CmLinkedList& l, CmObject* o) { return l.replaceAt(o, 3); },          false, {1, 2, 3}   },
    {"remove a twin",    [](CmLinkedList& l, CmObject*) { return l.removeAbs(nullptr); },         false, {1, 2, 3}   },
};

TEST_F(CmLinkedListTest, EditsLinkWhereTheySay) {
    for (const ListEditRow& row : kEdits) {
        SCOPED_TRACE(row.name);
        CmLinkedList list;
        fill(list, {1, 2, 3});
        auto* object = new Probe(9);
        EXPECT_EQ(row.edit(list, object), row.takes);
        if (!row.takes)
            object->release();
        EXPECT_EQ(ranksOf(list), row.expected);
        EXPECT_EQ(list.total(), static_cast<int32_t>(row.expected.size()));
        fill(list, {10});
        EXPECT_EQ(rankOf(list.at(list.total() - 1)), 10) << "the end of the list is lost";
    }
}

TEST_F(CmLinkedListTest, WhatIsTakenOutKeepsItsReference) {
    CmLinkedList list;
    EXPECT_EQ(list.removeFirst(), nullptr);
    EXPECT_EQ(list.removeLast(), nullptr);
    fill(list, {1, 2, 3});
    CmObject* first = list.removeFirst();
    CmObject* last = list.removeLast();
    EXPECT_EQ(rankOf(first), 1);
    EXPECT_EQ(rankOf(last), 3);
    CmObject* only = list.removeLast();
    EXPECT_EQ(rankOf(only), 2);
    EXPECT_TRUE(list.isEmpty());
    for (CmObject* object : {first, last, only})
        EXPECT_EQ(object->release(), 0u);
    fill(list, {4, 5});
    EXPECT_EQ(ranksOf(list), Ranks({4, 5}));
}

TEST_F(CmLinkedListTest, AddingTheVeryObjectsNeverCopies) {
    CmLinkedList source, list;
    source._ownsObjects = CmContainer::kShares;
    auto* probe = new Probe;
    source.add(probe);
    list._ownsObjects = CmContainer::kTakesOver;
    EXPECT_TRUE(list.addAllFromAbs(&source));
    EXPECT_FALSE(list.addAllFromAbs(&list));
    EXPECT_TRUE(list.containsAbs(probe));
    EXPECT_EQ(referencesOf(probe), 2u);
}

/** Removes the very object from both; places of the others stay. */
void editBoth(CmLinkedList& list, std::vector<CmObject*>& model, std::mt19937& random) {
    const int32_t place = static_cast<int32_t>(random() % (model.size() + 1));
    if (random() % 2 || model.empty()) {
        auto* object = new Probe(static_cast<int32_t>(random() % 50));
        ASSERT_TRUE(list.insertAt(object, place));
        model.insert(model.begin() + place, object);
        return;
    }
    CmObject* gone = model[place % model.size()];
    ASSERT_TRUE(random() % 2 ? list.removeAbs(gone) : list.removeAt(list.indexAbs(gone)));
    std::erase(model, gone);
}

TEST_F(CmLinkedListTest, BehavesLikeASequence) {
    std::mt19937 random(11);
    CmLinkedList list;
    list._ownsObjects = CmContainer::kTakesOver;
    std::vector<CmObject*> model;
    for (int32_t step = 0; step < 3000; ++step) {
        SCOPED_TRACE(step);
        editBoth(list, model, random);
        ASSERT_EQ(list.total(), static_cast<int32_t>(model.size()));
        ASSERT_EQ(Probe::living, list.total());
        CmLinkedListIterator cursor(list);
        for (CmObject* object : model)
            ASSERT_EQ(cursor.next(), object);
        ASSERT_TRUE(cursor.done());
        cursor.last();
        ASSERT_EQ(cursor.current(), model.empty() ? nullptr : model.back());
    }
}

TEST_F(CmLinkedListTest, StepsOverWhatItRemoves) {
    CmLinkedList list;
    fill(list, {1, 2, 3, 4, 5, 6});
    CmLinkedListIterator cursor(list);
    while (CmObject* object = cursor.next()) {
        if (rankOf(object) % 2)
            list.removeAbs(object);
    }
    EXPECT_EQ(ranksOf(list), Ranks({2, 4, 6}));
}

TEST_F(CmLinkedListTest, QueueAndStackHandOutTheirReferences) {
    CmQueue queue;
    CmStack stack;
    EXPECT_EQ(queue.peek(), nullptr);
    EXPECT_EQ(queue.dequeue(), nullptr);
    EXPECT_EQ(stack.pop(), nullptr);
    queue._ownsObjects = stack._ownsObjects = CmContainer::kTakesOver;
    for (const int32_t rank : {1, 2, 3}) {
        EXPECT_TRUE(queue.enqueue(new Probe(rank)));
        EXPECT_TRUE(stack.push(new Probe(rank)));
    }
    EXPECT_EQ(rankOf(queue.peek()), 1);
    EXPECT_EQ(rankOf(stack.peek()), 3);
    CmObject* oldest = queue.dequeue();
    CmObject* newest = stack.pop();
    CmObject* bottom = stack.removeBottom();
    EXPECT_EQ(rankOf(oldest), 1);
    EXPECT_EQ(rankOf(newest), 3);
    EXPECT_EQ(rankOf(bottom), 1);
    for (CmObject* object : {oldest, newest, bottom})
        EXPECT_EQ(object->release(), 0u);
    EXPECT_EQ(queue.total(), 2);
    EXPECT_EQ(stack.total(), 1);
}

}  // namespace
}  // namespace Tessarine
