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
    EXPECT_TRUE(container.lookup(3) == 3 && container.contains(3));
    EXPECT_EQ(container.lookup(5), -1);
    EXPECT_FALSE(container.contains(5) || container.remove(5));
    for (const int32_t index : {-1, 5, INT32_MIN, INT32_MAX})
        EXPECT_TRUE(container.at(index) == -1 && !container.removeAt(index)) << index;
    EXPECT_EQ(contentOf(container), (Numbers{1, 2, 3, 4, 4}));
    container.removeAll();
    EXPECT_TRUE(container.isEmpty() && container.add(7));
    EXPECT_EQ(contentOf(container), Numbers{7});
}

TYPED_TEST(EveryTContainer, WalksBothWaysAndStaysOutOfRange) {
    EXPECT_EQ(backwardContentOf<int>(this->container), (Numbers{1, 2, 3, 4, 4}));
    const std::unique_ptr<TIterator<int>> walk(this->container.newIterator());
    EXPECT_EQ(walk->next(), 1);
    EXPECT_EQ(walk->previous(), 2);
    EXPECT_EQ(walk->previous(), 1);
    EXPECT_TRUE(walk->done());
    EXPECT_TRUE(walk->previous() == -1 && walk->next() == -1 && walk->current() == -1);
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
    TypeParam other;
    EXPECT_TRUE(other.add(1));
    walk->first();
    EXPECT_FALSE(other.remove(*walk));
}

TYPED_TEST(EveryTContainer, CopiesIntoANewInstance) {
    TContainer<int>& container = this->container;
    const std::unique_ptr<TContainer<int>> twin(container.newInstance());
    EXPECT_TRUE(twin->copy(container) && twin->copy(container) && twin->copy(*twin) && !twin->addAllFrom(*twin));
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
    for (TContainer<std::string>* container : containers)
        EXPECT_TRUE(contentOf(*container) == model && backwardContentOf(*container) == model);
}

TEST(TArrayGrowth, FollowsDelta) {
    // size, delta, the capacities one after the other, and whether they go on
    const std::tuple<int32_t, int32_t, Numbers, bool> rows[] = {
        {2,  0,  {2},             false},
        {3,  -2, {3},             false},
        {0,  -1, {0, 10, 20, 40}, true },
        {1,  -1, {1, 2, 4, 8},    true },
        {-4, 3,  {0, 3, 6},       true },
    };
    for (const auto& [size, delta, capacities, goesOn] : rows) {
        SCOPED_TRACE(testing::Message() << size << " by " << delta);
        TArray<int> array(size, delta);
        for (const int capacity : capacities) {
            ASSERT_EQ(array.size(), capacity);
            while (array.total() < capacity)
                ASSERT_TRUE(array.add(array.total()));
            ASSERT_EQ(array.add(array.total()), goesOn);
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
    EXPECT_TRUE(array.removeAt(3) && array.remove(probe));
    EXPECT_EQ(probe.use_count(), 9);
    EXPECT_TRUE(array.resize(5) && !array.resize(-1));
    EXPECT_EQ(array.total(), 5);
    EXPECT_EQ(probe.use_count(), 6);
    array.removeAll();
    EXPECT_EQ(array.size(), 5);
    EXPECT_EQ(probe.use_count(), 1);
    TOrderedArray<std::string> texts(1, 1);  // grows each time, and inserts in front
    texts.add("an element long enough to live outside");
    for (int i = 0; i < 5; ++i)
        texts.add(texts.at(0));
    EXPECT_EQ(texts.occurrences("an element long enough to live outside"), 6) << "taken from itself";
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
        for (Entry& entry : entries) {
            entry = {static_cast<int>(random() % 12), static_cast<int>(&entry - entries.data())};
            ordered.add(entry);
            sortable.add(&entry);
            numbers.add(entry.rank);
        }
        for (int i = 0; i + 1 < count; ++i) {
            const Entry &a = ordered.at(i), &b = ordered.at(i + 1);
            EXPECT_TRUE(a < b || (a == b && a.arrival < b.arrival));
            EXPECT_EQ(sortable.at(i)->arrival, a.arrival);
        }
        for (int rank = -1; rank < 13; ++rank) {
            Entry wanted{rank, 0};
            const auto first = std::find(ordered.begin(), ordered.end(), wanted) - ordered.begin();
            const auto expected = first == count ? -1 : first;
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
}

TEST(TLists, InsertInTheMiddleOfADoublyLinkedOne) {
    TDLinkedList<int> list;
    EXPECT_TRUE(list.insertAt(3, 0) && list.insertAt(1, 0) && list.insertAt(4, 2) && list.insertBefore(2, 3));
    EXPECT_FALSE(list.insertAt(9, 5) || list.insertAt(9, -1) || list.insertBefore(9, 9));
    EXPECT_EQ(contentOf<int>(list), (Numbers{1, 2, 3, 4}));
    EXPECT_EQ(backwardContentOf<int>(list), (Numbers{1, 2, 3, 4}));
}

TEST(TDictionaryPairs, AreUniqueAndAReplacedOneComesLast) {
    TDictionary<int, std::string> dictionary(0, "none");
    for (const auto& [key, value] : {
             std::pair(1, "one"), {2, "two"  },
               {3, "three"}
    })
        EXPECT_TRUE(dictionary.addKeyAndObject(key, value));
    EXPECT_FALSE(dictionary.addKeyAndObject(1, "uno") || dictionary.replace(4, "four"));
    EXPECT_EQ(dictionary.lookupObject(4), "none");
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
    EXPECT_TRUE(table.removeAt(1) && table.total() == 6 && table.remove(3) && table.total() == 5);
    EXPECT_EQ(contentOf<int>(table), (Numbers{21, 1, 3, -7}));
}

TEST(TPairs, AreFoundByTheirFirstKey) {
    THashDictionary<int, std::string> names(
        0, [](const TAssociation<int, std::string>& pair, int32_t) { return pair.key; });
    TAssociationArray<int, std::string> array(0, -1);
    for (const char* value : {"older", "younger"})
        EXPECT_TRUE(names.addKeyAndObject(5, value) && array.addKeyAndObject(5, value));
    EXPECT_EQ(names.lookupObject(5) + names.lookupObject(6), "older");
    EXPECT_EQ(array.lookup(5).value + array.lookup(6).value, "older");
}
