#include "storage/fattributearchive.h"
#include "collect/cmbuffer.h"
#include "fholders.h"
#include "fobjectgraph.h"
#include "fspread.h"
#include "storage/fmstream.h"
#include <algorithm>
#include <utility>

namespace Tessarine {
namespace {
constexpr int32_t kSeenBuckets = 256;
constexpr int32_t kLoadedBuckets = 50;

thread_local IArchiveErrorHook* currentHook = nullptr;

struct FormRow {
    const MetaClass* metaClass;
    StoredForm form;
};
constexpr FormRow kForms[] = {
    {&FAttributes::__fClass,   kStoredBag      },
    {&FIntList::__fClass,      kStoredInts     },
    {&FFloatList::__fClass,    kStoredFloats   },
    {&FStringList::__fClass,   kStoredStrings  },
    {&FSubList::__fClass,      kStoredBags     },
    {&FObjectList::__fClass,   kStoredObjects  },
    {&FAttrBuffer::__fClass,   kStoredBytes    },
    {&CmBuffer::__fClass,      kStoredBytes    },
    {&FMemoryStream::__fClass, kStoredBytes    },
    {&FXmlInstance::__fClass,  kStoredObject   },
    {&FXmlObject::__fClass,    kStoredReference},
};

/** A bag with an identity: it keeps what is in it, references too. */
FAttributes* bagOf(CmObject* object) {
    return object && object->getClass() == &FAttributes::__fClass ? static_cast<FAttributes*>(object) : nullptr;
}

uint32_t hashID(const CmObject* object, uint32_t buckets) {
    return static_cast<uint32_t>(spread(static_cast<const FXmlObject*>(object)->getID()) % buckets);
}

/** The object behind a reference or an instance; itself, when there is none. */
CmObject* behind(CmObject* object) {
    if (CmObject* target = FXmlReference::targetOf(object))
        object = target;
    auto* instance = classCast<FXmlInstance>(object);
    return instance && instance->getObject() ? instance->getObject() : object;
}
}  // namespace

// --- roots

bool FAttributeArchiveBase::addRoot(const char* name, CmObject* object) {
    return object && roots.setObjAttribute(name, object, RootList::kBorrowed);
}

CmObject* FAttributeArchiveBase::getRoot(const char* name, const char* className) const {
    CmObject* root = FXmlReference::targetOf(roots.getObjAttribute(name));
    if (!root || (className && !root->isTypeOf(className, true)))
        return nullptr;
    root->addRef();
    return root;
}

bool FAttributeArchiveBase::addGlobalRoot(const char* name, CmObject* object) {
    return object && globalRoots.setObjAttribute(name, object, RootList::kBorrowed);
}

bool FAttributeArchiveBase::getGlobalRoot(const char* name, CmObject* object) const {
    auto* bag = classCast<FAttributes>(globalRoots.getObjAttribute(name));
    return bag && object && object->restoreAttributes(*bag);
}

// --- the hook

FAttributeArchiveErrorHookScope::FAttributeArchiveErrorHookScope(IArchiveErrorHook* hook)
    : outer(std::exchange(currentHook, hook)) {}

FAttributeArchiveErrorHookScope::~FAttributeArchiveErrorHookScope() {
    currentHook = outer;
}

void FAttributeArchiveErrorHookScope::report(int32_t code, const char* className) {
    if (currentHook)
        currentHook->archiveError(code, className);
}

// --- what is stored of an object

StoredForm storedFormOf(const CmObject& object) {
    if (const auto* reference = classCast<FXmlReference>(&object); reference && reference->getObject())
        return kStoredObject;
    for (const MetaClass* each = object.getClass(); each; each = each->baseClass) {
        const auto row = std::ranges::find(kForms, each, &FormRow::metaClass);
        if (row != std::end(kForms))
            return row->form;
    }
    return kStoredObject;
}

const char* persistentNameOf(const CmObject& object) {
    if (const auto* instance = classCast<FXmlInstance>(&object); instance && !instance->getObject())
        return instance->getClassID();
    const MetaClass* metaClass = object.getClass();
    return metaClass->persistentName ? metaClass->persistentName : object.isA();
}

uint32_t gHashObject(const CmObject* object, uint32_t buckets) {
    return static_cast<uint32_t>((reinterpret_cast<uintptr_t>(object) >> 4) % buckets);
}

FStoredValue::FStoredValue(const FAttributeValue& value) {
    constexpr uint16_t kPlain = FAttributeValue::kLong | FAttributeValue::kFloat | FAttributeValue::kString;
    kind = value.getType() & kPlain;
    if (kind != 0)
        return;
    object = value.getObj();
    if (object)
        kind = FAttributeValue::kObject;
    else if (value.is(FAttributeValue::kUnknown) && (object = commonObject(value.getUnknown())))
        kind = FAttributeValue::kUnknown;
    else
        return;
    form = formBehind(object);
    if (form == kStoredNothing)
        kind = 0;
}

StoredForm formBehind(CmObject*& object) {
    if (!object)
        return kStoredNothing;
    const StoredForm form = storedFormOf(*object);
    if (form != kStoredReference && form != kStoredObject)
        return form;
    object = behind(object);
    if (object->isTypeOf(FXmlInstance::className(), true))
        return kStoredObject;
    const auto* reference = classCast<FXmlObject>(object);
    if (!reference)
        return kStoredObject;  // also of a bag that is referred to: it was an object
    return reference->getID() != 0 ? kStoredReference : kStoredNothing;
}

bool storeObjectIn(FAttributes& attributes, const CmObject& object) {
    if (object.storeAttributes(attributes))
        return true;
    FAttributeArchiveErrorHookScope::report(FArchive::kStreamError, object.isA());
    return false;
}

// --- writing

FSeenObjects::FSeenObjects() : table(kSeenBuckets) {
    table._ownsObjects = CmContainer::kShares;
    table.setHashFunction(gHashObject);
}

bool FSeenObjects::add(const CmObject* object) {
    return !table.containsAbs(object) && table.add(const_cast<CmObject*>(object));
}

// --- reading

class FObjectLoader::Loaded : public FXmlInstance {
public:
    Loaded(uint64_t id, const char* className, int32_t number) : FXmlInstance(id, className), number(number) {}

