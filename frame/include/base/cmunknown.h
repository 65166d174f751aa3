#pragma once
#include "base/source/cmobject.h"
#include "base/source/fstring.h"
#include "pluginterfaces/base/smartpointer.h"

/** Identifiers and components as objects, for containers and archives. */

namespace Tessarine {
class FModule;

class CmUID : public CmObject, public FUID {
public:
    DECLARE_CLASS(CmUID, CmObject)
    DECLARE_NEWCOPY(CmUID)
    static constexpr int32_t kShortLength = 26;
    static constexpr int32_t kLongLength = 32;

    CmUID() = default;
    CmUID(uint32_t word1, uint32_t word2, uint32_t word3, uint32_t word4) : FUID(word1, word2, word3, word4) {}
    /** 16 bytes; null is the invalid identifier. */
    CmUID(const char* bytes) : FUID(bytes) {}
    CmUID(const FUID& uid) : FUID(uid) {}
    using FUID::operator=;

    /** 26 digits of five bits each, the lowest first, and a terminator. */
    void toShortString(char* digits) const;
    /** 26 characters, which nobody checks; a text that ends before leaves the rest as zeros. */
    void fromShortString(const char* digits);
    /** 32 upper-case hexadecimal digits, byte by byte from the first, and a terminator. */
    void toLongString(char* digits) const;
    /** As many bytes as there are pairs of digits, 16 at most; the others stay. Other characters count as 0, and the letters a
        to f in front of a pair as 0 to 5. Always true. */
    bool fromLongString(const char* digits);
    /** The long form. */
    void toFString(String& text) const;

    /** With another CmUID by its bytes. */
    bool isEqual(const CmObject* other) const override;
    bool internalize(FArchive& archive) override;
    bool externalize(FArchive& archive) const override;
    bool storeAttributes(FAttributes& attributes) const override;
    bool restoreAttributes(FAttributes& attributes) override;
};

/** A component that stands in for itself wherever a CmObject is wanted: all questions for an interface go to it.
    Without a component it answers for itself, so that archives can make it again.

    Owns      a reference to the component; the module that it comes from stays loaded as long.
    Storage   by the component's IPersistent. Without one, and without a component, storing fails; what can't be made again
              is left out when it is restored. */
class CmDelegatingUnknown : public CmObject {
public:
    DECLARE_CLASS(CmDelegatingUnknown, CmObject)

    /** Shares the component. Both may be null. */
    explicit CmDelegatingUnknown(FUnknown* object = nullptr, FModule* module = nullptr);
    CmDelegatingUnknown(const CmDelegatingUnknown&) = delete;
    CmDelegatingUnknown& operator=(const CmDelegatingUnknown&) = delete;
    ~CmDelegatingUnknown() override;

    int32_t queryInterface(const char* iid, void** obj) override;
    /** Borrowed. */
    FUnknown* getObject() const { return object; }

    /** With another wrapper: both components are of the same module. */
    bool isEqual(const CmObject* other) const override;
    bool internalize(FArchive& archive) override;
    bool externalize(FArchive& archive) const override;
    bool storeAttributes(FAttributes& attributes) const override;
    bool restoreAttributes(FAttributes& attributes) override;
    /** Shares the component, and knows no module. */
    CmObject* newCopy() const override { return new CmDelegatingUnknown(object); }

private:
    bool describe(CmUID& classID, FAttributes& state) const;
    void makeAgain(const CmUID& classID, FAttributes& state);

    IPtr<FUnknown> object;
    FModule* module;  // borrowed
};

}  // namespace Tessarine
