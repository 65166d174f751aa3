#pragma once
#include "collect/cmbtree.h"
#include "collect/cmdictionarybase.h"

namespace Tessarine {
extern template class CmDictionaryBase<CmBTree>;

/** Values by unique keys, sorted by the keys' compare. */
class CmBTreeDictionary : public CmDictionaryBase<CmBTree> {
public:
    DECLARE_CLASS(CmBTreeDictionary, CmBTree)
    DECLARE_NEWCOPY(CmBTreeDictionary)
    explicit CmBTreeDictionary(int32_t order = 3) : CmDictionaryBase(order) {}
    CmBTreeDictionary(const CmBTreeDictionary& source);
};

}  // namespace Tessarine