    const int32_t number;
};

FObjectLoader::FObjectLoader() : objects(new CmArray(0, -1)), byID(kLoadedBuckets) {
    objects->_ownsObjects = CmContainer::kTakesOver;
    references._ownsObjects = CmContainer::kTakesOver;
    byID.setHashFunction(hashID);
}

FXmlInstance& FObjectLoader::begin(const char* className, uint64_t id) {
    auto* loaded = new Loaded(id, className, objects->total());
    objects->add(loaded);
    parents.push_back(open.empty() ? -1 : open.back());
    heights.push_back(0);
    open.push_back(loaded->number);
    if (id != 0 && !lookup(id))
        byID.add(loaded);
    const OPtr<FUnknown> made(ClassFactory::instance(true)->createObjectByName(className));
    loaded->setObject(commonObject(made.get()));
    if (!loaded->getObject())
        FAttributeArchiveErrorHookScope::report(FArchive::kUnreadableObject, className);
    return *loaded;
}

bool FObjectLoader::end() {
    FXmlInstance* loaded = current();
    CmObject* object = loaded->getObject();
    bool restored = true;
    if (object) {
        loaded->getAttributes();
        const OPtr<FAttributes> attributes = loaded->detachAttributes();
        if (FAttributes* bag = bagOf(object))
            bag->take(*attributes);
        else
            restored = object->restoreAttributes(*attributes);
    }
    const int32_t height = heights[open.back()];
    open.pop_back();
    if (holdsObjects(object) && !open.empty())
        heights[open.back()] = std::max(heights[open.back()], height + 1);
    if (!restored)
        FAttributeArchiveErrorHookScope::report(FArchive::kUnreadableObject, loaded->getClassID());
    return restored;
}

FXmlInstance* FObjectLoader::current() const {
    return open.empty() ? nullptr : static_cast<FXmlInstance*>(objects->at(open.back()));
}

OPtr<CmObject> FObjectLoader::refer(uint64_t id) {
    const FXmlInstance* owner = current();
    Loaded* known = lookup(id);
    const bool isBag = owner && bagOf(owner->getObject());
    const bool isHeld = known && (!owner || owner->getObject()) && mayHold(*known);
    if (known && !isHeld && owner && owner->getObject() && !isBag)
        return {};
    if (owner)
        met.push_back({open.back(), id, isHeld});
    else
        rootIDs.push_back(id);
    if (isHeld)
        return OPtr<CmObject>(IPtr<CmObject>(known->getStandIn()));
    const OPtr<FXmlReference> reference(new FXmlReference(id));
    reference->addRef();
    references.add(reference.get());
    owners.push_back(owner ? open.back() : -1);
    return OPtr<CmObject>(IPtr<CmObject>(reference.get()));
}

/** Nothing that holds objects is put into one that stands in it, and chains of them end, since a chain is torn down by
    recursion. */
bool FObjectLoader::mayHold(const Loaded& known) {
    const FXmlInstance* owner = current();
    const bool isKnownClass = known.getObject() != nullptr;
    if (!owner || !holdsObjects(owner->getObject()))
        return true;
    const bool isOpen = std::ranges::find(open, known.number) != open.end();
    if (bagOf(owner->getObject()) && (isOpen || bagOf(known.getObject())))
        return false;  // it keeps a reference instead
    if (isKnownClass && !holdsObjects(known.getObject()))
        return true;
    const int32_t height = isKnownClass ? heights[known.number] + 1 : 0;
    if (isOpen || height > FAttributeArchiveBase::kMaxDepth)
        return false;
    heights[open.back()] = std::max(heights[open.back()], height);
    return true;
}

void FObjectLoader::finish() {
    const bool noneWaits = std::ranges::none_of(owners, [](int32_t owner) { return owner >= 0; });
    const FHoldingOrder order = noneWaits ? FHoldingOrder(0) : holdingOrder();
    CmLinkedListIterator cursor(references);
    for (const int32_t owner : owners) {
        auto* reference = static_cast<FXmlReference*>(cursor.next());
        Loaded* target = lookup(reference->getID());
        if (!target)
            reference->setIdentity(nullptr);
        else if (owner < 0 || order.mayHold(owner, target->number))
            reference->setObject(target->getStandIn());
        else
            reference->setIdentity(target->getStandIn());
    }
}

FObjectLoader::Loaded* FObjectLoader::lookup(uint64_t id) const {
    const FXmlReference wanted(id);
    return static_cast<Loaded*>(byID.lookup(&wanted));
}

/** What stands in an object, and what it holds already, is held in any case. */
FHoldingOrder FObjectLoader::holdingOrder() const {
    FHoldingOrder order(static_cast<size_t>(objects->total()));
    for (size_t i = 0; i < parents.size(); ++i) {
        if (parents[i] >= 0)
            order.add(parents[i], static_cast<int32_t>(i), true);
    }
    for (const Reference& each : met) {
        if (const Loaded* target = lookup(each.id))
            order.add(each.owner, target->number, each.isHeld);
    }
    std::vector<int32_t> roots;
    for (const uint64_t id : rootIDs) {
        if (const Loaded* root = lookup(id))
            roots.push_back(root->number);
    }
    order.arrange(roots);
    return order;
}

}  // namespace Tessarine
