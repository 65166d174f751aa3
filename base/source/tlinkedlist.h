#pragma once
#include "base/source/tcontainer.h"

/** Lists of values: elements stay where they are in memory until they are removed. Cheap to walk with
    `for (T& value : list)`; the element that the loop stands on must not be removed by its body. */

namespace Tessarine {

/** A link of a TLinkedList. */
template <class T>
struct TLink {
    explicit TLink(const T& value) : value(value) {}

    T value;
    TLink* next = nullptr;  // owned by the list
};

/** Hanging links in and out of a chain; before is null at the front. Links that know their previous one keep it. */
namespace Links {
template <class Link>
constexpr bool kKnowsPrevious = requires(Link link) { link.previous; };

template <class Link>
void setPrevious(Link* link, Link* previous) {
    if constexpr (kKnowsPrevious<Link>) {
        if (link)
            link->previous = previous;
    }
}

template <class Link>
Link* previousOf(Link* first, const Link* link) {
    if constexpr (kKnowsPrevious<Link>) {
        return link->previous;
    } else {
        Link* previous = nullptr;
        for (; first != link; first = first->next)
            previous = first;
        return previous;
    }
}

template <class Link>
void hangIn(Link*& first, Link*& last, Link* before, Link* link) {
    Link*& place = before ? before->next : first;
    link->next = place;
    setPrevious(link->next, link);
    setPrevious(link, before);
    place = link;
    if (last == before)
        last = link;
}

template <class Link>
void hangOut(Link*& first, Link*& last, Link* before, Link* link) {
    (before ? before->next : first) = link->next;
    setPrevious(link->next, before);
    if (last == link)
        last = before;
}

/** The chain is empty before the first element dies, since destructors may come back to it. */
template <class Link>
void deleteAll(Link*& first, Link*& last) {
    Link* link = first;
    first = last = nullptr;
    while (link) {
        const std::unique_ptr<Link> removed(link);
        link = link->next;
    }
}
}  // namespace Links

template <class T, class Link>
class TLinkIterator;

/** What both linked lists share. */
template <class T, class Link>
class TLinkedContainer : public TContainer<T> {
public:
    using TContainer<T>::errorObject;

    /** For range loops: a link, moving forward. */
    class Step {
    public:
        explicit Step(Link* link) : link(link) {}
        T& operator*() const { return link->value; }
        Step& operator++() {
            link = link->next;
            return *this;
        }
        bool operator==(const Step& other) const = default;

    private:
        Link* link;
    };

    TLinkedContainer() = default;
    explicit TLinkedContainer(const T& errorObject) : TContainer<T>(errorObject) {}
    ~TLinkedContainer() override { Links::deleteAll(_first, _last); }

    int32_t total() const override { return _size; }
    /** May look at a list that another thread is changing under its lock. */
    bool isEmpty() const override { return __atomic_load_n(&_size, __ATOMIC_RELAXED) == 0; }
    bool add(const T& value) override { return append(value); }
    bool remove(const T& value) override { return removeLink(linkOf(value)); }
    bool remove(const TIterator<T>& iterator) override;
    bool removeAt(int32_t index) override { return removeLink(linkAt(index)); }
    void removeAll() override;
    T& at(int32_t index) const override { return valueOf(linkAt(index)); }
    T& lookup(const T& value) const override { return valueOf(linkOf(value)); }
    bool contains(const T& value) const override { return linkOf(value) != nullptr; }
    TIterator<T>* newIterator() const override;

    bool append(const T& value) { return insertBehind(_last, value); }
    bool prepend(const T& value) { return insertBehind(nullptr, value); }
    /** Both give the removed value; errorObject when empty. */
    T removeFirst() { return takeOut(_first); }
    T removeLast() { return takeOut(_last); }

    Step begin() const { return Step(_first); }
    Step end() const { return Step(nullptr); }

protected:
    using TContainer<T>::_size;
    friend class TLinkIterator<T, Link>;

    T& valueOf(Link* link) const { return link ? link->value : errorObject; }
    /** Null: out of range; no equal element. */
    Link* linkAt(int32_t index) const;
    Link* linkOf(const T& value) const;
    bool insertBehind(Link* before, const T& value);
    /** False for null. */
    bool removeLink(Link* link);
    void hangIn(Link* before, Link* link);
    /** The link is the caller's then. */
    void hangOut(Link* link);

