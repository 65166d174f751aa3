#include "base/fmessage.h"
#include "base/source/hooks.h"
#include "collect/cmbuffer.h"
#include "collect/cmstring.h"
#include "storage/farchive.h"
#include "storage/fbstream.h"

namespace Tessarine {
namespace {
constexpr int32_t kNamesOrder = 3;

// Made before all that may post and gone after all that may still kill its posts.
__attribute__((init_priority(103))) FMessenger messenger;

int32_t result(bool done) {
    return done ? kResultOk : kResultFalse;
}
}  // namespace

FMessenger* const gMessenger = &messenger;

// --- FMessage

IMPLEMENT_CLASS(FMessage, CmObject)

FMessage::FMessage() = default;
FMessage::FMessage(const char* text) : id(text) {}
FMessage::~FMessage() = default;

FMessage::FMessage(const FMessage& other)
    : CmObject(other), id(other.id),
      attributes(other.attributes ? std::make_unique<AttributeList>(*other.attributes) : nullptr) {}

int32_t FMessage::queryInterface(const char* iid, void** obj) {
    if (answerInterface<IMessage>(this, iid, obj) || answerInterface<IMessage2>(this, iid, obj))
        return kResultOk;
    return CmObject::queryInterface(iid, obj);
}

FMessage::AttributeList& FMessage::made() {
    if (!attributes)
        attributes = std::make_unique<AttributeList>();
    return *attributes;
}

FStringIDAttribute* FMessage::find(const char* key) const {
    return attributes ? attributes->getAttribute(key) : nullptr;
}

void FMessage::add(const char* key, CmObject* object, bool own) {
    made().setObjAttribute(key, object, own ? AttributeList::kOwned : AttributeList::kBorrowed);
}

CmObject* FMessage::get(const char* key) const {
    return attributes ? attributes->getObjAttribute(key) : nullptr;
}

void FMessage::addString(const char* key, const ConstString& text) {
    made().setStringAttribute(key, text);
}

bool FMessage::getString(const char* key, String& text) const {
    const FStringIDAttribute* found = find(key);
    return found && found->is(FAttributeValue::kString) && found->getString(text);
}

void FMessage::addFloat(const char* key, double value) {
    made().setFloatAttribute(key, value);
}

bool FMessage::getFloat(const char* key, double& value) const {
    const FStringIDAttribute* found = find(key);
    if (!found || !found->is(FAttributeValue::kFloat | FAttributeValue::kLong))
        return false;
    value = found->getFloat();
    return true;
}

void FMessage::addData(const char* key, const void* data, uint32_t size) {
    auto* buffer = new CmBuffer;
    buffer->put(data, size);
    add(key, buffer, true);
}

bool FMessage::getData(const char* key, const void*& data, uint32_t& size) const {
    const auto* buffer = classCast<CmBuffer>(get(key));
    if (!buffer)
        return false;
    data = buffer->data();
    size = buffer->getFillSize();
    return true;
}

void FMessage::addPointer(const char* key, void* pointer) {
    made().setPointerAttribute(key, pointer);
}

void* FMessage::getPointer(const char* key) const {
    const FStringIDAttribute* found = find(key);
    return found ? found->getPointer() : nullptr;
}

bool FMessage::remove(const char* key) {
    return attributes && attributes->removeAttribute(key);
}

bool FMessage::contains(const char* key) const {
    return find(key) != nullptr;
}

bool FMessage::internalize(FArchive& archive) {
    FString itsID;
    auto itsAttributes = std::make_unique<AttributeList>();
    if (!itsID.load(archive.getStream()) || !itsAttributes->internalizeAttributes(archive))
        return false;
    id.take(itsID);
    attributes = std::move(itsAttributes);
    return true;
}

bool FMessage::externalize(FArchive& archive) const {
    return id.store(archive.getStream()) &&
           (attributes ? attributes->externalizeAttributes(archive) : archive.getStream().writeInt32(0));
}

int32_t FMessage::addInt(const char* key, int32_t value) {
    return result(made().setLongAttribute(key, value));
}

int32_t FMessage::getInt(const char* key, int32_t& value) {
    const FStringIDAttribute* found = find(key);
    if (!found || !found->is(FAttributeValue::kLong | FAttributeValue::kFloat))
        return kResultFalse;
    value = int32_t(found->getLong());
    return kResultOk;
}

int32_t FMessage::addFloat1(const char* key, float value) {
    return result(made().setFloatAttribute(key, value));
}

int32_t FMessage::getFloat(const char* key, float& value) {
    double number = 0;
    if (!getFloat(key, number))
        return kResultFalse;
    value = float(number);
    return kResultOk;
}

int32_t FMessage::addString8(const char* key, const char* text) {
    return result(made().setStringAttribute8(key, text));
}

const char* FMessage::getString8(const char* key) {
    FStringIDAttribute* found = find(key);
    return found ? found->getString8() : nullptr;
}

int32_t FMessage::addUnknown(const char* key, FUnknown* object) {
    return result(made().setUnknownAttribute(key, object, AttributeList::kShared));
}

FUnknown* FMessage::getUnknown(const char* key) {
    const FStringIDAttribute* found = find(key);
    return found ? found->getUnknown() : nullptr;
}

int32_t FMessage::addString16(const char* key, const tchar* text) {
    return result(made().setStringAttribute16(key, text));
}

const tchar* FMessage::getString16(const char* key) {
    FStringIDAttribute* found = find(key);
    return found ? found->getString16() : nullptr;
}

// --- FPostedMessage

IMPLEMENT_ABSTRACT_CLASS(FPostedMessage, CmObject)

int32_t FPostedMessage::send() {
    const FUnknownPtr<IMessageReceiver> face(receiver);
    if (face)
        return face->notifyMessage(message);
    const FUnknownPtr<FObject> object(receiver);  // held while it is told
    if (!object || !object->isTypeOf("CmObject", true))
        return -1;
    return static_cast<CmObject*>(object.get())->notify(message);
}

bool FPostedMessage::matches(const FUnknown* target, const FMessage* like) const {
    return matches(target, like ? const_cast<FMessage*>(like)->getMessageID() : nullptr);
}

bool FPostedMessage::matches(const FUnknown* target, const char* id) const {
    return receiver == target && (!id || message->isType(id));
}

// --- FMessenger

IMPLEMENT_ABSTRACT_CLASS(FMessenger, CmObject)

namespace {
FPostedMessage* postedAt(const CmIterator& each) {
    return static_cast<FPostedMessage*>(each.current());
}

template <class Id>
bool anyMatches(const CmQueue& queue, const FUnknown* receiver, Id id) {
    for (CmLinkedListIterator each(queue); !each.done(); each.next())
        if (postedAt(each)->matches(receiver, id))
            return true;
    return false;
}

/** Moves the entries that match to another queue, which takes them over. */
template <class Matches>
void takeMatching(CmQueue& from, CmQueue& to, const Matches& matches) {
    for (int32_t left = from.total(); left > 0; --left) {
        CmObject* entry = from.dequeue();
        (matches(static_cast<FPostedMessage*>(entry)) ? to : from).enqueue(entry);
    }
}
}  // namespace

FMessenger::FMessenger() : names(kNamesOrder) {
    messages._ownsObjects = CmContainer::kTakesOver;
    deliverQueue._ownsObjects = CmContainer::kTakesOver;
}

FMessenger::~FMessenger() {
    clear();
}

int32_t FMessenger::queryInterface(const char* iid, void** obj) {
    return answerInterface<IMessenger>(this, iid, obj) ? int32_t(kResultOk) : CmObject::queryInterface(iid, obj);
}

int32_t FMessenger::sendMessage(CmObject* receiver, FMessage* message) {
    return receiver ? receiver->notify(message) : 0;
}

int32_t FMessenger::sendMessage(const char* name, FMessage* message, bool /*alsoToNet*/) {
    FGuard guard(registryLock);
    CmObject* receiver = lookupName(name);
    return receiver ? receiver->notify(message) : 0;
}

void FMessenger::postMessage(CmObject* receiver, FMessage* message, bool replace, int32_t delay) {
    doPostMessage(receiver, message, replace, delay);
}

void FMessenger::postMessage(const char* name, FMessage* message, bool /*alsoToNet*/) {
    FGuard guard(registryLock);
    doPostMessage(lookupName(name), message, false, 0);
}

int32_t FMessenger::postMessage(IMessageReceiver* receiver, IMessage* message) {
    CmObject* object = commonObject(message);
    if (!receiver || !object || !object->isTypeOf("FMessage", true))
        return kResultFalse;
    object->addRef();  // the caller keeps its own
    doPostMessage(receiver, static_cast<FMessage*>(object), false, 0);
    return kResultOk;
}

void FMessenger::doPostMessage(FUnknown* receiver, FMessage* message, bool replace, int32_t delay) {
    if (!message)
        return;
    const OPtr<FMessage> given(message);
    if (!receiver)
        return;
    {
        FGuard guard(queueLock);
        if (replace && anyMatches(messages, receiver, static_cast<const FMessage*>(message)))
            return;
        message->addRef();
        messages.enqueue(new FPostedMessage(message, receiver, delay));
        anyMessages = true;
    }
    wakeUpdates();
}

void FMessenger::killMessages(CmObject* receiver, FMessage* like) {
    doKillMessages(receiver, like);
}

int32_t FMessenger::killMessages(IMessageReceiver* receiver, IMessage* like) {
    CmObject* object = like ? commonObject(like) : nullptr;
    if (!receiver || (like && (!object || !object->isTypeOf("FMessage", true))))
        return kResultFalse;
    doKillMessages(receiver, static_cast<FMessage*>(object));
    return kResultOk;
}

void FMessenger::doKillMessages(FUnknown* receiver, const FMessage* like) {
    dropQueued([=](const FPostedMessage* posted) { return posted->matches(receiver, like); });
}

template <class Matches>
void FMessenger::dropQueued(const Matches& matches) {
    CmQueue killed;  // dies behind the locks: what a message holds may come back here
    killed._ownsObjects = CmContainer::kTakesOver;
    FGuard delivering(deliverLock);
    FGuard guard(queueLock);
    takeMatching(messages, killed, matches);
    takeMatching(deliverQueue, killed, matches);
    anyMessages = !messages.isEmpty();
}

bool FMessenger::messagesPosted(CmObject* receiver, const char* id) {
    return isPosted(receiver, id);
}

int32_t FMessenger::wasMessagePosted(IMessageReceiver* receiver) {
    return isPosted(receiver, nullptr);
}

bool FMessenger::isPosted(const FUnknown* receiver, const char* id) {
    FGuard delivering(deliverLock);
    FGuard guard(queueLock);
    return anyMatches(messages, receiver, id) || anyMatches(deliverQueue, receiver, id);
}

void FMessenger::deliverMessages() {
    if (deliveranceLocked || !anyMessages)
        return;
    {
        FGuard delivering(deliverLock);
        takeDue();
        while (FPostedMessage* next = static_cast<FPostedMessage*>(deliverQueue.dequeue())) {
            next->send();
            next->release();
        }
    }
    if (anyMessages)  // delayed ones count the turns of the loop
        wakeUpdates();
}

void FMessenger::takeDue() {
    FGuard guard(queueLock);
    for (int32_t left = messages.total(); left > 0; --left) {
        auto* entry = static_cast<FPostedMessage*>(messages.dequeue());
        const bool isDue = entry->delay < 1;
        if (!isDue)
            --entry->delay;
        (isDue ? deliverQueue : messages).enqueue(entry);
    }
    anyMessages = !messages.isEmpty();
}

bool FMessenger::lockMessageDeliverance(bool state) {
    const bool before = deliveranceLocked.exchange(state);
    if (!state && anyMessages)
        wakeUpdates();
    return before;
}

bool FMessenger::registerName(const char* name, CmObject* object) {
    if (!name || !object)
        return false;
    OPtr<CmString> key(new CmString(name));
    FGuard guard(registryLock);
    if (!names.add(key.get(), object))
        return false;
    key.detach();  // the table's own from now on
    return true;
}

bool FMessenger::unregisterName(const char* name) {
    CmObject* object = nullptr;
    {
        FGuard guard(registryLock);
        object = lookupName(name);
        if (!object)
            return false;
        const CmString wanted(name);
        const OPtr<CmObject> key(names.lookup(&wanted));
        names.remove(key.get());
    }
    killMessages(object);  // outside: whoever is delivering may want a name
    return true;
}

CmObject* FMessenger::lookupName(const char* name) {
    if (!name)
        return nullptr;
    const CmString key(name);
    return names.lookupObject(&key);
}

void FMessenger::clear() {
    dropQueued([](const FPostedMessage*) { return true; });
    FGuard guard(registryLock);
    clearNames();
    groups.reset();
}

// --- groups

constinit int32_t FMessenger::notifyGroupIDBase = 0;

int32_t FMessenger::createNotifyGroup() {
    FGuard guard(registryLock);
    if (!groups)
        groups = std::make_unique<NotifyGroups>(0, 10);
    const OPtr<CmLinkedList> members(new CmLinkedList);
    groups->addKeyAndObject(++notifyGroupIDBase, members.get());
    return notifyGroupIDBase;
}

bool FMessenger::deleteNotifyGroup(int32_t group) {
    FGuard guard(registryLock);
    return groups && groups->remove({group});
}

bool FMessenger::addToNotifyGroup(int32_t group, CmObject* receiver) {
    FGuard guard(registryLock);
    CmLinkedList* members = lookupGroup(group);
    return members && members->add(receiver);
}

bool FMessenger::removeFromNotifyGroup(int32_t group, CmObject* receiver) {
    FGuard guard(registryLock);
    CmLinkedList* members = lookupGroup(group);
    return members && members->removeAbs(receiver);
}

CmLinkedList* FMessenger::lookupGroup(int32_t group) {
    return groups ? groups->lookup({group}).value.get() : nullptr;
}

template <class Tell>
void FMessenger::forMembers(int32_t group, const Tell& tell) {
    CmLinkedList present;
    FGuard guard(registryLock);
    const CmLinkedList* members = lookupGroup(group);
    if (members)
        present.addAllFrom(members);
    for (CmLinkedListIterator each(present); CmObject* member = each.next();) {
        const CmLinkedList* still = lookupGroup(group);
        if (still && still->containsAbs(member))
            tell(member);
    }
}

int32_t FMessenger::sendMessage(int32_t group, FMessage* message) {
    int32_t answer = 0;
    forMembers(group, [&](CmObject* member) { answer = member->notify(message); });
    return answer;
}

void FMessenger::postMessage(int32_t group, FMessage* message) {
    const OPtr<FMessage> given(message);
    if (!message)
        return;
    forMembers(group,
               [&](CmObject* member) { doPostMessage(member, static_cast<FMessage*>(message->newCopy()), false, 0); });
}

void FMessenger::clearNames() {
    while (!names.isEmpty()) {
        const OPtr<CmObject> key(static_cast<CmAssociation*>(names.at(0))->key);
        names.remove(key.get());
    }
}

}  // namespace Tessarine
