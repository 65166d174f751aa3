#pragma once
#include "collect/cmassociation.h"
#include "collect/cmcontainer.h"
#include <vector>

namespace Tessarine {

/** What all dictionaries share: values by unique keys over a Container that finds associations by their keys. Searching
    operations take a key.

    Owns      its associations always, keys and values as `_ownsObjects` says. */
template <class Container>
class CmDictionaryBase : public Container {
public:
    ~CmDictionaryBase() override;

    /** What is read may be in use elsewhere too: it comes in associations of this dictionary's own, with a reference of each
        key and value. */
    bool internalize(FArchive& archive) override;
    bool restoreAttributes(FAttributes& attributes) override;

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

protected:
    using Container::Container;

private:
    /** A base's operation that searches, given an association of this key. */
    template <class Search>
    static CmObject* byKey(const CmObject* key, Search search);
    bool drop(CmObject* taken);
    /** All associations, each with its reference. */
    std::vector<CmObject*> takeAll();
    void ownWhatWasRead();
    bool addCopyOf(const CmAssociation& association);
};

}  // namespace Tessarine
