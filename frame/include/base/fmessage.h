#pragma once
#include "base/fattribute.h"
#include "base/source/fstring.h"
#include "base/source/fthread.h"
#include "base/source/tarray.h"
#include "collect/cmbtreedictionary.h"
#include "collect/cmqueue.h"
#include "pluginterfaces/base/imessage.h"
#include "pluginterfaces/base/smartpointer.h"
#include <atomic>
#include <memory>

namespace Tessarine {
/** A named bag of values. Setters change an entry that is there; getters answer false or null on a miss or for another
    kind, and leave their target alone. What is handed out is borrowed. */
class FMessage : public CmObject, public IMessage2 {
public:
    DECLARE_CLASS(FMessage, CmObject)
    DECLARE_NEWCOPY(FMessage)
    FORWARD_REFCOUNT(CmObject)

    FMessage();
    explicit FMessage(const char* id);
    FMessage(const FMessage& other);
    FMessage& operator=(const FMessage&) = delete;
    ~FMessage() override;
    int32_t queryInterface(const char* iid, void** obj) override;

    bool isType(const char* text) const { return id.compare(text) == 0; }
    /** own: the message takes the reference over. Null removes the entry. */
    void add(const char* key, CmObject* object, bool own);
    CmObject* get(const char* key) const;
    void addString(const char* key, const ConstString& text);
    bool getString(const char* key, String& text) const;
    void addFloat(const char* key, double value);
    bool getFloat(const char* key, double& value) const;
    /** Keeps a copy of the bytes. */
    void addData(const char* key, const void* data, uint32_t size);
    bool getData(const char* key, const void*& data, uint32_t& size) const;
    void addPointer(const char* key, void* pointer);
    void* getPointer(const char* key) const;
    bool remove(const char* key);
    bool contains(const char* key) const;

    /** The id, then the entries. What can't be read whole leaves the message as it was. */
    bool internalize(FArchive& archive) override;
    bool externalize(FArchive& archive) const override;

    // IMessage, IMessage2
    bool hasMessageID(const char* text) override { return isType(text); }
    const char* getMessageID() override { return id.text8(); }
    void setMessageID(const char* text) override { id.assign(text); }
    int32_t addInt(const char* key, int32_t value) override;
    int32_t getInt(const char* key, int32_t& value) override;
    int32_t addFloat1(const char* key, float value) override;
    int32_t getFloat(const char* key, float& value) override;
    int32_t addString8(const char* key, const char* text) override;
    const char* getString8(const char* key) override;
    int32_t addUnknown(const char* key, FUnknown* object) override;
    FUnknown* getUnknown(const char* key) override;
    int32_t addString16(const char* key, const tchar* text) override;
    const tchar* getString16(const char* key) override;
    int32_t addTString(const char* key, const tchar* text) override { return addString16(key, text); }
    const tchar* getTString(const char* key) override { return getString16(key); }

private:
    using AttributeList = FAttributeList<FStringIDAttribute, const char*, CmArray>;
    AttributeList& made();
    /** Null on a miss. */
    FStringIDAttribute* find(const char* key) const;

    FString id;
    std::unique_ptr<AttributeList> attributes;  // made on first use
};

/** A message on its way. */
class FPostedMessage : public CmObject {
public:
    DECLARE_ABSTRACT_CLASS(FPostedMessage, CmObject)

    /** Takes the message over; the receiver is borrowed. */
    FPostedMessage(FMessage* posted, FUnknown* target, int32_t delayCount)
        : message(posted), receiver(target), delay(delayCount) {}
    ~FPostedMessage() override { message->release(); }

    /** What the receiver answers; -1 when it takes no messages. */
    int32_t send();
    /** like may be null: any message. */
    bool matches(const FUnknown* target, const FMessage* like) const;
    bool matches(const FUnknown* target, const char* id) const;

