#include "storage/fxmlobject.h"
#include "storage/fattributearchive.h"
#include <algorithm>
#include <utility>
#include <vector>

namespace Tessarine {
namespace {
thread_local std::vector<OPtr<CmObject>>* dropped = nullptr;  // while one is being dropped

/** Bags and lists within are those of the source. */
void shareAttributes(FAttributes& target, const FAttributes& source) {
    for (int32_t i = 0; i < source.countAttributes(); ++i)
        target.addAttribute(new FStringIDAttribute(*source.getAttribute(i)));
}
}  // namespace

IMPLEMENT_ABSTRACT_CLASS(FXmlObject, CmObject)
IMPLEMENT_ABSTRACT_CLASS(FXmlInstance, FXmlObject)
IMPLEMENT_ABSTRACT_CLASS(FXmlReference, FXmlObject)

void dropObject(OPtr<CmObject> object) {
    if (!object)
        return;
    if (dropped) {
        dropped->push_back(std::move(object));
        return;
    }
    std::vector<OPtr<CmObject>> objects;
    objects.push_back(std::move(object));
    dropped = &objects;
    while (!objects.empty()) {
        const OPtr<CmObject> next = std::move(objects.back());
        objects.pop_back();
    }
    dropped = nullptr;
}

bool FXmlObject::isEqual(const CmObject* other) const {
    const auto* object = classCast<FXmlObject>(other);
    return object && id == object->id;
}

int32_t FXmlObject::compare(const CmObject* other) const {
    const auto* object = classCast<FXmlObject>(other);
    return object ? (id > object->id) - (id < object->id) : CmObject::compare(other);
}

uint32_t FXmlObject::hash(uint32_t buckets) const {
    return static_cast<uint32_t>((id >> 4) % buckets);
}

FXmlInstance::FXmlInstance(uint64_t id, const char* classID) : FXmlObject(id), classID(classID) {}

FXmlInstance::~FXmlInstance() {
    dropObject(OPtr<CmObject>(attributes.detach()));
}

FAttributes* FXmlInstance::getAttributes() {
    if (!attributes)
        attributes = new FAttributes;
    return attributes;
}

FXmlReference::~FXmlReference() {
    OPtr<CmObject> held(IPtr<CmObject>(object.get()));
    object = nullptr;
    dropObject(std::move(held));
}

CmObject* FXmlReference::targetOf(CmObject* object) {
    const auto* reference = classCast<FXmlReference>(object);
    return reference ? reference->getObject() : object;
}

bool FCmObjectStripper::strip(FAttributes& attributes) {
    bool whole = depth < FAttributeArchiveBase::kMaxDepth;
    if (!whole)
        attributes.removeAll();
    ++depth;
    for (int32_t i = 0; i < attributes.countAttributes(); ++i)
        whole = stripValue(*attributes.getAttribute(i)) && whole;
    if (--depth == 0)
        redirect();
    return whole;
}

/** One that only refers is another in the new place: the old one may be part of a live object. */
OPtr<CmObject> FCmObjectStripper::identityOf(CmObject* object) {
    const auto* reference = classCast<FXmlReference>(object);
    if (!reference)
        return OPtr<CmObject>(IPtr<CmObject>(object));
    identities.emplace_back(OPtr<FXmlReference>(new FXmlReference(reference->getID())));
    return OPtr<CmObject>(IPtr<CmObject>(identities.back().get()));
}

/** What stood for a live object stands for its form. */
void FCmObjectStripper::redirect() {
    for (const IPtr<FXmlReference>& each : identities) {
        const auto found = known.find(reinterpret_cast<const CmObject*>(static_cast<uintptr_t>(each->getID())));
        if (found != known.end())
            each->setIdentity(found->second.form);
    }
    identities.clear();
}

bool FCmObjectStripper::stripValue(FStringIDAttribute& attribute) {
    CmObject* object =
        attribute.is(FAttributeValue::kUnknown) ? commonObject(attribute.getUnknown()) : attribute.getObj();
    if (!object) {
        if (attribute.is(FAttributeValue::kUnknown))
            attribute.empty();
        attribute.makeStringOwner();
        return true;
    }
    bool whole = true;
    switch (storedFormOf(*object)) {
    case kStoredBag:
        attribute.setObj(strippedBag(static_cast<FAttributes&>(*object), whole).detach(), FAttributeValue::kOwned);
        return whole;
    case kStoredBags:
        attribute.setObj(strippedBags(static_cast<FSubList&>(*object), whole).detach(), FAttributeValue::kOwned);
        return whole;
    case kStoredObjects:
        return stripList(attribute, static_cast<FObjectList&>(*object));
    case kStoredObject:
        break;
    case kStoredReference:
        attribute.setObj(identityOf(object).detach(), FAttributeValue::kOwned);
        return true;
    default:
        if (CmObject* copy = object->newCopy())
            attribute.setObj(copy, FAttributeValue::kOwned);
        return true;
    }
    attribute.setObj(formOf(object, whole).detach(), FAttributeValue::kOwned);
    return whole;
}

/** Its own copy: whoever else holds the bag may be alive. */
OPtr<FAttributes> FCmObjectStripper::strippedBag(const FAttributes& bag, bool& whole) {
    OPtr<FAttributes> copy(new FAttributes);
    if (std::ranges::find(openBags, &bag) != openBags.end()) {
        whole = false;
        return copy;
    }
    openBags.push_back(&bag);
    shareAttributes(*copy, bag);
    whole = strip(*copy) && whole;
    openBags.pop_back();
    return copy;
}

OPtr<FSubList> FCmObjectStripper::strippedBags(const FSubList& list, bool& whole) {
    OPtr<FSubList> stripped(new FSubList);
    for (int32_t i = 0; i < list.total(); ++i) {
        OPtr<FAttributes> copy = strippedBag(*list.at(i), whole);
        if (stripped->queue(copy))
            copy.detach();
    }
    return stripped;
}

bool FCmObjectStripper::stripList(FStringIDAttribute& attribute, const FObjectList& list) {
    OPtr<FObjectList> stripped(new FObjectList(true));
    bool whole = true;
    for (int32_t i = 0; i < list.total(); ++i) {
        OPtr<CmObject> form = formOf(list.at(i), whole);
        if (form && stripped->queue(form, true))
            form.detach();
    }
    attribute.setObj(stripped.detach(), FAttributeValue::kOwned);
    return whole;
}

OPtr<CmObject> FCmObjectStripper::formOf(CmObject* object, bool& whole) {
    if (CmObject* target = FXmlReference::targetOf(object))
        object = target;
    if (const auto* instance = classCast<FXmlInstance>(object); instance && instance->getObject())
        object = instance->getObject();
    auto* unknown = classCast<FXmlInstance>(object);
    if (!object || (!unknown && object->isTypeOf(FXmlObject::className(), true))) {
        return identityOf(object);
    }
    auto found = known.find(object);
    if (found == known.end()) {
        const uint64_t id = unknown ? unknown->getID() : reinterpret_cast<uintptr_t>(object);
        const OPtr<FXmlInstance> form(new FXmlInstance(id, persistentNameOf(*object)));
        known.emplace(object, Stripped{object, form.get(), true});
        const bool stored = unknown || object->storeAttributes(*form->getAttributes());
        if (unknown)
            shareAttributes(*form->getAttributes(), *unknown->getAttributes());
        const auto outer = std::exchange(openBags, {});  // an object within may lend them once more
        whole = strip(*form->getAttributes()) && stored && whole;
        openBags = outer;
        found = known.find(object);
        found->second.isOpen = false;
    } else if (found->second.isOpen) {
        const OPtr<FXmlReference> reference(new FXmlReference(0));
        reference->setIdentity(found->second.form);
        return OPtr<CmObject>(IPtr<CmObject>(reference.get()));
    }
    return OPtr<CmObject>(IPtr<CmObject>(found->second.form.get()));
}

}  // namespace Tessarine
