#pragma once
#include "base/source/cmobject.h"

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

    /** Key and value come with a reference each. What can't be read is null, and the archive knows of it. */
    bool internalize(FArchive& archive) override;
    bool externalize(FArchive& archive) const override;
    bool storeAttributes(FAttributes& attributes) const override;
    bool restoreAttributes(FAttributes& attributes) override;

    bool isEqual(const CmObject* other) const override;
    /** -1 against anything but an association. */
    int32_t compare(const CmObject* other) const override;
    uint32_t hash(uint32_t buckets) const override;

    CmObject* key;
    CmObject* value;
};

}  // namespace Tessarine
