#include "collect/cmhashdictionary.h"
#include "frame/source/collect/cmdictionarybody.h"

namespace Tessarine {

template class CmDictionaryBase<CmHashTable>;

IMPLEMENT_CLASS(CmHashDictionary, CmHashTable)

CmHashDictionary::CmHashDictionary(const CmHashDictionary& source) : CmDictionaryBase(source, WithoutElements()) {
    addAllFrom(&source);
}

}  // namespace Tessarine
