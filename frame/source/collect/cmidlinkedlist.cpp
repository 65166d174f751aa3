#include "collect/cmidlinkedlist.h"
#include "frame/source/collect/cmlistbody.h"

namespace Tessarine {

template class CmList<CmIDLink>;

IMPLEMENT_CLASS(CmIDLink, CmObject)
IMPLEMENT_CLASS(CmIDLinkedList, CmContainer)

CmIDLinkedList::CmIDLinkedList(const CmIDLinkedList& source) : CmList(source) {
    CmIDLinkedList::addAllFrom(&source);
}

void CmIDLinkedList::appendList(CmIDLinkedList& source) {
    moveBehind(_last, source);
}

void CmIDLinkedList::prependList(CmIDLinkedList& source) {
    moveBehind(nullptr, source);
}

void CmIDLinkedList::takeOver(CmIDLinkedList& source) {
    if (&source == this)
        return;
    removeAll();
    moveBehind(nullptr, source);
}

bool CmIDLinkedList::swap(CmIDLink* object, CmIDLink* other) {
    if (!object || !other || object->list != this || other->list != this)
        return false;
    if (object == other)
        return true;
    if (other->next == object)
        std::swap(object, other);
    CmIDLink* beforeObject = object->previous;
    CmIDLink* beforeOther = other->previous == object ? other : other->previous;
    Links::hangOut(_first, _last, other->previous, other);
    Links::hangIn(_first, _last, beforeObject, other);
    Links::hangOut(_first, _last, object->previous, object);
    Links::hangIn(_first, _last, beforeOther, object);
    return true;
}

void CmIDLinkedList::moveBehind(CmIDLink* previous, CmIDLinkedList& source) {
    const bool countsTwice = source._ownsObjects != kBorrows && _ownsObjects == kShares;
    while (source._first && &source != this) {
        CmIDLink* moved = source.removeFirst();
        insertBehind(previous, moved);
        if (countsTwice)
            moved->release();
        previous = moved;
    }
}

}  // namespace Tessarine
