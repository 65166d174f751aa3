#include "collect/cmarray.h"
#include "base/source/tarray.h"
#include "base/source/tsort.h"
#include "storage/farchive.h"
#include "storage/fbstream.h"
#include <algorithm>
#include <limits>
#include <new>
#include <utility>

namespace Tessarine {
namespace {
constexpr int32_t kDoubling = -1;
constexpr int32_t kStoredDelta = 10;  // for deltas below 0
constexpr int32_t kFewElements = 2;   // that a plain search looks through
}  // namespace

CmArrayBase::CmArrayBase(int32_t size, int32_t delta) : delta(delta) {
    resize(std::max(size, 0));
}

CmArrayBase::CmArrayBase(const CmArrayBase& source) : CmContainer(source), delta(source.delta) {
    resize(source._size);
}

CmArrayBase::~CmArrayBase() {
    CmArrayBase::removeAll();
}

bool CmArrayBase::remove(const CmIterator& iterator) {
    return iterator.walksOn(this) && removeAt(static_cast<const CmArrayIterator&>(iterator).position());
}

bool CmArrayBase::removeAt(int32_t index) {
    if (!isInside(index))
        return false;
    CmObject* object = data[index];
    std::copy(&data[index] + 1, data.get() + _total, &data[index]);
    --_total;
    testDelete(object);
    return true;
}

void CmArrayBase::removeAll() {
    const int32_t before = std::exchange(_total, 0);
    if (_ownsObjects == kBorrows)
        return;
    std::unique_ptr<CmObject*[]> places = std::exchange(data, nullptr);  // who dies may come back and add
    const int32_t size = std::exchange(_size, 0);
    for (int32_t i = 0; i < before; ++i)
        testDelete(places[i]);
    if (_size > 0)
        return;
    data.swap(places);
    _size = size;
}

CmIterator* CmArrayBase::newIterator() const {
    return new CmArrayIterator(*this);
}

int32_t CmArrayBase::indexAbs(const CmObject* object) const {
    const auto found = std::find(begin(), end(), object);
    return found == end() ? -1 : static_cast<int32_t>(found - begin());
}

bool CmArrayBase::resize(int32_t size) {
    if (size < 0)
        return false;
    std::unique_ptr<CmObject*[]> places(size > 0 ? new (std::nothrow) CmObject*[size] : nullptr);
    if (size > 0 && !places)
        return false;
    const int32_t before = std::exchange(_total, std::min(size, _total));
    std::copy_n(data.get(), _total, places.get());
    data.swap(places);
    _size = size;
    for (int32_t i = _total; i < before; ++i)
        testDelete(places[i]);
    return true;
}

void CmArrayBase::doInsertAt(CmObject* object, int32_t index) {
    CmObject** place = data.get() + index;
    std::copy_backward(place, data.get() + _total, data.get() + _total + 1);
    *place = object;
    ++_total;
    testRemember(object);
}

int32_t CmArrayBase::firstEqual(const CmObject* object, int32_t from, int32_t to) const {
    for (int32_t i = from; i < to; ++i) {
        if (object->isEqual(data[i]))
            return i;
    }
    return -1;
}

int32_t CmArrayBase::upperBound(const CmObject* object, int32_t from, int32_t to) const {
    if (from == to || cmpObjs(object, data[to - 1]) >= 0)  // mostly they come in order
        return to;
    const auto isBehind = [object](const CmObject* element) { return cmpObjs(object, element) >= 0; };
    return static_cast<int32_t>(std::partition_point(begin() + from, begin() + to, isBehind) - begin());
}

void CmArrayBase::sort() {
    introSort(data.get(), data.get() + _total,
              [](const CmObject* object, const CmObject* other) { return cmpObjs(object, other) < 0; });
}

bool CmArrayBase::grow() {
    const int32_t size = grownSize(_size, delta);
    return size > 0 && resize(size);
}

IMPLEMENT_CLASS(CmArray, CmContainer)

CmArray::CmArray(const CmArray& source) : CmArrayBase(source) {
    CmArray::addAllFrom(&source);
}

bool CmArray::internalize(FArchive& archive) {
    int32_t stored = 0;
    if (!archive.getStream().readInt32(stored))
        return false;
    const int32_t places = _size;
    delta = stored > 0 ? kDoubling : stored;  // a large step isn't believed yet, and many small ones take long
    const bool all = CmArrayBase::internalize(archive);
    delta = stored;
    if (stored > 0 && stored <= kStoredDelta && _total > places)
        resize(_total + (stored - (_total - places) % stored) % stored);  // where the steps would have led
    return all;
}

bool CmArray::externalize(FArchive& archive) const {
    return archive.getStream().writeInt32(delta < 0 ? kStoredDelta : delta) && CmArrayBase::externalize(archive);
}

bool CmArray::replaceAt(CmObject* object, int32_t index) {
    if (!object || !isInside(index))
        return false;
    testRemember(object);
    testDelete(std::exchange(data[index], object));
    return true;
}

bool CmArray::swap(int32_t index, int32_t other) {
    if (!isInside(index) || !isInside(other))
        return false;
    std::swap(data[index], data[other]);
    return true;
}

bool CmArray::mergeSorted(const CmArray& other) {
    if (other.isEmpty())
        return true;
    const int64_t size = int64_t(_total) + other._total;
    if (&other == this || size > std::numeric_limits<int32_t>::max() || (size > _size && !resize(int32_t(size))))
        return false;
    const std::unique_ptr<int32_t[]> places = placesFor(other);
    if (!places)
        return false;
    CmObject** end = data.get() + _total;
    for (int32_t i = other._total - 1; i >= 0; --i) {
        CmObject** place = data.get() + places[i];
        std::copy_backward(place, end, end + i + 1);
        place[i] = other.data[i];
        testRemember(other.data[i]);
        end = place;
    }
    _total = static_cast<int32_t>(size);
    return true;
}

/** The indices in this array before which the elements of the other one go. Never falling, whatever compare says. */
std::unique_ptr<int32_t[]> CmArray::placesFor(const CmArray& other) const {
    std::unique_ptr<int32_t[]> places(new (std::nothrow) int32_t[other._total]);
    int32_t from = 0, to = _total;
    if (places && to > 0 && cmpObjs(other.data[other._total - 1], at(0)) < 0)
        to = 0;
    for (int32_t low = 0, high = other._total - 1; places && low <= high; ++low, --high) {
        places[low] = from = upperBound(other.data[low], from, to);
        if (low < high)
            places[high] = to = upperBound(other.data[high], from, to);
    }
    return places;
}

int32_t CmArray::shouldGo(const CmObject* object, int32_t from, int32_t to) const {
    if (!object)
        return -1;
    const int32_t end = to < 0 ? _total : std::min(to, _total);
    return upperBound(object, std::clamp(from, 0, end), end);
}

IMPLEMENT_CLASS(CmOrderedArray, CmContainer)

CmOrderedArray::CmOrderedArray(const CmOrderedArray& source) : CmArrayBase(source) {
    CmOrderedArray::addAllFrom(&source);
}

bool CmOrderedArray::add(CmObject* object) {
    if (!object || !hasRoom())
        return false;
    doInsertAt(object, shouldGo(object));
    return true;
}

int32_t CmOrderedArray::index(const CmObject* object) const {
    if (!object)
        return -1;
    if (_total <= kFewElements)
        return firstEqual(object, 0, _total);
    int32_t found = -1;
    for (int32_t low = 0, high = _total; low < high;) {
        const int32_t middle = low + (high - low) / 2;
        const int32_t difference = cmpObjs(object, data[middle]);
        if (difference > 0) {
            low = middle + 1;
            continue;
        }
        high = middle;
        if (difference == 0)
            found = middle;
    }
    return found;
}

int32_t CmOrderedArray::shouldGo(const CmObject* object) const {
    return object && _total < _size ? upperBound(object, 0, _total) : -1;
}

CmObject* CmArrayIterator::operator+=(int32_t steps) {
    if (steps > 0 && !done())
        index += std::min(steps, array().total() - index);
    return current();
}

CmObject* CmArrayIterator::operator-=(int32_t steps) {
    if (steps > 0 && !done())
        index -= std::min(steps, index + 1);
    return current();
}

}  // namespace Tessarine
