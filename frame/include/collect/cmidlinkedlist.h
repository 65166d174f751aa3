#pragma once
#include "collect/cmlist.h"

namespace Tessarine {

/** An object that is its own link in a CmIDLinkedList. A copy is in no list. */
class CmIDLink : public CmObject {
public:
    DECLARE_CLASS(CmIDLink, CmObject)
    CmIDLink() = default;
    CmIDLink(const CmIDLink& source) : CmObject(source) {}
    CmIDLink& operator=(const CmIDLink&) { return *this; }

    CmIDLink* next = nullptr;  // borrowed, both; the list's own
    CmIDLink* previous = nullptr;
    const CmContainer* list = nullptr;  // borrowed; null: in none
};
extern template class CmList<CmIDLink>;

/** A doubly linked list of objects that are links themselves: it finds and drops an element without a walk. A borrowed
    one must leave the list before it dies. */
class CmIDLinkedList : public CmList<CmIDLink> {
public:
    DECLARE_CLASS(CmIDLinkedList, CmContainer)
    DECLARE_NEWCOPY(CmIDLinkedList)
    CmIDLinkedList() = default;
    /** As copy(); elements that would be in both lists stay where they are. */
    CmIDLinkedList(const CmIDLinkedList& source);

    /** By compare, behind equal ones. */
    bool addSorted(CmIDLink* object) { return insertSorted(object); }
    /** Both move all elements of source here, in their order, to the end or to the front. References go along: what
        source counted counts here, or is the caller's when this list borrows. Nothing for this itself. */
    void appendList(CmIDLinkedList& source);
    void prependList(CmIDLinkedList& source);
    /** Removes its own elements, then moves those of source here. */
    void takeOver(CmIDLinkedList& source);
    /** Two of its elements change places; false: one isn't here. */
    bool swap(CmIDLink* object, CmIDLink* other);

private:
    void moveBehind(CmIDLink* previous, CmIDLinkedList& source);
};

using CmIDLinkedListIterator = CmListIterator<CmIDLink>;

}  // namespace Tessarine
