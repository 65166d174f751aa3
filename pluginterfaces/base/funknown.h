#pragma once
#include <cstdint>
#include <cstring>
#include <sys/single_threaded.h>

/** The component model: 16-byte identifiers, the root interface and its result codes. What crosses the border between host and
    module is built from this file alone; plain types only, no exceptions. */

namespace Tessarine {

using tchar = char16_t;  // the text unit of the system: UTF-16

/** Results of component operations; other small positive numbers are an operation's own. */
enum Result : int32_t {
    kNoInterface = -1,     // queryInterface: this object doesn't offer it
    kResultOk = 0,         // done, or yes
    kResultFalse = 1,      // not done, or no
    kInvalidArgument = 2,  // an argument is null or out of range
    kWrongState = 4,       // not possible at this moment
};

/** Four words of an identifier, most significant byte first, as they are written down. */
struct FUIDWords {
    uint32_t word1, word2, word3, word4;
};

/** A class or interface identifier: 16 bytes, compared as bytes. Operations that take a raw identifier take a pointer to
    the bytes; the conversion to `const char*` gives it. */
class FUID {
public:
    static constexpr int32_t kSize = 16;

    constexpr FUID() = default;
    constexpr FUID(uint32_t word1, uint32_t word2, uint32_t word3, uint32_t word4) {
        from4Int(word1, word2, word3, word4);
    }
    constexpr explicit FUID(const FUIDWords& words) : FUID(words.word1, words.word2, words.word3, words.word4) {}
    /** 16 raw bytes; null gives all zero. */
    FUID(const char* bytes) { *this = bytes; }
    constexpr FUID(const FUID&) = default;
    constexpr virtual ~FUID() = default;
    constexpr FUID& operator=(const FUID&) = default;
    FUID& operator=(const char* bytes);
    FUID& operator=(char* bytes) { return *this = static_cast<const char*>(bytes); }

    static bool same(const char* a, const char* b) { return a == b || std::memcmp(a, b, kSize) == 0; }
    bool operator==(const FUID& other) const { return same(data, other.data); }
    operator const char*() const { return data; }
    /** Any byte is set. */
    bool isValid() const;
    /** New random bytes (version 4); false, and unchanged, when the system gives none. */
    bool generate();

    constexpr void from4Int(uint32_t word1, uint32_t word2, uint32_t word3, uint32_t word4) {
        const uint32_t words[] = {word1, word2, word3, word4};
        for (int32_t i = 0; i < kSize; ++i)
            data[i] = static_cast<char>(words[i / 4] >> (24 - 8 * (i % 4)) & 0xFF);
    }
    void to4Int(uint32_t& word1, uint32_t& word2, uint32_t& word3, uint32_t& word4) const;
    uint32_t getLong1() const { return word(0); }
    uint32_t getLong2() const { return word(1); }
    uint32_t getLong3() const { return word(2); }
    uint32_t getLong4() const { return word(3); }
    /** Copies the bytes; the buffer has room for 16. */
    void toTUID(char* bytes) const { std::memcpy(bytes, data, kSize); }

    enum PrintStyle { kInlineUID, kDeclareUID, kFUID, kClassUID };
    /** The identifier as a line of source text in one of the styles (any other number: kClassUID). dst has room for 128
        characters; null prints the line to standard output. */
    void print(char* dst, int32_t style) const;
    /** 32 upper-case hexadecimal digits and a terminator; nothing for null. */
    void toString(char* dst) const;
    /** Exactly 32 characters, else false and unchanged. */
    bool fromString(const char* text);
    /** "{8-4-4-4-12}" digits, 38 characters and a terminator. */
    void toRegistryString(char* dst) const;
    /** Exactly 38 characters, else false and unchanged; the separators aren't looked at. */
    bool fromRegistryString(const char* text);

    char data[kSize] = {};

private:
    uint32_t word(int32_t index) const;
};

/** Ends the declaration of an interface: its identifier, and no way to delete through it. */
#define DECLARE_INTERFACE(Interface)    \
public:                                 \
    static const ::Tessarine::FUID iid; \
                                        \
protected:                              \
    ~Interface() = default;

/** The identifier's definition, constant-initialised, so that it is valid before any static constructor ran. */
#define DEFINE_IID(Interface, word1, word2, word3, word4) \
    constinit const Tessarine::FUID Interface::iid(word1, word2, word3, word4)
/** The same from a row of identifiers.h. */
#define DEFINE_IID_ROW(Interface, row) constinit const Tessarine::FUID Interface::iid(row)

/** The root of all interfaces. A found interface comes back with one reference added; a miss sets null. Reference counts
    may be changed on any thread. */
class FUnknown {
public:
    virtual int32_t queryInterface(const char* iid, void** obj) = 0;
    virtual uint32_t addRef() = 0;
    virtual uint32_t release() = 0;

    /** Adds with a full barrier and returns the new value. While the process has one thread, nobody needs the barrier. */
    static int32_t atomicAdd(int32_t& value, int32_t amount) {
        return __libc_single_threaded ? value += amount : __atomic_add_fetch(&value, amount, __ATOMIC_SEQ_CST);
    }

    DECLARE_INTERFACE(FUnknown)
};

/** One line of a queryInterface: true when iid is that of Interface; then self has one reference more and obj its face. */
template <class Interface, class Object>
bool answerInterface(Object* self, const char* iid, void** obj) {
    if (!FUID::same(iid, Interface::iid))
        return false;
    self->addRef();
    *obj = static_cast<Interface*>(self);
    return true;
}

/** The last line of a queryInterface. */
inline int32_t noInterface(void** obj) {
    *obj = nullptr;
    return kNoInterface;
}

}  // namespace Tessarine