    FMessage* const message;
    FUnknown* const receiver;
    int32_t delay;  // deliveries to let pass
};

/** Delivers messages: at once, or queued for the main thread's next turn.

    Owns      what is posted, until it was sent. Receivers are borrowed: who has posts waiting calls killMessages before
              it dies.
    Threads   any may post, kill and ask; deliverMessages and sendMessage belong to the main thread.
    Locks     deliverLock before queueLock; registryLock stands before queueLock. */
class FMessenger : public CmObject, public IMessenger {
public:
    DECLARE_ABSTRACT_CLASS(FMessenger, CmObject)
    FORWARD_REFCOUNT(CmObject)

    FMessenger();
    ~FMessenger() override;
    int32_t queryInterface(const char* iid, void** obj) override;

    /** The receiver's answer, at once. */
    int32_t sendMessage(CmObject* receiver, FMessage* message);
    /** 0: there is no such name. */
    int32_t sendMessage(const char* name, FMessage* message, bool alsoToNet);
    /** To all members, in the order in which they came; what the last one answers, 0 for an unknown or empty group. */
    int32_t sendMessage(int32_t group, FMessage* message);
    /** Takes the message over. replace: dropped when one of this id waits already for the receiver. delay counts calls of
        deliverMessages. */
    void postMessage(CmObject* receiver, FMessage* message, bool replace = false, int32_t delay = 0);
    void postMessage(const char* name, FMessage* message, bool alsoToNet);
    /** A copy for each member. */
    void postMessage(int32_t group, FMessage* message);
    /** Drops what waits for the receiver, or only messages with the id of `like`. */
    void killMessages(CmObject* receiver, FMessage* like = nullptr);
    /** A message waits for the receiver; with an id, one of that id. */
    bool messagesPosted(CmObject* receiver, const char* id);
    bool areMessagesPosted(CmObject* receiver) { return messagesPosted(receiver, nullptr); }

    void deliverMessages();
    /** Locked: nothing is delivered, and posts pile up. Returns the old state. */
    bool lockMessageDeliverance(bool state);

    /** Names are unique; the object is borrowed. */
    bool registerName(const char* name, CmObject* object);
    /** Kills the object's messages too. */
    bool unregisterName(const char* name);
    /** A new group of receivers, and its number. */
    int32_t createNotifyGroup();
    /** False: there is no such group, or the receiver isn't in it. Members are borrowed. */
    bool deleteNotifyGroup(int32_t group);
    bool addToNotifyGroup(int32_t group, CmObject* receiver);
    bool removeFromNotifyGroup(int32_t group, CmObject* receiver);

    /** Empties queues, names and groups. */
    void clear();

    // IMessenger
    int32_t postMessage(IMessageReceiver* receiver, IMessage* message) override;
    int32_t killMessages(IMessageReceiver* receiver, IMessage* like) override;
    int32_t wasMessagePosted(IMessageReceiver* receiver) override;

private:
    void doPostMessage(FUnknown* receiver, FMessage* message, bool replace, int32_t delay);
    void doKillMessages(FUnknown* receiver, const FMessage* like);
    template <class Matches>
    void dropQueued(const Matches& matches);
    bool isPosted(const FUnknown* receiver, const char* id);
    void takeDue();
    CmObject* lookupName(const char* name);
    void clearNames();
    using NotifyGroups = TAssociationArray<int32_t, IPtr<CmLinkedList>>;
    /** Null: there is no such group. */
    CmLinkedList* lookupGroup(int32_t group);
    /** The members at this moment, which may come and go while they are told. */
    template <class Tell>
    void forMembers(int32_t group, const Tell& tell);

    std::atomic<bool> deliveranceLocked{false};
    FLock queueLock;  // guards messages
    CmQueue messages;
    std::atomic<bool> anyMessages{false};  // whether messages holds any; read without the lock
    FLock deliverLock;                     // guards deliverQueue; held while messages are sent
    CmQueue deliverQueue;
    FLock registryLock;                    // guards what follows
    CmBTreeDictionary names;               // CmString, owned, to CmObject, borrowed
    std::unique_ptr<NotifyGroups> groups;  // made on first use
    static int32_t notifyGroupIDBase;
};

/** The messenger of this copy of the framework; it is there from static initialisation to the end. */
extern FMessenger* const gMessenger;

}  // namespace Tessarine
