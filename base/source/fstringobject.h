#pragma once
#include "base/source/fobject.h"
#include "base/source/fstring.h"
#include "pluginterfaces/base/istringresult.h"

namespace Tessarine {

/** A string as a counted object, for handing texts across the component border. */
class StringObject : public FObject, public String, public IStringResult, public IString {
public:
    StringObject() = default;
    StringObject(const char* text, int32_t count = -1) : String(text, count) {}
    StringObject(const tchar* text, int32_t count = -1) : String(text, count) {}
    StringObject(const ConstString& text) : String(text) {}
    StringObject(const StringObject&) = default;
    StringObject& operator=(const StringObject&) = default;
    using String::operator=;
    using String::take;

    FORWARD_REFCOUNT(FObject)
    int32_t queryInterface(const char* iid, void** obj) override;
    const char* isA() const override { return "StringObject"; }
    bool isA(const char* name) const override { return isTypeOf(name, false); }
    bool isTypeOf(const char* name, bool askBaseClass) const override;

    void setText(const char* text) override { setText8(text); }
    void setText8(const char* text) override { assign(text); }
    void setText16(const tchar* text) override { assign(text); }
    const char* getText8() override { return text8(); }
    const tchar* getText16() override { return text16(); }
    /** Copies a terminated text and leaves the block to the caller. */
    void take(void* text, bool wide) override;
    bool isWideString() const override { return String::isWideString(); }
};

}  // namespace Tessarine
