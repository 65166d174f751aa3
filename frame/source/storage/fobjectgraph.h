#pragma once
#include "collect/cmhashtable.h"
#include "collect/cmlinkedlist.h"
#include "frame/source/storage/fholdingorder.h"
#include "storage/fattributearchive.h"
#include "storage/fxmlobject.h"
#include <vector>

/** The objects of one attribute archive while it is written or read, whatever the format. */

namespace Tessarine {

/** A table of objects that grows with them. */
class FGrowingTable : public CmHashTable {
public:
    explicit FGrowingTable(int32_t buckets) : CmHashTable(buckets) { autoResize = 1; }
};

/** What has been written. Held, so that no object that is made for the bag of another gets the address of an earlier one. */
class FSeenObjects {
public:
    FSeenObjects();
    /** False: it was there before. */
    bool add(const CmObject* object);

private:
    FGrowingTable table;
};

/** The id that an object is written with. */
inline uint64_t idOf(const CmObject& object) {
    return reinterpret_cast<uintptr_t>(&object);
}

/** How an object is stored; it becomes the one behind a reference or an instance. */
StoredForm formBehind(CmObject*& object);

/** What an object stores of itself. False: it failed, and the hook has heard of it. */
bool storeObjectIn(FAttributes& attributes, const CmObject& object);

/** What is stored of a value of a bag. */
struct FStoredValue {
    /** The value's kind, and of an object its form. */
    explicit FStoredValue(const FAttributeValue& value);
    bool isStored() const { return kind != 0; }

    uint16_t kind = 0;  // kLong, kFloat, kString, kObject or kUnknown; 0: nothing is written of it
    StoredForm form = kStoredNothing;
    CmObject* object = nullptr;  // behind references
};

/** Nests to FAttributeArchiveBase::kMaxDepth. */
class FArchiveDepth {
public:
    explicit FArchiveDepth(int32_t& depth) : depth(++depth) {}
    ~FArchiveDepth() { --depth; }
    FArchiveDepth(const FArchiveDepth&) = delete;
    FArchiveDepth& operator=(const FArchiveDepth&) = delete;
    bool isTooDeep() const { return depth > FAttributeArchiveBase::kMaxDepth; }

private:
    int32_t& depth;
};

/** Makes objects and resolves references.

    Order      begin, the object's bag, end; objects nest. An object is known from begin on, and is restored at end.
    References to what is known are the objects themselves. All others, and all that stand in the bag of an object of an
               unknown class, are FXmlReferences until finish(). So are, in a bag that is an object, those to other such
               bags and to what it stands in.
    Owns       all objects that were begun, until it ends. */
class FObjectLoader {
public:
    FObjectLoader();
    /** The new object; its bag is to be filled. Of two objects of one id the first is the one that is referred to. */
    FXmlInstance& begin(const char* className, uint64_t id);
    /** False: the object couldn't be restored. */
    bool end();
    /** What stands in a bag for the object of this id; null: it can't stand there, since it would own itself. */
    OPtr<CmObject> refer(uint64_t id);
    bool isKnown(uint64_t id) const { return lookup(id) != nullptr; }
    /** Resolves what can be resolved. */
    void finish();
    /** The object that was begun last and isn't ended; null: none. */
    FXmlInstance* current() const;

private:
    class Loaded;
    struct Reference {
        int32_t owner;  // the object whose bag it stands in
        uint64_t id;
        bool isHeld;  // from the beginning
    };

    Loaded* lookup(uint64_t id) const;
    bool mayHold(const Loaded& known);
    FHoldingOrder holdingOrder() const;

    OPtr<CmArray> objects;         // of Loaded, in the order of the file
    std::vector<int32_t> parents;  // of each object: what it stands in; -1: nothing
    std::vector<int32_t> heights;  // of each object: how many that hold objects are below it
    std::vector<int32_t> open;
    FGrowingTable byID;             // of Loaded
    CmLinkedList references;        // of FXmlReference
    std::vector<int32_t> owners;    // of each of these: the object whose bag it stands in; -1: none
    std::vector<Reference> met;     // all references within objects
    std::vector<uint64_t> rootIDs;  // of those that stand in none
};

}  // namespace Tessarine
