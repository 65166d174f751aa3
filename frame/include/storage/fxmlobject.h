#pragma once
#include "base/source/fstring.h"
#include "storage/fpersistent.h"
#include <unordered_map>
#include <utility>
#include <vector>

/** What stands in a bag for an object of an archive that isn't there as itself. None of these is made by name. */

namespace Tessarine {

/** Releases an object that may hold the like of its holder: when that makes others be dropped, and these again others, they
    go one by one, so that no length of a chain costs stack. Any thread. */
void dropObject(OPtr<CmObject> object);

/** An object by the identity that it has in an archive. Equality, order and hash are those of the id. Written as a
    reference to this id. */
class FXmlObject : public CmObject {
public:
    DECLARE_ABSTRACT_CLASS(FXmlObject, CmObject)
    explicit FXmlObject(uint64_t id) : id(id) {}

    uint64_t getID() const { return id; }
    bool isEqual(const CmObject* other) const override;
    int32_t compare(const CmObject* other) const override;
    uint32_t hash(uint32_t buckets) const override;
    /** False: an archive of objects couldn't make it again. */
    bool externalize(FArchive& /*archive*/) const override { return false; }

protected:
    uint64_t id;
};

/** An object with its class name: the object itself, or what it has stored when this program doesn't know the class. So it
    survives being loaded and saved again. */
class FXmlInstance : public FXmlObject {
public:
    DECLARE_ABSTRACT_CLASS(FXmlInstance, FXmlObject)
    FXmlInstance(uint64_t id, const char* classID);
    /** However long a chain of instances hold each other, they go one by one. */
    ~FXmlInstance() override;

    bool hasClassID() const { return !classID.isEmpty(); }
    const char* getClassID() const { return classID.text8(); }
    /** Null without one. */
    CmObject* getObject() const { return object; }
    void setObject(CmObject* newObject) { object = newObject; }
    /** Made at first use. */
    FAttributes* getAttributes();
    /** Null before that. */
    const FAttributes* getAttributes() const { return attributes; }
    OPtr<FAttributes> detachAttributes() { return std::move(attributes); }
    /** What stands for this in memory: the object, or this itself. */
    CmObject* getStandIn() { return object ? object.get() : this; }

private:
    FString classID;
    IPtr<CmObject> object;
    OPtr<FAttributes> attributes;
};

/** A reference that is resolved at the end of loading. Getters of a bag see through it.

    object   counted. Where counting would keep a ring of objects alive for ever there is none, and the id is the address
             at which the object is known in this process: it is written as that, and never followed.
    id       0: nothing that was ever read. It isn't written. */
class FXmlReference : public FXmlObject {
public:
    DECLARE_ABSTRACT_CLASS(FXmlReference, FXmlObject)
    explicit FXmlReference(uint64_t id) : FXmlObject(id) {}
    /** However long a chain of references is, its objects go one by one. */
    ~FXmlReference() override;

    CmObject* getObject() const { return object; }
    void setObject(CmObject* target) { object = target; }
    /** Stands for the object without holding it; for nothing when it is null. */
    void setIdentity(const CmObject* target) { id = reinterpret_cast<uintptr_t>(target); }

    /** The object behind a reference, null when there is none; any other object is itself. */
    static CmObject* targetOf(CmObject* object);

private:
    IPtr<CmObject> object;
};

/** Turns the live objects in a bag, in what they store and in what FXmlInstances hold, into FXmlInstances. An object that is
    met twice becomes one of them; inside itself it is only referred to. Bags, lists and references within the bag become new
    ones, since live objects may have lent them. Raw pointers stay; components that are no objects of
    ours go. */
class FCmObjectStripper {
public:
    /** False: an object couldn't store all of itself, a bag holds itself, or bags are nested deeper than archives allow. No object is left alive in
        either case. */
    bool strip(FAttributes& attributes);

private:
    struct Stripped {
        IPtr<CmObject> live;  // held, so that no other object gets its address
        IPtr<FXmlInstance> form;
        bool isOpen;
    };

    bool stripValue(FStringIDAttribute& attribute);
    OPtr<FAttributes> strippedBag(const FAttributes& bag, bool& whole);
    OPtr<FSubList> strippedBags(const FSubList& list, bool& whole);
    bool stripList(FStringIDAttribute& attribute, const FObjectList& list);
    /** Null for null. */
    OPtr<CmObject> formOf(CmObject* object, bool& whole);

    OPtr<CmObject> identityOf(CmObject* object);
    void redirect();

    std::unordered_map<const CmObject*, Stripped> known;
    std::vector<IPtr<FXmlReference>> identities;  // made: they stand for live objects
    std::vector<const FAttributes*> openBags;
    int32_t depth = 0;
};

}  // namespace Tessarine
