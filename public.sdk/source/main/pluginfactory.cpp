#include "public.sdk/source/main/pluginfactory.h"
#include <algorithm>
#include <cstdlib>
#include <new>
#include <type_traits>

namespace Tessarine {
namespace {
constexpr int32_t kGrowth = 10;  // classes

void copyTo(PClassInfo& info, const PClassInfo2& source) {
    info = PClassInfo(source.cid, source.cardinality, source.category, source.name);
}

void copyTo(PClassInfo2& info, const PClassInfo2& source) {
    info = source;
}
}  // namespace

CPluginFactory* gPluginFactory = nullptr;

CPluginFactory::CPluginFactory(const PFactoryInfo& info) : factoryInfo(info) {
    factoryInfo.flags |= PFactoryInfo::kUnicode;
}

CPluginFactory::~CPluginFactory() {
    if (gPluginFactory == this)
        gPluginFactory = nullptr;
    std::free(classes);
}

bool CPluginFactory::registerClass(const PClassInfo* info, CreateFunction createFunction, void* context) {
    if (!info)
        return false;
    const PClassInfo2 widened(*info);
    return registerClass(&widened, createFunction, context);
}

bool CPluginFactory::registerClass(const PClassInfo2* info, CreateFunction createFunction, void* context) {
    Entry* entry = appendEntry(info, createFunction, context);
    if (!entry)
        return false;
    entry->info8 = *info;
    entry->info16.fromAscii(*info);
    return true;
}

bool CPluginFactory::registerClass(const PClassInfoW* info, CreateFunction createFunction, void* context) {
    Entry* entry = appendEntry(info, createFunction, context);
    if (!entry)
        return false;
    entry->info16 = *info;
    entry->isUnicodeOnly = true;
    return true;
}

bool CPluginFactory::isClassRegistered(const FUID& cid) const {
    return findEntry(cid) != nullptr;
}

int32_t CPluginFactory::queryInterface(const char* iid, void** obj) {
    if (answerInterface<IPluginFactory>(this, iid, obj) || answerInterface<IPluginFactory2>(this, iid, obj) ||
        answerInterface<IPluginFactory3>(this, iid, obj) || answerInterface<FUnknown>(this, iid, obj))
        return kResultOk;
    return noInterface(obj);
}

uint32_t CPluginFactory::addRef() {
    return uint32_t(atomicAdd(refCount, 1));
}

uint32_t CPluginFactory::release() {
    const int32_t left = atomicAdd(refCount, -1);
    if (left == 0)
        delete this;
    return uint32_t(left);
}

int32_t CPluginFactory::getFactoryInfo(PFactoryInfo* info) {
    if (info)
        *info = factoryInfo;
    return kResultOk;
}

int32_t CPluginFactory::getClassInfo(int32_t index, PClassInfo* info) {
    return copyInfo8(index, info);
}

int32_t CPluginFactory::createInstance(const char* cid, const char* iid, void** obj) {
    const Entry* entry = findEntry(cid);
    FUnknown* object = entry ? entry->createFunction(entry->context) : nullptr;
    if (!object)
        return noInterface(obj);
    const int32_t result = object->queryInterface(iid, obj);
    object->release();
    return result == kResultOk ? int32_t(kResultOk) : noInterface(obj);
}

int32_t CPluginFactory::getClassInfo2(int32_t index, PClassInfo2* info) {
    return copyInfo8(index, info);
}

int32_t CPluginFactory::getClassInfoUnicode(int32_t index, PClassInfoW* info) {
    if (!info || !isIndex(index))
        return kInvalidArgument;
    *info = classes[index].info16;
    return kResultOk;
}

int32_t CPluginFactory::setHostContext(FUnknown* /*context*/) {
    return kResultOk;
}

CPluginFactory::Entry* CPluginFactory::appendEntry(const void* info, CreateFunction createFunction, void* context) {
    if (!info || !createFunction || (classCount == maxClassCount && !growClasses()))
        return nullptr;
    return new (&classes[classCount++]) Entry{{}, {}, createFunction, context, false};
}

bool CPluginFactory::growClasses() {
    static_assert(std::is_trivially_copyable_v<Entry>, "realloc moves entries as bytes");
    const int32_t grown = maxClassCount + kGrowth;
    auto* moved = static_cast<Entry*>(std::realloc(classes, sizeof(Entry) * size_t(grown)));
    if (!moved)
        return false;
    classes = moved;
    maxClassCount = grown;
    return true;
}

const CPluginFactory::Entry* CPluginFactory::findEntry(const char* cid) const {
    const Entry* end = classes + classCount;
    const Entry* found = std::find_if(static_cast<const Entry*>(classes), end,
                                      [cid](const Entry& entry) { return FUID::same(entry.info16.cid, cid); });
    return found == end ? nullptr : found;
}

template <class Info>
int32_t CPluginFactory::copyInfo8(int32_t index, Info* info) const {
    if (!info || !isIndex(index))
        return kInvalidArgument;
    if (classes[index].isUnicodeOnly) {
        *info = Info();
        return kResultFalse;
    }
    copyTo(*info, classes[index].info8);
    return kResultOk;
}

}  // namespace Tessarine
