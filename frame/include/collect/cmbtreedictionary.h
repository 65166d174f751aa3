#pragma once
#include "collect/cmassociation.h"
#include "collect/cmbtree.h"

namespace Tessarine {

/** Values by unique keys, sorted by the keys' compare. Searching operations take a key.

    Owns      its associations always, keys and values as `_ownsObjects` says. */
class CmBTreeDictionary : public CmBTree {
public:
    DECLARE_CLASS(CmBTreeDictionary, CmBTree)
    DECLARE_NEWCOPY(CmBTreeDictionary)
    explicit CmBTreeDictionary(int32_t order = 3) : CmBTree(order) {}
    CmBTreeDictionary(const CmBTreeDictionary& source);
    ~CmBTreeDictionary() override;

    /** False: the key is there already, or null; key and value stay the caller's. */
    bool add(CmObject* key, CmObject* value);
    /** An association only, taken over with key and value unless the dictionary shares; then all three are counted. */
    bool add(CmObject* association) override;
    bool remove(CmObject* key) override;
    bool remove(const CmIterator& iterator) override;
    bool removeAt(int32_t index) override;
    void removeAll() override;
    /** The stored key. */
    CmObject* lookup(const CmObject* key) const override;
    bool contains(const CmObject* key) const override { return lookupAssoc(key) != nullptr; }
    int32_t occurrences(const CmObject* key) const override { return contains(key) ? 1 : 0; }
    /** With kTakesOver of copies, otherwise of the same keys and values in associations of its own. */
    bool copy(const CmContainer& source) override;

    /** The same of each association of source. Hides the base's: an association has one dictionary. */
    bool addAllFrom(const CmContainer* source);
    CmObject* lookupObject(const CmObject* key) const;
    CmAssociation* lookupAssoc(const CmObject* key) const;
    /** The new value is stored without a further reference, the old one goes as the ownership says. False: no key. */
    bool replace(const CmObject* key, CmObject* value);

private:
    CmBTreePlace placeOfKey(const CmObject* key) const;
    bool drop(CmObject* taken);
    bool addCopyOf(const CmAssociation& association);
};

}  // namespace Tessarine
