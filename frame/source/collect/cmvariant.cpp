#include "collect/cmvariant.h"
#include "base/ftextutils.h"
#include "collect/cmdate.h"
#include "collect/cmstring.h"
#include "storage/fpersistent.h"
#include <algorithm>
#include <compare>
#include <functional>
#include <string>
#include <utility>

namespace Tessarine {

IMPLEMENT_CLASS(CmVariant, CmObject)

namespace {
constexpr char kTypeKey[] = "type", kObjectKey[] = "obj", kFloatKey[] = "fValue", kString8Key[] = "str",
               kIntegerKey[] = "iValue", kString16Key[] = "wstr";

template <class Char>
Char* duplicate(const Char* text, size_t units) {
    Char* copy = new Char[units + 1];
    std::copy_n(text, units, copy);
    copy[units] = 0;
    return copy;
}

template <class Char>
const Char* duplicate(const Char* text) {
    return text ? duplicate(text, std::char_traits<Char>::length(text)) : nullptr;
}

/** As the C library's "%lld"; by hand for what needs no care about bounds, which expressions read again and again. */
int64_t wholeOf(const char* text) {
    constexpr int kSafeDigits = 18;
    const char* next = text && *text == '-' ? text + 1 : text;
    int64_t number = 0;
    int digits = 0;
    for (; next && ConstString::isCharDigit(*next) && digits < kSafeDigits; ++next, ++digits)
        number = number * 10 + (*next - '0');
    if (digits == 0 || digits == kSafeDigits)
        ConstString(text).scanInt64(number, 0, false);
    else if (*text == '-')
        number = -number;
    return number;
}

/** As the C library's "%lf" in the C locale, where a comma ends the number. */
double floatOf(const char* text) {
    const std::string_view units = text ? text : "";
    double number = 0;
    ConstString(units.data(), int32_t(std::min(units.find(','), units.size()))).scanFloat(number, 0, false);
    return number;
}

int32_t signOf(std::weak_ordering order) {
    return int32_t(std::is_gt(order)) - int32_t(std::is_lt(order));
}

template <class Char>
int32_t compareTexts(const Char* a, const Char* b) {
    if (!a || !b)
        return int32_t(!a) - int32_t(!b);
    return ConstString(a).compare(ConstString(b), kIgnoreCase);
}

int32_t compareObjects(FUnknown* a, FUnknown* b) {
    if (a == b)
        return 0;
    const CmObject *object = a ? commonObject(a) : nullptr, *other = b ? commonObject(b) : nullptr;
    if (object && other)
        return object->compare(other);
    return std::less<>()(a, b) ? -1 : 1;
}

bool textOfObject(const CmObject* object, String& text) {
    if (const auto* string = classCast<CmString>(object)) {
        text.assign(*string);
        return true;
    }
    const auto* time = classCast<CmTime>(object);
    if (time)
        FTextUtils::printDateTime(text, *time);
    return time != nullptr;
}
}  // namespace

// --- life

CmVariant& CmVariant::operator=(const CmVariant& source) {
    if (this != &source)
        *this = CmVariant(source);
    return *this;
}

void CmVariant::copy(const CmVariant& source) {
    type = source.getType();
    data = source.data;
    if (source.isOwner())
        own();
}

void CmVariant::own() {
    if (is(kString8))
        data.string8 = duplicate(data.string8);
    else if (is(kString16))
        data.string16 = duplicate(data.string16);
    else if (is(kObject) && data.object)
        data.object->addRef();
    type |= kOwner;
}

void CmVariant::emancipate() {
    if (!isOwner())
        own();
}

void CmVariant::empty() {
    const uint16_t held = std::exchange(type, kEmpty);
    const auto value = std::exchange(data, {0});
    if (!(held & kOwner))
        return;
    if (held & kString8)
        delete[] value.string8;
    else if (held & kString16)
        delete[] value.string16;
    else if ((held & kObject) && value.object)
        value.object->release();
}

// --- setting

void CmVariant::setLong(int64_t number) {
    *this = CmVariant(number);
}

void CmVariant::setFloat(double number) {
    *this = CmVariant(number);
}

void CmVariant::setString8(const char* text, bool own) {
    CmVariant next;
    next.data.string8 = text;
    next.take(kString8, own);
    swapContent(next);
}

void CmVariant::setString16(const tchar* text, bool own) {
    CmVariant next;
    next.data.string16 = text;
    next.take(kString16, own);
    swapContent(next);
}

void CmVariant::setString(const ConstString& text, bool own) {
    if (!own)
        return text.isWideString() ? setString16(text.text16(), false) : setString8(text.text8(), false);
    CmVariant next;
    next.type = uint16_t((text.isWideString() ? kString16 : kString8) | kOwner);
    if (text.isWideString())
        next.data.string16 = duplicate(units16(text).data(), units16(text).size());
    else
        next.data.string8 = duplicate(units8(text).data(), units8(text).size());
    swapContent(next);
}

void CmVariant::setUnknown(FUnknown* object) {
    CmVariant next;
    next.data.object = object;
    next.take(kObject, true);
    swapContent(next);
}

void CmVariant::take(uint16_t kind, bool owned) {
    type = kind;
    if (owned)
        own();
}

// --- FVariant, whose kinds and owner have other numbers

void CmVariant::assign(const FVariant& source) {
    CmVariant next;
    switch (source.getType()) {
    case FVariant::kInteger:
        next = CmVariant(source.getInteger());
        break;
    case FVariant::kFloat:
        next = CmVariant(source.getFloat());
        break;
    case FVariant::kString8:
        next.setString8(source.getString8(), source.isOwner());
        break;
    case FVariant::kString16:
        next.setString16(source.getString16(), source.isOwner());
        break;
    case FVariant::kObject:
        next.data.object = source.getObject();
        next.take(kObject, source.isOwner());
        break;
    default:
        break;
    }
    swapContent(next);
}

void CmVariant::viewAs(FVariant& target) const {
    switch (getType()) {
    case kInteger:
        return target.setInteger(data.integer);
    case kFloat:
        return target.setFloat(data.number);
    case kString8:
        return target.setString8(data.string8);
    case kString16:
        return target.setString16(data.string16);
    case kObject:
        return target.setObject(data.object);
    default:
        return target.empty();
    }
}

void CmVariant::assignTo(FVariant& target) const {
    FVariant seen;
    viewAs(seen);
    if (isOwner())
        target = seen;
    else
        viewAs(target);
}

CmVariant::operator FVariant() const {
    FVariant result;
    assignTo(result);
    return result;
}

// --- order

int32_t CmVariant::compareVariants(const FVariant& a, const FVariant& b) {
    const uint16_t kind = a.getType();
    if (kind != b.getType())
        return kind < b.getType() ? -1 : 1;
    switch (kind) {
    case FVariant::kInteger:
        return signOf(a.getInteger() <=> b.getInteger());
    case FVariant::kFloat:
        return signOf(std::weak_order(a.getFloat(), b.getFloat()));
    case FVariant::kString8:
        return compareTexts(a.getString8(), b.getString8());
    case FVariant::kString16:
        return compareTexts(a.getString16(), b.getString16());
    case FVariant::kObject:
        return compareObjects(a.getObject(), b.getObject());
    default:
        return 0;
    }
}

int32_t CmVariant::compare(const CmVariant& other) const {
    FVariant a, b;
    viewAs(a);
    other.viewAs(b);
    return compareVariants(a, b);
}

bool CmVariant::isEqual(const CmObject* other) const {
    const auto* variant = classCast<CmVariant>(other);
    return variant ? compare(*variant) == 0 : CmObject::isEqual(other);
}

int32_t CmVariant::compare(const CmObject* other) const {
    const auto* variant = classCast<CmVariant>(other);
    return variant ? compare(*variant) : CmObject::compare(other);
}

// --- reading

int64_t CmVariant::getLong() const {
    int64_t number = 0;
    switch (getType()) {
    case kInteger:
        return data.integer;
    case kFloat:
        return truncated64(data.number);
    case kString8:
        return wholeOf(data.string8);
    case kString16:
        ConstString(data.string16).scanInt64(number);
        return number;
    default:
        return 0;
    }
}

double CmVariant::getFloat() const {
    double number = 0;
    switch (getType()) {
    case kInteger:
        return double(data.integer);
    case kFloat:
        return data.number;
    case kString8:
        return floatOf(data.string8);
    case kString16:
        ConstString(data.string16).scanFloat(number);
        return number;
    default:
        return 0;
    }
}

bool CmVariant::getString(String& text) const {
    switch (getType()) {
    case kInteger:
        text.printf("%lld", static_cast<long long>(data.integer));
        return true;
    case kFloat:
        text.printf("%.2lf", data.number);
        return true;
    case kString8:
    case kString16:
        text.assign(getText());
        return true;
    case kObject:
        return data.object && textOfObject(commonObject(data.object), text);
    default:
        return false;
    }
}

ConstString CmVariant::getText() const {
    return is(kString8) ? ConstString(data.string8) : is(kString16) ? ConstString(data.string16) : ConstString();
}

CmObject* CmVariant::getObject(const char* className) const {
    CmObject* object = getUnknown() ? commonObject(data.object) : nullptr;
    return object && object->isTypeOf(className, true) ? object : nullptr;
}

// --- storage

bool CmVariant::storeAttributes(FAttributes& attributes) const {
    CmObject* object = getUnknown() ? commonObject(data.object) : nullptr;
    if (getUnknown() && !object)
        return false;
    attributes.set(kTypeKey, getType());
    switch (getType()) {
    case kInteger:
        return attributes.set(kIntegerKey, data.integer);
    case kFloat:
        return attributes.set(kFloatKey, data.number);
    case kString8:
        return attributes.set(kString8Key, getText());
    case kString16:
        return attributes.set(kString16Key, getText());
    case kObject:
        return !object || attributes.setObject(kObjectKey, object);
    default:
        return true;
    }
}

bool CmVariant::restoreAttributes(FAttributes& attributes) {
    int64_t kind = kEmpty;
    CmVariant read;
    if (!attributes.get(kTypeKey, kind) || !read.restoreKind(kind, attributes))
        return false;
    swapContent(read);
    return true;
}

bool CmVariant::restoreKind(int64_t kind, const FAttributes& attributes) {
    type = uint16_t(kind);
    switch (kind) {
    case kInteger:
        return attributes.get(kIntegerKey, data.integer);
    case kFloat:
        return attributes.get(kFloatKey, data.number);
    case kString8:
    case kString16:
        return restoreText(kind == kString8, attributes);
    case kObject:
        setUnknown(attributes.getObject(kObjectKey));
        return true;
    default:
        type = kEmpty;
        return kind == kEmpty;
    }
}

bool CmVariant::restoreText(bool narrow, const FAttributes& attributes) {
    String text;
    type = kEmpty;
    if (!attributes.get(narrow ? kString8Key : kString16Key, text))
        return false;
    if (narrow)
        setString8(text.text8(), true);
    else
        setString16(text.text16(), true);
    return true;
}

}  // namespace Tessarine
