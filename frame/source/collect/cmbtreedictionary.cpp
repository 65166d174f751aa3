#include "collect/cmbtreedictionary.h"
#include "pluginterfaces/base/smartpointer.h"
#include <utility>

namespace Tessarine {

IMPLEMENT_CLASS(CmBTreeDictionary, CmBTree)

CmBTreeDictionary::CmBTreeDictionary(const CmBTreeDictionary& source) : CmBTree(source, WithoutElements()) {
    addAllFrom(&source);
}

CmBTreeDictionary::~CmBTreeDictionary() {
    CmBTreeDictionary::removeAll();
}

bool CmBTreeDictionary::add(CmObject* key, CmObject* value) {
    auto* association = new CmAssociation(key, value);
    const bool added = add(association);
    if (!added || _ownsObjects == kShares)
        association->release();
    return added;
}

bool CmBTreeDictionary::add(CmObject* object) {
    auto* association = classCast<CmAssociation>(object);
    if (!association || !association->key || contains(association->key))
        return false;
    testRemember(association->key);
    testRemember(association->value);
    return CmBTree::add(association);
}

bool CmBTreeDictionary::remove(CmObject* key) {
    return drop(take(placeOfKey(key)));
}

bool CmBTreeDictionary::remove(const CmIterator& iterator) {
    return drop(take(iterator));
}

bool CmBTreeDictionary::removeAt(int32_t index) {
    return drop(take(placeAt(index)));
}

void CmBTreeDictionary::removeAll() {
    for (CmBTreeIterator cursor(*this); !cursor.done(); cursor.next()) {
        const auto* association = static_cast<const CmAssociation*>(cursor.current());
        testDelete(association->key);
        testDelete(association->value);
    }
    const int16_t ownership = std::exchange(_ownsObjects, kTakesOver);
    CmBTree::removeAll();
    _ownsObjects = ownership;
}

CmObject* CmBTreeDictionary::lookup(const CmObject* key) const {
    const CmAssociation* association = lookupAssoc(key);
    return association ? association->key : nullptr;
}

bool CmBTreeDictionary::copy(const CmContainer& source) {
    if (&source == this)
        return true;
    removeAll();
    _ownsObjects = source._ownsObjects;
    return addAllFrom(&source);
}

bool CmBTreeDictionary::addAllFrom(const CmContainer* source) {
    if (!source || source == this)
        return false;
    bool all = true;
    const std::unique_ptr<CmIterator> cursor(source->newIterator());
    while (!cursor->done()) {
        const auto* association = classCast<CmAssociation>(cursor->next());
        all = association && addCopyOf(*association) && all;
    }
    return all;
}

CmObject* CmBTreeDictionary::lookupObject(const CmObject* key) const {
    const CmAssociation* association = lookupAssoc(key);
    return association ? association->value : nullptr;
}

CmAssociation* CmBTreeDictionary::lookupAssoc(const CmObject* key) const {
    return static_cast<CmAssociation*>(placeOfKey(key).object());
}

bool CmBTreeDictionary::replace(const CmObject* key, CmObject* value) {
    CmAssociation* association = lookupAssoc(key);
    if (!association)
        return false;
    testDelete(std::exchange(association->value, value));
    return true;
}

CmBTreePlace CmBTreeDictionary::placeOfKey(const CmObject* key) const {
    if (!key)
        return {};
    const CmAssociation searched(const_cast<CmObject*>(key));
    return lookupNode(&searched);
}

bool CmBTreeDictionary::drop(CmObject* taken) {
    const OPtr<CmAssociation> association(static_cast<CmAssociation*>(taken));
    if (!association)
        return false;
    testDelete(association->key);
    testDelete(association->value);
    return true;
}

bool CmBTreeDictionary::addCopyOf(const CmAssociation& association) {
    if (_ownsObjects != kTakesOver)
        return add(association.key, association.value);
    OPtr<CmObject> key(association.key ? association.key->newCopy() : nullptr);
    OPtr<CmObject> value(association.value ? association.value->newCopy() : nullptr);
    if (!key || (association.value && !value) || !add(key.get(), value.get()))
        return false;
    key.detach();
    value.detach();
    return true;
}

}  // namespace Tessarine
