#pragma once
#include "collect/cmdictionarybase.h"
#include "collect/cmdlinkedlist.h"

namespace Tessarine {
extern template class CmDictionaryBase<CmDLinkedList>;

/** Values by unique keys, in the order in which they came; found one by one. */
class CmDictionary : public CmDictionaryBase<CmDLinkedList> {
public:
    DECLARE_CLASS(CmDictionary, CmDLinkedList)
    DECLARE_NEWCOPY(CmDictionary)
    CmDictionary() = default;
    CmDictionary(const CmDictionary& source);

    /** The key of the first value that this one is equal to. */
    CmObject* lookupKey(const CmObject* value) const;
};

}  // namespace Tessarine
