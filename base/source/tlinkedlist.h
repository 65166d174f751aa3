#pragma once
#include "base/source/tcontainer.h"
#include <algorithm>
#include <cstddef>
#include <utility>

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

/** The one behind. Links of a pool mostly follow each other in memory: a guess, which is checked while the walk goes on,
    spares it the wait for the memory. */
template <class Link>
Link* after(Link* link) {
    Link* guess = link + 1;
    Link* compared = guess;
    Link* next = link->next;
    __asm__("" : "+r"(compared));  // or the compiler knows that both are the same, and takes next
    if (next == compared) [[likely]]
        return guess;
    __asm__ volatile("" : "+r"(next));  // nor may it choose without a jump: what it chose from would be waited for
    return next;
}

/** Ends the values of a chain; its memory is a pool's. */
template <class Link>
void endAll(Link* link) {
    while (link) {
        Link* next = link->next;
        link->~Link();
        link = next;
    }
}
}  // namespace Links

/** The memory of a container's links: those made one after the other lie side by side. All of it but the first block goes
    back when no link is left, the rest with the pool. */
template <class Link>
class TLinkPool {
public:
    TLinkPool() = default;
    TLinkPool(TLinkPool&& other) noexcept : memory(std::exchange(other.memory, {})) {}
    ~TLinkPool();

    template <class T>
    Link* make(const T& value);
    /** Gives its value, which is to die when the container is in order again: its destructor may come back there. */
    auto end(Link* link);

private:
    union Place {
        Place* next;
        alignas(Link) std::byte link[sizeof(Link)];
    };
    static_assert(sizeof(Place) == sizeof(Link), "neighbours in memory are a link apart");
    struct Memory {
        Place* block = nullptr;  // the latest; the first place of each names the one before it
        Place* fresh = nullptr;  // from here to its end no place was used yet
        Place* blockEnd = nullptr;
        Place* ended = nullptr;  // places to use again, the latest first
        int32_t living = 0;
    };

    static constexpr std::ptrdiff_t kFewPlaces = 8,
                                    kMostPlaces = 16384;  // of the first block, which double up to these

    Place* takePlace();
    void addBlock();
    void dropBlock() { delete[] std::exchange(memory.block, memory.block->next); }
    /** No place is in use any longer. */
    void restart();
    void use(std::ptrdiff_t places);

    Memory memory;
};

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
            link = Links::after(link);
            return *this;
        }
        bool operator==(const Step& other) const = default;

    private:
        Link* link;
    };

    TLinkedContainer() = default;
    explicit TLinkedContainer(const T& errorObject) : TContainer<T>(errorObject) {}
    ~TLinkedContainer() override { TLinkedContainer::removeAll(); }

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
    /** Not for null. Gives the value, which must die last: its destructor may come back to this list. */
    T endLink(Link* link);

    Link* _first = nullptr;  // the pool's, as all links
    Link* _last = nullptr;

private:
    T takeOut(Link* link) { return link ? endLink(link) : errorObject; }
    void setTotal(int32_t total) { __atomic_store_n(&_size, total, __ATOMIC_RELAXED); }  // isEmpty() may be looking

    TLinkPool<Link> pool;
};

template <class T, class Link>
class TLinkIterator final : public TIterator<T> {
public:
    explicit TLinkIterator(const TLinkedContainer<T, Link>* list)
        : TIterator<T>(list), list(list), cursor(list->_first) {}

    bool done() const override { return !cursor; }
    T& next() override {
        T& value = current();
        cursor = cursor ? Links::after(cursor) : nullptr;
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

template <class Link>
TLinkPool<Link>::~TLinkPool() {
    while (memory.block)
        dropBlock();
}

template <class Link>
template <class T>
Link* TLinkPool<Link>::make(const T& value) {
    Link* link = new (takePlace()->link) Link(value);
    ++memory.living;
    return link;
}

template <class Link>
auto TLinkPool<Link>::end(Link* link) {
    auto value = std::move(link->value);
    link->~Link();
    Place* place = new (link) Place;
    place->next = std::exchange(memory.ended, place);
    if (--memory.living == 0)
        restart();
    return value;
}

template <class Link>
auto TLinkPool<Link>::takePlace() -> Place* {
    if (memory.ended)
        return std::exchange(memory.ended, memory.ended->next);
    if (memory.fresh == memory.blockEnd)
        addBlock();
    return memory.fresh++;
}

template <class Link>
void TLinkPool<Link>::addBlock() {
    const std::ptrdiff_t places = std::clamp(2 * (memory.blockEnd - memory.block), kFewPlaces, kMostPlaces);
    auto* block = new Place[static_cast<size_t>(places)];
    block->next = std::exchange(memory.block, block);
    use(places);
}

template <class Link>
void TLinkPool<Link>::restart() {
    while (memory.block->next)
        dropBlock();
    memory.ended = nullptr;
    use(kFewPlaces);
}

template <class Link>
void TLinkPool<Link>::use(std::ptrdiff_t places) {
    memory.fresh = memory.block + 1;
    memory.blockEnd = memory.block + places;
}

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
    const TLinkPool<Link> oldPool(std::move(pool));  // all is empty before the first element dies
    Link* chain = std::exchange(_first, nullptr);
    _last = nullptr;
    setTotal(0);
    Links::endAll(chain);
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
    Links::hangIn(_first, _last, before, pool.make(value));
    setTotal(_size + 1);
    return true;
}

template <class T, class Link>
bool TLinkedContainer<T, Link>::removeLink(Link* link) {
    if (!link)
        return false;
    [[maybe_unused]] const T removed = endLink(link);
    return true;
}

template <class T, class Link>
T TLinkedContainer<T, Link>::endLink(Link* link) {
    Links::hangOut(_first, _last, Links::previousOf(_first, link), link);
    setTotal(_size - 1);
    return pool.end(link);
}

}  // namespace Tessarine
