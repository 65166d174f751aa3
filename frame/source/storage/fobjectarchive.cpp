#include "storage/fobjectarchive.h"
#include "collect/cmcontainer.h"
#include "pluginterfaces/base/smartpointer.h"
#include "storage/fbstream.h"
#include <algorithm>
#include <memory>
#include <utility>

namespace Tessarine {
namespace {
bool isContainer(const CmObject* object) {
    return object && object->isTypeOf(CmContainer::className(), true);
}
}  // namespace

int32_t hashPointer(const ArchivePointer& pointer, int32_t buckets) {
    return static_cast<int32_t>((reinterpret_cast<uintptr_t>(pointer.key) >> 4) % static_cast<uint32_t>(buckets));
}

FObjectArchive::FObjectArchive(FStream* stream, bool writing, IArchiveErrorHook* errorHook)
    : FArchive(stream, writing, errorHook), readClasses(0, 10), failedClasses(0, 10), forgotten(0, 10) {}

FObjectArchive::~FObjectArchive() {
    for (CmObject* object : forgotten)
        object->release();
}

int32_t FObjectArchive::getClassVersion(const char* className) const {
    const MetaClass* metaClass = ClassFactory::instance(true)->getMetaClassByName(className);
    if (writing)
        return metaClass ? metaClass->version : 0;
    ClassRecord wanted;
    wanted.name.assign(metaClass ? metaClass->persistentName : className);
    return readClasses.lookup(wanted).version;
}

void FObjectArchive::forgetLater(CmObject* object) {
    if (object)
        forgotten.add(object);
}

bool FObjectArchive::writeClassRecord(const MetaClass& metaClass, int32_t mark) {
    return stream->writeInt32(mark) && stream->writeStr8(metaClass.persistentName) &&
           stream->writeInt16(metaClass.version);
}

bool FObjectArchive::readClassRecord(ClassRecord& record) {
    const std::unique_ptr<char[]> name(stream->readStr8());
    int16_t version = 0;
    if (!name || !stream->readInt16(version))
        return false;
    record.name.assign(name.get());
    record.version = version;
    return readClasses.contains(record) || readClasses.add(record);
}

bool FObjectArchive::writeContent(const CmObject& object) {
    if (object.externalize(*this))
        return true;
    reportError(kStreamError, object.isA());
    if (const String name(object.isA()); !failedClasses.contains(name))
        failedClasses.add(name);
    return false;
}

CmObject* FObjectArchive::makeObject(const ClassRecord& record) {
    const MetaClass* metaClass = ClassFactory::instance(true)->getMetaClassByName(record.name.text8());
    const OPtr<FUnknown> made(metaClass && metaClass->createFunction ? metaClass->createFunction() : nullptr);
    CmObject* object = handOut(commonObject(made.get()), nullptr);
    if (!object)
        reportError(kUnreadableObject, record.name.text8());
    return object;
}

bool FObjectArchive::readContent(CmObject& object, const ClassRecord& record) {
    const int32_t outerVersion = std::exchange(version, record.version);
    heights.erase(&object);
    reading.push_back(&object);
    const bool good = reading.size() <= kMaxDepth && object.internalize(*this);
    reading.pop_back();
    noteHeight(&object);
    version = outerVersion;
    if (!good)
        reportError(kUnreadableObject, record.name.text8());
    return good;
}

CmObject* FObjectArchive::handOut(CmObject* object, const char* expectedClass) {
    if (!object || (expectedClass && !object->isTypeOf(expectedClass, true)))
        return nullptr;
    object->addRef();
    return object;
}

CmObject* FObjectArchive::handOutKnown(CmObject* object, const char* expectedClass) {
    const bool chains = object && !reading.empty() && isContainer(reading.back()) && isContainer(object);
    if (chains && (std::ranges::find(reading, object) != reading.end() || heights[object] >= kMaxDepth)) {
        reportError(kUnreadableObject, object->isA());
        return nullptr;
    }
    noteHeight(object);
    return handOut(object, expectedClass);
}

/** An object has come into the one that is being read. */
void FObjectArchive::noteHeight(const CmObject* held) {
    if (reading.empty() || !isContainer(reading.back()) || !isContainer(held))
        return;
    int32_t& height = heights[reading.back()];
    height = std::max(height, heights[held] + 1);
}

CmObject* FObjectArchive::breakOff() {
    broken = true;
    reportError(kUnreadableObject);
    return nullptr;
}

}  // namespace Tessarine
