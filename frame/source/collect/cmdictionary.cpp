#include "collect/cmdictionary.h"
#include "frame/source/collect/cmdictionarybody.h"

namespace Tessarine {

template class CmDictionaryBase<CmDLinkedList>;

IMPLEMENT_CLASS(CmDictionary, CmDLinkedList)

CmDictionary::CmDictionary(const CmDictionary& source) : CmDictionaryBase(source, WithoutElements()) {
    addAllFrom(&source);
}

CmObject* CmDictionary::lookupKey(const CmObject* value) const {
    CmDLinkedListIterator each(*this);
    while (const auto* association = classCast<CmAssociation>(each.next())) {
        if (value && value->isEqual(association->value))
            return association->key;
    }
    return nullptr;
}

}  // namespace Tessarine
