#pragma once
#include "base/fattribute.h"
#include "base/source/tarray.h"
#include "pluginterfaces/base/fvariant.h"

/** What a bag of attributes can hold under one key beside a single value: lists that are filled at their end and read
    from a cursor, and blocks of bytes. */

namespace Tessarine {
class FAttributes;

/** A list and the cursor that the next reader starts from. */
class FAttrList : public CmObject {
public:
    DECLARE_ABSTRACT_CLASS(FAttrList, CmObject)

    virtual int32_t total() const = 0;
    /** A view of the item, which the list keeps; false out of range. */
    virtual bool getItem(int32_t index, FVariant& value) = 0;

    /** The index that the cursor stands on, which then moves on; -1 past the end. */
    int32_t step() { return cursor < total() ? cursor++ : -1; }
    void reset() { cursor = 0; }

private:
    int32_t cursor = 0;
};

class FIntList : public FAttrList {
public:
    DECLARE_CLASS(FIntList, FAttrList)
    DECLARE_NEWCOPY(FIntList)
    FIntList() : numbers(0, -1) {}
    FIntList(const FIntList& source);

    bool queue(int64_t number) { return numbers.add(number); }
    int32_t total() const override { return numbers.total(); }
    bool getItem(int32_t index, FVariant& value) override;

    TArray<int64_t> numbers;
};

class FFloatList : public FAttrList {
public:
    DECLARE_CLASS(FFloatList, FAttrList)
    DECLARE_NEWCOPY(FFloatList)
    FFloatList() : numbers(0, -1) {}
    FFloatList(const FFloatList& source);

    bool queue(double number) { return numbers.add(number); }
    int32_t total() const override { return numbers.total(); }
    bool getItem(int32_t index, FVariant& value) override;

    TArray<double> numbers;
};

class FStringList : public FAttrList {
public:
    DECLARE_CLASS(FStringList, FAttrList)
    DECLARE_NEWCOPY(FStringList)
    FStringList() : texts(0, -1) { texts._ownsObjects = CmContainer::kTakesOver; }
    FStringList(const FStringList& source) : FAttrList(source), texts(source.texts) {}

    /** Without a copy the text is borrowed, until makeOwner. */
    bool queue(const ConstString& text, bool copy = true);
    /** Replaces borrowed texts by copies. */
    void makeOwner();
    /** Null out of range. */
    FAttributeValue* at(int32_t index) const { return static_cast<FAttributeValue*>(texts.at(index)); }
    int32_t total() const override { return texts.total(); }
    bool getItem(int32_t index, FVariant& value) override;

private:
    CmArray texts;  // of FAttributeValue
};

/** Objects, borrowed or taken over: all in the same way. */
class FObjectList : public FAttrList {
public:
    DECLARE_CLASS(FObjectList, FAttrList)
    DECLARE_NEWCOPY(FObjectList)
    explicit FObjectList(bool owns = false) : objects(0, -1) { objects._ownsObjects = owns ? 1 : 0; }
    /** Holds the same objects. */
    FObjectList(const FObjectList& source);

    /** The list as it was made to own or not; false for another ownership, and for null. */
    bool queue(CmObject* object, bool own) { return own == ownsObjects() && objects.add(object); }
    bool ownsObjects() const { return objects._ownsObjects == CmContainer::kTakesOver; }
    /** Borrowed; null out of range. */
    CmObject* at(int32_t index) const { return objects.at(index); }
    /** The same behind a reference of an archive; null as long as that isn't resolved. */
    CmObject* targetAt(int32_t index) const;
    int32_t total() const override { return objects.total(); }
    bool getItem(int32_t index, FVariant& value) override;

private:
    CmArray objects;
};

/** Bags within a bag. */
class FSubList : public FAttrList {
public:
    DECLARE_CLASS(FSubList, FAttrList)
    DECLARE_NEWCOPY(FSubList)
    FSubList() : bags(0, -1) { bags._ownsObjects = CmContainer::kTakesOver; }
    /** Holds copies of the bags. */
    FSubList(const FSubList& source) : FAttrList(source), bags(source.bags) {}

    /** Takes the reference over; false, and it stays the caller's: no memory. */
    bool queue(FAttributes* attributes);
    FAttributes* at(int32_t index) const;
    int32_t total() const override { return bags.total(); }
    bool getItem(int32_t index, FVariant& value) override;

private:
    CmArray bags;  // of FAttributes
};

/** A block of bytes: a copy, or somebody else's that must outlive it. */
class FAttrBuffer : public CmObject {
public:
    DECLARE_CLASS(FAttrBuffer, CmObject)
    DECLARE_NEWCOPY(FAttrBuffer)
    FAttrBuffer() = default;
    FAttrBuffer(const void* bytes, uint32_t size, bool copy);
    FAttrBuffer(const FAttrBuffer& source) : FAttrBuffer(source.bytes, source.length, true) {}
    ~FAttrBuffer() override;

    const void* data() const { return bytes; }
    /** In bytes; 0 also when there was no memory for a copy. */
    uint32_t size() const { return length; }

private:
    const void* bytes = nullptr;
    uint32_t length = 0;
    bool owned = false;
};

/** The bytes of an object that a bag stores as bytes: an FAttrBuffer, CmBuffer or FMemoryStream. False: it is none. */
bool bytesOf(CmObject* object, const void*& bytes, uint32_t& size);

}  // namespace Tessarine
