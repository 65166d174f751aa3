#include "base/source/tarray.h"
#include "base/source/tdlinkedlist.h"
#include "base/source/thashtable.h"
#include <gtest/gtest.h>
#include <memory>
#include <random>
#include <string>
#include <vector>

using namespace Tessarine;

namespace {
template <class T>
std::vector<T> contentOf(const TContainer<T>& container) {
    std::vector<T> content;
    for (const std::unique_ptr<TIterator<T>> walk(container.newIterator()); !walk->done();)
        content.push_back(walk->next());
    return content;
}

template <class T>
std::vector<T> backwardContentOf(const TContainer<T>& container) {
    std::vector<T> content;
    const std::unique_ptr<TIterator<T>> walk(container.newIterator());
    for (walk->last(); !walk->done();)
        content.insert(content.begin(), walk->previous());
    return content;
}

struct TenBuckets : THashTable<int> {
    TenBuckets() : THashTable(10, [](const int& value, int32_t) { return value; }) {}
};
using Numbers = std::vector<int>;
}  // namespace

template <class Container>
class EveryTContainer : public testing::Test {
protected:
    EveryTContainer() {
        container.errorObject = -1;
        for (const int value : {1, 2, 3, 4, 4})
            EXPECT_TRUE(container.add(value));
    }

    Container container;
};
using Kinds =
    testing::Types<TArray<int>, TOrderedArray<int>, TLinkedList<int>, TDLinkedList<int>, TStack<int>, TenBuckets>;
TYPED_TEST_SUITE(EveryTContainer, Kinds);

TYPED_TEST(EveryTContainer, AnswersMissesWithTheErrorObject) {
    TContainer<int>& container = this->container;
    EXPECT_EQ(contentOf(container), (Numbers{1, 2, 3, 4, 4}));
    EXPECT_EQ(container.occurrences(4), 2);
    EXPECT_EQ(container.lookup(3), 3);
    EXPECT_TRUE(container.contains(3));
    EXPECT_EQ(container.at(4), 4);
    EXPECT_EQ(container.lookup(5), -1);
    EXPECT_FALSE(container.contains(5));
    EXPECT_FALSE(container.remove(5));
    for (const int32_t index : {-1, 5, INT32_MIN, INT32_MAX}) {
        SCOPED_TRACE(index);
        EXPECT_EQ(container.at(index), -1);
        EXPECT_FALSE(container.removeAt(index));
    }
    EXPECT_EQ(contentOf(container), (Numbers{1, 2, 3, 4, 4}));
    container.removeAll();
    EXPECT_TRUE(container.isEmpty());
    EXPECT_EQ(container.at(0), -1);
    EXPECT_TRUE(container.add(7));
    EXPECT_EQ(contentOf(container), Numbers{7});
}

TYPED_TEST(EveryTContainer, WalksBothWaysAndStaysOutOfRange) {
    EXPECT_EQ(backwardContentOf<int>(this->container), (Numbers{1, 2, 3, 4, 4}));
    const std::unique_ptr<TIterator<int>> walk(this->container.newIterator());
    EXPECT_EQ(walk->next(), 1);
    EXPECT_EQ(walk->previous(), 2);
    EXPECT_EQ(walk->previous(), 1);
    EXPECT_TRUE(walk->done());
    EXPECT_EQ(walk->previous(), -1);
    EXPECT_EQ(walk->next(), -1);
    EXPECT_EQ(walk->current(), -1);
    walk->last();
    EXPECT_EQ(walk->next(), 4);
    EXPECT_EQ(walk->previous(), -1);
}

TYPED_TEST(EveryTContainer, RemovesAtTheCursorAndGoesOn) {
    TContainer<int>& container = this->container;
    const std::unique_ptr<TIterator<int>> walk(container.newIterator());
    while (!walk->done()) {
        if (walk->current() % 2 == 0)
            EXPECT_TRUE(container.remove(*walk));
        else
            walk->next();
    }
    EXPECT_FALSE(container.remove(*walk));
    EXPECT_EQ(contentOf(container), (Numbers{1, 3}));
    EXPECT_EQ(container.total(), 2);
    TypeParam other;
    EXPECT_TRUE(other.add(1));
    walk->first();
    EXPECT_FALSE(other.remove(*walk));
}

