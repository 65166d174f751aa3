#pragma once
#include "pluginterfaces/base/funknown.h"

namespace Tessarine {

/** Takes a text that an operation hands out. */
class IStringResult : public FUnknown {
public:
    virtual void setText(const char* text) = 0;

    DECLARE_INTERFACE(IStringResult)
};

/** A text object of either width. */
class IString : public FUnknown {
public:
    virtual void setText8(const char* text) = 0;
    virtual void setText16(const tchar* text) = 0;
    virtual const char* getText8() = 0;
    virtual const tchar* getText16() = 0;
    virtual void take(void* text, bool wide) = 0;
    virtual bool isWideString() const = 0;

    DECLARE_INTERFACE(IString)
};

}  // namespace Tessarine
