#include "storage/fsimplearchive.h"
#include "storage/fbstream.h"

namespace Tessarine {
namespace {
constexpr int32_t kBuckets = 1000;
}

FSimpleArchive::FSimpleArchive(FStream* stream, bool writing, IArchiveErrorHook* errorHook)
    : FObjectArchive(stream, writing, errorHook), objectIndexes(kBuckets, hashPointer),
      classIndexes(kBuckets, hashPointer), objects(0, -1), classes(0, -1) {}

bool FSimpleArchive::writeObject(const CmObject* object, bool keepReference) {
    if (getLastError() != 0)
        return false;
    if (!object)
        return stream->writeInt32(kNullMark);
    if (const int32_t known = keepReference ? objectIndexes.lookupObject(object) : 0; known > 0)
        return stream->writeInt32(known);
    if (!writeClass(*object->getClass()))
        return false;
    ++objectCount;
    if (keepReference)
        objectIndexes.addKeyAndObject(object, objectCount);
    return writeContent(*object);
}

bool FSimpleArchive::writeClass(const MetaClass& metaClass) {
    if (const int32_t known = classIndexes.lookupObject(&metaClass); known > 0)
        return stream->writeInt32(known | kKnownClass);
    return classIndexes.addKeyAndObject(&metaClass, classIndexes.total() + 1) &&
           writeClassRecord(metaClass, kClassMark);
}

CmObject* FSimpleArchive::readObject(const char* expectedClass, bool keepReference) {
    int32_t reference = 0;
    if (!readReference(reference))
        return nullptr;
    if (reference > 0) {
        CmObject* known = objects.at(reference - 1);
        return known ? handOutKnown(known, expectedClass) : breakOff();
    }
    ClassRecord record;
    if (!readClass(reference, record))
        return breakOff();
    const OPtr<CmObject> object(makeObject(record));
    if (!object || !objects.add(keepReference ? object.get() : nullptr) || !readContent(*object, record))
        return breakOff();
    return handOut(object, expectedClass);
}

bool FSimpleArchive::readClass(int32_t reference, ClassRecord& record) {
    if (reference == kClassMark)
        return readClassRecord(record) && classes.add(record);
    record = classes.at((reference & ~kKnownClass) - 1);
    return !record.name.isEmpty();
}

}  // namespace Tessarine
