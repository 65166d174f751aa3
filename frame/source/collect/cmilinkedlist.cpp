#include "collect/cmilinkedlist.h"
#include "frame/source/collect/cmlistbody.h"

namespace Tessarine {

template class CmList<CmILink>;

IMPLEMENT_CLASS(CmILink, CmObject)
IMPLEMENT_CLASS(CmILinkedList, CmContainer)

CmILinkedList::CmILinkedList(const CmILinkedList& source) : CmList(source) {
    CmILinkedList::addAllFrom(&source);
}

}  // namespace Tessarine
