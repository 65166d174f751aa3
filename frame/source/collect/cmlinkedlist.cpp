#include "collect/cmlinkedlist.h"
#include "frame/source/collect/cmlistbody.h"

namespace Tessarine {

template class CmList<CmLink>;

IMPLEMENT_CLASS(CmLinkedList, CmContainer)

CmLinkedList::CmLinkedList(const CmLinkedList& source) : CmList(source) {
    CmLinkedList::addAllFrom(&source);
}

}  // namespace Tessarine
