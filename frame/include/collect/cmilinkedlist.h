#pragma once
#include "collect/cmlist.h"

namespace Tessarine {

/** An object that is its own link in a CmILinkedList. A copy is in no list. */
class CmILink : public CmObject {
public:
    DECLARE_CLASS(CmILink, CmObject)
    CmILink() = default;
    CmILink(const CmILink& source) : CmObject(source) {}
    CmILink& operator=(const CmILink&) { return *this; }

    CmILink* next = nullptr;            // borrowed; the list's own
    const CmContainer* list = nullptr;  // borrowed; null: in none
};
extern template class CmList<CmILink>;

/** A singly linked list of objects that are links themselves. A borrowed one must leave the list before it dies. */
class CmILinkedList : public CmList<CmILink> {
public:
    DECLARE_CLASS(CmILinkedList, CmContainer)
    DECLARE_NEWCOPY(CmILinkedList)
    CmILinkedList() = default;
    /** As copy(); elements that would be in both lists stay where they are. */
    CmILinkedList(const CmILinkedList& source);
};

using CmILinkedListIterator = CmListIterator<CmILink>;

}  // namespace Tessarine
