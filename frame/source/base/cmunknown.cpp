#include "base/cmunknown.h"
#include "base/hooks.h"
#include "pluginterfaces/base/ipersistent.h"
#include "storage/farchive.h"
#include "storage/fbstream.h"
#include "storage/fpersistent.h"
#include <algorithm>
#include <cstring>

namespace Tessarine {
namespace {
constexpr int32_t kBits = FUID::kSize * 8;
constexpr int32_t kDigitBits = 5;
constexpr const char* kUIDKey = "GUID";
constexpr const char* kStateKey = "ObjData";

/** As the first of a pair, and as the second, where small letters count too. */
int32_t highNibble(char c) {
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return c >= 'a' && c <= 'f' ? c - 'a' : 0;
}

int32_t lowNibble(char c) {
    return c >= 'a' && c <= 'f' ? c - 'a' + 10 : highNibble(c);
}
}  // namespace

// --- CmUID

IMPLEMENT_CLASS(CmUID, CmObject)

void CmUID::toShortString(char* digits) const {
    int32_t digit = 0;
    for (int32_t bit = 0; bit < kBits; ++bit) {
        digit |= (data[bit / 8] >> (bit % 8) & 1) << (bit % kDigitBits);
        if (bit % kDigitBits == kDigitBits - 1 || bit == kBits - 1) {
            *digits++ = static_cast<char>(digit < 10 ? '0' + digit : '7' + digit);
            digit = 0;
        }
    }
    *digits = 0;
}

void CmUID::fromShortString(const char* digits) {
    std::memset(data, 0, sizeof data);
    for (int32_t i = 0; i < kShortLength && digits && digits[i]; ++i) {
        const int32_t digit = digits[i] < 'A' ? digits[i] - '0' : digits[i] - '7';
        const int32_t first = i * kDigitBits;
        for (int32_t bit = first; bit < std::min(first + kDigitBits, kBits); ++bit)
            data[bit / 8] = static_cast<char>(data[bit / 8] | (digit >> (bit - first) & 1) << (bit % 8));
    }
}

void CmUID::toLongString(char* digits) const {
    constexpr const char* kDigits = "0123456789ABCDEF";
    for (const char byte : data) {
        *digits++ = kDigits[byte >> 4 & 15];
        *digits++ = kDigits[byte & 15];
    }
    *digits = 0;
}

bool CmUID::fromLongString(const char* digits) {
    for (int32_t i = 0; i < kSize && digits && digits[0] && digits[1]; ++i, digits += 2)
        data[i] = static_cast<char>(highNibble(digits[0]) << 4 | lowNibble(digits[1]));
    return true;
}

void CmUID::toFString(String& text) const {
    char digits[kLongLength + 1];
    toLongString(digits);
    text.assign(digits);
}

bool CmUID::isEqual(const CmObject* other) const {
    const auto* uid = classCast<CmUID>(other);
    return uid && FUID::operator==(*uid);
}

bool CmUID::internalize(FArchive& archive) {
    FString digits;
    return digits.load(archive.getStream()) && fromLongString(digits.text8());
}

bool CmUID::externalize(FArchive& archive) const {
    FString digits;
    toFString(digits);
    return digits.store(archive.getStream());
}

bool CmUID::storeAttributes(FAttributes& attributes) const {
    char digits[kLongLength + 1];
    toString(digits);
    String text(digits);
    return text.toWideString() && attributes.setString(kUIDKey, text);
}

bool CmUID::restoreAttributes(FAttributes& attributes) {
    const char* digits = attributes.getString8(kUIDKey);
    return digits && fromString(digits);
}

// --- CmDelegatingUnknown

IMPLEMENT_CLASS(CmDelegatingUnknown, CmObject)

CmDelegatingUnknown::CmDelegatingUnknown(FUnknown* object, FModule* module) : object(object), module(module) {
    if (module && gComponentHooks.addInstance)
        gComponentHooks.addInstance(module, this);
}

CmDelegatingUnknown::~CmDelegatingUnknown() {
    object = nullptr;  // its code goes with the module
    if (module && gComponentHooks.releaseInstance)
        gComponentHooks.releaseInstance(module, this);
}

int32_t CmDelegatingUnknown::queryInterface(const char* iid, void** obj) {
    return object ? object->queryInterface(iid, obj) : CmObject::queryInterface(iid, obj);
}

bool CmDelegatingUnknown::isEqual(const CmObject* other) const {
    const auto* wrapper = classCast<CmDelegatingUnknown>(other);
    return wrapper ? module == wrapper->module : CmObject::isEqual(other);
}

bool CmDelegatingUnknown::externalize(FArchive& archive) const {
    CmUID classID;
    OPtr<FAttributes> state(new FAttributes);
    const bool written = describe(classID, *state) && classID.externalize(archive) && state->externalize(archive);
    archive.forgetLater(state.detach());
    return written;
}

bool CmDelegatingUnknown::internalize(FArchive& archive) {
    CmUID classID;
    const OPtr<FAttributes> state(new FAttributes);
    if (!classID.internalize(archive) || !state->internalize(archive))
        return false;
    makeAgain(classID, *state);
    return true;
}

bool CmDelegatingUnknown::storeAttributes(FAttributes& attributes) const {
    CmUID classID;
    const OPtr<FAttributes> state(new FAttributes);
    return describe(classID, *state) && classID.storeAttributes(attributes) &&
           attributes.setAttributes(kStateKey, state.get());
}

bool CmDelegatingUnknown::restoreAttributes(FAttributes& attributes) {
    CmUID classID;
    if (!classID.restoreAttributes(attributes))
        return false;
    const OPtr<FAttributes> none(new FAttributes);
    FAttributes* state = attributes.getAttributes(kStateKey);
    makeAgain(classID, state ? *state : *none);
    return true;
}

bool CmDelegatingUnknown::describe(CmUID& classID, FAttributes& state) const {
    const FUnknownPtr<IPersistent> persistent(object.get());
    char bytes[FUID::kSize] = {};
    if (!persistent || persistent->getClassID(bytes) != kResultOk)
        return false;
    classID = CmUID(bytes);
    return persistent->saveAttributes(&state) == kResultOk;
}

void CmDelegatingUnknown::makeAgain(const CmUID& classID, FAttributes& state) {
    object = nullptr;
    if (!gComponentHooks.createComponent)
        return;
    object = OPtr<FUnknown>(gComponentHooks.createComponent(classID));
    if (const FUnknownPtr<IPersistent> persistent(object.get()); persistent)
        persistent->loadAttributes(&state);
}

}  // namespace Tessarine
