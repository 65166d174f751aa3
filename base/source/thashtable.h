#pragma once
#include "base/source/tlinkedlist.h"

namespace Tessarine {

/** A chain of a hash table, in order of arrival; its links are of the table's pool. */
template <class T>
class THashBucket {
public:
    using Pool = TLinkPool<TLink<T>>;

    bool append(const T& value, Pool& pool);
    bool removeAt(int32_t index, Pool& pool) { return removeLink(linkAt(index), pool); }
    int32_t total() const { return count; }
    /** Null: out of range; no equal element. */
    TLink<T>* linkAt(int32_t index) const;
    TLink<T>* linkOf(const T& value) const;
    /** False for null. */
    bool removeLink(TLink<T>* link, Pool& pool);
    TLink<T>* firstLink() const { return first; }
    TLink<T>* lastLink() const { return last; }
    /** Puts all links in front of those of the chain, and is empty then. */
    void moveTo(TLink<T>*& chain);

private:
    TLink<T>* first = nullptr;
    TLink<T>* last = nullptr;
    int32_t count = 0;
};

/** A fixed number of buckets, chosen for the expected number of elements; equal elements are found in order of arrival.
    Walks go bucket by bucket. */
template <class T>
class THashTable : public TContainer<T> {
public:
    using TContainer<T>::errorObject;
    /** Any number; it is taken modulo the buckets. */
    using HashFunction = int32_t (*)(const T& value, int32_t buckets);

    /** At least one bucket. */
    THashTable(int32_t buckets, HashFunction hash);
    ~THashTable() override { THashTable::removeAll(); }

    THashTable* newInstance() const override { return new THashTable(_size, hashFunction); }
    int32_t total() const override { return _total; }
    bool add(const T& value) override;
    bool remove(const T& value) override;
    bool remove(const TIterator<T>& iterator) override;
    /** In order of a walk. total() goes on counting the removed element. */
    bool removeAt(int32_t index) override;
    void removeAll() override;
    T& lookup(const T& value) const override;
    bool contains(const T& value) const override { return bucketOf(value).linkOf(value) != nullptr; }
    TIterator<T>* newIterator() const override;

    /** 0 to size() - 1. */
    THashBucket<T>& bucketAt(int32_t index) const { return buckets[index]; }

protected:
    using TContainer<T>::_size;

    THashBucket<T>& bucketOf(const T& value) const;
    bool removeFrom(THashBucket<T>& bucket, TLink<T>* link);

    int32_t _total = 0;
    HashFunction hashFunction;
    std::unique_ptr<THashBucket<T>[]> buckets;

private:
    typename THashBucket<T>::Pool pool;
};

template <class T>
class THashTableIterator final : public TIterator<T> {
public:
    explicit THashTableIterator(const THashTable<T>* table) : TIterator<T>(table), table(table) {
        THashTableIterator::first();
    }

    bool done() const override { return !cursor; }
    T& next() override;
    T& previous() override;
    T& current() const override { return cursor ? cursor->value : table->errorObject; }
    void first() override { enterForward(0); }
    void last() override { enterBackward(table->size() - 1); }

private:
    friend class THashTable<T>;
    void stepForward() const;
    void enterForward(int32_t from) const;
    void enterBackward(int32_t from) const;

    const THashTable<T>* table;  // borrowed
    mutable int32_t bucket = 0;
    mutable TLink<T>* cursor = nullptr;  // borrowed; null: out of range
};

/** Pairs in a hash table. Keys may repeat: the first is found. */
template <class K, class V>
class THashDictionary : public THashTable<TAssociation<K, V>> {
public:
    using THashTable<TAssociation<K, V>>::THashTable;

