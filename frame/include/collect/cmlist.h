#pragma once
#include "base/source/tlinkedlist.h"
#include "collect/cmcontainer.h"
#include <type_traits>

namespace Tessarine {
template <class Link>
class CmListIterator;

/** What all lists of objects share. Link is a node that holds an element, or the class of elements that are links
    themselves; it may know the previous one.

    Costs     both ends and walking forward are cheap. With links that don't know the previous one removeLast and
              stepping back walk from the start.
    Intrusive elements can be in one list at a time: adding one that is in a list is refused, and so is anything that is
              no link. */
template <class Link>
class CmList : public CmContainer {
public:
    static constexpr bool kIsIntrusive = std::is_base_of_v<CmObject, Link>;
    using Element = std::conditional_t<kIsIntrusive, Link, CmObject>;

    ~CmList() override;

    int32_t size() const override { return _size; }
    int32_t total() const final { return _size; }
    bool isEmpty() const final { return _size == 0; }
    bool add(CmObject* object) override;
    bool remove(CmObject* object) override { return removeFrom(placeOfEqual(object)); }
    bool remove(const CmIterator& iterator) override;
    bool removeAt(int32_t index) override { return removeFrom(placeAt(index)); }
    void removeAll() override;
    CmObject* at(int32_t index) const override { return placeAt(index).object(); }
    CmObject* lookup(const CmObject* object) const override { return placeOfEqual(object).object(); }
    bool contains(const CmObject* object) const override { return placeOfEqual(object).link != nullptr; }
    bool containsAbs(const CmObject* object) const override { return placeOfObject(object).link != nullptr; }
    CmIterator* newIterator() const override;

    bool append(Element* object) { return insertBehind(_last, object); }
    bool prepend(Element* object) { return insertBehind(nullptr, object); }
    /** index is at most total(). */
    bool insertAt(Element* object, int32_t index);
    /** Beside this very neighbour; false when it isn't here. */
    bool insertBefore(Element* object, const CmObject* neighbour);
    bool insertAfter(Element* object, const CmObject* neighbour);
    bool replaceAt(Element* object, int32_t index);
    /** Both hand the list's reference, if it has one, to the caller; null when empty. */
    Element* removeFirst() { return static_cast<Element*>(takeFrom({nullptr, _first, 0})); }
    Element* removeLast();
    bool removeAbs(CmObject* object) { return removeFrom(placeOfObject(object)); }
    int32_t index(const CmObject* object) const;
    int32_t indexAbs(const CmObject* object) const;
    /** Adds the very elements of source, never copies: with kTakesOver their references are taken over. */
    bool addAllFromAbs(const CmContainer* source);

protected:
    CmList() = default;
    /** Takes the ownership; the elements are for the derived class to add. */
    CmList(const CmList& source) : CmContainer(source) {}

    static CmObject* objectOf(Link* link) {
        if constexpr (kIsIntrusive)
            return link;
        else
            return link ? link->value : nullptr;
    }
    /** previous is null at the front. */
    bool insertBehind(Link* previous, Element* object);
    /** Before the first element that is greater. */
    bool insertSorted(Element* object);
    /** Takes an element out and leaves its reference to the caller; null when there is none. */
    CmObject* takeEqual(const CmObject* object) { return takeFrom(placeOfEqual(object)); }
    CmObject* takeAt(int32_t index) { return takeFrom(placeAt(index)); }
    /** The same at a cursor, which moves on. */
    CmObject* take(const CmIterator& iterator);

    Link* _first = nullptr;  // owned, as all links that aren't elements
    Link* _last = nullptr;

private:
    friend class CmListIterator<Link>;
    struct NoPool {};
    /** Where a link hangs; the end of the list when link is null. */
    struct Place {
        CmObject* object() const { return objectOf(link); }

        Link* previous;
        Link* link;
        int32_t index;
    };

    template <class Test>
    Place placeWhere(Test test) const;
    Place placeAt(int32_t index) const;
    /** Its index is 0. */
    Place placeOf(Link* link) const;
    Place placeOfEqual(const CmObject* object) const;
    Place placeOfObject(const CmObject* object) const;
    Link* makeLink(Element* object);
    CmObject* unmake(Link* link);
    CmObject* takeFrom(const Place& place);
    bool removeFrom(const Place& place);

    [[no_unique_address]] std::conditional_t<kIsIntrusive, NoPool, TLinkPool<Link>> pool;
};

/** Walks on a list; what it stepped over may go meanwhile. */
template <class Link>
class CmListIterator : public CmIterator {
public:
    explicit CmListIterator(const CmList<Link>& list) : CmIterator(list), cursor(list._first) {}

    bool done() const final { return !cursor; }
    CmObject* next() final {
        CmObject* object = current();
        if (cursor)
            cursor = CmList<Link>::kIsIntrusive ? cursor->next : Links::after(cursor);
        return object;
    }
    CmObject* previous() final {
        CmObject* object = current();
        if (cursor)
            cursor = list().placeOf(cursor).previous;
        return object;
    }
    using CmIterator::next;
    using CmIterator::previous;
    CmObject* current() const final { return CmList<Link>::objectOf(cursor); }
    void first() final { cursor = list()._first; }
    void last() final { cursor = list()._last; }

private:
    friend class CmList<Link>;
    const CmList<Link>& list() const { return *static_cast<const CmList<Link>*>(container); }

    mutable Link* cursor;  // borrowed; null: out of range; moved on by remove(iterator)
};

}  // namespace Tessarine
