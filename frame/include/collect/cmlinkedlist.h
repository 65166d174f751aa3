#pragma once
#include "collect/cmcontainer.h"

namespace Tessarine {

/** A link of a CmLinkedList. */
struct CmLink {
    CmObject* object;  // as the list's ownership says
    CmLink* next;      // owned by the list
};

/** A singly linked list: cheap at both ends and walking forward; removeLast and stepping back walk from the start. */
class CmLinkedList : public CmContainer {
public:
    DECLARE_CLASS(CmLinkedList, CmContainer)
    DECLARE_NEWCOPY(CmLinkedList)
    CmLinkedList() = default;
    /** As copy(). */
    CmLinkedList(const CmLinkedList& source);
    ~CmLinkedList() override;

    int32_t size() const override { return _size; }
    int32_t total() const final { return _size; }
    bool isEmpty() const final { return _size == 0; }
    bool add(CmObject* object) override { return append(object); }
    bool remove(CmObject* object) override;
    bool remove(const CmIterator& iterator) override;
    bool removeAt(int32_t index) override;
    void removeAll() override;
    CmObject* at(int32_t index) const override;
    CmObject* lookup(const CmObject* object) const override;
    bool contains(const CmObject* object) const override { return index(object) >= 0; }
    bool containsAbs(const CmObject* object) const override { return indexAbs(object) >= 0; }
    CmIterator* newIterator() const override;

    bool append(CmObject* object);
    bool prepend(CmObject* object);
    /** index is at most total(). */
    bool insertAt(CmObject* object, int32_t index);
    /** Beside this very neighbour; false when it isn't here. */
    bool insertBefore(CmObject* object, const CmObject* neighbour);
    bool insertAfter(CmObject* object, const CmObject* neighbour);
    bool replaceAt(CmObject* object, int32_t index);
    /** Both hand the list's reference, if it has one, to the caller; null when empty. */
    CmObject* removeFirst();
    CmObject* removeLast();
    bool removeAbs(CmObject* object);
    int32_t index(const CmObject* object) const;
    int32_t indexAbs(const CmObject* object) const;
    /** Adds the very elements of source, never copies: with kTakesOver their references are taken over. */
    bool addAllFromAbs(const CmContainer* source);

private:
    friend class CmLinkedListIterator;
    /** Where a link hangs; the end of the list when link is null. */
    struct Place {
        CmLink* previous;
        CmLink* link;
        int32_t index;
    };
    template <class Test>
    Place placeWhere(Test test) const;
    Place placeAt(int32_t index) const;
    Place placeOf(const CmLink* link) const;
    Place placeOfEqual(const CmObject* object) const;
    Place placeOfObject(const CmObject* object) const;
    bool insertBehind(CmLink* previous, CmObject* object);
    CmObject* takeFrom(const Place& place);
    bool removeFrom(const Place& place);

    CmLink* _first = nullptr;  // owned, as all links
    CmLink* _last = nullptr;
};

class CmLinkedListIterator : public CmIterator {
public:
    explicit CmLinkedListIterator(const CmLinkedList& list) : CmIterator(list), list(&list), cursor(list._first) {}

    bool done() const override { return !cursor; }
    CmObject* next() override;
    /** Walks from the start. */
    CmObject* previous() override;
    using CmIterator::next;
    using CmIterator::previous;
    CmObject* current() const override { return cursor ? cursor->object : nullptr; }
    void first() override { cursor = list->_first; }
    void last() override { cursor = list->_last; }

private:
    friend class CmLinkedList;
    const CmLinkedList* list;  // borrowed
    mutable CmLink* cursor;    // borrowed; null: out of range; moved on by remove(iterator)
};

}  // namespace Tessarine
