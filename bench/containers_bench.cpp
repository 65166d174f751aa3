// Containers of both families beside what one would take instead, with 100, 10,000 and 1,000,000 elements, so that growth
// shows. An item is an element that is put or walked over, or one look-up; keys are searched in another order than they came.
#include "base/source/tarray.h"
#include "base/source/tdlinkedlist.h"
#include "base/source/thashtable.h"
#include "collect/cmarray.h"
#include "collect/cmbtree.h"
#include "collect/cmhashtable.h"
#include "pluginterfaces/base/smartpointer.h"
#include <benchmark/benchmark.h>
#include <deque>
#include <list>
#include <memory>
#include <numeric>
#include <random>
#include <set>
#include <unordered_set>
#include <vector>
#ifdef BENCH_ABSL
#include <absl/container/btree_set.h>
#include <absl/container/flat_hash_set.h>
#endif
#ifdef BENCH_QT
#include <QHash>
#include <QMap>
#include <QSet>
#include <QVector>
#endif

using namespace Tessarine;

namespace {
constexpr int32_t kMany = 100000;  // what the look-ups of numbers are aimed at
constexpr int32_t kMost = 1000000;
constexpr int32_t kDoubling = -1;
constexpr int32_t kWideOrder = 32;

/** 0 to count - 1 in an order that no cache foresees, the same for all. */
std::vector<int> shuffled(int64_t count, uint32_t seed) {
    std::vector<int> numbers(static_cast<size_t>(count));
    std::iota(numbers.begin(), numbers.end(), 0);
    std::ranges::shuffle(numbers, std::mt19937(seed));
    return numbers;
}

template <class Container, class Value>
void put(Container& container, const Value& value) {
    if constexpr (requires { container.add(value); })
        container.add(value);
    else if constexpr (requires { container.push_back(value); })
        container.push_back(value);
    else if constexpr (requires { container.insert(value); })
        container.insert(value);
    else
        container.insert(value, {});
}

/** An object that is found by a number. All of this is virtual, and so it is for the peers. */
class Numbered : public CmObject {
public:
    explicit Numbered(int number = 0) : number(number) {}
    bool isEqual(const CmObject* other) const override { return number == numberOf(other); }
    int32_t compare(const CmObject* other) const override {
        return number < numberOf(other) ? -1 : number > numberOf(other) ? 1 : 0;
    }
    uint32_t hash(uint32_t buckets) const override { return uint32_t(number) % buckets; }

