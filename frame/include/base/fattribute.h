#pragma once
#include "base/fobjectpool.h"
#include "base/source/fstring.h"
#include "collect/cmarray.h"
#include "pluginterfaces/base/smartpointer.h"
#include <optional>
#include <string_view>

namespace Tessarine {

/** One value of any kind: integer, float, text, object or pointer.

    Owns      objects by the flags they were set with, and its text unless that is borrowed (kShared).
    Setting   empties the value first; only the flags of kKept stay.
    Reading   numbers and text convert into each other; 0, null or false for a kind that can't. What is handed out is
              borrowed and lives until the value is set or emptied. */
class FAttributeValue : public CmObject {
public:
    DECLARE_CLASS(FAttributeValue, CmObject)
    DECLARE_NEWCOPY(FAttributeValue)
    enum Flag : uint16_t {
        kLong = 0x001,
        kObject = 0x002,
        kFloat = 0x004,
        kString = 0x008,
        kShared = 0x010,     // object: a reference is added; text: borrowed
        kOwned = 0x020,      // object: the reference is taken over
        kTransient = 0x040,  // isn't stored with its list
        kUnknown = 0x100,
        kPointer = 0x200,  // never stored
        kWide = 0x400,     // the text is 16-bit
        kNoReference = 0x800,
        kKept = kTransient | 0x080 | kNoReference,  // survive a change of the value
    };

    FAttributeValue() = default;
    /** Has its own copy of a text and shares a counted object. */
    FAttributeValue(const FAttributeValue& source);
    FAttributeValue& operator=(const FAttributeValue&) = delete;
    ~FAttributeValue() override { empty(); }

    void setLong(int64_t number);
    void setFloat(double number);
    void setPointer(void* pointer);
    /** flags: kOwned, kShared or none, and any of kKept. A null object only empties. */
    void setObj(CmObject* object, uint16_t flags);
    void setUnknown(FUnknown* object, uint16_t flags);
    /** Hands the object, with the reference that the value had, to the caller; null when there is none. */
    CmObject* detachObj();
    /** Without a copy the text is borrowed: it ends with a 0 and must outlive the value. */
    void setString(const ConstString& text, bool copy = true);
    void setString8(const char* text, bool copy = true) { setString(ConstString(text), copy); }
    void setString16(const tchar* text, bool copy = true) { setString(ConstString(text), copy); }
    /** Takes the text's block, and leaves it empty. */
    void takeString(String& text);
    /** Replaces a borrowed text by a copy. */
    void makeStringOwner();

    /** A float loses its fraction; both numbers stop at the bounds of the other. Text is read from its start. */
    int64_t getLong() const;
    double getFloat() const;
    void* getPointer() const { return is(kPointer) ? value.pointer : nullptr; }
    CmObject* getObj() const { return is(kObject) ? value.object : nullptr; }
    /** Any object. */
    FUnknown* getUnknown() const;
    /** The text in its width; empty when it is none. */
    ConstString getText() const;
    /** Text as it stands, numbers printed; false, and text as it was, for other kinds. */
    bool getString(String& text) const;
    /** Of texts only. In the other width they convert the value in place with code page 0, and copy a borrowed text. */
    const char* getString8();
    const tchar* getString16();

    /** Reports FArchive::kValueError for a kind that it doesn't know. */
    bool internalize(FArchive& archive) override;
    bool externalize(FArchive& archive) const override;

    bool is(uint16_t flags) const { return (type & flags) != 0; }
    bool isWide() const { return is(kWide); }
    /** Nothing has been set, or null. */
    bool isEmpty() const { return !is(kLong | kObject | kFloat | kString | kUnknown | kPointer); }
    uint16_t getType() const { return type; }
    /** Adds flags of kKept. */
    void keep(int32_t flags) { type = static_cast<uint16_t>(type | (flags & kKept)); }
    void empty();

private:
    union Value {
        int64_t number;
        double real;
        CmObject* object;
        FUnknown* unknown;
        void* pointer;  // a text too: owned ones from malloc, null when empty
    };

    bool readObject(FArchive& archive, uint16_t flags);
    FUnknown* counted() const;
    void setKind(uint16_t flags, Value newValue);
    bool setWidth(bool wide);

