#include "base/source/classfactory.h"
#include "base/source/finitializer.h"
#include "base/source/fstring.h"
#include "base/source/thashtable.h"
#include "pluginterfaces/base/ipersistent.h"
#include "pluginterfaces/base/istringresult.h"
#include "pluginterfaces/base/smartpointer.h"

namespace Tessarine {
namespace {
constexpr int32_t kNameBuckets = 50;
constexpr int32_t kIDBuckets = 20;
constexpr size_t kStorageIDSize = 33;  // the digits of an identifier and a terminator

constinit FObject* factoryInstance = nullptr;

/** This very record, not the first one of its name. */
template <class Sorter>
void removeRecord(THashTable<Sorter>& table, const MetaClass* record) {
    const std::unique_ptr<TIterator<Sorter>> each(table.newIterator());
    while (!each->done() && each->current().metaClass != record)
        each->next();
    if (!each->done())
        table.remove(*each);
}
}  // namespace

namespace MetaClasses {
struct NameSorter {
    MetaClass* metaClass = nullptr;
    bool operator==(const NameSorter& other) const {
        return std::strcmp(metaClass->className, other.metaClass->className) == 0;
    }
};

struct IDSorter {
    MetaClass* metaClass = nullptr;
    bool operator==(const IDSorter& other) const { return metaClass->classID == other.metaClass->classID; }
};

int32_t hashByName(const NameSorter& sorter, int32_t buckets) {
    return int32_t(hashString8(sorter.metaClass->className, uint32_t(buckets)));
}

int32_t hashByCID(const IDSorter& sorter, int32_t buckets) {
    const FUID& id = sorter.metaClass->classID;
    return int32_t((id.getLong1() + id.getLong2() + id.getLong3() + id.getLong4()) % uint32_t(buckets));
}

class Tables {
public:
    THashTable<NameSorter> byName{kNameBuckets, hashByName};
    THashTable<IDSorter> byID{kIDBuckets, hashByCID};
};
}  // namespace MetaClasses

MetaClass::MetaClass(const char* name, CreateFunction create, const char* classIDBytes, MetaClass* base,
                     int16_t classVersion)
    : className(name), persistentName(name), classID(classIDBytes), createFunction(create), baseClass(base),
      version(classVersion) {
    if (createFunction || baseClass)
        registerSelf();
}

MetaClass::MetaClass(MetaClass* current, const char* oldName)
    : className(oldName), persistentName(oldName), createFunction(current->createFunction), baseClass(nullptr),
      version(0) {
    current->persistentName = oldName;
    registerSelf();
}

MetaClass::~MetaClass() {
    ClassFactory* factory = ClassFactory::instance(false);
    if (factory && isRegistered)
        factory->unregisterMetaClass(this);
}

void MetaClass::registerSelf() {
    ClassFactory* factory = ClassFactory::instance(true);
    if (!factory)
        return;
    factory->registerMetaClass(this);
    isRegistered = true;
}

bool MetaClass::isTypeOf(const char* name) const {
    if (!name)
        return false;
    for (const MetaClass* each = this; each; each = each->baseClass)
        if (each->className && std::strcmp(each->className, name) == 0)
            return true;
    return false;
}

ClassFactory::ClassFactory() : tables(std::make_unique<MetaClasses::Tables>()) {}
ClassFactory::~ClassFactory() = default;

ClassFactory* ClassFactory::instance(bool create) {
    if (!factoryInstance && create && !Singleton::isTerminated()) {
        factoryInstance = new ClassFactory;
        Singleton::registerInstance(&factoryInstance);
    }
    return static_cast<ClassFactory*>(factoryInstance);
}

void ClassFactory::registerMetaClass(MetaClass* metaClass) {
    if (metaClass->className)
        tables->byName.add({metaClass});
    if (metaClass->classID.isValid())
        tables->byID.add({metaClass});
}

void ClassFactory::unregisterMetaClass(MetaClass* metaClass) {
    if (metaClass->className)
        removeRecord(tables->byName, metaClass);
    if (metaClass->classID.isValid())
        removeRecord(tables->byID, metaClass);
}

MetaClass* ClassFactory::getMetaClassByName(const char* name) const {
    if (!name)
        return nullptr;
    MetaClass wanted(name, nullptr, nullptr, nullptr);  // neither creates nor derives: it isn't registered
    return tables->byName.lookup({&wanted}).metaClass;
}

MetaClass* ClassFactory::getMetaClassByID(const char* classID) const {
    if (!classID)
        return nullptr;
    MetaClass wanted(nullptr, nullptr, classID, nullptr);
    return tables->byID.lookup({&wanted}).metaClass;
}

FUnknown* ClassFactory::createObjectByName(const char* text) const {
    const MetaClass* found = getMetaClassByName(text);
    FUID id;
    if (!found && id.fromString(text) && id.isValid())
        found = getMetaClassByID(id);
    return found && found->createFunction ? found->createFunction() : nullptr;
}

FUnknown* ClassFactory::createObjectByID(const char* classID) const {
    const MetaClass* found = getMetaClassByID(classID);
    return found && found->createFunction ? found->createFunction() : nullptr;
}

bool ClassFactory::getStorageID(FUnknown* object, IString& result, bool usePersistentName) const {
    if (const FObject* framework = frameworkObject(object)) {
        const MetaClass* record = usePersistentName ? getMetaClassByName(framework->isA()) : nullptr;
        if (!usePersistentName || record) {
            result.setText8(record ? record->persistentName : framework->isA());
            return true;
        }
    }
    FUnknownPtr<IPersistent> persistent(object);
    char classID[FUID::kSize] = {};
    if (!persistent || persistent->getClassID(classID) != kResultOk)
        return false;
    if (usePersistentName && !getMetaClassByID(classID))
        return false;
    char text[kStorageIDSize];
    FUID(static_cast<const char*>(classID)).toString(text);
    result.setText8(text);
    return true;
}

int32_t ClassFactory::countClasses() const {
    return tables->byName.total();
}

}  // namespace Tessarine
