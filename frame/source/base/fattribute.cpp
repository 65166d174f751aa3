#include "base/fattribute.h"
#include <limits>
#include <utility>

namespace Tessarine {
namespace {
constexpr uint16_t kCounts = FAttributeValue::kShared | FAttributeValue::kOwned;
constexpr double kLongBound = 9223372036854775808.0;  // 2^63, the first that is too large

int64_t longOf(double number) {
    if (number != number)
        return 0;
    if (number >= kLongBound)
        return std::numeric_limits<int64_t>::max();
    if (number < -kLongBound)
        return std::numeric_limits<int64_t>::min();
    return static_cast<int64_t>(number);
}
}  // namespace

IMPLEMENT_CLASS(FAttributeValue, CmObject)

FAttributeValue::FAttributeValue(const FAttributeValue& source)
    : CmObject(source), value(source.value), type(source.type) {
    if (source.is(kString)) {
        value.pointer = String(source.text()).pass();
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
    void* held = copy ? String(text).pass() : const_cast<void*>(text.ptr());
    setKind(static_cast<uint16_t>(kString | width | borrowed), {.pointer = held});
}

void FAttributeValue::makeStringOwner() {
    if (is(kString) && is(kShared))
        setString(text());
}

int64_t FAttributeValue::getLong() const {
    int64_t number = 0;
    if (is(kLong))
        return value.number;
    if (is(kFloat))
        return longOf(value.real);
    text().scanInt64(number, 0, false);
    return number;
}

double FAttributeValue::getFloat() const {
    double number = 0;
    if (is(kFloat))
        return value.real;
    if (is(kLong))
        return static_cast<double>(value.number);
    text().scanFloat(number, 0, false);
    return number;
}

FUnknown* FAttributeValue::getUnknown() const {
    return is(kUnknown) ? value.unknown : getObj();
}

bool FAttributeValue::getString(String& text) const {
    if (is(kString))
        text.assign(this->text());
    else if (is(kLong))
        text.printInt64(value.number);
    else if (is(kFloat))
        text.printFloat(value.real);
    return is(kString | kLong | kFloat);
}

const char* FAttributeValue::getString8() {
    return is(kString) && setWidth(false) ? text().text8() : nullptr;
}

const tchar* FAttributeValue::getString16() {
    return is(kString) && setWidth(true) ? text().text16() : nullptr;
}

void FAttributeValue::empty() {
    FUnknown* object = counted();
    if (is(kString) && !is(kShared))
        std::free(value.pointer);
    type &= kKept;
    value = {};
    if (object)
        object->release();
}

ConstString FAttributeValue::text() const {
    if (!is(kString))
        return {};
    return isWide() ? ConstString(static_cast<const tchar*>(value.pointer))
                    : ConstString(static_cast<const char*>(value.pointer));
}

FUnknown* FAttributeValue::counted() const {
    return is(kCounts) ? getUnknown() : nullptr;
}

void FAttributeValue::setKind(uint16_t flags, Value newValue) {
    empty();
    type |= flags;
    value = newValue;
}

bool FAttributeValue::setWidth(bool wide) {
    if (isWide() == wide)
        return true;
    String converted(text());
    if (!(wide ? converted.toWideString() : converted.toMultiByte()))
        return false;
    setString(converted);
    return isWide() == wide;
}

IMPLEMENT_CLASS(FStringIDAttribute, FAttributeValue)

bool FStringIDAttribute::isEqual(const CmObject* other) const {
    const auto* attribute = classCast<FStringIDAttribute>(other);
    return attribute && compareID(attribute->getID()) == 0;
}

int32_t FStringIDAttribute::compare(const CmObject* other) const {
    const auto* attribute = classCast<FStringIDAttribute>(other);
    return attribute ? compareID(attribute->getID()) : CmObject::compare(other);
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

}  // namespace Tessarine