    Value value{};
    uint16_t type = 0;
};

/** A value by name. Null is the empty name. */
class FStringIDAttribute : public FAttributeValue {
public:
    DECLARE_CLASS(FStringIDAttribute, FAttributeValue)
    DECLARE_NEWCOPY(FStringIDAttribute)
    FROM_OBJECT_POOL
    explicit FStringIDAttribute(const char* id = nullptr) { setID(id ? std::string_view(id) : std::string_view()); }
    explicit FStringIDAttribute(std::string_view id) { setID(id); }
    FStringIDAttribute(const FStringIDAttribute& source);
    ~FStringIDAttribute() override { clearID(); }

    const char* getID() const { return longID ? longID : shortID; }
    int32_t compareID(const char* other) const { return std::strcmp(getID(), other ? other : ""); }
    /** By name; nothing else is equal. */
    bool isEqual(const CmObject* other) const override;
    int32_t compare(const CmObject* other) const override;
    /** The key, then the value. */
    bool internalize(FArchive& archive) override;
    bool externalize(FArchive& archive) const override;

private:
    void setID(std::string_view id);
    void clearID();

    char* longID = nullptr;  // owned; null: it is a short one
    char shortID[24];
};

/** A value by number. */
class FIntIDAttribute : public FAttributeValue {
public:
    DECLARE_CLASS(FIntIDAttribute, FAttributeValue)
    DECLARE_NEWCOPY(FIntIDAttribute)
    explicit FIntIDAttribute(int32_t id = 0) : id(id) {}

    int32_t getID() const { return id; }
    int32_t compareID(int32_t other) const { return (id > other) - (id < other); }
    bool isEqual(const CmObject* other) const override;
    int32_t compare(const CmObject* other) const override;
    /** The key, then the value. */
    bool internalize(FArchive& archive) override;
    bool externalize(FArchive& archive) const override;

private:
    int32_t id;
};

/** Stores the count of those attributes of the container that aren't transient or pointers, and these. Null is an empty
    container. */
bool externalizeAttributeArray(FArchive& archive, const CmContainer* attributes);
/** The count that stands in front of stored attributes; false: it can't be read, or is below 0. */
bool readAttributeCount(FArchive& archive, int32_t& count);

/** Values by key, in a container that is made with the first one and owns them: a CmArray in the order in which they came, or a
    CmOrderedArray in the order of their keys, with a search by halves.

    Flags     kAppend adds without looking for the key, so that duplicates are possible and the first one counts; flags
              of FAttributeValue::kKept are set on the attribute.
    Results   setters answer false only when the attribute can't be added. */
template <class Attribute, class Key, class Container>
class FAttributeList {
public:
    enum Flag : int32_t { kAppend = 4 };
    enum ObjectOwnership : int32_t { kBorrowed, kOwned, kShared };  // none, taken over, a reference more

    FAttributeList() = default;
    /** Copies of all attributes; objects are shared. */
    FAttributeList(const FAttributeList& source);
    FAttributeList& operator=(const FAttributeList&) = delete;

    /** Borrowed; null on a miss. */
    Attribute* getAttribute(Key key) const { return attributeAt(getAttributeIndex(key)); }
    /** As getAttribute, at once for whoever asks for the same one again and again. */
    Attribute* getAttributeAgain(Key key);
    /** -1 on a miss. */
    int32_t getAttributeIndex(Key key) const;
    /** Borrowed; null before the first attribute. */
    Container* getAttributeArray() const { return attributes ? &*attributes : nullptr; }
    int32_t countAttributes() const { return attributes ? attributes->total() : 0; }

