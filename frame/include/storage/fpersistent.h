#pragma once
#include "base/fattributelists.h"
#include "pluginterfaces/base/iattributes.h"
#include <concepts>

namespace Tessarine {

/** A bag of named values: what an object stores itself in (storeAttributes) and is restored from (restoreAttributes).

    Keys     text of 8 bits; looked up one by one, in the order in which they were set. Null is the empty key.
    Values   integers, doubles, texts, objects, bags, blocks of bytes, and lists of these. Numbers and texts convert into
             each other when they are read.
    Lists    are filled with queue and read with unqueue, which goes on where it stopped until the list is reset.
    Results  of the overloads that take an FVariant: kResultOk or kResultFalse. All others: false, 0 or null for a miss
             and for a value of a kind that doesn't fit; the target stays as it was.
    Owns     what it says at each call; what is handed out is borrowed until its key is set, removed or converted. */
class FAttributes : public CmObject, public IAttributes2 {
public:
    DECLARE_CLASS(FAttributes, CmObject)
    DECLARE_NEWCOPY(FAttributes)
    FORWARD_REFCOUNT(CmObject)
    FROM_OBJECT_POOL
    int32_t queryInterface(const char* iid, void** obj) override;

    FAttributes() = default;
    /** Bags and lists within are copied, objects are shared. */
    FAttributes(const FAttributes& source);
    FAttributes& operator=(const FAttributes&) = delete;

    /** Both add all of a bag to another one. */
    bool storeAttributes(FAttributes& attributes) const override { return attributes.addAllFrom(*this); }
    bool restoreAttributes(FAttributes& attributes) override { return addAllFrom(attributes); }
    bool internalize(FArchive& archive) override { return list.internalizeAttributes(archive); }
    bool externalize(FArchive& archive) const override { return list.externalizeAttributes(archive); }

    bool set(const char* key, std::integral auto number) { return list.setLongAttribute(key, int64_t(number)); }
    bool set(const char* key, double number) { return list.setFloatAttribute(key, number); }
    /** Without a copy the text is borrowed. */
    bool set(const char* key, const ConstString& text, bool copy = true);
    bool setString(const char* key, const ConstString& text, bool copy = true) { return set(key, text, copy); }
    bool setString8(const char* key, const char* text, bool copy = true) { return set(key, ConstString(text), copy); }
    bool setString16(const char* key, const tchar* text, bool copy = true) { return set(key, ConstString(text), copy); }

    /** What doesn't fit into an integer loses its upper bits. */
    bool get(const char* key, std::integral auto& number) const;
    bool get(const char* key, std::floating_point auto& number) const;
    bool get(const char* key, String& text) const;
    int64_t getInt(const char* key) const;
    double getFloat(const char* key) const;
    /** Null when it is no text. They turn the text into their width; getString takes it in 16 bits. */
    const tchar* getString(const char* key) const { return getString16(key); }
    const char* getString8(const char* key) const;
    const tchar* getString16(const char* key) const;

    bool containsAttribute(const char* key) const { return list.getAttributeIndex(key) >= 0; }
    bool removeAttribute(const char* key) { return list.removeAttribute(key); }
    void removeAll() { list.removeAllAttributes(); }
    /** Takes all of another bag instead of what is here. */
    void take(FAttributes& other) { list.takeAttributes(other.list); }
    bool isEmpty() const { return list.countAttributes() == 0; }

    /** own: takes the reference over, otherwise adds one. Null removes the key. */
    bool setObject(const char* key, CmObject* object, bool own = false);
    /** A null className means any. Sees through references of an archive. */
    CmObject* getObject(const char* key, const char* className = nullptr) const;
    /** What an object has stored that is here in this form: of an unknown class, or stripped; null for others. */
    FAttributes* getObjectAttributes(const char* key) const;
    /** Keeps what the member stores of itself, not the member. */
    bool setMember(const char* key, const CmObject& member);
    bool getMember(const char* key, CmObject& member) const;
    bool setAttributes(const char* key, FAttributes* attributes, bool own = false);
    FAttributes* getAttributes(const char* key) const;

    /** size in bytes. Without a copy the bytes are borrowed. */
    bool setBinary(const char* key, const void* bytes, uint32_t size, bool copy = true);
    /** At most size bytes; false: there are no bytes of this name. */
    bool getBinary(const char* key, void* bytes, uint32_t size) const;
    uint32_t getBinarySize(const char* key) const;

