#pragma once
#include "base/source/fstring.h"
#include "base/source/tarray.h"
#include "storage/farchive.h"
#include <unordered_map>
#include <vector>

namespace Tessarine {

/** What the object archives share: the way objects come into being, and the bounds on what a stream may claim. */
class FObjectArchive : public FArchive {
public:
    bool save(const CmObject* object, bool keepReference) final { return writeObject(object, keepReference); }
    CmObject* load(const char* className, bool keepReference) final { return readObject(className, keepReference); }
    using FArchive::load;
    using FArchive::save;

    virtual bool writeObject(const CmObject* object, bool keepReference) = 0;
    virtual CmObject* readObject(const char* expectedClass, bool keepReference) = 0;
    /** The names of the classes whose objects couldn't be written, each once. */
    const TArray<String>& getFailedClasses() const { return failedClasses; }

protected:
    FObjectArchive(FStream* stream, bool writing, IArchiveErrorHook* errorHook);

    /** A class as the stream tells it. */
    struct ClassRecord {
        String name;
        int32_t version = 0;

        bool operator==(const ClassRecord& other) const { return name == other.name; }
    };
    /** Written as a mark, the name in storage and the version. */
    bool writeClassRecord(const MetaClass& metaClass, int32_t mark);
    /** The same without the mark, which has been read. False also for a name of more than 4096 bytes. */
    bool readClassRecord(ClassRecord& record);
    /** externalize, and the account of what failed. Objects within objects are refused at a depth of kMaxDepth: none
        could be read again. */
    bool writeContent(const CmObject& object);
    /** A new object of the class; null, and an error, when there is no such class. */
    CmObject* makeObject(const ClassRecord& record);
    /** internalize, with the error when it fails. Objects within objects are refused at a depth of kMaxDepth. */
    bool readContent(CmObject& object, const ClassRecord& record);
    /** The object with a reference more; null for null, and when it isn't of the class. */
    static CmObject* handOut(CmObject* object, const char* expectedClass);
    /** The same of an object that has been read already. Null too, and an error, for one that holds objects and would
        hold itself, and behind a chain of kMaxDepth of them, since a chain is torn down by recursion. */
    CmObject* handOutKnown(CmObject* object, const char* expectedClass);
    /** The stream makes no sense from here on: nothing more is read. */
    CmObject* breakOff();
    /** What the next object begins with. False: nothing follows, as it is a null object or the reading has ended. */
    bool readReference(int32_t& reference);

    static constexpr int32_t kNullMark = 0;
    static constexpr int32_t kClassMark = -1;
    static constexpr int32_t kKnownClass = INT32_MIN;  // the bit that tells a known class from an object
    static constexpr int32_t kMaxDepth = 512;

private:
    void noteHeight(const CmObject* held);

    bool broken = false;
    std::vector<const CmObject*> open;  // what is being written or read, from the outside to the inside
    std::unordered_map<const CmObject*, int32_t> heights;  // of those that hold objects: how many such below it
    TArray<String> failedClasses;
};

/** A key of an address in a table, and the hash for it. */
using ArchivePointer = TAssociation<const void*, int32_t>;
int32_t hashPointer(const ArchivePointer& pointer, int32_t buckets);

}  // namespace Tessarine