TYPED_TEST(EveryTContainer, CopiesIntoANewInstance) {
    TContainer<int>& container = this->container;
    const std::unique_ptr<TContainer<int>> twin(container.newInstance());
    EXPECT_TRUE(twin->isEmpty());
    EXPECT_TRUE(twin->copy(container));
    EXPECT_TRUE(twin->copy(container));
    EXPECT_TRUE(twin->copy(*twin));
    EXPECT_FALSE(twin->addAllFrom(*twin));
    EXPECT_EQ(contentOf(*twin), contentOf(container));
}

TEST(TContainerModel, BehavesAsAVectorUnderRandomEdits) {
    std::mt19937 random(7);
    TArray<std::string> array(0, -1);
    TDLinkedList<std::string> doubly;
    TLinkedList<std::string> singly;
    TContainer<std::string>* const containers[] = {&array, &doubly, &singly};
    std::vector<std::string> model;
    for (int step = 0; step < 3000; ++step) {
        const int index = static_cast<int>(random() % (model.size() + 1));
        const bool inside = index < static_cast<int>(model.size());
        const std::string value = "a text that doesn't fit into the string itself " + std::to_string(random() % 20);
        if (random() % 2 == 0) {
            model.push_back(value);
            for (TContainer<std::string>* container : containers)
                ASSERT_TRUE(container->add(value));
        } else {
            for (TContainer<std::string>* container : containers)
                ASSERT_EQ(container->removeAt(index), inside) << step;
            if (inside)
                model.erase(model.begin() + index);
        }
        const auto found = std::find(model.begin(), model.end(), value);
        ASSERT_EQ(array.index(value), found == model.end() ? -1 : found - model.begin());
    }
    EXPECT_EQ(contentOf(array), model);
    EXPECT_EQ(contentOf(singly), model);
    EXPECT_EQ(contentOf(doubly), model);
    EXPECT_EQ(backwardContentOf(doubly), model);
}

struct GrowthRow {
    const char* name;
    int32_t size, delta;
    Numbers capacities;  // the first, and after each further growth
    bool goesOn;
};

TEST(TArrayGrowth, FollowsDelta) {
    const GrowthRow rows[] = {
        {"fixed",              2,  0,  {2},             false},
        {"fixed and empty",    0,  0,  {0},             false},
        {"shrinking",          3,  -2, {3},             false},
        {"doubling",           0,  -1, {0, 10, 20, 40}, true },
        {"doubling from one",  1,  -1, {1, 2, 4, 8},    true },
        {"by steps",           0,  10, {0, 10, 20},     true },
        {"from below nothing", -4, 3,  {0, 3, 6},       true },
    };
    for (const GrowthRow& row : rows) {
        SCOPED_TRACE(row.name);
        TArray<int> array(row.size, row.delta);
        for (const int capacity : row.capacities) {
            ASSERT_EQ(array.size(), capacity);
            while (array.total() < capacity)
                ASSERT_TRUE(array.add(array.total()));
            ASSERT_EQ(array.add(array.total()), row.goesOn);
        }
        for (int32_t i = 0; i < array.total(); ++i)
            ASSERT_EQ(array.at(i), i);
    }
}

TEST(TArrayStorage, KeepsNothingAliveThatWasRemoved) {
    const auto probe = std::make_shared<int>(1);
    TArray<std::shared_ptr<int>> array(0, -1);
    for (int i = 0; i < 10; ++i)
        array.add(probe);
    EXPECT_TRUE(array.removeAt(3));
    EXPECT_TRUE(array.remove(probe));
    EXPECT_EQ(probe.use_count(), 9);
    EXPECT_TRUE(array.resize(5));
    EXPECT_EQ(array.total(), 5);
    EXPECT_EQ(probe.use_count(), 6);
    EXPECT_FALSE(array.resize(-1));
    EXPECT_EQ(array.total(), 5);
    array.removeAll();
    EXPECT_EQ(array.size(), 5);
    EXPECT_EQ(probe.use_count(), 1);
    array.add(probe);
    EXPECT_TRUE(array.resize(0));
    EXPECT_EQ(probe.use_count(), 1);
}