    bool setLongAttribute(Key key, int64_t value, int32_t flags = 0);
    bool setFloatAttribute(Key key, double value, int32_t flags = 0);
    bool setPointerAttribute(Key key, void* pointer, int32_t flags = 0);
    /** Keep a copy of the text. */
    bool setStringAttribute(Key key, const ConstString& text, int32_t flags = 0);
    bool setStringAttribute8(Key key, const char* text, int32_t flags = 0);
    bool setStringAttribute16(Key key, const tchar* text, int32_t flags = 0);
    /** Null removes the attribute. */
    bool setObjAttribute(Key key, CmObject* object, int32_t ownership, int32_t flags = 0);
    bool setUnknownAttribute(Key key, FUnknown* object, int32_t ownership, int32_t flags = 0);
    /** Borrowed; null on a miss, and for an object that isn't of the class. A null className means any. */
    CmObject* getObjAttribute(Key key, const char* className = nullptr) const;
    /** Without looking for its key. Takes the reference over; false: no memory. */
    bool addAttribute(Attribute* attribute) { return append(OPtr<Attribute>(attribute)) != nullptr; }
    bool removeAttribute(Key key) {
        lastFound = -1;
        return attributes && attributes->removeAt(getAttributeIndex(key));
    }
    void removeAllAttributes() {
        lastFound = -1;
        if (attributes)
            attributes->removeAll();
        attributes.reset();
    }
    /** Takes all of another list instead of what is here. */
    void takeAttributes(FAttributeList& other);

    /** The stored attributes instead of the present ones. False: one couldn't be read; those before it are here. */
    bool internalizeAttributes(FArchive& archive);
    bool externalizeAttributes(FArchive& archive) const {
        return externalizeAttributeArray(archive, getAttributeArray());
    }

private:
    static constexpr int32_t kDelta = -1;  // twice the places: a stored bag may have very many

    Attribute* attributeAt(int32_t index) const;
    Attribute* attributeFor(Key key, int32_t flags);
    Attribute* append(OPtr<Attribute> attribute);
    template <class Set>
    bool setAttribute(Key key, int32_t flags, Set set);

