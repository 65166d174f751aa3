#include "base/fcompreg.h"
#include "base/cmunknown.h"
#include "base/fconsole.h"
#include "base/hooks.h"
#include "base/source/finitializer.h"
#include "pluginterfaces/base/ipersistent.h"
#include "storage/ffilesystem.h"
#include <algorithm>
#include <cstring>
#include <utility>

namespace Tessarine {
namespace {
constexpr tchar kFolderName[] = u"Components";
constexpr tchar kSharedFolder[] = u"Tessarine";
constexpr const char* kAvailableGroup = "Components\\Category %s\\Available";
constexpr const char* kByIdentifier = "UID";
constexpr const char* kUnicodeCategories[] = {"Private", "ScriptEngine", "Service", "VirtualFileSystem"};

std::string_view bytesOf(const FUID& cid) {
    return {cid.data, size_t(FUID::kSize)};
}

bool precedes(const FComponentDescription* a, const FComponentDescription* b) {
    return a->compare(b) < 0;
}

FUnknown* createComponentOf(const FUID& classID) {
    return gComponentRegistry ? gComponentRegistry->createUnknownComponent(classID, false) : nullptr;
}

bool createOfCategory(const char* category, int32_t index, FUnknown** component) {
    if (!gComponentRegistry || index >= gComponentRegistry->countComponentClasses(category))
        return false;
    FComponentDescription* description = gComponentRegistry->getComponentDescription(category, index);
    *component = description->isAvailable() ? description->createUnknown(true) : nullptr;
    return true;
}

/** The module's object lives as long as it counts. */
void addInstanceTo(FModule* module, CmObject* instance) {
    module->addRef();
    module->addInstance(instance);
}

void releaseInstanceOf(FModule* module, CmObject* instance) {
    module->releaseInstance(instance);
    module->release();
}

bool initFComponentRegistry() {
    return FComponentRegistry::use() != nullptr;
}
OneTimeProcedure FComponentRegistryInitializer(true, initFComponentRegistry, "FComponentRegistry", 0);
}  // namespace

IMPLEMENT_CLASS(FComponentRegistry, FModuleManager)

constinit FComponentRegistry* gComponentRegistry = nullptr;

FComponentRegistry::FComponentRegistry() : FModuleManager(kFolderName) {
    for (CmLinkedList* owned : {&classes, &views, &wrappers})
        owned->_ownsObjects = CmContainer::kTakesOver;
    for (const char* category : kUnicodeCategories)
        unicodeCategories.add(category);
}

FComponentRegistry::~FComponentRegistry() = default;

FComponentRegistry* FComponentRegistry::use() {
    if (!gComponentRegistry)
        gComponentRegistry = new FComponentRegistry;
    gComponentHooks = {createComponentOf, addInstanceTo, releaseInstanceOf, createOfCategory};
    return gComponentRegistry;
}

void FComponentRegistry::unuse() {
    if (!gComponentRegistry)
        return;
    FComponentRegistry* ended = std::exchange(gComponentRegistry, nullptr);
    ended->removeAll();
    ended->setScanned();  // whoever still has it finds nothing more
    ended->release();
    StandardPluginContext::setInstance(nullptr);
    gComponentHooks.createComponent = nullptr;  // instances that are left still count
    gComponentHooks.createOfCategory = nullptr;
}

int32_t FComponentRegistry::queryInterface(const char* iid, void** obj) {
    return answerInterface<IComponentFactory>(this, iid, obj) ? int32_t(kResultOk)
                                                              : FModuleManager::queryInterface(iid, obj);
}

// --- classes

FComponentRegistry::Sorted& FComponentRegistry::sortedClasses() {
    for (const FCompiledInClass* each = FCompiledInClass::first(); each; each = each->next) {
        if (std::ranges::find(takenIn, each) != takenIn.end())
            continue;
        takenIn.push_back(each);
        addComponentClass(new FCompiledInComponentDescription(*each));
    }
    return sorted;
}

bool FComponentRegistry::insert(OPtr<FComponentDescription> description) {
    if (!description || (description->getCID().isValid() && byID.contains(bytesOf(description->getCID()))))
        return false;
    const auto place = std::ranges::upper_bound(sorted, description.get(), precedes);
    if (!classes.insertAt(description, int32_t(place - sorted.begin())))
        return false;
    sorted.insert(place, description);
    if (description->getCID().isValid())
        byID.emplace(bytesOf(description->getCID()), description.get());
    description.detach();  // to the list
    return true;
}

void FComponentRegistry::forget(FComponentDescription* description) {
    if (const auto known = byID.find(bytesOf(description->getCID()));
        known != byID.end() && known->second == description)
        byID.erase(known);
    std::erase(sorted, description);
    classes.removeAbs(description);
}

bool FComponentRegistry::addComponentClass(FComponentDescription* description) {
    sortedClasses();
    if (!insert(description))
        return false;
    String group;
    FString key;
    int32_t available = 1;
    makeKey(key, description->getName());
    if (const FDefaults* defaults =
            gDefaults ? gDefaults->findDefaults(group.printf(kAvailableGroup, description->getType()).text8())
                      : nullptr)
        defaults->getLong(key.text8(), available);
    description->setAvailable(available != 0);
    if (gComponentEventHooks.newComponent)
        gComponentEventHooks.newComponent(*description);
    changed();
    return true;
}

bool FComponentRegistry::addComponentClass(const char* type, const tchar* name, const char* cid,
                                           FComponentDescription::CreateFunction create) {
    return addComponentClass(new FComponentDescription(type, name, cid, create));
}

bool FComponentRegistry::removeComponentClass(const FUID& cid) {
    FComponentDescription* description = getComponentDescription(cid);
    if (!description)
        return false;
    forget(description);
    changed();
    return true;
}

void FComponentRegistry::storeAvailableFlags() {
    for (FComponentDescription* each : sortedClasses()) {
        String group;
        FString key;
        makeKey(key, each->getName());
        if (gDefaults)
            gDefaults->setLong(group.printf(kAvailableGroup, each->getType()).text8(), key.text8(),
                               each->isAvailable());
    }
}

void FComponentRegistry::dump(FConsole& console) {
    for (FComponentDescription* each : sortedClasses()) {
        char digits[2 * FUID::kSize + 1];
        each->getCID().toString(digits);
        String line(each->getType());
        line.append("  ").append(digits).append("  ").append(each->getName()).append("  ").append(each->getFileName());
        console.deferWrite(line.append("\n"));
    }
}

// --- looking up

FComponentRegistry::Run FComponentRegistry::runOf(const char* type) {
    const Sorted& all = sortedClasses();
    const auto typeOf = [](const FComponentDescription* each) { return std::string_view(each->getType()); };
    const auto run = std::ranges::equal_range(all, std::string_view(type ? type : ""), {}, typeOf);
    return Run(run.begin(), run.end());
}

FComponentDescription* FComponentRegistry::getComponentDescription(const FUID& cid) {
    sortedClasses();
    const auto found = byID.find(bytesOf(cid));
    return found != byID.end() ? found->second : nullptr;
}

FComponentDescription* FComponentRegistry::getComponentDescription(const char* type, const tchar* name) {
    for (FComponentDescription* each : runOf(type))
        if (each->getName().compare(ConstString(name), kIgnoreCase) == 0)
            return each;
    return nullptr;
}

FComponentDescription* FComponentRegistry::getComponentDescription(const char* type, int32_t index) {
    const Run run = runOf(type);
    return index >= 0 && size_t(index) < run.size() ? run[size_t(index)] : nullptr;
}

FComponentDescription* FComponentRegistry::getComponentDescription(FUnknown* object, const char* type) {
    FUID cid;
    FComponentDescription* found = nullptr;
    if (const FUnknownPtr<IPersistent> persistent(object); persistent && persistent->getClassID(cid.data) == kResultOk)
        found = getComponentDescription(cid);
    else if (const CmObject* own = commonObject(object))
        found = getComponentDescription(type, String(own->isA()).text16());
    return found && type && std::strcmp(found->getType(), type) == 0 ? found : nullptr;
}

FComponentDescription* FComponentRegistry::getComponentDescriptionByRuntimeID(int32_t runtimeID) {
    for (FComponentDescription* each : sortedClasses())
        if (each->hasRuntimeID(runtimeID))
            return each;
    return nullptr;
}

const tchar* FComponentRegistry::getComponentClassName(const FUID& cid) {
    FComponentDescription* description = getComponentDescription(cid);
    return description ? description->getName().text16() : nullptr;
}

FCardinality FComponentRegistry::getComponentCardinality(const FUID& cid) {
    FComponentDescription* description = getComponentDescription(cid);
    return description ? description->getCardinality() : 1;
}

int32_t FComponentRegistry::countComponentClasses(const char* type) {
    findModules();
    return int32_t(runOf(type).size());
}

bool FComponentRegistry::isAvailable(const FUID& cid) {
    FComponentDescription* description = getComponentDescription(cid);
    return description && description->isAvailable();
}

bool FComponentRegistry::nonDiscardable(const FUID& cid) {
    FComponentDescription* description = getComponentDescription(cid);
    return description && description->isNonDiscardable();
}

// --- making components

CmObject* FComponentRegistry::createComponent(const FUID& cid, CmObject* context) {
    FComponentDescription* description = getComponentDescription(cid);
    return description ? description->create(context) : nullptr;
}

CmObject* FComponentRegistry::createComponent(const char* type, const tchar* name, CmObject* context) {
    FComponentDescription* description = getComponentDescription(type, name);
    return description ? description->create(context) : nullptr;
}

CmObject* FComponentRegistry::createComponent(const char* type, int32_t index, CmObject* context) {
    FComponentDescription* description = getComponentDescription(type, index);
    return description ? description->create(context) : nullptr;
}

FUnknown* FComponentRegistry::createUnknownComponent(const FUID& cid, bool counted) {
    FComponentDescription* description = getComponentDescription(cid);
    return description ? description->createUnknown(counted) : nullptr;
}

FUnknown* FComponentRegistry::createUnknownComponent(const char* type, const tchar* name, bool counted) {
    FComponentDescription* description = getComponentDescription(type, name);
    return description ? description->createUnknown(counted) : nullptr;
}

const tchar* FComponentRegistry::getClassName(const char* type, int32_t index) {
    FComponentDescription* description = getComponentDescription(type, index);
    return description ? description->getName().text16() : nullptr;
}

FUnknown* FComponentRegistry::createClassInstance(const char* type, const char* name) {
    if (!type || !name)
        return nullptr;
    FUID cid;
    if (std::strcmp(type, kByIdentifier) != 0)
        return createUnknownComponent(type, String(name).text16(), true);
    return cid.fromString(name) ? createUnknownComponent(cid, true) : nullptr;
}

void FComponentRegistry::releaseClassInstance(FUnknown* object) {
    if (object)
        object->release();
}

bool FComponentRegistry::addPluginWrapper(FPluginWrapper* wrapper) {
    return wrappers.add(wrapper);
}

CmObject* FComponentRegistry::createWrapper(const char* type, FUnknown* component, FModule* module, CmObject* context) {
    for (CmLinkedListIterator each(wrappers); !each.done();)
        if (const auto* wrapper = static_cast<FPluginWrapper*>(each.next()); wrapper->isFor(type))
            return wrapper->create(component, module, context);
    return new CmDelegatingUnknown(component, module);
}

void FComponentRegistry::callPluginInitHooks(FUnknown* component, FComponentDescription& description) const {
    for (int32_t i = 0; i < initHooks.total(); ++i)
        initHooks.at(i)(component, description);
}

// --- views

bool FComponentRegistry::registerView(FViewComponent* view) {
    OPtr<FViewComponent> owned(view);
    return view && !isViewRegistered(view->getType(), view->getName().text16()) && views.add(owned.detach());
}

bool FComponentRegistry::unregisterView(const char* type, const tchar* name) {
    return views.removeAbs(getView(type, name));
}

FViewComponent* FComponentRegistry::getView(const char* type, const tchar* name) const {
    const OPtr<FViewComponent> wanted(new FViewComponent(type, name, nullptr));
    for (CmLinkedListIterator each(views); !each.done();)
        if (auto* view = static_cast<FViewComponent*>(each.next()); view->compare(wanted) == 0)
            return view;
    return nullptr;
}

FViewComponent* FComponentRegistry::getView(int32_t index) const {
    return static_cast<FViewComponent*>(views.at(index));
}

int32_t FComponentRegistry::findSharedModules() {
    const int32_t own = findModules();
    FNPath folder;
    if (!folder.getStandardFolder(kCommonFolder, nullptr, false))
        return own;
    folder.goDown(kSharedFolder);
    folder.goDown(kFolderName);
    return own + findModules(folder, nullptr);
}

}  // namespace Tessarine
