#pragma once
#include "collect/cmcontainer.h"
#include <memory>

namespace Tessarine {

/** What both arrays share: at() and total() cost nothing, `for (CmObject* object : array)` walks as fast as memory
    allows.

    Grows     by delta places when full; delta 0: never, add fails; delta -1: twice the places, 10 at first. */
class CmArrayBase : public CmContainer {
public:
    ~CmArrayBase() override;

    int32_t size() const override { return _size; }
    int32_t total() const final { return _total; }
    bool isEmpty() const final { return _total == 0; }
    using CmContainer::remove;
    bool remove(const CmIterator& iterator) override;
    bool removeAt(int32_t index) override;
    void removeAll() override;
    CmObject* at(int32_t index) const final { return isInside(index) ? data[index] : nullptr; }
    bool containsAbs(const CmObject* object) const override { return indexAbs(object) >= 0; }
    int32_t getIndex(const CmObject* object) const override { return object ? firstEqual(object, 0, _total) : 0; }
    CmIterator* newIterator() const override;

    int32_t indexAbs(const CmObject* object) const;
    /** Sets the number of places; elements beyond it are removed. False: no memory, nothing has changed. */
    bool resize(int32_t size);

    CmObject* const* begin() const { return data.get(); }
    CmObject* const* end() const { return data.get() + _total; }

protected:
    CmArrayBase(int32_t size, int32_t delta);
    /** The places and the growth; the elements are for the derived class to add. */
    CmArrayBase(const CmArrayBase& source);

    static int32_t cmpObjs(const CmObject* object, const CmObject* other) { return object->compare(other); }
    bool isInside(int32_t index) const { return static_cast<uint32_t>(index) < static_cast<uint32_t>(_total); }
    /** False: all places are taken, and there can't be more. */
    bool hasRoom() { return _total < _size || grow(); }
    /** Where there is room, at most at the end. */
    void doInsertAt(CmObject* object, int32_t index);
    /** By isEqual, of the elements from..to - 1; -1: none. */
    int32_t firstEqual(const CmObject* object, int32_t from, int32_t to) const;
    /** The place behind all of from..to - 1 that aren't greater. */
    int32_t upperBound(const CmObject* object, int32_t from, int32_t to) const;
    /** By compare; not stable. */
    void sort();

    int32_t delta;
    int32_t _total = 0;
    std::unique_ptr<CmObject*[]> data;  // _size places

private:
    bool grow();
};

/** An array of objects in the order in which they came. Its archive form begins with delta, 32 bits; a delta below 0 is
    stored as 10. */
class CmArray : public CmArrayBase {
public:
    DECLARE_CLASS(CmArray, CmContainer)
    DECLARE_NEWCOPY(CmArray)
    explicit CmArray(int32_t size = 0, int32_t delta = 10) : CmArrayBase(size, delta) {}
    /** As copy(); capacity and growth are taken as well. */
    CmArray(const CmArray& source);

    bool internalize(FArchive& archive) override;
    bool externalize(FArchive& archive) const override;

    bool add(CmObject* object) override {
        if (!object || !hasRoom())
            return false;
        data[_total++] = object;
        testRemember(object);
        return true;
    }
    CmObject* lookup(const CmObject* object) const override { return at(index(object)); }
    bool contains(const CmObject* object) const override { return index(object) >= 0; }

    /** index is at most total(). */
    bool insertAt(CmObject* object, int32_t index) {
        if (!object || index < 0 || index > _total || !hasRoom())
            return false;
        doInsertAt(object, index);
        return true;
    }
    bool replaceAt(CmObject* object, int32_t index);
    int32_t index(const CmObject* object) const { return object ? firstEqual(object, 0, _total) : -1; }
    bool swap(int32_t index, int32_t other);

    /** By compare; equal ones come in any order. */
    void quickSort() { sort(); }
    /** What follows is for sorted arrays; equal ones stay in the order in which they came. */
    bool addSorted(CmObject* object) { return object && insertAt(object, shouldGo(object)); }
    /** Adds all elements of another sorted array, each existing one moves once. False: no memory, or this itself. */
    bool mergeSorted(const CmArray& other);
    /** Where an object goes among the elements from..to - 1; a `to` of -1 is the end. -1: null. */
    int32_t shouldGo(const CmObject* object, int32_t from = 0, int32_t to = -1) const;

private:
    std::unique_ptr<int32_t[]> placesFor(const CmArray& other) const;
};

/** An array that keeps its elements sorted by the compare of the one that comes; equal ones stay in the order in which
    they came. What is searched is found only where its compare says it would be. */
class CmOrderedArray : public CmArrayBase {
public:
    DECLARE_CLASS(CmOrderedArray, CmContainer)
    DECLARE_NEWCOPY(CmOrderedArray)
    explicit CmOrderedArray(int32_t size = 0, int32_t delta = 10) : CmArrayBase(size, delta) {}
    /** As copy(); capacity and growth are taken as well. */
    CmOrderedArray(const CmOrderedArray& source);

    bool add(CmObject* object) override;
    using CmArrayBase::remove;
    bool remove(CmObject* object) override { return removeAt(index(object)); }
    CmObject* lookup(const CmObject* object) const override { return at(index(object)); }
    bool contains(const CmObject* object) const override { return index(object) >= 0; }

    /** Of the first equal element; -1: none. */
    int32_t index(const CmObject* object) const;
    bool removeAbs(const CmObject* object) { return removeAt(indexAbs(object)); }
    /** Puts all in order again after elements have changed. */
    void resort() { sort(); }
    /** -1: null, or all places are taken. */
    int32_t shouldGo(const CmObject* object) const;
};

/** Survives changes of the array, as it keeps an index only. */
class CmArrayIterator : public CmIterator {
public:
    explicit CmArrayIterator(const CmArrayBase& array) : CmIterator(array) {}

    bool done() const final { return static_cast<uint32_t>(index) >= static_cast<uint32_t>(array().total()); }
    CmObject* next() final { return done() ? nullptr : array().begin()[index++]; }
    CmObject* previous() final { return done() ? nullptr : array().begin()[index--]; }
    using CmIterator::next;
    using CmIterator::previous;
    CmObject* current() const final { return array().at(index); }
    void first() final { index = 0; }
    void last() final { index = array().total() - 1; }
    CmObject* operator+=(int32_t steps) final;
    CmObject* operator-=(int32_t steps) final;

    /** Where the cursor stands; not within the array when done. */
    int32_t position() const { return index; }

private:
    const CmArrayBase& array() const { return *static_cast<const CmArrayBase*>(container); }

    int32_t index = 0;
};

using CmOrderedArrayIterator = CmArrayIterator;

}  // namespace Tessarine
