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

/** What the lists of numbers are made of. */
template <class Number>
class FNumberList : public FAttrList {
public:
    FNumberList() : numbers(0, -1) {}
    FNumberList(const FNumberList& source) : FAttrList(source), numbers(0, -1) {
        numbers.resize(source.total());
        numbers.addAllFrom(source.numbers);
    }

    bool queue(Number number) { return numbers.add(number); }
    /** The next one from the cursor; false, and number as it was: past the end. */
    bool unqueue(Number& number) {
        const int32_t index = step();
        if (index >= 0)
            number = numbers.at(index);
        return index >= 0;
    }
    int32_t total() const override { return numbers.total(); }
    bool getItem(int32_t index, FVariant& value) override {
        if (index < 0 || index >= total())
            return false;
        value = FVariant(numbers.at(index));
        return true;
    }
    /** A count, then the numbers, in 64 bits each. */
    bool internalize(FArchive& archive) override;
    bool externalize(FArchive& archive) const override;

    TArray<Number> numbers;
};

class FIntList : public FNumberList<int64_t> {
public:
    DECLARE_CLASS(FIntList, FAttrList)
    DECLARE_NEWCOPY(FIntList)
};

class FFloatList : public FNumberList<double> {
public:
    DECLARE_CLASS(FFloatList, FAttrList)
    DECLARE_NEWCOPY(FFloatList)
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
    /** A count, then the texts in the form of FString. */
    bool internalize(FArchive& archive) override;
    bool externalize(FArchive& archive) const override;

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
    /** A count, then the objects, without what isn't resolved. What was read is owned. */
    bool internalize(FArchive& archive) override;
    bool externalize(FArchive& archive) const override;

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
    /** A count, then the bags. */
    bool internalize(FArchive& archive) override;
    bool externalize(FArchive& archive) const override;

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
    /** The size, then the bytes. */
    bool internalize(FArchive& archive) override;
    bool externalize(FArchive& archive) const override;

private:
    void set(const void* source, uint32_t size, bool copy);

    const void* bytes = nullptr;
    uint32_t length = 0;
    bool owned = false;
};

/** The bytes of an object that a bag stores as bytes: an FAttrBuffer, CmBuffer or FMemoryStream. False: it is none. */
bool bytesOf(CmObject* object, const void*& bytes, uint32_t& size);

}  // namespace Tessarine
