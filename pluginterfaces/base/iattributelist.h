#pragma once
#include "pluginterfaces/base/funknown.h"

namespace Tessarine {

/** Named values as a plain list, seen from outside. Results are kResultOk or kResultFalse; what is handed out is borrowed until
    its key is set or removed. */
class IAttributeList : public FUnknown {
public:
    /** The bytes are copied. */
    virtual int32_t setBinaryAttribute(const char* key, const void* data, uint32_t size) = 0;
    virtual int32_t getBinaryAttribute(const char* key, const void*& data, uint32_t& size) = 0;
    /** The list shares the object; null removes the key. */
    virtual int32_t setObjectAttribute(const char* key, FUnknown* object) = 0;
    virtual int32_t getObjectAttribute(const char* key, FUnknown*& object) = 0;
    virtual int32_t setLongAttribute(const char* key, int64_t value) = 0;
    virtual int32_t getLongAttribute(const char* key, int64_t& value) = 0;
    virtual int32_t setFloatAttribute(const char* key, double value) = 0;
    virtual int32_t getFloatAttribute(const char* key, double& value) = 0;
    virtual int32_t setStringAttribute(const char* key, const tchar* text) = 0;
    virtual int32_t getStringAttribute(const char* key, const tchar*& text) = 0;
    /** kResultFalse: it doesn't. */
    virtual int32_t containsAttribute(const char* key) = 0;
    virtual int32_t removeAttribute(const char* key) = 0;
    /** Sets all of this list in another one. */
    virtual int32_t addAllTo(IAttributeList* other) = 0;
    /** kResultFalse: it isn't. */
    virtual int32_t isEmpty() = 0;

    DECLARE_INTERFACE(IAttributeList)
};

}  // namespace Tessarine
