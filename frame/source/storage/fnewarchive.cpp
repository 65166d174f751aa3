#include "storage/fnewarchive.h"
#include "fspread.h"
#include "fuserfile.h"
#include "storage/fmstream.h"
#include <algorithm>
#include <limits>
#include <utility>

namespace Tessarine {
namespace {
constexpr int32_t kBaseMark = -2;
constexpr int32_t kBuckets = 1000;
constexpr int64_t kSizeField = 4;
constexpr int64_t kPositionsEnd = 0x7FFFFFFE;
}  // namespace

size_t FNewArchive::PositionHash::operator()(int32_t position) const {
    return spread(static_cast<uint32_t>(position));
}

/** The object whose bytes are being read. */
class FNewArchive::Enclosing {
public:
    Enclosing(FNewArchive& archive, int64_t end) : archive(archive), outer(std::exchange(archive.enclosingEnd, end)) {}
    ~Enclosing() { archive.enclosingEnd = outer; }
    Enclosing(const Enclosing&) = delete;
    Enclosing& operator=(const Enclosing&) = delete;

private:
    FNewArchive& archive;
    int64_t outer;
};

FNewArchive::FNewArchive(FStream* stream, bool writing, IArchiveErrorHook* errorHook)
    : FObjectArchive(stream, writing, errorHook), start(stream->tell()), objectPositions(kBuckets, hashPointer),
      classPositions(kBuckets, hashPointer) {
    objectPositions.errorObject.value = -1;
    classPositions.errorObject.value = -1;
}

// --- writing

bool FNewArchive::writeObject(const CmObject* object, bool keepReference) {
    if (getLastError() != 0)
        return false;
    if (!object)
        return stream->writeInt32(kNullMark);
    if (const int32_t known = keepReference ? getObjectID(object, objectPositions) : -1; known >= 0)
        return stream->writeInt32(known);
    if (!writeClass(*object->getClass()))
        return false;
    const int64_t sizePosition = stream->tell();
    if (keepReference && !storeObjectID(object, objectPositions))
        return false;
    if (!stream->writeInt32(0))
        return false;
    const bool good = writeContent(*object);
    const int64_t end = stream->tell();
    const int64_t size = end - sizePosition - kSizeField;
    if (size > std::numeric_limits<int32_t>::max()) {
        reportError(kStreamError, object->isA());
        return false;
    }
    stream->seek(sizePosition, kFromStart);
    const bool patched = stream->writeInt32(static_cast<int32_t>(size));
    stream->seek(end, kFromStart);
    return good && patched;
}

bool FNewArchive::writeClass(const MetaClass& metaClass) {
    if (const int32_t known = getObjectID(&metaClass, classPositions); known >= 0)
        return stream->writeInt32(known | kKnownClass);
    for (const MetaClass* base = metaClass.baseClass; base; base = base->baseClass) {
        if (getObjectID(base, classPositions) < 0 && !storeMetaClass(*base, kBaseMark))
            return false;
    }
    return storeMetaClass(metaClass, kClassMark);
}

bool FNewArchive::storeMetaClass(const MetaClass& metaClass, int32_t mark) {
    return storeObjectID(&metaClass, classPositions) && writeClassRecord(metaClass, mark);
}

bool FNewArchive::storeObjectID(const void* pointer, Positions& positions) {
    const int64_t here = position();
    if (here < kPositionsEnd)
        return positions.addKeyAndObject(pointer, static_cast<int32_t>(here));
    reportError(kStreamError);
    return false;
}

int32_t FNewArchive::getObjectID(const void* pointer, const Positions& positions) {
    return positions.lookupObject(pointer);
}

// --- reading

CmObject* FNewArchive::readObject(const char* expectedClass, bool keepReference) {
    int32_t reference = 0;
    if (!readReference(reference))
        return nullptr;
    if (reference > 0) {
        const auto known = objects.find(reference);
        if (known == objects.end())
            reportError(kUnreadableObject);
        return handOutKnown(known != objects.end() ? known->second.get() : nullptr, expectedClass);
    }
    ClassRecord record;
    int32_t size = 0;
    const bool isWhole = readClass(reference, record) && stream->readInt32(size);
    const int64_t content = stream->tell();
    if (!isWhole || size < 0 || size > endOfEnclosing() - content)
        return breakOff();
    const Enclosing enclosing(*this, content + size);
    const auto id = static_cast<int32_t>(std::min(content - kSizeField - start, kPositionsEnd));
    OPtr<CmObject> object = readNewObject(record, expectedClass, id, keepReference);
    stream->seek(content + size, kFromStart);
    return object.detach();
}

OPtr<CmObject> FNewArchive::readNewObject(const ClassRecord& record, const char* expectedClass, int32_t id,
                                          bool keepReference) {
    OPtr<CmObject> object(makeObject(record));
    if (!object || (expectedClass && !object->isTypeOf(expectedClass, true)))
        return {};
    if (keepReference)
        objects.emplace(id, object.get());
    const bool isRead = readContent(*object, record);
    if (isRead && stream->tell() <= enclosingEnd)
        return object;
    if (isRead)
        reportError(kUnreadableObject, record.name.text8());  // it took what isn't its own
    objects.erase(id);
    return {};
}

/** Bases come before their class; what they say is for getClassVersion. */
bool FNewArchive::readClass(int32_t reference, ClassRecord& record) {
    while (reference == kBaseMark) {
        ClassRecord base;
        if (!restoreMetaClass(base) || !stream->readInt32(reference))
            return false;
    }
    if (reference == kClassMark)
        return restoreMetaClass(record);
    if (!(reference & kKnownClass))
        return false;
    const int32_t classPosition = reference & ~kKnownClass;
    const auto known = classes.find(classPosition);
    if (known == classes.end())
        return readClassAt(classPosition, record);
    record = known->second;
    return true;
}

bool FNewArchive::readClassAt(int32_t classPosition, ClassRecord& record) {
    const int64_t here = position();
    int32_t mark = 0;
    if (classPosition >= here - kSizeField)
        return false;
    stream->seek(start + classPosition, kFromStart);
    const bool isRead =
        stream->readInt32(mark) && (mark == kClassMark || mark == kBaseMark) && restoreMetaClass(record);
    stream->seek(start + here, kFromStart);
    return isRead && !record.name.isEmpty();
}

bool FNewArchive::restoreMetaClass(ClassRecord& record) {
    const int64_t here = position() - kSizeField;  // of the mark
    if (here >= kPositionsEnd || !readClassRecord(record))
        return false;
    classes.emplace(static_cast<int32_t>(here), record);
    return true;
}

int64_t FNewArchive::position() const {
    return stream->tell() - start;
}

int64_t FNewArchive::endOfEnclosing() const {
    if (enclosingEnd >= 0)
        return enclosingEnd;
    const FUnknownPtr<ISizeableStream> sizeable(static_cast<CmObject*>(stream));
    int64_t size = 0;
    return sizeable && sizeable->getStreamSize(size) == kResultOk ? size : std::numeric_limits<int64_t>::max();
}

// --- files

const FFileType FNewArchive::fileType(u"Tessarine BIN File", u"bin", u"bin", 0x44415441);  // DATA

bool FNewArchive::storeObject(const char* name, const CmObject* object) {
    return object && writeUserFile(createUserFile(name, fileType, false), [object](FStream& stream) {
               const OPtr<FMemoryStream> bytes(new FMemoryStream);
               FNewArchive archive(bytes, true);
               return object->externalize(archive) && archive.getLastError() == 0 && bytes->copyTo(stream);
           });
}

bool FNewArchive::restoreObject(const char* name, CmObject* object) {
    return object && readUserFile(name, fileType, [object](FStream& stream) {
               const OPtr<FMemoryStream> bytes(new FMemoryStream);
               if (!stream.copyTo(*bytes) || !stream.verify())
                   return false;
               bytes->rewind();
               FNewArchive archive(bytes, false);
               return object->internalize(archive);
           });
}

bool FNewArchive::objectArchiveExists(const char* name) {
    return userFileExists(name, fileType);
}

bool FNewArchive::removeObjectArchive(const char* name) {
    return removeUserFile(name, fileType);
}

bool FNewArchive::renameObjectArchive(const char* name, const char* newName) {
    return renameUserFile(name, newName, fileType);
}

}  // namespace Tessarine
