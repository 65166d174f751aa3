#include "collect/cmcontainer.h"
#include "collect/cmlinkedlist.h"
#include <memory>

namespace Tessarine {
namespace {
struct Found {
    CmObject* object = nullptr;
    int32_t index = -1;
};

template <class Test>
Found findWhere(const CmContainer& container, Test test) {
    const std::unique_ptr<CmIterator> cursor(container.newIterator());
    for (int32_t index = 0; !cursor->done(); ++index) {
        CmObject* element = cursor->next();
        if (test(element))
            return {element, index};
    }
    return {};
}

Found findEqual(const CmContainer& container, const CmObject* object) {
    return findWhere(container, [object](const CmObject* element) { return object && object->isEqual(element); });
}

Found findObject(const CmContainer& container, const CmObject* object) {
    return findWhere(container, [object](const CmObject* element) { return object == element; });
}

template <class Action>
void forEach(const CmContainer& container, Action action) {
    findWhere(container, [&action](CmObject* element) {
        action(element);
        return false;
    });
}
}  // namespace

bool CmIterator::setCurrent(const CmObject* object) {
    for (first(); !done(); next()) {
        if (current() == object)
            return true;
    }
    return false;
}

CmObject* CmIterator::operator+=(int32_t steps) {
    for (; steps > 0 && !done(); --steps)
        next();
    return current();
}

CmObject* CmIterator::operator-=(int32_t steps) {
    for (; steps > 0 && !done(); --steps)
        previous();
    return current();
}

CmObject* CmIterator::next(const CmObject* match) {
    while (match && !done()) {
        CmObject* element = next();
        if (match->isEqual(element))
            return element;
    }
    return nullptr;
}

CmObject* CmIterator::previous(const CmObject* match) {
    while (match && !done()) {
        CmObject* element = previous();
        if (match->isEqual(element))
            return element;
    }
    return nullptr;
}

IMPLEMENT_ABSTRACT_CLASS(CmContainer, CmObject)

bool CmContainer::remove(CmObject* object) {
    return object && removeAt(getIndex(object));
}

bool CmContainer::remove(const CmIterator& iterator) {
    return iterator.walksOn(this) && removeAt(findObject(*this, iterator.current()).index);
}

CmObject* CmContainer::at(int32_t index) const {
    if (index < 0)
        return nullptr;
    return findWhere(*this, [&index](const CmObject*) { return index-- == 0; }).object;
}

CmObject* CmContainer::lookup(const CmObject* object) const {
    return findEqual(*this, object).object;
}

bool CmContainer::contains(const CmObject* object) const {
    return findEqual(*this, object).object != nullptr;
}

bool CmContainer::containsAbs(const CmObject* object) const {
    return findObject(*this, object).object != nullptr;
}

int32_t CmContainer::occurrences(const CmObject* object) const {
    int32_t count = 0;
    forEach(*this, [&](const CmObject* element) { count += object && object->isEqual(element) ? 1 : 0; });
    return count;
}

int32_t CmContainer::getIndex(const CmObject* object) const {
    return object ? findEqual(*this, object).index : 0;
}

bool CmContainer::copy(const CmContainer& source) {
    if (&source == this)
        return true;
    removeAll();
    _ownsObjects = source._ownsObjects;
    return addAllFrom(&source);
}

bool CmContainer::addAllFrom(const CmContainer* source) {
    if (!source || source == this)
        return false;
    bool all = true;
    forEach(*source, [&](CmObject* element) {
        CmObject* own = _ownsObjects == kTakesOver ? element->newCopy() : element;
        if (add(own))
            return;
        all = false;
        if (own && own != element)
            own->release();
    });
    return all;
}

bool CmContainer::takeAllFrom(const CmContainer* source, bool alreadyOwned) {
    if (!source || source == this)
        return false;
    bool all = true;
    const bool drops = alreadyOwned == (_ownsObjects != kShares);
    forEach(*source, [&](CmObject* element) {
        if (!add(element))
            all = false;
        else if (drops)
            element->release();
    });
    return all;
}

bool CmContainer::removeAllFrom(const CmContainer* source) {
    if (!source)
        return false;
    bool all = true;
    if (source == this)
        removeAll();
    else
        forEach(*source, [&](CmObject* element) { all = remove(element) && all; });
    return all;
}

CmLinkedList* CmContainer::lookupAll(const CmObject* object) const {
    auto* equal = new CmLinkedList;
    forEach(*this, [&](CmObject* element) {
        if (object && object->isEqual(element))
            equal->append(element);
    });
    return equal;
}

void CmContainer::testRemember(CmObject* object) const {
    if (object && _ownsObjects == kShares)
        object->addRef();
}

void CmContainer::testDelete(CmObject* object) const {
    if (object && _ownsObjects != kBorrows)
        object->release();
}

}  // namespace Tessarine
