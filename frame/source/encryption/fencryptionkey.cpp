#include "encryption/fencryptionkey.h"
#include <cctype>
#include <cstring>
#include <string>

namespace Tessarine {

IMPLEMENT_CLASS(FEncryptionKey, CmObject)

const FFileType keyFileType(u"Key File", u"key", u"key");

bool FEncryptionKey::setKey(const char* key, int32_t length) {
    Buffer copy;
    if (length > 0 && !(copy.setSize(uint32_t(length)) && copy.put(key, uint32_t(length))))
        return false;
    bytes.take(copy);
    return true;
}

bool FEncryptionKey::assign(const FEncryptionKey& key) {
    return setKey(key.bytes.data(), static_cast<int32_t>(key.bytes.getFillSize()));
}

bool FEncryptionKey::setPlainKey(const char* text, int32_t length) {
    const size_t digits = strnlen(text ? text : "", length < 0 ? ConstString::kMaxLength : static_cast<size_t>(length));
    std::string key;
    for (size_t at = 0; at + 1 < digits; at += 2) {
        uint8_t byte = 0;
        if (!std::isxdigit(uint8_t(text[at])) || !std::isxdigit(uint8_t(text[at + 1])) ||
            !String(text + at, 2).scanHex(byte, 0, false))
            return false;
        key += static_cast<char>(byte);
    }
    return setKey(key.data(), static_cast<int32_t>(key.size()));
}

void FEncryptionKey::getPlainKey(FString& text) const {
    bytes.makeHexString(text);
    text.toLower();
}

bool FEncryptionKey::generate(int32_t length) {
    length = length < 1 ? kDefaultDigits : length;
    std::string digits;
    while (digits.size() < static_cast<size_t>(length)) {
        char text[FUID::kSize * 2 + 1];
        FUID id;
        if (!id.generate())
            return false;
        id.toString(text);
        digits += text;
    }
    return setPlainKey(digits.c_str(), length);
}

bool FEncryptionKey::isEqual(const CmObject* other) const {
    const auto* key = classCast<FEncryptionKey>(other);
    return key && bytes == key->bytes;
}

}  // namespace Tessarine
