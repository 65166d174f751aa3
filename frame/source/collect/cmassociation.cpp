#include "collect/cmassociation.h"
#include "storage/farchive.h"
#include "storage/fpersistent.h"

namespace Tessarine {
namespace {
constexpr char kKeyAttribute[] = "Key";
constexpr char kValueAttribute[] = "Obj";

CmObject* remembered(CmObject* object) {
    if (object)
        object->addRef();
    return object;
}

CmObject* copyOf(const CmObject* object) {
    return object ? object->newCopy() : nullptr;
}
}  // namespace

IMPLEMENT_CLASS(CmAssociation, CmObject)

CmAssociation::CmAssociation(const CmAssociation& source)
    : CmObject(source), key(copyOf(source.key)), value(copyOf(source.value)) {}

bool CmAssociation::internalize(FArchive& archive) {
    key = archive.load("CmObject");
    value = archive.load("CmObject");
    return true;
}

bool CmAssociation::externalize(FArchive& archive) const {
    return archive.save(key) && archive.save(value);
}

bool CmAssociation::storeAttributes(FAttributes& attributes) const {
    return attributes.setObject(kKeyAttribute, key) && attributes.setObject(kValueAttribute, value);
}

bool CmAssociation::restoreAttributes(FAttributes& attributes) {
    key = remembered(attributes.getObject(kKeyAttribute));
    value = remembered(attributes.getObject(kValueAttribute));
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

}  // namespace Tessarine
