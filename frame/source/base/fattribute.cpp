#include "base/fattribute.h"
#include "base/cmunknown.h"
#include "collect/cmstring.h"
#include "pluginterfaces/base/fvariant.h"
#include "storage/farchive.h"
#include "storage/fbstream.h"
#include "storage/fxmlobject.h"
#include <algorithm>
#include <cstdlib>

namespace Tessarine {
namespace {
constexpr uint16_t kCounts = FAttributeValue::kShared | FAttributeValue::kOwned;
constexpr uint16_t kKinds = FAttributeValue::kLong | FAttributeValue::kObject | FAttributeValue::kFloat |
                            FAttributeValue::kString | FAttributeValue::kUnknown | FAttributeValue::kPointer;

/** From malloc, with its terminator; null for an empty text, and without memory. */
template <class Char>
void* duplicate(std::basic_string_view<Char> text) {
    auto* copy = text.empty() ? nullptr : static_cast<Char*>(std::malloc((text.size() + 1) * sizeof(Char)));
    if (copy)
        *std::ranges::copy(text, copy).out = 0;
    return copy;
}

void* duplicate(const ConstString& text) {
    return text.isWideString() ? duplicate(units16(text)) : duplicate(units8(text));
}

/** Null isn't what the value's kind promised. */
bool isValue(FArchive& archive, const CmObject* object) {
    if (!object)
        archive.reportError(FArchive::kValueError);
    return object != nullptr;
}
}  // namespace

IMPLEMENT_CLASS(FAttributeValue, CmObject)

FAttributeValue::FAttributeValue(const FAttributeValue& source)
    : CmObject(source), value(source.value), type(source.type) {
    if (source.is(kString)) {
        value.pointer = String(source.getText()).pass();
        type = static_cast<uint16_t>(type & ~kShared);
    }
    if (FUnknown* object = counted())
        object->addRef();
}

void FAttributeValue::setLong(int64_t number) {
    setKind(kLong, {.number = number});
}

void FAttributeValue::setFloat(double number) {
    setKind(kFloat, {.real = number});
}

void FAttributeValue::setPointer(void* pointer) {
    setKind(kPointer, {.pointer = pointer});
}

void FAttributeValue::setObj(CmObject* object, uint16_t flags) {
    if (!object)
        return empty();
    if (flags & kShared)
        object->addRef();
    setKind(static_cast<uint16_t>(kObject | (flags & (kCounts | kKept))), {.object = object});
}

void FAttributeValue::setUnknown(FUnknown* object, uint16_t flags) {
    if (!object)
        return empty();
    if (flags & kShared)
        object->addRef();
    setKind(static_cast<uint16_t>(kUnknown | (flags & (kCounts | kKept))), {.unknown = object});
}

CmObject* FAttributeValue::detachObj() {
    CmObject* object = getObj();
    if (!object)
        return nullptr;
    type &= kKept;
    value = {};
    return object;
}

void FAttributeValue::setString(const ConstString& text, bool copy) {
    const uint16_t width = text.isWideString() ? kWide : 0;
    const uint16_t borrowed = copy ? 0 : kShared;
    void* held = copy ? duplicate(text) : const_cast<void*>(text.ptr());
    setKind(static_cast<uint16_t>(kString | width | borrowed), {.pointer = held});
}

void FAttributeValue::takeString(String& text) {
    const uint16_t width = text.isWideString() ? kWide : 0;
    setKind(static_cast<uint16_t>(kString | width), {.pointer = text.pass()});
}

void FAttributeValue::makeStringOwner() {
    if (is(kString) && is(kShared))
        setString(getText());
}

int64_t FAttributeValue::getLong() const {
    int64_t number = 0;
    if (is(kLong))
        return value.number;
    if (is(kFloat))
        return truncated64(value.real);
    getText().scanInt64(number, 0, false);
    return number;
}

double FAttributeValue::getFloat() const {
    double number = 0;
    if (is(kFloat))
        return value.real;
    if (is(kLong))
        return static_cast<double>(value.number);
    getText().scanFloat(number, 0, false);
    return number;
}

FUnknown* FAttributeValue::getUnknown() const {
    return is(kUnknown) ? value.unknown : getObj();
}

bool FAttributeValue::getString(String& text) const {
    if (is(kString))
        text.assign(getText());
    else if (is(kLong))
        text.printInt64(value.number);
    else if (is(kFloat))
        text.printFloat(value.real);
    return is(kString | kLong | kFloat);
}

const char* FAttributeValue::getString8() {
    return is(kString) && setWidth(false) ? getText().text8() : nullptr;
}

const tchar* FAttributeValue::getString16() {
    return is(kString) && setWidth(true) ? getText().text16() : nullptr;
}

void FAttributeValue::empty() {
    setKind(0, {});
}

bool FAttributeValue::externalize(FArchive& archive) const {
    FStream& stream = archive.getStream();
    if (!stream.writeInt16u(type))
        return false;
    switch (type & kKinds) {
    case kObject:
        return archive.save(FXmlReference::targetOf(value.object), !is(kNoReference));
    case kUnknown: {
        const CmDelegatingUnknown wrapper(value.unknown);
        return archive.save(&wrapper, false);
    }
    case kString: {
        const CmString copy(getText());
        return archive.save(&copy, false);
    }
    case kLong:
        return stream.writeInt64(value.number);
    case kFloat:
        return stream.writeDouble(value.real);
    default:
        return true;
    }
}

bool FAttributeValue::internalize(FArchive& archive) {
    FStream& stream = archive.getStream();
    uint16_t stored = 0;
    Value read{};
    empty();
    if (!archive.hasLeft(sizeof stored) || !stream.readInt16u(stored))
        return false;
    if (stored & (kObject | kUnknown | kString)) {
        if (!readObject(archive, stored))
            return false;
    } else if (stored & kLong) {
        if (!stream.readInt64(read.number))
            return false;
        setKind(kLong, read);
    } else if (stored & kFloat) {
        if (!stream.readDouble(read.real))
            return false;
        setKind(kFloat, read);
    } else if (stored & ~(kCounts | kKept | kWide)) {
        archive.reportError(FArchive::kValueError);
        return false;
    }
    keep(stored);
    return true;
}

/** A text and a wrapped component come as objects too. */
bool FAttributeValue::readObject(FArchive& archive, uint16_t stored) {
    const OPtr<CmObject> object(archive.load("CmObject", !(stored & kNoReference)));
    if (stored & kObject) {
        if (object)
            object->addRef();
        setObj(object, kOwned);
        return object || archive.getLastError() == 0;
    }
    if (stored & kUnknown) {
        const auto* wrapper = classCast<CmDelegatingUnknown>(object.get());
        setUnknown(wrapper ? wrapper->getObject() : nullptr, kShared);
        return isValue(archive, wrapper);
    }
    const auto* copy = classCast<CmString>(object.get());
    if (copy)
        setString(*copy);
    return isValue(archive, copy);
}

ConstString FAttributeValue::getText() const {
    if (!is(kString))
        return {};
    return isWide() ? ConstString(static_cast<const tchar*>(value.pointer))
                    : ConstString(static_cast<const char*>(value.pointer));
}

FUnknown* FAttributeValue::counted() const {
    return is(kCounts) ? getUnknown() : nullptr;
}

void FAttributeValue::setKind(uint16_t flags, Value newValue) {
    FUnknown* const oldObject = counted();
    void* const oldText = is(kString) && !is(kShared) ? value.pointer : nullptr;
    type = static_cast<uint16_t>((type & kKept) | flags);
    value = newValue;
    std::free(oldText);
    if (oldObject)
        oldObject->release();  // which may end this attribute, too
}

bool FAttributeValue::setWidth(bool wide) {
    if (isWide() == wide)
        return true;
    String converted(getText());
    if (!(wide ? converted.toWideString() : converted.toMultiByte()))
        return false;
    setString(converted);
    return isWide() == wide;
}

IMPLEMENT_CLASS(FStringIDAttribute, FAttributeValue)

FStringIDAttribute::FStringIDAttribute(const FStringIDAttribute& source) : FAttributeValue(source) {
    setID(source.getID());
}

void FStringIDAttribute::setID(std::string_view id) {
    clearID();
    char* place = shortID;
    if (id.size() >= sizeof shortID)
        place = longID = new char[id.size() + 1];
    *std::ranges::copy(id, place).out = 0;
}

void FStringIDAttribute::clearID() {
    delete[] longID;
    longID = nullptr;
}

bool FStringIDAttribute::isEqual(const CmObject* other) const {
    const auto* attribute = classCast<FStringIDAttribute>(other);
    return attribute && compareID(attribute->getID()) == 0;
}

int32_t FStringIDAttribute::compare(const CmObject* other) const {
    const auto* attribute = classCast<FStringIDAttribute>(other);
    return attribute ? compareID(attribute->getID()) : CmObject::compare(other);
}

bool FStringIDAttribute::internalize(FArchive& archive) {
    FString id;
    if (!id.load(archive.getStream()))
        return false;
    setID(id.text8());
    return FAttributeValue::internalize(archive);
}

bool FStringIDAttribute::externalize(FArchive& archive) const {
    return FString::storeString8(archive.getStream(), getID()) && FAttributeValue::externalize(archive);
}

IMPLEMENT_CLASS(FIntIDAttribute, FAttributeValue)

bool FIntIDAttribute::isEqual(const CmObject* other) const {
    const auto* attribute = classCast<FIntIDAttribute>(other);
    return attribute && compareID(attribute->id) == 0;
}

int32_t FIntIDAttribute::compare(const CmObject* other) const {
    const auto* attribute = classCast<FIntIDAttribute>(other);
    return attribute ? compareID(attribute->id) : CmObject::compare(other);
}

bool FIntIDAttribute::internalize(FArchive& archive) {
    return archive.getStream().readInt32(id) && FAttributeValue::internalize(archive);
}

bool FIntIDAttribute::externalize(FArchive& archive) const {
    return archive.getStream().writeInt32(id) && FAttributeValue::externalize(archive);
}

namespace {
/** Stays with a stored list. */
bool isStored(const CmObject* attribute) {
    return !static_cast<const FAttributeValue*>(attribute)->is(FAttributeValue::kTransient | FAttributeValue::kPointer);
}

int32_t countStored(const CmContainer& attributes) {
    int32_t count = 0;
    for (int32_t i = 0; i < attributes.total(); ++i)
        count += isStored(attributes.at(i));
    return count;
}
}  // namespace

bool externalizeAttributeArray(FArchive& archive, const CmContainer* attributes) {
    if (!archive.getStream().writeInt32(attributes ? countStored(*attributes) : 0))
        return false;
    for (int32_t i = 0; attributes && i < attributes->total(); ++i) {
        const CmObject* attribute = attributes->at(i);
        if (isStored(attribute) && !attribute->externalize(archive))
            return false;
    }
    return true;
}

bool readAttributeCount(FArchive& archive, int32_t& count) {
    return archive.getStream().readInt32(count) && count >= 0;
}

}  // namespace Tessarine
