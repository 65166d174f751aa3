#pragma once
#include "pluginterfaces/base/funknown.h"

namespace Tessarine {

/** A named bag of values on its way to a receiver. Setters and getters answer kResultOk or kResultFalse; a text that a
    getter hands out is borrowed and lives as long as the entry. */
class IMessage : public FUnknown {
public:
    virtual bool hasMessageID(const char* id) = 0;
    virtual const char* getMessageID() = 0;
    virtual void setMessageID(const char* id) = 0;
    virtual int32_t addInt(const char* key, int32_t value) = 0;
    virtual int32_t getInt(const char* key, int32_t& value) = 0;
    virtual int32_t addFloat1(const char* key, float value) = 0;
    virtual int32_t getFloat(const char* key, float& value) = 0;
    virtual int32_t addString8(const char* key, const char* text) = 0;
    virtual const char* getString8(const char* key) = 0;
    virtual int32_t addUnknown(const char* key, FUnknown* object) = 0;
    /** Borrowed, null on a miss. */
    virtual FUnknown* getUnknown(const char* key) = 0;
    virtual int32_t addString16(const char* key, const tchar* text) = 0;
    virtual const tchar* getString16(const char* key) = 0;

    DECLARE_INTERFACE(IMessage)
};

class IMessage2 : public IMessage {
public:
    virtual int32_t addTString(const char* key, const tchar* text) = 0;
    virtual const tchar* getTString(const char* key) = 0;

    DECLARE_INTERFACE(IMessage2)
};

class IMessageReceiver : public FUnknown {
public:
    /** Non-zero: handled. */
    virtual int32_t notifyMessage(IMessage* message) = 0;

    DECLARE_INTERFACE(IMessageReceiver)
};

/** Queues messages for the main thread. */
class IMessenger : public FUnknown {
public:
    virtual int32_t postMessage(IMessageReceiver* receiver, IMessage* message) = 0;
    virtual int32_t killMessages(IMessageReceiver* receiver, IMessage* like) = 0;
    virtual int32_t wasMessagePosted(IMessageReceiver* receiver) = 0;

    DECLARE_INTERFACE(IMessenger)
};

}  // namespace Tessarine
