#include "collect/cmbtreedictionary.h"
#include "frame/source/collect/cmdictionarybody.h"

namespace Tessarine {

template class CmDictionaryBase<CmBTree>;

IMPLEMENT_CLASS(CmBTreeDictionary, CmBTree)

CmBTreeDictionary::CmBTreeDictionary(const CmBTreeDictionary& source) : CmDictionaryBase(source, WithoutElements()) {
    addAllFrom(&source);
}

}  // namespace Tessarine