TEST(TArrayStorage, TakesACopyOfItsOwnElement) {
    TOrderedArray<std::string> array(1, 1);  // grows each time, and inserts in front
    array.add("an element long enough to live outside");
    for (int i = 0; i < 5; ++i)
        array.add(array.at(0));
    EXPECT_EQ(array.occurrences("an element long enough to live outside"), 6);
}

namespace {
struct Entry {
    int rank = 0, arrival = 0;

    bool operator==(const Entry& other) const { return rank == other.rank; }
    bool operator<(const Entry& other) const { return rank < other.rank; }
};

int32_t byRank(const Entry* a, const Entry* b) {
    return a->rank - b->rank;
}
}  // namespace

TEST(TOrderedArrayOrder, KeepsEqualOnesInOrderOfArrivalAndFindsTheFirst) {
    std::mt19937 random(3);
    for (int count = 0; count < 60; ++count) {
        SCOPED_TRACE(count);
        std::vector<Entry> entries(static_cast<size_t>(count));
        TOrderedArray<Entry> ordered(0, 10);
        TSortableArray<ISortablePtr<Entry, byRank>> sortable(0, 10);
        TOrderedArray<double> numbers(0, -1);  // searched in a way of its own
        for (int i = 0; i < count; ++i) {
            entries[static_cast<size_t>(i)] = {static_cast<int>(random() % 12), i};
            ordered.add(entries[static_cast<size_t>(i)]);
            sortable.add(&entries[static_cast<size_t>(i)]);
            numbers.add(entries[static_cast<size_t>(i)].rank);
        }
        EXPECT_TRUE(std::is_sorted(numbers.begin(), numbers.end()));
        for (int i = 0; i + 1 < count; ++i) {
            const Entry &a = ordered.at(i), &b = ordered.at(i + 1);
            EXPECT_TRUE(a < b || (a == b && a.arrival < b.arrival));
            EXPECT_EQ(sortable.at(i)->arrival, a.arrival);
        }
        for (int rank = -1; rank < 13; ++rank) {
            Entry wanted{rank, 0};
            const Entry* first = std::find(ordered.begin(), ordered.end(), wanted);
            const int32_t expected = first == ordered.end() ? -1 : static_cast<int32_t>(first - ordered.begin());
            EXPECT_EQ(ordered.index(wanted), expected);
            EXPECT_EQ(sortable.index(&wanted), expected);
            EXPECT_EQ(numbers.index(rank), expected);
        }
    }
}

TEST(TLists, HandOutWhatTheyLoseAtTheEnds) {
    TDLinkedList<int> doubly;
    TLinkedList<int> singly;
    TStack<int> stack;
    for (const int value : {1, 2, 3})
        EXPECT_TRUE(doubly.append(value) && singly.prepend(value) && (stack.push(value), stack.peek() == value));
    for (const int value : {3, 2, 1})
        EXPECT_EQ((Numbers{stack.pop(), doubly.removeLast(), singly.removeFirst()}), Numbers(3, value));
    EXPECT_EQ(doubly.removeFirst() + singly.removeLast() + stack.total(), 0);
    EXPECT_TRUE(singly.append(4));
    EXPECT_EQ(singly.removeLast(), 4);
}

TEST(TLists, InsertInTheMiddleOfADoublyLinkedOne) {
    TDLinkedList<int> list;
    EXPECT_TRUE(list.insertAt(3, 0));
    EXPECT_TRUE(list.insertAt(1, 0));
    EXPECT_TRUE(list.insertAt(4, 2));
    EXPECT_TRUE(list.insertBefore(2, 3));
    EXPECT_FALSE(list.insertAt(9, 5));
    EXPECT_FALSE(list.insertAt(9, -1));
    EXPECT_FALSE(list.insertBefore(9, 9));
    EXPECT_EQ(contentOf<int>(list), (Numbers{1, 2, 3, 4}));
    EXPECT_EQ(backwardContentOf<int>(list), (Numbers{1, 2, 3, 4}));
}

namespace {
/** Looks into its container when it dies. */
struct Visitor {
    std::shared_ptr<void> farewell;
    bool operator==(const Visitor&) const { return true; }
};

struct VisitorBuckets : THashTable<Visitor> {
    VisitorBuckets() : THashTable(2, [](const Visitor&, int32_t) { return 0; }) {}
};
}  // namespace

