#pragma once
#include "pluginterfaces/base/funknown.h"

namespace Tessarine {

/** Without its fraction, and at the bounds of the type; 0 for what is no number. */
int64_t truncated64(double number);

/** What a variant holds; its type says which. */
union FVariantData {
    int64_t integer;
    double number;
    const char* string8;
    const tchar* string16;
    FUnknown* object;
};

/** A small tagged value: integer, float, text or object.

    Owns   a text or object only with kOwner set. A copy always owns: text is duplicated, an object shared by a reference.
    Tests  of the kind ignore kOwner. */
class FVariant {
public:
    enum Type : uint16_t {
        kEmpty = 0,
        kInteger = 1,
        kFloat = 2,
        kString8 = 4,
        kObject = 8,
        kOwner = 16,  // text is freed with array delete, an object released
        kString16 = 32,
    };

    FVariant() = default;
    explicit FVariant(int64_t integer) : type(kInteger) { value.integer = integer; }
    explicit FVariant(double number) : type(kFloat) { value.number = number; }
    explicit FVariant(const char* text) : type(kString8) { value.string8 = text; }
    explicit FVariant(const tchar* text) : type(kString16) { value.string16 = text; }
    explicit FVariant(FUnknown* object) : type(kObject) { value.object = object; }
    FVariant(const FVariant& other) { copy(other); }
    ~FVariant() { empty(); }
    FVariant& operator=(const FVariant& other);

    /** Frees what is owned; type and value are 0 then. */
    void empty();
    void setInteger(int64_t integer);
    void setFloat(double number);
    void setString8(const char* text);
    void setString16(const tchar* text);
    void setObject(FUnknown* object);
    /** Says whether the pointer that is held belongs to the variant. */
    void setOwner(bool owner) { type = uint16_t(owner ? type | kOwner : type & kKindMask); }

    uint16_t getType() const { return type & kKindMask; }
    bool isOwner() const { return (type & kOwner) != 0; }
    bool isEmpty() const { return getType() == kEmpty; }
    bool isString() const { return (type & (kString8 | kString16)) != 0; }
    /** A number is converted, truncated if need be; anything else is 0. */
    int64_t getInteger() const;
    double getFloat() const;
    /** Null when another kind is held. Borrowed. */
    const char* getString8() const { return getType() == kString8 ? value.string8 : nullptr; }
    const tchar* getString16() const { return getType() == kString16 ? value.string16 : nullptr; }
    FUnknown* getObject() const { return getType() == kObject ? value.object : nullptr; }

private:
    static constexpr uint16_t kKindMask = 0xffef;
    void copy(const FVariant& other);

    uint16_t type = kEmpty;
    FVariantData value{0};
};

}  // namespace Tessarine
