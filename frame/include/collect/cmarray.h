#pragma once
#include "collect/cmcontainer.h"
#include <memory>

namespace Tessarine {

/** An array of objects in the order in which they came; at() and total() cost nothing.

    Grows     by delta places when full; delta 0: never, add fails; delta -1: twice the places, 10 at first. */
class CmArray : public CmContainer {
public:
    DECLARE_CLASS(CmArray, CmContainer)
    DECLARE_NEWCOPY(CmArray)
    explicit CmArray(int32_t size = 0, int32_t delta = 10);
    /** As copy(); capacity and growth are taken as well. */
    CmArray(const CmArray& source);
    ~CmArray() override;

    int32_t size() const override { return _size; }
    int32_t total() const final { return _total; }
    bool isEmpty() const final { return _total == 0; }
    bool add(CmObject* object) override { return insertAt(object, _total); }
    using CmContainer::remove;
    bool remove(const CmIterator& iterator) override;
    bool removeAt(int32_t index) override;
    void removeAll() override;
    CmObject* at(int32_t index) const final { return index >= 0 && index < _total ? data[index] : nullptr; }
    CmObject* lookup(const CmObject* object) const override { return at(index(object)); }
    bool contains(const CmObject* object) const override { return index(object) >= 0; }
    bool containsAbs(const CmObject* object) const override { return indexAbs(object) >= 0; }
    CmIterator* newIterator() const override;

    /** index is at most total(). */
    bool insertAt(CmObject* object, int32_t index);
    bool replaceAt(CmObject* object, int32_t index);
    int32_t index(const CmObject* object) const;
    int32_t indexAbs(const CmObject* object) const;
    bool swap(int32_t index, int32_t other);
    /** Sets the number of places; elements beyond it are removed. False: no memory, nothing has changed. */
    bool resize(int32_t size);

private:
    bool grow();

    int32_t delta;
    int32_t _total = 0;
    std::unique_ptr<CmObject*[]> data;  // _size places, null from _total on
};

/** Survives changes of the array, as it keeps an index only. */
class CmArrayIterator : public CmIterator {
public:
    explicit CmArrayIterator(const CmArray& array) : CmIterator(array), array(&array) {}

    bool done() const override { return !current(); }
    CmObject* next() override;
    CmObject* previous() override;
    using CmIterator::next;
    using CmIterator::previous;
    CmObject* current() const override { return array->at(index); }
    void first() override { index = 0; }
    void last() override { index = array->total() - 1; }
    CmObject* operator+=(int32_t steps) override;
    CmObject* operator-=(int32_t steps) override;

    /** Where the cursor stands; not within the array when done. */
    int32_t position() const { return index; }

private:
    const CmArray* array;  // borrowed
    int32_t index = 0;
};

}  // namespace Tessarine
