#pragma once
#include "base/source/tcontainer.h"
#include <algorithm>
#include <functional>
#include <limits>
#include <new>

/** Arrays of values: constant time by index, and cheap to walk (`for (T& value : array)`). */

namespace Tessarine {

/** What all arrays share.

    Growth    when all `_size` places are taken, by delta: 0 never, -1 to twice the size (10 at first), else by so many
    Moving    elements move by assignment when others come or go in front of them; references don't outlive that */
template <class T>
class TArrayBase : public TContainer<T> {
public:
    using TContainer<T>::errorObject;

    TArrayBase(int32_t size, int32_t delta) : delta(delta), data(newPlaces(size)) { _size = data ? size : 0; }

    int32_t total() const final { return _total; }
    /** False: no room, or no place for it. */
    bool add(const T& value) override;
    bool remove(const T& value) override { return removeAt(index(value)); }
    bool remove(const TIterator<T>& iterator) override;
    /** The last place then holds errorObject, so that it keeps nothing alive. */
    bool removeAt(int32_t index) override;
    /** So many from index on, in one move. False, and nothing done: they aren't all there. */
    bool removeRange(int32_t index, int32_t count);
    /** Keeps the places. */
    void removeAll() override;
    T& at(int32_t index) const final { return isInside(index) ? data[index] : errorObject; }
    T& lookup(const T& value) const override { return at(index(value)); }
    bool contains(const T& value) const override { return index(value) >= 0; }
    TIterator<T>* newIterator() const override;

    /** Where add would put it; below 0: nowhere. */
    virtual int32_t shouldGo(const T& value) const = 0;
    /** Of the first equal element; -1: none. */
    virtual int32_t index(const T& value) const = 0;

    /** Exactly so many places; what doesn't fit is dropped. False, and as it was: no memory, or below 0. */
    bool resize(int32_t size);

    T* begin() const { return data.get(); }
    T* end() const { return data.get() + _total; }

protected:
    using TContainer<T>::_size;

    bool isInside(int32_t index) const { return static_cast<uint32_t>(index) < static_cast<uint32_t>(_total); }
    /** Into a place that is there already. */
    bool doInsertAt(int32_t index, const T& value);
    /** Below, at or above 0; so must be what the two searches are given. */
    static int32_t cmpData(const T& a, const T& b) { return a == b ? 0 : a < b ? -1 : 1; }
    template <class Compare>
    int32_t indexSorted(const T& value, Compare compare) const;
    /** Behind all that aren't greater. */
    template <class Compare>
    int32_t shouldGoSorted(const T& value, Compare compare) const;

    int32_t delta;
    int32_t _total = 0;
    std::unique_ptr<T[]> data;

private:
    /** Null: no memory, or below 1. */
    static std::unique_ptr<T[]> newPlaces(int32_t size) {
        return std::unique_ptr<T[]>(size > 0 ? new (std::nothrow) T[static_cast<uint32_t>(size)] : nullptr);
    }
    bool holds(const T* place) const;
    bool grow();
};

template <class T>
class TArrayIterator : public TIterator<T> {
public:
    explicit TArrayIterator(const TArrayBase<T>* array) : TIterator<T>(array), array(array) {}

    bool done() const override { return cursor < 0 || cursor >= array->total(); }
    T& next() override { return done() ? this->container->errorObject : array->at(cursor++); }
    T& previous() override { return done() ? this->container->errorObject : array->at(cursor--); }
    T& current() const override { return array->at(cursor); }
    void first() override { cursor = 0; }
    void last() override { cursor = array->total() - 1; }

private:
    friend class TArrayBase<T>;
    const TArrayBase<T>* array;  // borrowed
    int32_t cursor = 0;
};

/** In order of arrival. */
template <class T>
class TArray : public TArrayBase<T> {
public:
    explicit TArray(int32_t size = 0, int32_t delta = 10) : TArrayBase<T>(size, delta) {}

    TArray* newInstance() const override { return new TArray(this->_size, this->delta); }
    int32_t shouldGo(const T&) const override { return this->_total; }
    int32_t index(const T& value) const override;
};

/** Sorted by `<` and `==` of T; equal ones stay in order of arrival. */
template <class T>
class TOrderedArray : public TArrayBase<T> {
public:
    explicit TOrderedArray(int32_t size = 0, int32_t delta = 10) : TArrayBase<T>(size, delta) {}

    TOrderedArray* newInstance() const override { return new TOrderedArray(this->_size, this->delta); }
    int32_t shouldGo(const T& value) const override { return this->shouldGoSorted(value, &TOrderedArray::cmpData); }
    int32_t index(const T& value) const override { return this->indexSorted(value, &TOrderedArray::cmpData); }
};

/** Sorted by `compare(const T&)` of T; equal ones stay in order of arrival. */
template <class T>
class TSortableArray : public TArrayBase<T> {
public:
    explicit TSortableArray(int32_t size = 0, int32_t delta = 10) : TArrayBase<T>(size, delta) {}

