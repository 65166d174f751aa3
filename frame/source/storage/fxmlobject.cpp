#include "storage/fxmlobject.h"
#include "storage/fattributearchive.h"
#include <vector>

namespace Tessarine {
namespace {
thread_local std::vector<OPtr<CmObject>>* dropped = nullptr;  // while one is being dropped

/** Of the bags that the object lends, too: they stay as they are while the copies are stripped. */
bool storeCopy(const CmObject& object, FAttributes& form) {
    const OPtr<FAttributes> lent(new FAttributes);
    const bool stored = object.storeAttributes(*lent);
    form.addAllFrom(*lent);
    return stored;
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

void FCmObjectStripper::note(CmObject* object) {
    if (auto* reference = classCast<FXmlReference>(object))
        identities.emplace_back(reference);
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
        return true;
    }
    const StoredForm form = storedFormOf(*object);
    switch (form) {
    case kStoredBag:
        return strip(static_cast<FAttributes&>(*object));
    case kStoredBags:
        return stripBags(static_cast<FSubList&>(*object));
    case kStoredObjects:
        return stripList(attribute, static_cast<FObjectList&>(*object));
    case kStoredObject:
        break;
    default:
        note(object);
        return true;
    }
    bool whole = true;
    attribute.setObj(formOf(object, whole).detach(), FAttributeValue::kOwned);
    return whole;
}

bool FCmObjectStripper::stripBags(FSubList& list) {
    bool whole = true;
    for (int32_t i = 0; i < list.total(); ++i)
        whole = strip(*list.at(i)) && whole;
    return whole;
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
        note(object);
        return OPtr<CmObject>(IPtr<CmObject>(object));
    }
    auto found = known.find(object);
    if (found == known.end()) {
        IPtr<FXmlInstance> form(unknown);
        if (!form)
            form = OPtr<FXmlInstance>(new FXmlInstance(reinterpret_cast<uintptr_t>(object), persistentNameOf(*object)));
        known.emplace(object, Stripped{object, form, true});
        const bool stored = unknown || storeCopy(*object, *form->getAttributes());
        whole = strip(*form->getAttributes()) && stored && whole;
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
