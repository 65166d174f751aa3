#pragma once
#include "storage/farchive.h"
#include "storage/fpersistent.h"

namespace Tessarine {
class FStream;

/** What the archives of attributes share: named roots that are written, or that were read.

    Use      made for one direction, filled with roots or loaded, once. An object that is met twice, by whatever ways, is stored
             once.
    Roots    objects that are added are borrowed to the end of the archive; those that were read belong to it.
    Stream   borrowed, at the place where the archive begins; after loading it stands behind it, if it can seek.
    Results  false for any failure: save leaves a part in the stream, load keeps the roots that were read before. What is known of
             the failure goes to the hook of the scope: FArchive::kStreamError for an object that can't be stored,
             kUnreadableObject for one that is of an unknown class, which is no failure, or that can't be restored.
    Depth    bags, objects and lists are nested to kMaxDepth, to read and to write.
    Threads  one for an archive. */
class FAttributeArchiveBase {
public:
    static constexpr int32_t kMaxDepth = 512;

    virtual ~FAttributeArchiveBase() = default;
    FAttributeArchiveBase(const FAttributeArchiveBase&) = delete;
    FAttributeArchiveBase& operator=(const FAttributeArchiveBase&) = delete;

    bool addRoot(const char* name, CmObject* object);
    /** With a reference for the caller; null for a miss, and when the object isn't of the class. A null className means any. */
    CmObject* getRoot(const char* name, const char* className = nullptr) const;
    /** What the object stores of itself becomes a bag of that name, without identity. A bag is stored as it is. */
    bool addGlobalRoot(const char* name, CmObject* object);
    /** Restores the object from the bag of that name. */
    bool getGlobalRoot(const char* name, CmObject* object) const;

protected:
    using RootList = FAttributeList<FStringIDAttribute, const char*, CmArray>;

    FAttributeArchiveBase(FStream* stream, bool writing) : stream(stream), writing(writing) {}

    RootList roots, globalRoots;
    FStream* stream;  // borrowed
    bool writing;
};

/** Names who hears of the failures of attribute archives on this thread, to the end of the block. */
class FAttributeArchiveErrorHookScope {
public:
    /** Borrowed; null: nobody. */
    explicit FAttributeArchiveErrorHookScope(IArchiveErrorHook* hook);
    ~FAttributeArchiveErrorHookScope();
    FAttributeArchiveErrorHookScope(const FAttributeArchiveErrorHookScope&) = delete;
    FAttributeArchiveErrorHookScope& operator=(const FAttributeArchiveErrorHookScope&) = delete;

    static void report(int32_t code, const char* className);

private:
    IArchiveErrorHook* outer;
};

/** How an object in a bag is stored. The numbers are those of binary files. */
enum StoredForm : uint16_t {
    kStoredNothing = 0,
    kStoredInts = 2,
    kStoredFloats = 3,
    kStoredStrings = 4,
    kStoredBags = 5,
    kStoredBag = 6,
    kStoredBytes = 7,
    kStoredObject = 20,
    kStoredReference = 21,
    kStoredObjects = 201,
};
/** Of a reference: kStoredObject as long as its object is there. */
StoredForm storedFormOf(const CmObject& object);
/** The name in storage of an object's class. */
const char* persistentNameOf(const CmObject& object);
/** An object's place among buckets by its identity, whatever its own hash says. */
uint32_t gHashObject(const CmObject* object, uint32_t buckets);

}  // namespace Tessarine
