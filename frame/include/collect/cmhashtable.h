#pragma once
#include "collect/cmlinkedlist.h"
#include <memory>

namespace Tessarine {

/** The elements of one hash value, in the order in which they came. */
struct CmHashBucket {
    int32_t count = 0;
    CmLink* first = nullptr;  // both the table's
    CmLink* last = nullptr;
};

/** Objects by their hash. A search looks into one bucket only, so that equal objects must have equal hashes, and an
    element's hash must not change.

    Buckets   stay as many as they were made until resize(): as many as elements are expected is a good number.
    Archives  are written as by all containers. Reading takes the ownership only, leaves the table empty with a single
              bucket, and leaves the rest in the stream; attributes are restored as by all containers. */
class CmHashTable : public CmContainer {
public:
    DECLARE_CLASS(CmHashTable, CmContainer)
    DECLARE_NEWCOPY(CmHashTable)
    /** 0 to buckets - 1. */
    using HashFunction = uint32_t (*)(const CmObject* object, uint32_t buckets);
    static constexpr int32_t kDefaultBuckets = 10;

    /** At least one bucket. */
    explicit CmHashTable(int32_t size = kDefaultBuckets);
    /** As copy(); the number of buckets and the function are taken as well. */
    CmHashTable(const CmHashTable& source);
    ~CmHashTable() override;

    bool internalize(FArchive& archive) override;

    /** The number of buckets. */
    int32_t size() const override { return _size; }
    int32_t total() const final { return _total; }
    bool isEmpty() const final { return _total == 0; }
    bool add(CmObject* object) override;
    bool remove(CmObject* object) override { return removeFrom(placeOfEqual(object)); }
    bool remove(const CmIterator& iterator) override;
    bool removeAt(int32_t index) override { return removeFrom(placeAt(index)); }
    void removeAll() override;
    CmObject* lookup(const CmObject* object) const override { return placeOfEqual(object).object(); }
    bool contains(const CmObject* object) const override { return placeOfEqual(object).link != nullptr; }
    bool containsAbs(const CmObject* object) const override { return placeOfObject(object).link != nullptr; }
    CmIterator* newIterator() const override;

    /** Instead of the elements' own hash; null: that again. Before the first element. */
    void setHashFunction(HashFunction function) { hashFunction = function; }
    /** Spreads the elements over so many buckets, at least one. False: no memory, all is as it was. */
    bool resize(int32_t size);

protected:
    struct WithoutElements {};
    CmHashTable(const CmHashTable& source, WithoutElements);

    /** Takes an element out and leaves its reference to the caller; null when there is none. */
    CmObject* takeEqual(const CmObject* object) { return takeFrom(placeOfEqual(object)); }
    CmObject* takeAt(int32_t index) { return takeFrom(placeAt(index)); }
    /** The same at a cursor, which moves on. */
    CmObject* take(const CmIterator& iterator);

    int16_t autoResize = 0;  // not 0: add grows a table of twice as many elements as buckets to ten times its buckets
    int32_t _total = 0;
    std::unique_ptr<CmHashBucket[]> buckets;  // _size of them
    HashFunction hashFunction = nullptr;

private:
    friend class CmHashTableIterator;
    /** An element; link is null when there is none. */
    struct Place {
        CmObject* object() const { return link ? link->value : nullptr; }

        int32_t bucket = 0;
        CmLink* link = nullptr;
    };

    int32_t bucketOf(const CmObject* object, int32_t count) const;
    template <class Test>
    Place placeWhere(const CmObject* object, Test test) const;
    Place placeOfEqual(const CmObject* object) const;
    Place placeOfObject(const CmObject* object) const;
    Place placeAt(int32_t index) const;
    /** The first element of this bucket or a later one; the last one of this or an earlier one. */
    Place firstFrom(int32_t bucket) const;
    Place lastFrom(int32_t bucket) const;
    Place after(const Place& place) const;
    Place before(const Place& place) const;
    CmLink* unchain();
    CmObject* takeFrom(const Place& place);
    bool removeFrom(const Place& place);

    TLinkPool<CmLink> pool;
};

/** Walks bucket by bucket. Stepping back within a bucket walks from its start. */
class CmHashTableIterator : public CmIterator {
public:
    explicit CmHashTableIterator(const CmHashTable& table) : CmIterator(table), place(table.firstFrom(0)) {}

    bool done() const final { return !place.link; }
    CmObject* next() final;
    CmObject* previous() final;
    using CmIterator::next;
    using CmIterator::previous;
    CmObject* current() const final { return place.object(); }
    void first() final { place = table().firstFrom(0); }
    void last() final { place = table().lastFrom(table()._size - 1); }

private:
    friend class CmHashTable;
    const CmHashTable& table() const { return *static_cast<const CmHashTable*>(container); }

    mutable CmHashTable::Place place;  // moved on by remove(iterator)
};

}  // namespace Tessarine
