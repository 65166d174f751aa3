#pragma once
#include "collect/cmbuffer.h"
#include "storage/ffiletype.h"

namespace Tessarine {

/** The bytes of a key. As text they are two lower-case hexadecimal digits each. No key is part of this system, and none is
    derived from data: they come from key files, or are generated. */
class FEncryptionKey : public CmObject {
public:
    static constexpr int32_t kDefaultDigits = 32;

    FEncryptionKey() = default;
    FEncryptionKey(const char* bytes, int32_t length) { setKey(bytes, length); }

    /** A length of 0 or less empties the key. */
    bool setKey(const char* bytes, int32_t length);
    bool assign(const FEncryptionKey& key);
    /** From so many digits; below 0: all. A digit without a second one doesn't count. False, and as before: not hexadecimal. */
    bool setPlainKey(const char* text, int32_t length = -1);
    void getPlainKey(FString& text) const;
    /** A fresh key of so many digits, which is half as many bytes; below 1: kDefaultDigits. False, and as
        before: the system gives no random bytes. */
    bool generate(int32_t length = kDefaultDigits);
    const Buffer& getBytes() const { return bytes; }
    bool isEqual(const CmObject* other) const override;

    DECLARE_CLASS(FEncryptionKey, CmObject)
    DECLARE_NEWCOPY(FEncryptionKey)

private:
    Buffer bytes;
};

extern const FFileType keyFileType;

}  // namespace Tessarine