    Link* _first = nullptr;  // owned, as all links
    Link* _last = nullptr;

private:
    T takeOut(Link* link);
    void setTotal(int32_t total) { __atomic_store_n(&_size, total, __ATOMIC_RELAXED); }  // isEmpty() may be looking
};

template <class T, class Link>
class TLinkIterator : public TIterator<T> {
public:
    explicit TLinkIterator(const TLinkedContainer<T, Link>* list)
        : TIterator<T>(list), list(list), cursor(list->_first) {}

    bool done() const override { return !cursor; }
    T& next() override {
        T& value = current();
        cursor = cursor ? cursor->next : nullptr;
        return value;
    }
    /** Without links that know their previous one this walks from the start. */
    T& previous() override {
        T& value = current();
        cursor = cursor ? Links::previousOf(list->_first, cursor) : nullptr;
        return value;
    }
    T& current() const override { return list->valueOf(cursor); }
    void first() override { cursor = list->_first; }
    void last() override { cursor = list->_last; }

private:
    friend class TLinkedContainer<T, Link>;
    const TLinkedContainer<T, Link>* list;  // borrowed
    mutable Link* cursor;                   // borrowed; null: out of range
};

/** Singly linked: cheap at both ends and forward; removing anywhere but at the front walks from the start. */
template <class T>
class TLinkedList : public TLinkedContainer<T, TLink<T>> {
public:
    TLinkedList* newInstance() const override { return new TLinkedList; }
};

/** Last in, first out. */
template <class T>
class TStack : public TLinkedList<T> {
public:
    TStack* newInstance() const override { return new TStack; }
    bool push(const T& value) { return this->prepend(value); }
    /** Both give errorObject when empty. */
    T pop() { return this->removeFirst(); }
    T& peek() const { return this->valueOf(this->_first); }
};

template <class T, class Link>
bool TLinkedContainer<T, Link>::remove(const TIterator<T>& iterator) {
    if (!iterator.walksOn(this) || iterator.done())
        return false;
    const auto& mine = static_cast<const TLinkIterator<T, Link>&>(iterator);
    Link* link = mine.cursor;
    mine.cursor = link->next;
    return removeLink(link);
}

template <class T, class Link>
void TLinkedContainer<T, Link>::removeAll() {
    setTotal(0);
    Links::deleteAll(_first, _last);
}

template <class T, class Link>
TIterator<T>* TLinkedContainer<T, Link>::newIterator() const {
    return new TLinkIterator<T, Link>(this);
}

template <class T, class Link>
Link* TLinkedContainer<T, Link>::linkAt(int32_t index) const {
    if (index < 0 || index >= _size)
        return nullptr;
    Link* link = _first;
    while (index-- > 0)
        link = link->next;
    return link;
}

template <class T, class Link>
Link* TLinkedContainer<T, Link>::linkOf(const T& value) const {
    Link* link = _first;
    while (link && !(link->value == value))
        link = link->next;
    return link;
}

template <class T, class Link>
bool TLinkedContainer<T, Link>::insertBehind(Link* before, const T& value) {
    hangIn(before, new Link(value));
    return true;
}

template <class T, class Link>
bool TLinkedContainer<T, Link>::removeLink(Link* link) {
    if (!link)
        return false;
    const std::unique_ptr<Link> removed(link);
    hangOut(link);
    return true;
}

template <class T, class Link>
void TLinkedContainer<T, Link>::hangIn(Link* before, Link* link) {
    Links::hangIn(_first, _last, before, link);
    setTotal(_size + 1);
}

template <class T, class Link>
void TLinkedContainer<T, Link>::hangOut(Link* link) {
    Links::hangOut(_first, _last, Links::previousOf(_first, link), link);
    setTotal(_size - 1);
}

template <class T, class Link>
T TLinkedContainer<T, Link>::takeOut(Link* link) {
    if (!link)
        return errorObject;
    const std::unique_ptr<Link> removed(link);
    hangOut(link);
    return std::move(link->value);
}

}  // namespace Tessarine
