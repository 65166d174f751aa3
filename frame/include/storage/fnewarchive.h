#pragma once
#include "base/source/thashtable.h"
#include "pluginterfaces/base/smartpointer.h"
#include "storage/ffiletype.h"
#include "storage/fobjectarchive.h"
#include <unordered_map>

namespace Tessarine {

/** Object graphs in a stream, with class records, and with sizes by which a reader steps over what it can't read. Numbers
    are in the stream's byte order, positions count from where the archive began.

      null object       int32 0
      known object      int32 position of its size field
      object            class, int32 size, so many bytes of the object's own
      known class       int32 position of its record, with 0x80000000 set
      class             for each base without a record, the nearest first: int32 -2, name, int16 version; then int32 -1, name,
                        int16 version. Names are int32 length and text with its terminator.

    Reading   an object of an unknown class, or one that fails to read itself or reads more than its size, is an error and a hole:
              null, and the stream goes on behind it. A size that passes the end of what it stands in ends the reading. */
class FNewArchive final : public FObjectArchive {
public:
    /** The stream stands where the archive begins. */
    FNewArchive(FStream* stream, bool writing, IArchiveErrorHook* errorHook = nullptr);

    bool writeObject(const CmObject* object, bool keepReference) override;
    CmObject* readObject(const char* expectedClass, bool keepReference) override;

    // Files in the user's folder, by name and fileType, with what one object externalizes: whole or not at all. What is read may
    // also lie in the folder that all users share. Names are mere names, without "/". Main thread.
    static bool storeObject(const char* name, const CmObject* object);
    static bool restoreObject(const char* name, CmObject* object);
    static bool objectArchiveExists(const char* name);
    static bool removeObjectArchive(const char* name);
    static bool renameObjectArchive(const char* name, const char* newName);

    static const FFileType fileType;

private:
    using Positions = THashDictionary<const void*, int32_t>;
    struct PositionHash {
        size_t operator()(int32_t position) const;
    };
    using Objects = std::unordered_map<int32_t, IPtr<CmObject>, PositionHash>;
    using Classes = std::unordered_map<int32_t, ClassRecord, PositionHash>;
    class Enclosing;

    bool writeClass(const MetaClass& metaClass);
    bool storeMetaClass(const MetaClass& metaClass, int32_t mark);
    bool readClass(int32_t reference, ClassRecord& record);
    bool restoreMetaClass(ClassRecord& record);
    /** A class whose record stands in content that was stepped over, before the present place. */
    bool readClassAt(int32_t classPosition, ClassRecord& record);
    OPtr<CmObject> readNewObject(const ClassRecord& record, const char* expectedClass, int32_t id, bool keepReference);
    /** -1: no position has been noted. */
    static int32_t getObjectID(const void* pointer, const Positions& positions);
    bool storeObjectID(const void* pointer, Positions& positions);
    /** From the archive's start. */
    int64_t position() const;
    /** Where the innermost object that is being read ends, else the stream, if it knows. */
    int64_t endOfEnclosing() const;

    int64_t start;
    Positions objectPositions, classPositions;  // written
    Objects objects;                            // read
    Classes classes;                            // read
};

}  // namespace Tessarine
