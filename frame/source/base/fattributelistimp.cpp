#include "base/fattributelistimp.h"
#include "base/fattributelists.h"

namespace Tessarine {
namespace {
int32_t resultOf(bool good) {
    return good ? kResultOk : kResultFalse;
}

template <class Number>
int32_t passNumber(const FStringIDAttribute* attribute, Number (FAttributeValue::*get)() const, Number& number) {
    if (attribute)
        number = (attribute->*get)();
    return resultOf(attribute != nullptr);
}

template <class Pointer>
int32_t passPointer(Pointer found, Pointer& pointer) {
    if (found)
        pointer = found;
    return resultOf(found != nullptr);
}
}  // namespace

IMPLEMENT_CLASS(FAttributeListImp, CmObject)

int32_t FAttributeListImp::queryInterface(const char* iid, void** obj) {
    return answerInterface<IAttributeList>(this, iid, obj) ? kResultOk : CmObject::queryInterface(iid, obj);
}

int32_t FAttributeListImp::setBinaryAttribute(const char* key, const void* data, uint32_t size) {
    OPtr<FAttrBuffer> block(new FAttrBuffer(data, size, true));
    if (block->size() != size || !list.setObjAttribute(key, block, List::kOwned))
        return kResultFalse;
    block.detach();
    return kResultOk;
}

int32_t FAttributeListImp::getBinaryAttribute(const char* key, const void*& data, uint32_t& size) {
    return resultOf(bytesOf(list.getObjAttribute(key), data, size));
}

int32_t FAttributeListImp::setObjectAttribute(const char* key, FUnknown* object) {
    if (CmObject* own = commonObject(object))
        return resultOf(list.setObjAttribute(key, own, List::kShared));
    return resultOf(list.setUnknownAttribute(key, object, List::kShared));
}

int32_t FAttributeListImp::getObjectAttribute(const char* key, FUnknown*& object) {
    const FStringIDAttribute* attribute = list.getAttribute(key);
    return passPointer(attribute ? attribute->getUnknown() : nullptr, object);
}

int32_t FAttributeListImp::setLongAttribute(const char* key, int64_t value) {
    return resultOf(list.setLongAttribute(key, value));
}

int32_t FAttributeListImp::getLongAttribute(const char* key, int64_t& value) {
    return passNumber(numberOrText(key), &FAttributeValue::getLong, value);
}

int32_t FAttributeListImp::setFloatAttribute(const char* key, double value) {
    return resultOf(list.setFloatAttribute(key, value));
}

int32_t FAttributeListImp::getFloatAttribute(const char* key, double& value) {
    return passNumber(numberOrText(key), &FAttributeValue::getFloat, value);
}

int32_t FAttributeListImp::setStringAttribute(const char* key, const tchar* text) {
    return resultOf(list.setStringAttribute16(key, text));
}

int32_t FAttributeListImp::getStringAttribute(const char* key, const tchar*& text) {
    FStringIDAttribute* attribute = list.getAttribute(key);
    return passPointer(attribute ? attribute->getString16() : nullptr, text);
}

int32_t FAttributeListImp::containsAttribute(const char* key) {
    return resultOf(list.getAttributeIndex(key) >= 0);
}

int32_t FAttributeListImp::removeAttribute(const char* key) {
    return resultOf(list.removeAttribute(key));
}

int32_t FAttributeListImp::addAllTo(IAttributeList* other) {
    if (!other)
        return kResultFalse;
    int32_t result = kResultOk;
    for (int32_t i = 0; i < list.countAttributes(); ++i) {
        auto* attribute = static_cast<FStringIDAttribute*>(list.getAttributeArray()->at(i));
        if (addTo(*other, *attribute) != kResultOk)
            result = kResultFalse;
    }
    return result;
}

int32_t FAttributeListImp::isEmpty() {
    return resultOf(list.countAttributes() == 0);
}

FStringIDAttribute* FAttributeListImp::numberOrText(const char* key) const {
    constexpr uint16_t kConvertible = FAttributeValue::kLong | FAttributeValue::kFloat | FAttributeValue::kString;
    FStringIDAttribute* attribute = list.getAttribute(key);
    return attribute && attribute->is(kConvertible) ? attribute : nullptr;
}

int32_t FAttributeListImp::addTo(IAttributeList& other, FStringIDAttribute& attribute) {
    const char* key = attribute.getID();
    const void* bytes = nullptr;
    uint32_t size = 0;
    if (attribute.is(FAttributeValue::kLong))
        return other.setLongAttribute(key, attribute.getLong());
    if (attribute.is(FAttributeValue::kFloat))
        return other.setFloatAttribute(key, attribute.getFloat());
    if (attribute.is(FAttributeValue::kString))
        return other.setStringAttribute(key, attribute.getString16());
    if (bytesOf(attribute.getObj(), bytes, size))
        return other.setBinaryAttribute(key, bytes, size);
    return other.setObjectAttribute(key, attribute.getUnknown());
}

}  // namespace Tessarine
