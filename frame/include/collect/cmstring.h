#pragma once
#include "base/source/cmobject.h"
#include "base/source/fstring.h"
#include "pluginterfaces/base/istringresult.h"

namespace Tessarine {
class CmContainer;

/** A string as an object, for containers and across the component border. Its text tells equality and order. */
class CmString : public CmObject, public FString, public IStringResult, public IString {
public:
    CmString() = default;
    CmString(const char* text, int32_t count = -1) : FString(text, count) {}
    CmString(const tchar* text, int32_t count = -1) : FString(text, count) {}
    CmString(const ConstString& text) : FString(text) {}
    CmString(const CmString&) = default;
    CmString& operator=(const CmString&) = default;
    using FString::operator=;
    using FString::compare;
    using FString::take;

    DECLARE_CLASS(CmString, CmObject)
    DECLARE_NEWCOPY(CmString)
    FORWARD_REFCOUNT(CmObject)
    int32_t queryInterface(const char* iid, void** obj) override;

    /** With another CmString by text, otherwise by identity and address. */
    bool isEqual(const CmObject* other) const override;
    int32_t compare(const CmObject* other) const override;
    /** Over the text in its own width: equal texts of two widths differ. */
    uint32_t hash(uint32_t buckets) const override;
    /** As FString::load and store. */
    bool internalize(FArchive& archive) override;
    bool externalize(FArchive& archive) const override;
    bool storeAttributes(FAttributes& attributes) const override;
    bool restoreAttributes(FAttributes& attributes) override;

    void setText(const char* text) override { setText8(text); }
    void setText8(const char* text) override { assign(text); }
    void setText16(const tchar* text) override { assign(text); }
    const char* getText8() override { return text8(); }
    const tchar* getText16() override { return text16(); }
    /** Adopts a block of malloc. */
    void take(void* text, bool wide) override { FString::take(text, wide); }
    bool isWideString() const override { return FString::isWideString(); }

    /** Cuts text at each delimiter and adds the parts as CmStrings to the container, which from now on takes over what
        it is given. trim takes white space off each part first. Empty parts are dropped; only the one behind the last
        delimiter is added all the same, unless keepEmptyTail is set: that name says the contrary of what it does. The
        result is the container's total. */
    static int32_t split(const ConstString& text, CmContainer& container, tchar delimiter, bool trim = true,
                         bool keepEmptyTail = false);
    static int32_t split8(const char* text, CmContainer& container, char delimiter, bool trim = true,
                          bool keepEmptyTail = false);
    static int32_t split16(const tchar* text, CmContainer& container, tchar delimiter, bool trim = true,
                           bool keepEmptyTail = false);
};

}  // namespace Tessarine
