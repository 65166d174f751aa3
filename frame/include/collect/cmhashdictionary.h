#pragma once
#include "collect/cmdictionarybase.h"
#include "collect/cmhashtable.h"

namespace Tessarine {
extern template class CmDictionaryBase<CmHashTable>;

/** Values by unique keys, found by the keys' hash. */
class CmHashDictionary : public CmDictionaryBase<CmHashTable> {
public:
    DECLARE_CLASS(CmHashDictionary, CmHashTable)
    DECLARE_NEWCOPY(CmHashDictionary)
    explicit CmHashDictionary(int32_t size = kDefaultBuckets) : CmDictionaryBase(size) {}
    CmHashDictionary(const CmHashDictionary& source);
};

}  // namespace Tessarine
