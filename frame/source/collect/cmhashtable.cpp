#include "collect/cmhashtable.h"
#include "storage/farchive.h"
#include <algorithm>
#include <limits>
#include <new>
#include <utility>

namespace Tessarine {
namespace {
constexpr int32_t kCrowded = 2;  // elements for each bucket
constexpr int32_t kGrowth = 10;

void hangBehind(CmHashBucket& bucket, CmLink* link) {
    Links::hangIn(bucket.first, bucket.last, bucket.last, link);
    ++bucket.count;
}
}  // namespace

IMPLEMENT_CLASS(CmHashTable, CmContainer)

CmHashTable::CmHashTable(int32_t size) : buckets(new CmHashBucket[std::max(size, 1)]) {
    _size = std::max(size, 1);
}

CmHashTable::CmHashTable(const CmHashTable& source) : CmHashTable(source, WithoutElements()) {
    CmHashTable::addAllFrom(&source);
}

CmHashTable::CmHashTable(const CmHashTable& source, WithoutElements)
    : CmContainer(source), autoResize(source.autoResize), buckets(new CmHashBucket[source._size]),
      hashFunction(source.hashFunction) {
    _size = source._size;
}

CmHashTable::~CmHashTable() {
    CmHashTable::removeAll();
}

bool CmHashTable::internalize(FArchive& archive) {
    removeAll();
    return readBase(archive.getStream()) && resize(1);
}

bool CmHashTable::add(CmObject* object) {
    if (!object || _total == std::numeric_limits<int32_t>::max())
        return false;
    if (autoResize && _total / _size >= kCrowded)
        resize(static_cast<int32_t>(std::min(int64_t(_size) * kGrowth, int64_t(std::numeric_limits<int32_t>::max()))));
    hangBehind(buckets[bucketOf(object, _size)], pool.make(object));
    ++_total;
    testRemember(object);
    return true;
}

bool CmHashTable::remove(const CmIterator& iterator) {
    CmObject* object = take(iterator);
    testDelete(object);
    return object != nullptr;
}

void CmHashTable::removeAll() {
    CmLink* link = unchain();
    _total = 0;
    while (link) {
        CmLink* gone = std::exchange(link, link->next);
        testDelete(pool.end(gone));
    }
}

CmIterator* CmHashTable::newIterator() const {
    return new CmHashTableIterator(*this);
}

bool CmHashTable::resize(int32_t size) {
    size = std::max(size, 1);
    std::unique_ptr<CmHashBucket[]> emptied(new (std::nothrow) CmHashBucket[size]);
    if (!emptied)
        return false;
    CmLink* link = unchain();
    buckets.swap(emptied);
    _size = size;
    while (link) {
        CmLink* moved = std::exchange(link, link->next);
        hangBehind(buckets[bucketOf(moved->value, size)], moved);
    }
    return true;
}

CmObject* CmHashTable::take(const CmIterator& iterator) {
    if (!iterator.walksOn(this) || iterator.done())
        return nullptr;
    Place& place = static_cast<const CmHashTableIterator&>(iterator).place;
    return takeFrom(std::exchange(place, after(place)));
}

int32_t CmHashTable::bucketOf(const CmObject* object, int32_t count) const {
    const auto limit = static_cast<uint32_t>(count);
    const uint32_t hash = hashFunction ? hashFunction(object, limit) : object->hash(limit);
    return static_cast<int32_t>(hash < limit ? hash : hash % limit);
}

template <class Test>
CmHashTable::Place CmHashTable::placeWhere(const CmObject* object, Test test) const {
    if (!object || _total == 0)
        return {};
    const int32_t bucket = bucketOf(object, _size);
    CmLink* link = buckets[bucket].first;
    while (link && !test(link->value))
        link = link->next;
    return {bucket, link};
}

CmHashTable::Place CmHashTable::placeOfEqual(const CmObject* object) const {
    return placeWhere(object, [object](const CmObject* element) { return object->isEqual(element); });
}

CmHashTable::Place CmHashTable::placeOfObject(const CmObject* object) const {
    return placeWhere(object, [object](const CmObject* element) { return object == element; });
}

CmHashTable::Place CmHashTable::placeAt(int32_t index) const {
    if (index < 0 || index >= _total)
        return {};
    int32_t bucket = 0;
    for (; index >= buckets[bucket].count; ++bucket)
        index -= buckets[bucket].count;
    CmLink* link = buckets[bucket].first;
    for (; index > 0; --index)
        link = link->next;
    return {bucket, link};
}

CmHashTable::Place CmHashTable::firstFrom(int32_t bucket) const {
    while (bucket < _size && !buckets[bucket].first)
        ++bucket;
    return bucket < _size ? Place{bucket, buckets[bucket].first} : Place();
}

CmHashTable::Place CmHashTable::lastFrom(int32_t bucket) const {
    while (bucket >= 0 && !buckets[bucket].last)
        --bucket;
    return bucket >= 0 ? Place{bucket, buckets[bucket].last} : Place();
}

CmHashTable::Place CmHashTable::after(const Place& place) const {
    return place.link->next ? Place{place.bucket, place.link->next} : firstFrom(place.bucket + 1);
}

CmHashTable::Place CmHashTable::before(const Place& place) const {
    CmLink* previous = Links::previousOf(buckets[place.bucket].first, place.link);
    return previous ? Place{place.bucket, previous} : lastFrom(place.bucket - 1);
}

/** Empties the buckets; all links in one chain, in the order of the buckets. */
CmLink* CmHashTable::unchain() {
    CmLink* first = nullptr;
    CmLink** end = &first;
    for (int32_t i = 0; i < _size; ++i) {
        const CmHashBucket bucket = std::exchange(buckets[i], {});
        if (!bucket.first)
            continue;
        *end = bucket.first;
        end = &bucket.last->next;
    }
    return first;
}

CmObject* CmHashTable::takeFrom(const Place& place) {
    if (!place.link)
        return nullptr;
    CmHashBucket& bucket = buckets[place.bucket];
    Links::hangOut(bucket.first, bucket.last, Links::previousOf(bucket.first, place.link), place.link);
    --bucket.count;
    --_total;
    return pool.end(place.link);
}

bool CmHashTable::removeFrom(const Place& place) {
    CmObject* object = takeFrom(place);
    testDelete(object);
    return object != nullptr;
}

CmObject* CmHashTableIterator::next() {
    CmObject* object = current();
    if (object)
        place = table().after(place);
    return object;
}

CmObject* CmHashTableIterator::previous() {
    CmObject* object = current();
    if (object)
        place = table().before(place);
    return object;
}

}  // namespace Tessarine
