#include "storage/fobjectarchive.h"
#include "fholders.h"
#include "pluginterfaces/base/smartpointer.h"
#include "storage/fbstream.h"
#include <algorithm>
#include <cstring>
#include <utility>

namespace Tessarine {
namespace {
constexpr int32_t kMaxName = 4096;  // bytes of a class name; they have some dozens
}  // namespace

int32_t hashPointer(const ArchivePointer& pointer, int32_t buckets) {
    return static_cast<int32_t>((reinterpret_cast<uintptr_t>(pointer.key) >> 4) % static_cast<uint32_t>(buckets));
}

FObjectArchive::FObjectArchive(FStream* stream, bool writing, IArchiveErrorHook* errorHook)
    : FArchive(stream, writing, errorHook), failedClasses(0, 10) {}

bool FObjectArchive::writeClassRecord(const MetaClass& metaClass, int32_t mark) {
    return stream->writeInt32(mark) && stream->writeStr8(metaClass.persistentName) &&
           stream->writeInt16(metaClass.version);
}

bool FObjectArchive::readClassRecord(ClassRecord& record) {
    int32_t size = 0;
    int16_t version = 0;
    if (!stream->readInt32(size) || size <= 0 || size > kMaxName)
        return false;
    std::string name(static_cast<size_t>(size), '\0');
    if (stream->readRaw(name.data(), size) != size || !stream->readInt16(version))
        return false;
    name.resize(strnlen(name.c_str(), name.size()));
    record.name.assign(name.c_str());
    record.version = version;
    classVersions.try_emplace(std::move(name), version);
    return true;
}

bool FObjectArchive::writeContent(const CmObject& object) {
    open.push_back(&object);
    const bool good = open.size() <= kMaxDepth && object.externalize(*this);
    open.pop_back();
    if (good)
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
    open.push_back(&object);
    const bool good = open.size() <= kMaxDepth && object.internalize(*this);
    open.pop_back();
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
    const bool chains = !open.empty() && holdsObjects(open.back()) && holdsObjects(object);
    if (chains && (std::ranges::find(open, object) != open.end() || heights[object] >= kMaxDepth)) {
        reportError(kUnreadableObject, object->isA());
        return nullptr;
    }
    noteHeight(object);
    return handOut(object, expectedClass);
}

/** An object has come into the one that is being read. */
void FObjectArchive::noteHeight(const CmObject* held) {
    if (open.empty() || !holdsObjects(open.back()) || !holdsObjects(held))
        return;
    int32_t& height = heights[open.back()];
    height = std::max(height, heights[held] + 1);
}

bool FObjectArchive::readReference(int32_t& reference) {
    if (broken)
        return false;
    if (!stream->readInt32(reference))
        breakOff();
    return !broken && reference != kNullMark;
}

CmObject* FObjectArchive::breakOff() {
    broken = true;
    reportError(kUnreadableObject);
    return nullptr;
}

}  // namespace Tessarine
