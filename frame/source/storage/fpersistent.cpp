#include "storage/fpersistent.h"
#include "storage/fxmlobject.h"
#include <algorithm>
#include <cstring>
#include <string>

namespace Tessarine {
namespace {
constexpr uint16_t kConvertible = FAttributeValue::kLong | FAttributeValue::kFloat | FAttributeValue::kString;

int32_t resultOf(bool good) {
    return good ? kResultOk : kResultFalse;
}

int32_t ownershipOf(bool own) {
    return own ? 1 : 2;
}

ConstString textOf(const FVariant& value) {
    return value.getType() == FVariant::kString16 ? ConstString(value.getString16()) : ConstString(value.getString8());
}

/** Hands over what the value holds, to plain or to object; kResultFalse too for what no bag holds. */
template <class Plain, class Object>
int32_t passOn(const FVariant& value, Plain plain, Object object) {
    switch (value.getType()) {
    case FVariant::kInteger:
        return resultOf(plain(value.getInteger()));
    case FVariant::kFloat:
        return resultOf(plain(value.getFloat()));
    case FVariant::kString8:
    case FVariant::kString16:
        return resultOf(plain(textOf(value)));
    case FVariant::kObject:
        return resultOf(object(value.getObject()));
    default:
        return kResultFalse;
    }
}

/** The bag, or what the member stores in a new one; with a reference for the caller, null when it stores nothing. */
OPtr<FAttributes> attributesOf(const CmObject& member) {
    OPtr<FAttributes> attributes(new FAttributes);
    return member.storeAttributes(*attributes) ? attributes : OPtr<FAttributes>();
}

CmObject* objectIn(const FAttributeValue& attribute) {
    CmObject* object = attribute.getObj();
    return object ? object : commonObject(attribute.getUnknown());
}

/** Gives a copied attribute its own copy of what a bag has to itself; objects are shared. */
void copyOwnPart(FAttributeValue& attribute) {
    const CmObject* object = objectIn(attribute);
    if (!object ||
        !(object->isTypeOf(FAttributes::className(), true) || object->isTypeOf(FAttrList::className(), true)))
        return;
    attribute.setObj(object->newCopy(), FAttributeValue::kOwned);
}

CmObject* ofClass(CmObject* object, const char* className) {
    return object && (!className || object->isTypeOf(className, true)) ? object : nullptr;
}

FUnknown* targetOf(const FAttributeValue& attribute) {
    CmObject* object = objectIn(attribute);
    return object ? FXmlReference::targetOf(object) : attribute.getUnknown();
}

FAttributes* attributesOfInstance(CmObject* object) {
    auto* instance = classCast<FXmlInstance>(FXmlReference::targetOf(object));
    return instance && !instance->getObject() ? instance->getAttributes() : nullptr;
}
}  // namespace

IMPLEMENT_CLASS(FAttributes, CmObject)
static MetaClass gNameInFiles(&FAttributes::__fClass, "Attributes");

FAttributes::FAttributes(const FAttributes& source) : CmObject(source), IAttributes2(source) {
    addAllFrom(source);
}

int32_t FAttributes::queryInterface(const char* iid, void** obj) {
    if (answerInterface<IAttributes2>(this, iid, obj) || answerInterface<IAttributes>(this, iid, obj))
        return kResultOk;
    return CmObject::queryInterface(iid, obj);
}

bool FAttributes::set(const char* key, const ConstString& text, bool copy) {
    if (copy)
        return list.setStringAttribute(key, text);
    if (!list.setStringAttribute(key, ConstString()))
        return false;
    list.getAttribute(key)->setString(text, false);
    return true;
}

bool FAttributes::getNumberOrText(const char* key, FStringIDAttribute*& attribute) const {
    attribute = list.getAttribute(key);
    return attribute && attribute->is(kConvertible);
}

bool FAttributes::get(const char* key, String& text) const {
    const FStringIDAttribute* attribute = list.getAttribute(key);
    return attribute && attribute->getString(text);
}

int64_t FAttributes::getInt(const char* key) const {
    int64_t number = 0;
    get(key, number);
    return number;
}

double FAttributes::getFloat(const char* key) const {
    double number = 0;
    get(key, number);
    return number;
}

const char* FAttributes::getString8(const char* key) const {
    FStringIDAttribute* attribute = list.getAttribute(key);
    return attribute ? attribute->getString8() : nullptr;
}

const tchar* FAttributes::getString16(const char* key) const {
    FStringIDAttribute* attribute = list.getAttribute(key);
    return attribute ? attribute->getString16() : nullptr;
}

bool FAttributes::setObject(const char* key, CmObject* object, bool own) {
    return list.setObjAttribute(key, object, ownershipOf(own));
}

CmObject* FAttributes::getObject(const char* key, const char* className) const {
    return ofClass(FXmlReference::targetOf(objectAt(key)), className);
}

FAttributes* FAttributes::getObjectAttributes(const char* key) const {
    return attributesOfInstance(objectAt(key));
}

bool FAttributes::addAllFrom(const FAttributes& source) {
    const int32_t count = source.countAttributes();
    for (int32_t i = 0; i < count; ++i) {
        auto* copy = new FStringIDAttribute(*source.getAttribute(i));
        copyOwnPart(*copy);
        if (!addAttribute(copy))
            return false;
    }
    return true;
}

bool FAttributes::stripObjects() {
    return FCmObjectStripper().strip(*this);
}

bool FAttributes::setMember(const char* key, const CmObject& member) {
    OPtr<FAttributes> attributes = attributesOf(member);
    if (!attributes || !setAttributes(key, attributes.get(), true))
        return false;
    attributes.detach();
    return true;
}

bool FAttributes::getMember(const char* key, CmObject& member) const {
    FAttributes* attributes = getAttributes(key);
    return attributes && member.restoreAttributes(*attributes);
}

bool FAttributes::setAttributes(const char* key, FAttributes* attributes, bool own) {
    return setObject(key, attributes, own);
}

CmObject* FAttributes::objectAt(const char* key) const {
    const FStringIDAttribute* attribute = list.getAttribute(key);
    return attribute ? objectIn(*attribute) : nullptr;
}

template <class Kind>
Kind* FAttributes::kindAt(const char* key) const {
    return classCast<Kind>(objectAt(key));
}

template <class Kind>
Kind* FAttributes::readerAt(const char* key) const {
    const FStringIDAttribute* attribute = list.getAttributeAgain(key);
    return attribute ? classCast<Kind>(objectIn(*attribute)) : nullptr;
}

/** The list of that kind under the key; whatever else stood there makes way for a new one. */
template <class Kind>
Kind* FAttributes::listFor(const char* key) {
    if (Kind* known = kindAt<Kind>(key))
        return known;
    OPtr<Kind> made(new Kind);
    return list.setObjAttribute(key, made.get(), List::kOwned) ? made.detach() : nullptr;
}

FAttributes* FAttributes::getAttributes(const char* key) const {
    return kindAt<FAttributes>(key);
}

bool FAttributes::setBinary(const char* key, const void* bytes, uint32_t size, bool copy) {
    OPtr<FAttrBuffer> block(new FAttrBuffer(bytes, size, copy));
    if (block->size() != size || !list.setObjAttribute(key, block.get(), List::kOwned))
        return false;
    block.detach();
    return true;
}

bool FAttributes::getBinary(const char* key, void* bytes, uint32_t size) const {
    const void* stored = nullptr;
    uint32_t storedSize = 0;
    if (!bytesOf(objectAt(key), stored, storedSize))
        return false;
    if (const uint32_t count = std::min(size, storedSize); count && bytes)
        std::memcpy(bytes, stored, count);
    return true;
}

uint32_t FAttributes::getBinarySize(const char* key) const {
    const void* stored = nullptr;
    uint32_t storedSize = 0;
    return bytesOf(objectAt(key), stored, storedSize) ? storedSize : 0;
}

bool FAttributes::queueInt(const char* key, int64_t number) {
    FIntList* numbers = listFor<FIntList>(key);
    return numbers && numbers->queue(number);
}

bool FAttributes::queueFloat(const char* key, double number) {
    FFloatList* numbers = listFor<FFloatList>(key);
    return numbers && numbers->queue(number);
}

bool FAttributes::queueString(const char* key, const ConstString& text, bool copy) {
    FStringList* texts = listFor<FStringList>(key);
    return texts && texts->queue(text, copy);
}

bool FAttributes::queueObject(const char* key, CmObject* object, bool own) {
    if (!object)
        return false;
    if (FObjectList* known = kindAt<FObjectList>(key))
        return known->queue(object, own);
    OPtr<FObjectList> made(new FObjectList(own));
    if (!list.setObjAttribute(key, made.get(), List::kOwned))
        return false;
    return made.detach()->queue(object, own);
}

bool FAttributes::queueMember(const char* key, const CmObject& member) {
    OPtr<FAttributes> attributes = attributesOf(member);
    return attributes && queueAttributes(key, attributes.get());
}

bool FAttributes::queueAttributes(const char* key, FAttributes* attributes, bool own) {
    FSubList* bags = attributes ? listFor<FSubList>(key) : nullptr;
    if (!bags || !bags->queue(attributes))
        return false;
    if (!own)
        attributes->addRef();
    return true;
}

bool FAttributes::unqueueInt(const char* key, int64_t& number) const {
    FIntList* numbers = readerAt<FIntList>(key);
    return numbers && numbers->unqueue(number);
}

bool FAttributes::unqueueFloat(const char* key, double& number) const {
    FFloatList* numbers = readerAt<FFloatList>(key);
    return numbers && numbers->unqueue(number);
}

bool FAttributes::unqueueString(const char* key, String& text) const {
    FStringList* texts = readerAt<FStringList>(key);
    const int32_t index = texts ? texts->step() : -1;
    return index >= 0 && texts->at(index)->getString(text);
}

CmObject* FAttributes::unqueueObject(const char* key, const char* className) const {
    FObjectList* objects = readerAt<FObjectList>(key);
    return objects ? ofClass(objects->targetAt(objects->step()), className) : nullptr;
}

FAttributes* FAttributes::lookupQueueObjectAttributes(const char* key, int32_t index) const {
    const FObjectList* objects = kindAt<FObjectList>(key);
    return objects ? attributesOfInstance(objects->at(index)) : nullptr;
}

bool FAttributes::unqueueMember(const char* key, CmObject& member) const {
    FAttributes* attributes = unqueueAttributes(key);
    return attributes && member.restoreAttributes(*attributes);
}

FAttributes* FAttributes::unqueueAttributes(const char* key) const {
    FSubList* bags = readerAt<FSubList>(key);
    return bags ? bags->at(bags->step()) : nullptr;
}

int32_t FAttributes::countQueueItems(const char* key) const {
    const FAttrList* items = kindAt<FAttrList>(key);
    return items ? items->total() : 0;
}

bool FAttributes::resetList(const char* key) const {
    FAttrList* items = kindAt<FAttrList>(key);
    if (items)
        items->reset();
    return items != nullptr;
}

void FAttributes::resetAllLists() const {
    for (int32_t i = 0; i < countAttributes(); ++i) {
        if (auto* items = classCast<FAttrList>(objectIn(*getAttribute(i))))
            items->reset();
    }
}

bool FAttributes::extractValue(const char* path, FVariant& value) const {
    const char* lastDot = path ? std::strrchr(path, '.') : nullptr;
    if (!lastDot)
        return path && const_cast<FAttributes*>(this)->get(path, value) == kResultOk;
    FAttributes* holder = extractAttributes(std::string(path, lastDot).c_str());
    return holder && holder->get(lastDot + 1, value) == kResultOk;
}

FAttributes* FAttributes::extractAttributes(const char* path) const {
    if (!path)
        return nullptr;
    const char* dot = std::strchr(path, '.');
    if (!dot)
        return getAttributes(path);
    const FAttributes* inner = getAttributes(std::string(path, dot).c_str());
    return inner ? inner->extractAttributes(dot + 1) : nullptr;
}

int32_t FAttributes::set(const char* key, const FVariant& value) {
    const auto setPlain = [&](const auto& plain) { return set(key, plain); };
    return passOn(value, setPlain, [&](FUnknown* object) {
        CmObject* known = commonObject(object);
        return known ? setObject(key, known) : list.setUnknownAttribute(key, object, List::kShared);
    });
}

int32_t FAttributes::queue(const char* key, const FVariant& value) {
    const auto queuePlain = [&]<class Plain>(const Plain& plain) {
        if constexpr (std::is_same_v<Plain, int64_t>)
            return queueInt(key, plain);
        else if constexpr (std::is_same_v<Plain, double>)
            return queueFloat(key, plain);
        else
            return queueString(key, plain);
    };
    return passOn(value, queuePlain, [&](FUnknown* object) {
        CmObject* known = commonObject(object);
        const bool queued = known && queueObject(key, known, true);
        if (queued)
            known->addRef();
        return queued;
    });
}

int32_t FAttributes::setBinaryData(const char* key, void* data, uint32_t size, bool copy) {
    return resultOf(setBinary(key, data, size, copy));
}

int32_t FAttributes::get(const char* key, FVariant& value) {
    FStringIDAttribute* attribute = list.getAttribute(key);
    if (!attribute)
        return kResultFalse;
    if (attribute->is(FAttributeValue::kLong))
        value.setInteger(attribute->getLong());
    else if (attribute->is(FAttributeValue::kFloat))
        value.setFloat(attribute->getFloat());
    else if (attribute->isWide())
        value.setString16(attribute->getString16());
    else if (attribute->is(FAttributeValue::kString))
        value.setString8(attribute->getString8());
    else if (FUnknown* object = targetOf(*attribute))
        value.setObject(object);
    else
        return kResultFalse;
    return kResultOk;
}

int32_t FAttributes::unqueue(const char* key, FVariant& value) {
    FAttrList* items = readerAt<FAttrList>(key);
    return resultOf(items && items->getItem(items->step(), value));
}

int32_t FAttributes::resetQueue(const char* key) {
    return resultOf(resetList(key));
}

int32_t FAttributes::resetAllQueues() {
    resetAllLists();
    return kResultOk;
}

int32_t FAttributes::getBinaryData(const char* key, void* data, uint32_t size) {
    return resultOf(getBinary(key, data, size));
}

const char* FAttributes::getAttributeID(int32_t index) const {
    const FStringIDAttribute* attribute = getAttribute(index);
    return attribute ? attribute->getID() : nullptr;
}

FStringIDAttribute* FAttributes::getAttribute(int32_t index) const {
    const CmArray* attributes = list.getAttributeArray();
    return attributes ? static_cast<FStringIDAttribute*>(attributes->at(index)) : nullptr;
}

}  // namespace Tessarine