    THashDictionary* newInstance() const override { return new THashDictionary(this->_size, this->hashFunction); }
    bool addKeyAndObject(const K& key, const V& value) { return this->add(TAssociation<K, V>(key, value)); }
    V& lookupObject(const K& key) const { return this->lookup(TAssociation<K, V>(key)).value; }
};

template <class T>
bool THashBucket<T>::append(const T& value, Pool& pool) {
    Links::hangIn(first, last, last, pool.make(value));
    ++count;
    return true;
}

template <class T>
TLink<T>* THashBucket<T>::linkAt(int32_t index) const {
    if (index < 0 || index >= count)
        return nullptr;
    TLink<T>* link = first;
    while (index-- > 0)
        link = link->next;
    return link;
}

template <class T>
TLink<T>* THashBucket<T>::linkOf(const T& value) const {
    TLink<T>* link = first;
    while (link && !(link->value == value))
        link = link->next;
    return link;
}

template <class T>
bool THashBucket<T>::removeLink(TLink<T>* link, Pool& pool) {
    if (!link)
        return false;
    Links::hangOut(first, last, Links::previousOf(first, link), link);
    --count;
    [[maybe_unused]] const T removed = pool.end(link);
    return true;
}

template <class T>
void THashBucket<T>::moveTo(TLink<T>*& chain) {
    if (!first)
        return;
    last->next = std::exchange(chain, first);
    first = last = nullptr;
    count = 0;
}

template <class T>
THashTable<T>::THashTable(int32_t buckets, HashFunction hash) : hashFunction(hash) {
    _size = buckets > 0 ? buckets : 1;
    this->buckets.reset(new THashBucket<T>[static_cast<uint32_t>(_size)]);
}

template <class T>
bool THashTable<T>::add(const T& value) {
    ++_total;
    return bucketOf(value).append(value, pool);
}

template <class T>
bool THashTable<T>::remove(const T& value) {
    THashBucket<T>& bucket = bucketOf(value);
    return removeFrom(bucket, bucket.linkOf(value));
}

template <class T>
bool THashTable<T>::remove(const TIterator<T>& iterator) {
    if (!iterator.walksOn(this) || iterator.done())
        return false;
    const auto& mine = static_cast<const THashTableIterator<T>&>(iterator);
    THashBucket<T>& bucket = buckets[mine.bucket];
    TLink<T>* link = mine.cursor;
    mine.stepForward();
    return removeFrom(bucket, link);
}

template <class T>
bool THashTable<T>::removeAt(int32_t index) {
    int32_t bucket = 0;
    for (; bucket < _size - 1 && index >= buckets[bucket].total(); ++bucket)
        index -= buckets[bucket].total();
    return buckets[bucket].removeAt(index, pool);
}

template <class T>
void THashTable<T>::removeAll() {
    const auto oldPool(std::move(pool));  // all is empty before the first element dies
    TLink<T>* chain = nullptr;
    for (int32_t i = _size; i-- > 0;)
        buckets[i].moveTo(chain);
    _total = 0;
    Links::endAll(chain);
}

template <class T>
T& THashTable<T>::lookup(const T& value) const {
    TLink<T>* link = bucketOf(value).linkOf(value);
    return link ? link->value : errorObject;
}

template <class T>
TIterator<T>* THashTable<T>::newIterator() const {
    return new THashTableIterator<T>(this);
}

template <class T>
THashBucket<T>& THashTable<T>::bucketOf(const T& value) const {
    const auto hash = static_cast<uint32_t>(hashFunction(value, _size));
    const auto count = static_cast<uint32_t>(_size);
    return buckets[hash < count ? hash : hash % count];  // mostly within already, and a division takes long
}

template <class T>
bool THashTable<T>::removeFrom(THashBucket<T>& bucket, TLink<T>* link) {
    if (!link)
        return false;
    --_total;
    return bucket.removeLink(link, pool);
}

template <class T>
T& THashTableIterator<T>::next() {
    T& value = current();
    stepForward();
    return value;
}

template <class T>
T& THashTableIterator<T>::previous() {
    if (!cursor)
        return table->errorObject;
    T& value = cursor->value;
    cursor = Links::previousOf(table->bucketAt(bucket).firstLink(), cursor);
    if (!cursor)
        enterBackward(bucket - 1);
    return value;
}

template <class T>
void THashTableIterator<T>::stepForward() const {
    if (!cursor)
        return;
    cursor = cursor->next;
    if (!cursor)
        enterForward(bucket + 1);
}

template <class T>
void THashTableIterator<T>::enterForward(int32_t from) const {
    cursor = nullptr;
    for (bucket = from; bucket < table->size() && !cursor; ++bucket)
        cursor = table->bucketAt(bucket).firstLink();
    --bucket;
}

template <class T>
void THashTableIterator<T>::enterBackward(int32_t from) const {
    cursor = nullptr;
    for (bucket = from; bucket >= 0 && !cursor; --bucket)
        cursor = table->bucketAt(bucket).lastLink();
    ++bucket;
}

}  // namespace Tessarine
