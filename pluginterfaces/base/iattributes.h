#pragma once
#include "pluginterfaces/base/funknown.h"

namespace Tessarine {
class FVariant;

/** A bag of named values, seen from outside. Results are kResultOk or kResultFalse. */
class IAttributes : public FUnknown {
public:
    virtual int32_t set(const char* key, const FVariant& value) = 0;
    virtual int32_t queue(const char* key, const FVariant& value) = 0;
    virtual int32_t setBinaryData(const char* key, void* data, uint32_t size, bool copy) = 0;
    virtual int32_t get(const char* key, FVariant& value) = 0;
    virtual int32_t unqueue(const char* key, FVariant& value) = 0;
    virtual int32_t getQueueItemCount(const char* key) = 0;
    virtual int32_t resetQueue(const char* key) = 0;
    virtual int32_t resetAllQueues() = 0;
    virtual int32_t getBinaryData(const char* key, void* data, uint32_t size) = 0;
    virtual uint32_t getBinaryDataSize(const char* key) = 0;

    DECLARE_INTERFACE(IAttributes)
};

class IAttributes2 : public IAttributes {
public:
    virtual int32_t countAttributes() const = 0;
    virtual const char* getAttributeID(int32_t index) const = 0;

    DECLARE_INTERFACE(IAttributes2)
};

}  // namespace Tessarine