    bool queueInt(const char* key, int64_t number);
    bool queueFloat(const char* key, double number);
    bool queueString(const char* key, const ConstString& text, bool copy = true);
    bool queueString8(const char* key, const char* text) { return queueString(key, ConstString(text)); }
    bool queueString16(const char* key, const tchar* text) { return queueString(key, ConstString(text)); }
    /** own: takes the reference over, otherwise the object is borrowed. False also when the objects that are there are held in
        the other way. */
    bool queueObject(const char* key, CmObject* object, bool own = false);
    bool queueMember(const char* key, const CmObject& member);
    /** own: takes the reference over, otherwise adds one. */
    bool queueAttributes(const char* key, FAttributes* attributes, bool own = false);
    bool unqueueInt(const char* key, int64_t& number) const;
    bool unqueueFloat(const char* key, double& number) const;
    bool unqueueString(const char* key, String& text) const;
    CmObject* unqueueObject(const char* key, const char* className = nullptr) const;
    /** As getObjectAttributes, of an item; the cursor stays. */
    FAttributes* lookupQueueObjectAttributes(const char* key, int32_t index) const;
    bool unqueueMember(const char* key, CmObject& member) const;
    FAttributes* unqueueAttributes(const char* key) const;
    int32_t countQueueItems(const char* key) const;
    /** The next reader starts at the first item. */
    bool resetList(const char* key) const;
    void resetAllLists() const;

    /** Replaces live objects by what they store (FCmObjectStripper). */
    bool stripObjects();

    /** path: keys with "." between them, through bags within bags. */
    bool extractValue(const char* path, FVariant& value) const;
    FAttributes* extractAttributes(const char* path) const;

    int32_t set(const char* key, const FVariant& value) override;
    int32_t queue(const char* key, const FVariant& value) override;
    int32_t setBinaryData(const char* key, void* data, uint32_t size, bool copy) override;
    /** The value borrows text and objects. */
    int32_t get(const char* key, FVariant& value) override;
    int32_t unqueue(const char* key, FVariant& value) override;
    int32_t getQueueItemCount(const char* key) override { return countQueueItems(key); }
    int32_t resetQueue(const char* key) override;
    int32_t resetAllQueues() override;
    int32_t getBinaryData(const char* key, void* data, uint32_t size) override;
    uint32_t getBinaryDataSize(const char* key) override { return getBinarySize(key); }
    int32_t countAttributes() const override { return list.countAttributes(); }
    /** Null out of range. */
    const char* getAttributeID(int32_t index) const override;
    /** Null out of range. */
    FStringIDAttribute* getAttribute(int32_t index) const;
    /** Behind those that are there, without looking for the key. Takes the reference over; false: no memory. */
    bool addAttribute(FStringIDAttribute* attribute) { return list.addAttribute(attribute); }
    /** Copies of all attributes, in the same way; bags and lists within are copied, objects are shared. */
    bool addAllFrom(const FAttributes& source);

private:
    using List = FAttributeList<FStringIDAttribute, const char*, CmArray>;

    /** Of a component too that is an object of ours. */
    CmObject* objectAt(const char* key) const;
    template <class Kind>
    Kind* kindAt(const char* key) const;
    /** As kindAt, for who asks for item after item. */
    template <class Kind>
    Kind* readerAt(const char* key) const;
    template <class Kind>
    Kind* listFor(const char* key);
    bool getNumberOrText(const char* key, FStringIDAttribute*& attribute) const;

    mutable List list;  // knows what is being read item after item
};

bool FAttributes::get(const char* key, std::integral auto& number) const {
    FStringIDAttribute* attribute = nullptr;
    if (!getNumberOrText(key, attribute))
        return false;
    number = static_cast<std::remove_reference_t<decltype(number)>>(attribute->getLong());
    return true;
}

bool FAttributes::get(const char* key, std::floating_point auto& number) const {
    FStringIDAttribute* attribute = nullptr;
    if (!getNumberOrText(key, attribute))
        return false;
    number = static_cast<std::remove_reference_t<decltype(number)>>(attribute->getFloat());
    return true;
}

}  // namespace Tessarine
