#pragma once
#include "collect/cmdictionarybase.h"
#include "pluginterfaces/base/smartpointer.h"
#include <memory>
#include <utility>

/** The body of CmDictionaryBase; each dictionary's source instantiates it for its container. */

namespace Tessarine {

template <class Container>
CmDictionaryBase<Container>::~CmDictionaryBase() {
    CmDictionaryBase::removeAll();
}

template <class Container>
bool CmDictionaryBase<Container>::internalize(FArchive& archive) {
    const bool all = Container::internalize(archive);
    ownWhatWasRead();
    return all;
}

template <class Container>
bool CmDictionaryBase<Container>::restoreAttributes(FAttributes& attributes) {
    const bool all = Container::restoreAttributes(attributes);
    ownWhatWasRead();
    return all;
}

template <class Container>
bool CmDictionaryBase<Container>::add(CmObject* key, CmObject* value) {
    auto* association = new CmAssociation(key, value);
    const bool added = add(association);
    if (!added || this->_ownsObjects == CmContainer::kShares)
        association->release();
    return added;
}

template <class Container>
bool CmDictionaryBase<Container>::add(CmObject* object) {
    auto* association = classCast<CmAssociation>(object);
    if (!association || !association->key || contains(association->key))
        return false;
    if (this->_ownsObjects == CmContainer::kTakesOver)
        association->passReferences();
    this->testRemember(association->key);
    this->testRemember(association->value);
    return Container::add(association);
}

template <class Container>
bool CmDictionaryBase<Container>::remove(CmObject* key) {
    return drop(byKey(key, [this](const CmObject* searched) { return this->takeEqual(searched); }));
}

template <class Container>
bool CmDictionaryBase<Container>::remove(const CmIterator& iterator) {
    return drop(this->take(iterator));
}

template <class Container>
bool CmDictionaryBase<Container>::removeAt(int32_t index) {
    return drop(this->takeAt(index));
}

template <class Container>
void CmDictionaryBase<Container>::removeAll() {
    for (CmObject* association : takeAll())
        drop(association);
}

template <class Container>
CmObject* CmDictionaryBase<Container>::lookup(const CmObject* key) const {
    const CmAssociation* association = lookupAssoc(key);
    return association ? association->key : nullptr;
}

template <class Container>
bool CmDictionaryBase<Container>::copy(const CmContainer& source) {
    if (&source == this)
        return true;
    removeAll();
    this->_ownsObjects = source._ownsObjects;
    return addAllFrom(&source);
}

template <class Container>
bool CmDictionaryBase<Container>::addAllFrom(const CmContainer* source) {
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

template <class Container>
CmObject* CmDictionaryBase<Container>::lookupObject(const CmObject* key) const {
    const CmAssociation* association = lookupAssoc(key);
    return association ? association->value : nullptr;
}

template <class Container>
CmAssociation* CmDictionaryBase<Container>::lookupAssoc(const CmObject* key) const {
    const auto search = [this](const CmObject* searched) { return Container::lookup(searched); };
    return static_cast<CmAssociation*>(byKey(key, search));
}

template <class Container>
bool CmDictionaryBase<Container>::replace(const CmObject* key, CmObject* value) {
    CmAssociation* association = lookupAssoc(key);
    if (!association)
        return false;
    this->testDelete(std::exchange(association->value, value));
    return true;
}

template <class Container>
template <class Search>
CmObject* CmDictionaryBase<Container>::byKey(const CmObject* key, Search search) {
    if (!key)
        return nullptr;
    const CmAssociation searched(const_cast<CmObject*>(key));
    return search(&searched);
}

template <class Container>
bool CmDictionaryBase<Container>::drop(CmObject* taken) {
    if (const auto* association = classCast<CmAssociation>(taken)) {
        this->testDelete(association->key);
        this->testDelete(association->value);
    }
    if (taken)
        taken->release();
    return taken != nullptr;
}

template <class Container>
std::vector<CmObject*> CmDictionaryBase<Container>::takeAll() {
    std::vector<CmObject*> taken;
    const std::unique_ptr<CmIterator> cursor(this->newIterator());
    while (!cursor->done())
        taken.push_back(cursor->next());
    const int16_t ownership = std::exchange(this->_ownsObjects, CmContainer::kBorrows);
    Container::removeAll();
    this->_ownsObjects = ownership;
    return taken;
}

template <class Container>
void CmDictionaryBase<Container>::ownWhatWasRead() {
    const std::vector<CmObject*> read = takeAll();
    const int16_t ownership = std::exchange(this->_ownsObjects, CmContainer::kShares);
    for (CmObject* each : read) {
        const OPtr<CmAssociation> association(static_cast<CmAssociation*>(each));
        const OPtr<CmAssociation> own(new CmAssociation(association->key, association->value));
        this->testRemember(own->key);
        this->testRemember(own->value);
        Container::add(own);
    }
    this->_ownsObjects = ownership;
}

template <class Container>
bool CmDictionaryBase<Container>::addCopyOf(const CmAssociation& association) {
    if (this->_ownsObjects != CmContainer::kTakesOver)
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
