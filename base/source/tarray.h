#pragma once
#include "base/source/tcontainer.h"
#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <functional>
#include <iterator>
#include <limits>
#include <new>
#include <type_traits>
#include <utility>
#include <vector>

/** Arrays of values: constant time by index, and cheap to walk (`for (T& value : array)`). */

namespace Tessarine {

/** How many places an array of size places grows to by its delta; 0: it can't. */
inline int32_t grownSize(int32_t size, int32_t delta) {
    constexpr int32_t kDoubling = -1, kFirstDoubling = 10;
    const int64_t doubled = size <= 0 ? kFirstDoubling : int64_t{size} * 2;
    const int64_t grown = delta == kDoubling ? doubled : int64_t{size} + delta;
    return grown > size && grown <= std::numeric_limits<int32_t>::max() ? static_cast<int32_t>(grown) : 0;
}

/** What all arrays share.

    Growth    when all `_size` places are taken, by delta: 0 never, -1 to twice the size (10 at first), else by so many
    Moving    elements move by assignment when others come or go in front of them; references don't outlive that */
template <class T>
class TArrayBase : public TContainer<T> {
public:
    using TContainer<T>::errorObject;

    TArrayBase(int32_t size, int32_t delta) : delta(delta) { resize(std::max(size, 0)); }
    ~TArrayBase() override;

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
    static int32_t cmpData(const T& a, const T& b) { return a < b ? -1 : a == b ? 0 : 1; }
    template <class Compare>
    int32_t indexSorted(const T& value, Compare compare) const;
    /** Behind all that aren't greater. */
    template <class Compare>
    int32_t shouldGoSorted(const T& value, Compare compare) const;
    /** Makes room for one more at least, unless there is some. */
    bool grow();

    int32_t delta;
    int32_t _total = 0;

private:
    /** Values that need no constructor may grow where they are; all others move into a new array. */
    static constexpr bool kArePlain = std::is_trivial_v<T> && alignof(T) <= alignof(std::max_align_t);
    struct Free {
        void operator()(T* places) const {
            if constexpr (kArePlain)
                std::free(places);
            else
                delete[] places;
        }
    };
    using Places = std::unique_ptr<T[], Free>;

    /** How many are in front of the first one that isn't so; all that are so stand there. */
    template <class IsSo>
    int32_t countInFront(IsSo isSo) const;
    /** The first ones stay, so many as are kept. Null, and data as it was: no memory. */
    Places takePlaces(uint32_t size, int32_t kept);
    bool holds(const T* place) const;

    Places data;
};

template <class T>
class TArrayIterator final : public TIterator<T> {
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
    /** Without a call into the class while there is a free place. */
    bool add(const T& value) final;
    /** One behind the other, growing as add does; they stand elsewhere. False: no room for all, and those that have it are in. */
    bool addRange(const T* values, int32_t count);
    int32_t shouldGo(const T&) const final { return this->_total; }
    int32_t index(const T& value) const final;
};

/** Sorted by `<` and `==` of T; equal ones stay in order of arrival. Numbers are searched without a branch that could be
    foreseen wrongly. */
template <class T>
class TOrderedArray : public TArrayBase<T> {
public:
    explicit TOrderedArray(int32_t size = 0, int32_t delta = 10) : TArrayBase<T>(size, delta) {}

    TOrderedArray* newInstance() const override { return new TOrderedArray(this->_size, this->delta); }
    int32_t shouldGo(const T& value) const final { return this->shouldGoSorted(value, byData); }
    int32_t index(const T& value) const final { return this->indexSorted(value, byData); }

private:
    static constexpr auto byData = [](const T& a, const T& b) { return TArrayBase<T>::cmpData(a, b); };
};

/** Sorted by `compare(const T&)` of T; equal ones stay in order of arrival. */
template <class T>
class TSortableArray : public TArrayBase<T> {
public:
    explicit TSortableArray(int32_t size = 0, int32_t delta = 10) : TArrayBase<T>(size, delta) {}