    int number;

private:
    static int numberOf(const CmObject* other) { return static_cast<const Numbered*>(other)->number; }
};

/** In the order of their numbers; made once. */
CmObject* objectOf(int number) {
    static const auto objects = [] {
        std::vector<OPtr<CmObject>> made;
        for (int i = 0; i < kMost; ++i)
            made.emplace_back(new Numbered(i));
        return made;
    }();
    return objects[size_t(number)];
}

struct ByCompare {
    bool operator()(const CmObject* a, const CmObject* b) const { return a->compare(b) < 0; }
};
struct ByEqual {
    bool operator()(const CmObject* a, const CmObject* b) const { return a->isEqual(b); }
};
struct ByHash {
    size_t operator()(const CmObject* object) const { return object->hash(UINT32_MAX); }
};

/** A container that is always built in the same way. */
template <class Base, auto... arguments>
struct Made : Base {
    Made() : Base(arguments...) {}
};
/** As many buckets as elements. */
int32_t numberItself(const int& number, int32_t /*buckets*/) {
    return number;
}
struct NumberTable : THashTable<int> {
    explicit NumberTable(int32_t buckets) : THashTable(buckets, numberItself) {}
};

/** What each peer offers for the rows it stands in. */
struct Ours {
    using Array = Made<TArray<int*>, 0, kDoubling>;
    using List = TLinkedList<int*>;
    using Ordered = Made<TOrderedArray<int>, 0, kDoubling>;
    using Hashed = NumberTable;
    using ObjectArray = Made<CmArray, 0, kDoubling>;
    using ObjectList = CmLinkedList;
    using OrderedObjects = Made<CmOrderedArray, 0, kDoubling>;
    using ObjectTree = CmBTree;
    using WideObjectTree = Made<CmBTree, kWideOrder>;
    using HashedObjects = CmHashTable;
};
struct StdVector {
    using Array = std::vector<int*>;
    using List = Array;
    using ObjectArray = std::vector<CmObject*>;
    using ObjectList = ObjectArray;
};
struct StdDeque {
    using Array = std::deque<int*>;
};
struct StdList {
    using List = std::list<int*>;
    using ObjectList = std::list<CmObject*>;
};
struct StdTree {
    using Ordered = std::set<int>;
    using OrderedObjects = std::set<CmObject*, ByCompare>;
    using ObjectTree = OrderedObjects;
    using WideObjectTree = OrderedObjects;
};
struct StdHash {
    using Hashed = std::unordered_set<int>;
    using HashedObjects = std::unordered_set<CmObject*, ByHash, ByEqual>;
};
#ifdef BENCH_ABSL
/** Wants numbers that are spread over all bits. */
struct BySpreadHash {
    size_t operator()(const CmObject* object) const { return absl::Hash<uint32_t>()(object->hash(UINT32_MAX)); }
};
struct Abseil {
    using Ordered = absl::btree_set<int>;
    using Hashed = absl::flat_hash_set<int>;
    using OrderedObjects = absl::btree_set<CmObject*, ByCompare>;
    using ObjectTree = OrderedObjects;
    using WideObjectTree = OrderedObjects;
    using HashedObjects = absl::flat_hash_set<CmObject*, BySpreadHash, ByEqual>;
};
#endif
#ifdef BENCH_QT
struct Qt5 {
    using Array = QVector<int*>;
    using Ordered = QMap<int, char>;
    using Hashed = QSet<int>;
};
#endif

int target = 0;  // of all pointers that aren't followed

template <class Value>
Value valueOf(int number) {
    if constexpr (std::is_same_v<Value, int>)
        return number;
    else
        return objectOf(number);
}

/** With as many buckets as elements, where the container asks for their number. */
template <class Container>
std::unique_ptr<Container> emptyFor(int64_t elements) {
    if constexpr (std::is_same_v<Container, NumberTable> || std::is_same_v<Container, CmHashTable>)
        return std::make_unique<Container>(int32_t(elements));
    else
        return std::make_unique<Container>();
}

/** Filled once, and kept until another size is asked for: what takes longest isn't measured. */
template <class Value, class Container>
const Container& filled(int64_t elements) {
    static std::unique_ptr<Container> container;
    static int64_t present = -1;
    if (std::exchange(present, elements) == elements)
        return *container;
    container = emptyFor<Container>(elements);
    for (const int number : shuffled(elements, 1))
        put(*container, valueOf<Value>(number));
    return *container;
}

template <class Container, class Value>
void append(benchmark::State& state, Value* value) {
    for (auto _ : state) {
        Container container;
        for (int64_t i = 0; i < state.range(0); ++i)
            put(container, value);
        benchmark::DoNotOptimize(container);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

template <class Container>
void walk(benchmark::State& state, const Container& container) {
    for (auto _ : state) {
        if constexpr (std::is_same_v<Container, CmLinkedList>)
            for (CmLinkedListIterator cursor(container); !cursor.done();)
                benchmark::DoNotOptimize(cursor.next());
        else
            for (auto* each : container)
                benchmark::DoNotOptimize(each);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

template <class Container>
void walkPointers(benchmark::State& state) {
    Container container;
    for (int64_t i = 0; i < state.range(0); ++i)
        put(container, &target);
    walk(state, container);
}

template <class Value, class Container>
void lookUp(benchmark::State& state) {
    const Container& container = filled<Value, Container>(state.range(0));
    const std::vector<int> numbers = shuffled(state.range(0), 2);
    Numbered wanted;
    auto number = numbers.begin();
    for (auto _ : state) {
        wanted.number = *number;
        if constexpr (std::is_same_v<Value, int>)
            benchmark::DoNotOptimize(container.contains(wanted.number));
        else
            benchmark::DoNotOptimize(container.contains(&wanted));
        if (++number == numbers.end())
            number = numbers.begin();
    }
    state.SetItemsProcessed(state.iterations());
}

/** From nothing to full, and away with it. */
template <class Container>
void insertObjects(benchmark::State& state) {
    const std::vector<int> numbers = shuffled(state.range(0), 1);
    for (auto _ : state) {
        Container container;
        for (const int number : numbers)
            put(container, objectOf(number));
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
}  // namespace

// The family of values.
template <class Peer>
void Append(benchmark::State& state) {
    append<typename Peer::Array>(state, &target);
}
template <class Peer>
void ListWalk(benchmark::State& state) {
    walkPointers<typename Peer::List>(state);
}
template <class Peer>
void OrderedLookup(benchmark::State& state) {
    lookUp<int, typename Peer::Ordered>(state);
}
template <class Peer>
void HashLookup(benchmark::State& state) {
    lookUp<int, typename Peer::Hashed>(state);
}
/** The places grow by ten at a time, the buckets not at all. */
void AppendByTens(benchmark::State& state) {
    append<Made<TArray<int*>, 0, 10>>(state, &target);
}
void HashLookupInFiftyBuckets(benchmark::State& state) {
    lookUp<int, Made<NumberTable, 50>>(state);
}

// The family of objects.
template <class Peer>
void CmArrayAppend(benchmark::State& state) {
    append<typename Peer::ObjectArray>(state, objectOf(0));
}
template <class Peer>
void CmArrayWalk(benchmark::State& state) {
    walk(state, filled<CmObject*, typename Peer::ObjectArray>(state.range(0)));
}
template <class Peer>
void CmListWalk(benchmark::State& state) {
    walk(state, filled<CmObject*, typename Peer::ObjectList>(state.range(0)));
}
template <class Peer>
void CmOrderedLookup(benchmark::State& state) {
    lookUp<CmObject*, typename Peer::OrderedObjects>(state);
}
template <class Peer>
void CmTreeLookup(benchmark::State& state) {
    lookUp<CmObject*, typename Peer::ObjectTree>(state);
}
template <class Peer>
void CmWideTreeLookup(benchmark::State& state) {
    lookUp<CmObject*, typename Peer::WideObjectTree>(state);
}
template <class Peer>
void CmTreeInsert(benchmark::State& state) {
    insertObjects<typename Peer::ObjectTree>(state);
}
template <class Peer>
void CmWideTreeInsert(benchmark::State& state) {
    insertObjects<typename Peer::WideObjectTree>(state);
}
template <class Peer>
void CmHashLookup(benchmark::State& state) {
    lookUp<CmObject*, typename Peer::HashedObjects>(state);
}
void CmHashLookupInTenBuckets(benchmark::State& state) {
    lookUp<CmObject*, Made<CmHashTable>>(state);
}
void CmArrayWalkByVirtualCursor(benchmark::State& state) {
    const auto& array = filled<CmObject*, Ours::ObjectArray>(state.range(0));
    for (auto _ : state)
        for (const std::unique_ptr<CmIterator> cursor(array.newIterator()); !cursor->done();)
            benchmark::DoNotOptimize(cursor->next());
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

#define ROWS(...) __VA_ARGS__->Arg(100)->Arg(10000)->Arg(kMost)
#define NUMBER_ROW(Row, Peer) BENCHMARK_TEMPLATE(Row, Peer)->Arg(100)->Arg(10000)->Arg(kMany)->Arg(kMost)
#define ROW(Row, Peer) ROWS(BENCHMARK_TEMPLATE(Row, Peer))
#define ROWS_OF_TREES(Peer)      \
    ROW(CmOrderedLookup, Peer);  \
    ROW(CmTreeLookup, Peer);     \
    ROW(CmWideTreeLookup, Peer); \
    ROW(CmTreeInsert, Peer);     \
    ROW(CmWideTreeInsert, Peer)

ROW(Append, Ours);
ROW(Append, StdVector);
ROW(Append, StdDeque);
ROW(ListWalk, Ours);
ROW(ListWalk, StdVector);
ROW(ListWalk, StdList);
NUMBER_ROW(OrderedLookup, Ours);
NUMBER_ROW(OrderedLookup, StdTree);
NUMBER_ROW(HashLookup, Ours);
NUMBER_ROW(HashLookup, StdHash);
ROW(CmArrayAppend, Ours);
ROW(CmArrayAppend, StdVector);
ROW(CmArrayWalk, Ours);
ROW(CmArrayWalk, StdVector);
ROW(CmListWalk, Ours);
ROW(CmListWalk, StdVector);
ROW(CmListWalk, StdList);
ROWS_OF_TREES(Ours);
ROWS_OF_TREES(StdTree);
ROW(CmHashLookup, Ours);
ROW(CmHashLookup, StdHash);
#ifdef BENCH_ABSL
NUMBER_ROW(OrderedLookup, Abseil);
NUMBER_ROW(HashLookup, Abseil);
ROWS_OF_TREES(Abseil);
ROW(CmHashLookup, Abseil);
#endif
#ifdef BENCH_QT
ROW(Append, Qt5);
NUMBER_ROW(OrderedLookup, Qt5);
NUMBER_ROW(HashLookup, Qt5);
#endif
ROWS(BENCHMARK(AppendByTens));
ROWS(BENCHMARK(HashLookupInFiftyBuckets));
ROWS(BENCHMARK(CmHashLookupInTenBuckets));
ROWS(BENCHMARK(CmArrayWalkByVirtualCursor));
