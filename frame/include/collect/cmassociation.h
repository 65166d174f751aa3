#pragma once
#include "base/source/cmobject.h"
#include "pluginterfaces/base/smartpointer.h"

namespace Tessarine {

/** A key with its value. Equality, order and hash are those of the key, and only among associations. Both pointers are
    plain: a dictionary counts them as its ownership says. A copy holds copies of both, which belong to its maker. */
class CmAssociation : public CmObject {
public:
    DECLARE_CLASS(CmAssociation, CmObject)
    DECLARE_NEWCOPY(CmAssociation)
    explicit CmAssociation(CmObject* key = nullptr, CmObject* value = nullptr) : key(key), value(value) {}
    CmAssociation(const CmAssociation& source);
    CmAssociation& operator=(const CmAssociation&) = delete;

    /** What was read lives as long as this, or until passReferences(). What can't be read is null, and the archive knows of
        it; so is a key that leads back here, which no search would come to the end of. */
    bool internalize(FArchive& archive) override;
    bool externalize(FArchive& archive) const override;
    bool storeAttributes(FAttributes& attributes) const override;
    bool restoreAttributes(FAttributes& attributes) override;

    bool isEqual(const CmObject* other) const override;
    /** -1 against anything but an association. */
    int32_t compare(const CmObject* other) const override;
    uint32_t hash(uint32_t buckets) const override;

    /** Hands the references of what was read, if it was, to the caller. */
    void passReferences();

    CmObject* key;
    CmObject* value;

private:
    void holdKey(CmObject* object);
    void holdValue(CmObject* object);

    IPtr<CmObject> heldKey, heldValue;  // what was read
};

}  // namespace Tessarine
