#pragma once
#include "base/source/cmobject.h"

namespace Tessarine {
class CmContainer;
class CmLinkedList;
class CmObjectFilter;
class FStream;

/** A cursor on a container, made by newIterator() and deleted by the caller, or built on the stack for a known one. It
    starts at the first element and is nowhere registered: during a walk through an array or a list only what it stepped
    over may go, through a tree nothing, except by remove(iterator), which moves the cursor on to the following element.
    Out of range it stays so until first(), last() or setCurrent(). */
class CmIterator {
public:
    explicit CmIterator(const CmContainer& container) : container(&container) {}
    virtual ~CmIterator() = default;
    /** The cursor is out of range. */
    virtual bool done() const = 0;
    /** Both give the element at the cursor, then move; null when done. */
    virtual CmObject* next() = 0;
    virtual CmObject* previous() = 0;
    virtual CmObject* current() const = 0;
    virtual void first() = 0;
    virtual void last() = 0;
    /** Goes to this very object; false, and done, when it isn't there. */
    virtual bool setCurrent(const CmObject* object);
    /** So many steps; the element that is then at the cursor. */
    virtual CmObject* operator+=(int32_t steps);
    virtual CmObject* operator-=(int32_t steps);

    /** The next element from here that match is equal to, null when there is none; the cursor stands behind it. */
    CmObject* next(const CmObject* match);
    CmObject* previous(const CmObject* match);

    bool walksOn(const CmContainer* other) const { return container == other; }

protected:
    const CmContainer* container;  // borrowed
};

/** The base of all containers of objects.

    Owns      by `_ownsObjects`, which must not change while elements are held, unless the caller knows the references:
              kBorrows    plain pointers
              kTakesOver  add takes over the caller's reference, removing gives it up; a refused one stays the caller's
              kShares     add takes a reference more, removing gives it up
    Equality  searching asks the searched object's isEqual (sorted containers: compare) about each element; the `...Abs`
              operations look for the very object.
    Results   null, false or -1 for a miss; null is never an element.
    Archives  the ownership, the count and the elements in the iterator's order. What is read belongs to the container
              as the ownership says: with kBorrows nobody releases it. Reading begins with removeAll(); after a failure
              the elements that came before it are there, and the ownership is the one that was read.
    Threads   none of its own: who shares a container guards it. */
class CmContainer : public CmObject {
public:
    DECLARE_ABSTRACT_CLASS(CmContainer, CmObject)
    enum Ownership : int16_t { kBorrows = 0, kTakesOver = 1, kShares = 2 };

    bool internalize(FArchive& archive) override;
    bool externalize(FArchive& archive) const override;
    bool storeAttributes(FAttributes& attributes) const override;
    bool restoreAttributes(FAttributes& attributes) override;

    /** Places at hand; in lists and trees the same as total(). */
    virtual int32_t size() const = 0;
    virtual int32_t total() const = 0;
    virtual bool isEmpty() const = 0;
    virtual bool add(CmObject* object) = 0;
    /** The first equal element. */
    virtual bool remove(CmObject* object);
    /** The element at the cursor, which then stands on the following one. False: out of range, or another's. */
    virtual bool remove(const CmIterator& iterator);
    virtual bool removeAt(int32_t index) = 0;
    virtual void removeAll() = 0;
    virtual CmObject* at(int32_t index) const;
    virtual CmObject* lookup(const CmObject* object) const;
    virtual bool contains(const CmObject* object) const;
    virtual bool containsAbs(const CmObject* object) const;
    virtual int32_t occurrences(const CmObject* object) const;
    /** The index of the first equal element; 0 for null. */
    virtual int32_t getIndex(const CmObject* object) const;
    virtual CmIterator* newIterator() const = 0;
    /** Becomes like source, ownership included: kTakesOver holds copies of the elements (newCopy), the others the same
        objects. False: an element is missing here. */
    virtual bool copy(const CmContainer& source);

    /** Adds all elements, or with kTakesOver copies of them. False: one couldn't be added, or source is this. */
    bool addAllFrom(const CmContainer* source);
    /** Adds the very elements, then drops one reference of each: when alreadyOwned, unless this container shares;
        otherwise only when it shares. Source stays as it is. */
    bool takeAllFrom(const CmContainer* source, bool alreadyOwned);
    /** Removes one equal element for each of source. False: one wasn't here. */
    bool removeAllFrom(const CmContainer* source);
    /** A new list of all equal elements, which borrows them; the caller releases it. */
    CmLinkedList* lookupAll(const CmObject* object) const;

    /** Adds all elements that pass the filter to found. False: one couldn't be added. */
    bool query(CmObjectFilter& filter, CmContainer& found) const;
    /** The first and the last element that passes; the last one is known when all were tested. */
    CmObject* firstThat(CmObjectFilter& filter) const;
    CmObject* lastThat(CmObjectFilter& filter) const;
    /** Shows each element to the filter, whatever it answers. */
    void forEach(CmObjectFilter& filter) const;
    /** Shows the elements to the filter until it answers false, on up to so many threads of at least minPerThread
        elements each; below 1: one thread for each processor. The filter is called on all of them at once, and nothing
        may change the container. Returns on the calling thread when all are through.
        The result depends on the way taken. One thread: true when the walk went to the end. Several: true when it was
        stopped. */
    bool concurrentIteration(CmObjectFilter& filter, int32_t threads = 0, int32_t minPerThread = 1) const;

    /** The ownership, 16 bits. False: cut off, or none that there is; the old one stays. */
    bool readBase(FStream& stream);
    bool writeBase(FStream& stream) const;

protected:
    CmContainer() = default;
    /** Takes the ownership; the elements are for the derived class to add. */
    CmContainer(const CmContainer& source) : CmObject(source), _ownsObjects(source._ownsObjects) {}
    CmContainer& operator=(const CmContainer&) = delete;

    /** The two halves of ownership: each element passes the first when it comes and the second when it goes.
        Destructors may come back to the container, so that the second is called when the element is out of it. Null is
        allowed. */
    void testRemember(CmObject* object) const {
        if (object && _ownsObjects == kShares)
            object->addRef();
    }
    void testDelete(CmObject* object) const {
        if (object && _ownsObjects != kBorrows)
            object->release();
    }

    int32_t _size = 0;

public:
    int16_t _ownsObjects = kBorrows;
};

}  // namespace Tessarine
