#pragma once
#include <cstdint>
#include <memory>

namespace Tessarine {
template <class T>
class TContainer;

/** A cursor on a container, made by newIterator() and deleted by the caller. It starts at the first element, holds a
    plain pointer to the container and is nowhere registered. Of all changes of the container only remove(iterator), which
    moves the cursor on to the following element, leaves it usable. Out of range it stays until first() or last(). */
template <class T>
class TIterator {
public:
    explicit TIterator(const TContainer<T>* container) : container(container) {}
    virtual ~TIterator() = default;
    /** The cursor is out of range. */
    virtual bool done() const = 0;
    /** Both give the element at the cursor, then move; the container's errorObject when done. */
    virtual T& next() = 0;
    virtual T& previous() = 0;
    virtual T& current() const = 0;
    virtual void first() = 0;
    virtual void last() = 0;

    bool walksOn(const TContainer<T>* other) const { return container == other; }

protected:
    const TContainer<T>* container;  // borrowed
};

/** The root of the containers that hold values of any type by copy. T can be built from nothing, copied, assigned and
    compared with `==`.

    Owns      its copies; what a pointer points to is nobody's here. For counted objects T is an IPtr or OPtr.
    Results   a miss is false, -1 or a reference to errorObject, which is for reading.
    Threads   none of its own: who shares a container guards it. */
template <class T>
class TContainer {
public:
    TContainer() = default;
    explicit TContainer(const T& errorObject) : errorObject(errorObject) {}
    virtual ~TContainer() = default;
    TContainer(const TContainer&) = delete;
    TContainer& operator=(const TContainer&) = delete;

    /** An empty container of the same kind, built in the same way; the caller deletes it. */
    virtual TContainer<T>* newInstance() const = 0;
    virtual int32_t total() const = 0;
    virtual bool isEmpty() const { return total() == 0; }
    /** Lists: elements; arrays: places at hand; hash tables: buckets. */
    virtual int32_t size() const { return _size; }
    virtual bool add(const T& value) = 0;
    /** The first equal element. */
    virtual bool remove(const T& value) = 0;
    /** The element at the cursor, which then stands on the following one. False: out of range, or of another. */
    virtual bool remove(const TIterator<T>& iterator) = 0;
    virtual bool removeAt(int32_t index) = 0;
    virtual void removeAll() = 0;
    virtual T& at(int32_t index) const;
    /** The first equal element. */
    virtual T& lookup(const T& value) const;
    virtual bool contains(const T& value) const;
    virtual int32_t occurrences(const T& value) const;
    virtual TIterator<T>* newIterator() const = 0;

    /** False: an element couldn't be added, or source is this. */
    bool addAllFrom(const TContainer<T>& source);
    /** The elements of source instead of the present ones. */
    bool copy(const TContainer<T>& source);

    mutable T errorObject{};

protected:
    using Walk = std::unique_ptr<TIterator<T>>;
    /** A new cursor that stands on the first equal element; done when there is none. */
    Walk walkTo(const T& value) const;

    int32_t _size = 0;
};

/** Key and value; two are equal when their keys are. A key alone stands for a pair to search with. */
template <class K, class V>
struct TAssociation {
    TAssociation() = default;
    TAssociation(const K& key, const V& value = V()) : key(key), value(value) {}
    bool operator==(const TAssociation& other) const { return key == other.key; }

    K key{};
    V value{};
};

template <class T>
auto TContainer<T>::walkTo(const T& value) const -> Walk {
    Walk walk(newIterator());
    while (!walk->done() && !(walk->current() == value))
        walk->next();
    return walk;
}

template <class T>
T& TContainer<T>::at(int32_t index) const {
    if (index < 0)
        return errorObject;
    const Walk walk(newIterator());
    for (; index > 0 && !walk->done(); --index)
        walk->next();
    return walk->current();
}

template <class T>
T& TContainer<T>::lookup(const T& value) const {
    return walkTo(value)->current();
}

template <class T>
bool TContainer<T>::contains(const T& value) const {
    return !walkTo(value)->done();
}

template <class T>
int32_t TContainer<T>::occurrences(const T& value) const {
    int32_t count = 0;
    for (const Walk walk(newIterator()); !walk->done();)
        count += walk->next() == value ? 1 : 0;
    return count;
}

template <class T>
bool TContainer<T>::addAllFrom(const TContainer<T>& source) {
    if (&source == this)
        return false;
    bool all = true;
    for (const Walk walk(source.newIterator()); !walk->done();)
        all = add(walk->next()) && all;
    return all;
}

template <class T>
bool TContainer<T>::copy(const TContainer<T>& source) {
    if (&source == this)
        return true;
    removeAll();
    return addAllFrom(source);
}

}  // namespace Tessarine
