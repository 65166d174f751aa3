#pragma once
#include "pluginterfaces/base/funknown.h"

namespace Tessarine {
class IString;

/** The settings of a program, as a module sees them: values by group and key, which outlive the program.

    Texts     are copied. Groups and keys are 8-bit texts, not empty.
    Results   kResultOk, or kResultFalse for a miss, which leaves the target as it was. A setter makes the group.
    Threads   the main thread. */
class IDefaultPool : public FUnknown {
public:
    virtual int32_t setLong(const char* group, const char* key, int32_t value) = 0;
    virtual int32_t getLong(const char* group, const char* key, int32_t& value) = 0;
    virtual int32_t setDouble(const char* group, const char* key, double value) = 0;
    virtual int32_t getDouble(const char* group, const char* key, double& value) = 0;
    virtual int32_t setString8(const char* group, const char* key, const char* text) = 0;
    /** size: characters of the buffer, with the terminator; a miss too when the text doesn't fit. */
    virtual int32_t getString8(const char* group, const char* key, char* text, int32_t size) = 0;

    DECLARE_INTERFACE(IDefaultPool)
};

class IDefaultPool2 : public IDefaultPool {
public:
    virtual int32_t setString16(const char* group, const char* key, const tchar* text) = 0;
    /** As getString8. */
    virtual int32_t getString16(const char* group, const char* key, tchar* text, int32_t size) = 0;

    DECLARE_INTERFACE(IDefaultPool2)
};

class IDefaultPool3 : public IDefaultPool2 {
public:
    virtual int32_t setTString(const char* group, const char* key, const tchar* text) = 0;
    /** A text of any length. */
    virtual int32_t getTString(const char* group, const char* key, IString* text) = 0;

    DECLARE_INTERFACE(IDefaultPool3)
};

}  // namespace Tessarine