    TSortableArray* newInstance() const override { return new TSortableArray(this->_size, this->delta); }
    int32_t shouldGo(const T& value) const final { return this->shouldGoSorted(value, byElement); }
    int32_t index(const T& value) const final { return this->indexSorted(value, byElement); }

private:
    static constexpr auto byElement = [](const T& a, const T& b) { return a.compare(b); };
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
TArrayBase<T>::~TArrayBase() {
    if constexpr (!kArePlain)
        TArrayBase::removeAll();
}

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
    T* from = begin() + index;
    std::vector<T> removed;  // die last
    if constexpr (!std::is_trivially_destructible_v<T>)
        removed.assign(std::make_move_iterator(from), std::make_move_iterator(from + count));
    std::move(from + count, end(), from);
    T* oldEnd = end();
    _total -= count;
    std::fill(end(), oldEnd, errorObject);
    return true;
}

template <class T>
void TArrayBase<T>::removeAll() {
    Places places = std::move(data);  // who dies may come back and add
    const int32_t size = std::exchange(_size, 0);
    std::fill_n(places.get(), std::exchange(_total, 0), errorObject);
    if (data)
        return;
    data = std::move(places);
    _size = size;
}

template <class T>
TIterator<T>* TArrayBase<T>::newIterator() const {
    return new TArrayIterator<T>(this);
}

template <class T>
bool TArrayBase<T>::resize(int32_t size) {
    if (size == _size)
        return true;
    if (size < 0)
        return false;
    if (size == 0)
        removeAll();
    const int32_t kept = std::min(_total, size);
    Places places = takePlaces(static_cast<uint32_t>(size), kept);
    if (!places && size > 0)
        return false;
    data.swap(places);  // the old places end with the block, when all is in order again
    _total = kept;
    _size = size;
    return true;
}

template <class T>
auto TArrayBase<T>::takePlaces(uint32_t size, [[maybe_unused]] int32_t kept) -> Places {
    if (size == 0)
        return nullptr;
    if constexpr (kArePlain) {
        Places places(static_cast<T*>(std::realloc(data.get(), size * sizeof(T))));
        if (places)
            static_cast<void>(data.release());
        return places;
    } else {
        Places places(new (std::nothrow) T[size]);
        if (places)
            std::move(begin(), begin() + kept, places.get());
        return places;
    }
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
    const T* found = _total < kFewElements ? std::find_if(begin(), end(), isEqual) : begin() + countInFront(isLess);
    return found != end() && isEqual(*found) ? static_cast<int32_t>(found - begin()) : -1;
}

template <class T>
template <class Compare>
int32_t TArrayBase<T>::shouldGoSorted(const T& value, Compare compare) const {
    const auto staysInFront = [&](const T& each) { return compare(each, value) <= 0; };
    if (_total == 0 || staysInFront(data[_total - 1]))  // mostly they come in order
        return _total;
    return countInFront(staysInFront);
}

template <class T>
template <class IsSo>
int32_t TArrayBase<T>::countInFront(IsSo isSo) const {
    const T* from = begin();
    if constexpr (std::is_arithmetic_v<T>) {
        for (auto rest = static_cast<uint32_t>(_total); rest > 0;) {
            const uint32_t half = (rest + 1) / 2;
            const T* next = from + half;
            from = __builtin_expect_with_probability(isSo(next[-1]), 1, 0.5) ? next : from;  // chosen, not jumped to
            rest -= half;
        }
    } else {
        from = std::partition_point(from, from + _total, isSo);
    }
    return static_cast<int32_t>(from - begin());
}

template <class T>
bool TArrayBase<T>::holds(const T* place) const {
    return !std::less<const T*>()(place, begin()) && std::less<const T*>()(place, end());
}

template <class T>
bool TArrayBase<T>::grow() {
    if (_total < _size)
        return true;
    const int32_t grown = grownSize(_size, delta);
    return grown > 0 && resize(grown);
}

template <class T>
bool TArray<T>::add(const T& value) {
    if (this->_total >= this->_size)
        return TArrayBase<T>::add(value);
    *this->end() = value;
    ++this->_total;
    return true;
}

template <class T>
bool TArray<T>::addRange(const T* values, int32_t count) {
    while (count > 0 && this->grow()) {
        const int32_t fitting = std::min(count, this->_size - this->_total);
        std::copy_n(values, fitting, this->end());
        this->_total += fitting;
        values += fitting;
        count -= fitting;
    }
    return count <= 0;
}

template <class T>
int32_t TArray<T>::index(const T& value) const {
    const T* found = std::find(this->begin(), this->end(), value);
    return found == this->end() ? -1 : static_cast<int32_t>(found - this->begin());
}

}  // namespace Tessarine