TEST(TContainers, AreInOrderWhenADyingElementComesBack) {
    TDLinkedList<Visitor> list;
    TArray<Visitor> array(0, 1);
    VisitorBuckets table;
    TContainer<Visitor>* const containers[] = {&list, &array, &table};
    Numbers seen;
    const auto visitorOf = [&](TContainer<Visitor>& container) {
        return Visitor{std::shared_ptr<void>(nullptr, [&](void*) {
            seen.push_back(container.total());
            if (container.isEmpty())
                container.add({});
        })};
    };
    for (TContainer<Visitor>* container : containers) {
        container->add(visitorOf(*container));
        container->add(visitorOf(*container));
        container->add(visitorOf(*container));
        container->remove(container->at(1));
        container->removeAll();
        EXPECT_EQ(container->total(), 1);
    }
    EXPECT_EQ(seen, (Numbers{2, 0, 1, 2, 0, 1, 2, 0, 1}));
}

TEST(TLists, MayEndWithTheirOwnElement) {
    auto* list = new TLinkedList<Visitor>;
    list->add({std::shared_ptr<void>(nullptr, [&](void*) { delete list; })});
    EXPECT_TRUE(list->removeAt(0));
}

TEST(TDictionaryPairs, AreUniqueAndAReplacedOneComesLast) {
    TDictionary<int, std::string> dictionary(0, "none");
    EXPECT_TRUE(dictionary.addKeyAndObject(1, "one"));
    EXPECT_TRUE(dictionary.addKeyAndObject(2, "two"));
    EXPECT_TRUE(dictionary.addKeyAndObject(3, "three"));
    EXPECT_FALSE(dictionary.addKeyAndObject(1, "uno"));
    EXPECT_FALSE(dictionary.replace(4, "four"));
    EXPECT_EQ(dictionary.lookupObject(1), "one");
    EXPECT_EQ(dictionary.lookupObject(4), "none");
    EXPECT_EQ(dictionary.total(), 3);

    EXPECT_TRUE(dictionary.replace(1, dictionary.lookupObject(1) + "!"));
    EXPECT_TRUE(dictionary.replace(2, dictionary.lookupObject(2)));
    std::string walked;
    for (const auto& pair : dictionary)
        walked += std::to_string(pair.key) + pair.value + " ";
    EXPECT_EQ(walked, "3three 1one! 2two ");
    EXPECT_TRUE(dictionary.remove(1));
    EXPECT_FALSE(dictionary.contains(1));
    const std::unique_ptr<TDictionary<int, std::string>> twin(dictionary.newInstance());
    EXPECT_EQ(twin->lookupObject(3), "none");
}

TEST(THashTableCounts, RemoveAtLeavesTheTotal) {
    TenBuckets table;
    for (const int value : {21, 3, 11, -7, 1, 3})  // -7 falls into bucket 9, as an unsigned number
        table.add(value);
    EXPECT_EQ(table.total(), 6);
    EXPECT_EQ(table.size(), 10);
    EXPECT_EQ(contentOf<int>(table), (Numbers{21, 11, 1, 3, 3, -7}));
    EXPECT_TRUE(table.removeAt(1));
    EXPECT_EQ(table.total(), 6);
    EXPECT_EQ(contentOf<int>(table), (Numbers{21, 1, 3, 3, -7}));
    EXPECT_TRUE(table.remove(3));
    EXPECT_EQ(table.total(), 5);
    EXPECT_EQ(table.at(4), 0);
    EXPECT_EQ(backwardContentOf<int>(table), (Numbers{21, 1, 3, -7}));
    table.removeAll();
    EXPECT_EQ(table.total(), 0);
}

TEST(TPairs, AreFoundByTheirFirstKey) {
    THashDictionary<int, std::string> names(
        0, [](const TAssociation<int, std::string>& pair, int32_t) { return pair.key; });
    TAssociationArray<int, std::string> array(0, -1);
    EXPECT_EQ(names.size(), 1);
    for (const char* value : {"older", "younger"})
        EXPECT_TRUE(names.addKeyAndObject(5, value) && array.addKeyAndObject(5, value));
    EXPECT_EQ(names.lookupObject(5) + names.lookupObject(6), "older");
    EXPECT_EQ(array.lookup(5).value + array.lookup(6).value, "older");
    EXPECT_TRUE(array.remove(5));
    EXPECT_EQ(array.lookup(5).value, "younger");
}
