#pragma once
#include "collect/cmlist.h"

namespace Tessarine {

/** A link of a CmLinkedList. */
struct CmLink {
    explicit CmLink(CmObject* value) : value(value) {}

    CmObject* value;  // as the list's ownership says
    CmLink* next = nullptr;
};
extern template class CmList<CmLink>;

/** A singly linked list. */
class CmLinkedList : public CmList<CmLink> {
public:
    DECLARE_CLASS(CmLinkedList, CmContainer)
    DECLARE_NEWCOPY(CmLinkedList)
    CmLinkedList() = default;
    /** As copy(). */
    CmLinkedList(const CmLinkedList& source);

    /** By compare, behind equal ones. */
    bool addSorted(CmObject* object) { return insertSorted(object); }
};

using CmLinkedListIterator = CmListIterator<CmLink>;

}  // namespace Tessarine
