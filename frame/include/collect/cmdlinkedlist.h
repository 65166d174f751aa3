#pragma once
#include "collect/cmlist.h"

namespace Tessarine {

/** A link of a CmDLinkedList. */
struct CmDLink {
    explicit CmDLink(CmObject* value) : value(value) {}

    CmObject* value;  // as the list's ownership says
    CmDLink* next = nullptr;
    CmDLink* previous = nullptr;
};
extern template class CmList<CmDLink>;

/** A doubly linked list: the choice where elements leave from both ends. */
class CmDLinkedList : public CmList<CmDLink> {
public:
    DECLARE_CLASS(CmDLinkedList, CmContainer)
    DECLARE_NEWCOPY(CmDLinkedList)
    CmDLinkedList() = default;
    /** As copy(). */
    CmDLinkedList(const CmDLinkedList& source);

protected:
    struct WithoutElements {};
    CmDLinkedList(const CmDLinkedList& source, WithoutElements) : CmList(source) {}
};

using CmDLinkedListIterator = CmListIterator<CmDLink>;

}  // namespace Tessarine