    TSortableArray* newInstance() const override { return new TSortableArray(this->_size, this->delta); }
    int32_t shouldGo(const T& value) const override { return this->shouldGoSorted(value, byElement); }
    int32_t index(const T& value) const override { return this->indexSorted(value, byElement); }

private:
    static int32_t byElement(const T& a, const T& b) { return a.compare(b); }
};

/** A borrowed pointer as an element of a TSortableArray; compareObjects is never called with null. */
template <class T, int32_t (*compareObjects)(const T*, const T*)>
class ISortablePtr {
public:
    ISortablePtr(T* object = nullptr) : object(object) {}

    int32_t compare(const ISortablePtr& other) const { return compareObjects(object, other.object); }
    bool operator==(const ISortablePtr& other) const { return compare(other) == 0; }
    operator T*() const { return object; }
    T* operator->() const { return object; }

private:
    T* object;
};

/** Pairs in order of arrival. Keys may repeat: the first is found. */
template <class K, class V>
class TAssociationArray : public TArray<TAssociation<K, V>> {
public:
    explicit TAssociationArray(int32_t size = 0, int32_t delta = 10) : TArray<TAssociation<K, V>>(size, delta) {}

    TAssociationArray* newInstance() const override { return new TAssociationArray(this->_size, this->delta); }
    bool addKeyAndObject(const K& key, const V& value) { return this->add(TAssociation<K, V>(key, value)); }
};

template <class T>
bool TArrayBase<T>::add(const T& value) {
    if (holds(&value))
        return add(T(value));  // growing and moving up would pull it away
    return grow() && doInsertAt(shouldGo(value), value);
}

template <class T>
bool TArrayBase<T>::remove(const TIterator<T>& iterator) {
    return iterator.walksOn(this) && removeAt(static_cast<const TArrayIterator<T>&>(iterator).cursor);
}

template <class T>
bool TArrayBase<T>::removeAt(int32_t index) {
    if (!isInside(index))
        return false;
    [[maybe_unused]] const T removed = std::move(data[index]);  // dies last: its destructor may come back to this array
    std::move(begin() + index + 1, end(), begin() + index);
    data[--_total] = errorObject;
    return true;
}

template <class T>
bool TArrayBase<T>::removeRange(int32_t index, int32_t count) {
    if (index < 0 || count < 0 || count > _total - index)
        return false;
    std::move(begin() + index + count, end(), begin() + index);
    T* oldEnd = end();
    _total -= count;
    std::fill(end(), oldEnd, errorObject);
    return true;
}

template <class T>
void TArrayBase<T>::removeAll() {
    const int32_t used = _total;
    _total = 0;
    std::fill_n(data.get(), used, errorObject);
}

template <class T>
TIterator<T>* TArrayBase<T>::newIterator() const {
    return new TArrayIterator<T>(this);
}

template <class T>
bool TArrayBase<T>::resize(int32_t size) {
    if (size == _size)
        return true;
    std::unique_ptr<T[]> places = newPlaces(size);
    if (!places && size != 0)
        return false;
    _total = std::min(_total, size);
    std::move(begin(), end(), places.get());
    data.swap(places);  // the old places end with the block, when all is in order again
    _size = size;
    return true;
}

template <class T>
bool TArrayBase<T>::doInsertAt(int32_t index, const T& value) {
    if (index < 0 || index > _total)
        return false;
    std::move_backward(begin() + index, end(), end() + 1);
    data[index] = value;
    ++_total;
    return true;
}

template <class T>
template <class Compare>
int32_t TArrayBase<T>::indexSorted(const T& value, Compare compare) const {
    constexpr int32_t kFewElements = 4;  // below, a plain search is as fast
    const auto isEqual = [&](const T& each) { return compare(each, value) == 0; };
    const auto isLess = [&](const T& each) { return compare(each, value) < 0; };
    const T* found =
        _total < kFewElements ? std::find_if(begin(), end(), isEqual) : std::partition_point(begin(), end(), isLess);
    return found != end() && isEqual(*found) ? static_cast<int32_t>(found - begin()) : -1;
}

template <class T>
template <class Compare>
int32_t TArrayBase<T>::shouldGoSorted(const T& value, Compare compare) const {
    const auto staysInFront = [&](const T& each) { return compare(each, value) <= 0; };
    if (_total == 0 || staysInFront(data[_total - 1]))  // mostly they come in order
        return _total;
    return static_cast<int32_t>(std::partition_point(begin(), end(), staysInFront) - begin());
}

template <class T>
bool TArrayBase<T>::holds(const T* place) const {
    return !std::less<const T*>()(place, begin()) && std::less<const T*>()(place, end());
}

template <class T>
bool TArrayBase<T>::grow() {
    if (_total < _size)
        return true;
    if (delta == 0)
        return false;
    const int64_t doubled = _size <= 0 ? 10 : int64_t{_size} * 2;
    const int64_t wanted = delta == -1 ? doubled : int64_t{_size} + delta;
    return wanted > _total && wanted <= std::numeric_limits<int32_t>::max() && resize(static_cast<int32_t>(wanted));
}

template <class T>
int32_t TArray<T>::index(const T& value) const {
    const T* found = std::find(this->begin(), this->end(), value);
    return found == this->end() ? -1 : static_cast<int32_t>(found - this->begin());
}

}  // namespace Tessarine
