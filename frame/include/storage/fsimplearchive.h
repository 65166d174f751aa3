#pragma once
#include "base/source/thashtable.h"
#include "pluginterfaces/base/smartpointer.h"
#include "storage/fobjectarchive.h"

namespace Tessarine {

/** Object graphs in a stream, as short as can be: classes and objects are counted from 1, each for itself and all of them, and
    there are no sizes.

      null object       int32 0
      known object      int32 index
      object            class, and the object's own
      known class       int32 index, with 0x80000000 set
      class             int32 -1, name (int32 length and text with its terminator), int16 version

    Reading   what can't be read ends the reading, as nothing tells where it ends. */
class FSimpleArchive final : public FObjectArchive {
public:
    FSimpleArchive(FStream* stream, bool writing, IArchiveErrorHook* errorHook = nullptr);

    bool writeObject(const CmObject* object, bool keepReference) override;
    CmObject* readObject(const char* expectedClass, bool keepReference) override;

private:
    /** Written: the index of an address. */
    using FIndex = THashDictionary<const void*, int32_t>;
    /** Read: the object of an index, from 1. */
    using FPointer = TArray<IPtr<CmObject>>;

    bool writeClass(const MetaClass& metaClass);
    bool readClass(int32_t reference, ClassRecord& record);

    FIndex objectIndexes, classIndexes;
    int32_t objectCount = 0;
    FPointer objects;
    TArray<ClassRecord> classes;
};

}  // namespace Tessarine
