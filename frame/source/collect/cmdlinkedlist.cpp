#include "collect/cmdlinkedlist.h"
#include "frame/source/collect/cmlistbody.h"

namespace Tessarine {

template class CmList<CmDLink>;

IMPLEMENT_CLASS(CmDLinkedList, CmContainer)

CmDLinkedList::CmDLinkedList(const CmDLinkedList& source) : CmList(source) {
    CmDLinkedList::addAllFrom(&source);
}

}  // namespace Tessarine