    mutable std::optional<Container> attributes;  // made on first use
    int32_t lastFound = -1;                       // again; nothing is put in front of it
};

template <class Attribute, class Key, class Container>
FAttributeList<Attribute, Key, Container>::FAttributeList(const FAttributeList& source) {
    if (source.attributes)
        attributes.emplace(*source.attributes);
}

template <class Attribute, class Key, class Container>
void FAttributeList<Attribute, Key, Container>::takeAttributes(FAttributeList& other) {
    if (&other == this)
        return;
    removeAllAttributes();
    if (!other.attributes)
        return;
    for (CmObject* attribute : *other.attributes)
        append(OPtr<Attribute>(static_cast<Attribute*>(attribute)));
    other.attributes->_ownsObjects = CmContainer::kBorrows;
    other.removeAllAttributes();
}

template <class Attribute, class Key, class Container>
Attribute* FAttributeList<Attribute, Key, Container>::getAttributeAgain(Key key) {
    Attribute* known = lastFound >= 0 ? attributeAt(lastFound) : nullptr;
    if (known && known->compareID(key) == 0)
        return known;
    lastFound = getAttributeIndex(key);
    return attributeAt(lastFound);
}

template <class Attribute, class Key, class Container>
int32_t FAttributeList<Attribute, Key, Container>::getAttributeIndex(Key key) const {
    if (!attributes)
        return -1;
    const auto compareAt = [&](int32_t at) { return static_cast<Attribute*>(attributes->begin()[at])->compareID(key); };
    const int32_t count = attributes->total();
    int32_t index = 0;
    if constexpr (std::same_as<Container, CmOrderedArray>) {
        for (int32_t left = count; left > 0;) {  // the first of equal keys
            const int32_t half = left / 2;
            const bool isBehind = compareAt(index + half) < 0;
            index += isBehind ? half + 1 : 0;
            left = isBehind ? left - half - 1 : half;
        }
        return index < count && compareAt(index) == 0 ? index : -1;
    } else {
        while (index < count && compareAt(index) != 0)
            ++index;
        return index < count ? index : -1;
    }
}

template <class Attribute, class Key, class Container>
bool FAttributeList<Attribute, Key, Container>::setLongAttribute(Key key, int64_t value, int32_t flags) {
    return setAttribute(key, flags, [value](Attribute& attribute) { attribute.setLong(value); });
}

template <class Attribute, class Key, class Container>
bool FAttributeList<Attribute, Key, Container>::setFloatAttribute(Key key, double value, int32_t flags) {
    return setAttribute(key, flags, [value](Attribute& attribute) { attribute.setFloat(value); });
}

template <class Attribute, class Key, class Container>
bool FAttributeList<Attribute, Key, Container>::setPointerAttribute(Key key, void* pointer, int32_t flags) {
    return setAttribute(key, flags, [pointer](Attribute& attribute) { attribute.setPointer(pointer); });
}

template <class Attribute, class Key, class Container>
bool FAttributeList<Attribute, Key, Container>::setStringAttribute(Key key, const ConstString& text, int32_t flags) {
    return setAttribute(key, flags, [&text](Attribute& attribute) { attribute.setString(text); });
}

template <class Attribute, class Key, class Container>
bool FAttributeList<Attribute, Key, Container>::setStringAttribute8(Key key, const char* text, int32_t flags) {
    return setStringAttribute(key, ConstString(text), flags);
}

template <class Attribute, class Key, class Container>
bool FAttributeList<Attribute, Key, Container>::setStringAttribute16(Key key, const tchar* text, int32_t flags) {
    return setStringAttribute(key, ConstString(text), flags);
}

/** The value's flags for an ownership of a list. */
inline uint16_t attributeFlagsOf(int32_t ownership) {
    constexpr uint16_t kFlags[] = {0, FAttributeValue::kOwned, FAttributeValue::kShared};
    return ownership >= 0 && ownership < 3 ? kFlags[ownership] : uint16_t(0);
}

template <class Attribute, class Key, class Container>
bool FAttributeList<Attribute, Key, Container>::setObjAttribute(Key key, CmObject* object, int32_t ownership,
                                                                int32_t flags) {
    if (!object) {
        removeAttribute(key);
        return true;
    }
    const uint16_t owned = attributeFlagsOf(ownership);
    return setAttribute(key, flags, [=](Attribute& attribute) { attribute.setObj(object, owned); });
}

template <class Attribute, class Key, class Container>
bool FAttributeList<Attribute, Key, Container>::setUnknownAttribute(Key key, FUnknown* object, int32_t ownership,
                                                                    int32_t flags) {
    if (!object) {
        removeAttribute(key);
        return true;
    }
    const uint16_t owned = attributeFlagsOf(ownership);
    return setAttribute(key, flags, [=](Attribute& attribute) { attribute.setUnknown(object, owned); });
}

template <class Attribute, class Key, class Container>
CmObject* FAttributeList<Attribute, Key, Container>::getObjAttribute(Key key, const char* className) const {
    const Attribute* attribute = getAttribute(key);
    CmObject* object = attribute ? attribute->getObj() : nullptr;
    return object && (!className || object->isTypeOf(className, true)) ? object : nullptr;
}

template <class Attribute, class Key, class Container>
Attribute* FAttributeList<Attribute, Key, Container>::attributeAt(int32_t index) const {
    return attributes ? static_cast<Attribute*>(attributes->at(index)) : nullptr;
}

template <class Attribute, class Key, class Container>
Attribute* FAttributeList<Attribute, Key, Container>::attributeFor(Key key, int32_t flags) {
    Attribute* known = flags & kAppend ? nullptr : getAttribute(key);
    if (known)
        return known;
    return append(OPtr<Attribute>(new Attribute(key)));
}

template <class Attribute, class Key, class Container>
Attribute* FAttributeList<Attribute, Key, Container>::append(OPtr<Attribute> attribute) {
    if (!attributes) {
        attributes.emplace(0, kDelta);
        attributes->_ownsObjects = CmContainer::kTakesOver;
    }
    return attributes->add(attribute.get()) ? attribute.detach() : nullptr;
}

template <class Attribute, class Key, class Container>
bool FAttributeList<Attribute, Key, Container>::internalizeAttributes(FArchive& archive) {
    removeAllAttributes();
    int32_t count = 0;
    if (!readAttributeCount(archive, count))
        return false;
    for (; count > 0; --count) {
        OPtr<Attribute> attribute(new Attribute);
        if (!attribute->internalize(archive) || !append(attribute))
            return false;
    }
    return true;
}

template <class Attribute, class Key, class Container>
template <class Set>
bool FAttributeList<Attribute, Key, Container>::setAttribute(Key key, int32_t flags, Set set) {
    Attribute* attribute = attributeFor(key, flags);
    if (!attribute)
        return false;
    attribute->keep(flags);
    set(*attribute);
    return true;
}

}  // namespace Tessarine
