#include "collect/cmassociation.h"
#include "storage/farchive.h"
#include "storage/fpersistent.h"

namespace Tessarine {
namespace {
constexpr char kKeyAttribute[] = "Key";
constexpr char kValueAttribute[] = "Obj";

CmObject* copyOf(const CmObject* object) {
    return object ? object->newCopy() : nullptr;
}

/** By keys that are associations themselves. */
bool leadsTo(const CmObject* key, const CmAssociation* end) {
    const auto* association = classCast<CmAssociation>(key);
    while (association && association != end)
        association = classCast<CmAssociation>(association->key);
    return association != nullptr;
}
}  // namespace

IMPLEMENT_CLASS(CmAssociation, CmObject)

CmAssociation::CmAssociation(const CmAssociation& source)
    : CmObject(source), key(copyOf(source.key)), value(copyOf(source.value)) {}

bool CmAssociation::internalize(FArchive& archive) {
    holdKey(OPtr<CmObject>(archive.load("CmObject")));
    holdValue(OPtr<CmObject>(archive.load("CmObject")));
    return true;
}

bool CmAssociation::externalize(FArchive& archive) const {
    return archive.save(key) && archive.save(value);
}

bool CmAssociation::storeAttributes(FAttributes& attributes) const {
    return attributes.setObject(kKeyAttribute, key) && attributes.setObject(kValueAttribute, value);
}

bool CmAssociation::restoreAttributes(FAttributes& attributes) {
    holdKey(attributes.getObject(kKeyAttribute));
    holdValue(attributes.getObject(kValueAttribute));
    return true;
}

bool CmAssociation::isEqual(const CmObject* other) const {
    const auto* association = classCast<CmAssociation>(other);
    if (!association)
        return false;
    return key && association->key ? key->isEqual(association->key) : key == association->key;
}

int32_t CmAssociation::compare(const CmObject* other) const {
    const auto* association = classCast<CmAssociation>(other);
    if (!association)
        return -1;
    if (key && association->key)
        return key->compare(association->key);
    return (key ? 1 : 0) - (association->key ? 1 : 0);
}

uint32_t CmAssociation::hash(uint32_t buckets) const {
    return key ? key->hash(buckets) : CmObject::hash(buckets);
}

void CmAssociation::passReferences() {
    heldKey.detach();
    heldValue.detach();
}

void CmAssociation::holdKey(CmObject* object) {
    heldKey = leadsTo(object, this) ? nullptr : object;
    key = heldKey;
}

void CmAssociation::holdValue(CmObject* object) {
    heldValue = object;
    value = heldValue;
}

}  // namespace Tessarine
