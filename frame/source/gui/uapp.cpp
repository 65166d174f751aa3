#include "gui/uapp.h"
#include "base/fdefaults.h"
#include "base/fmessage.h"
#include "base/fmodman.h"
#include "base/fservice.h"
#include "base/source/finitializer.h"
#include "base/source/thashtable.h"
#include "base/source/updatehandler.h"
#include "graphed/hooks.h"
#include "gui/hooks.h"
#include "gui/uctrler.h"
#include "network/hooks.h"
#include "storage/fpreset.h"
#include <cstring>

namespace Tessarine {
namespace {
constexpr uint32_t kFirstProcedures = 0;   // what other procedures need
constexpr uint32_t kLastProcedures = 100;  // what needs all others
constexpr int32_t kFeatureBuckets = 50;

/** A feature's name is borrowed: it stands in the table that was registered. */
struct Feature {
    const char* name = nullptr;
    FVariant value;
    bool operator==(const Feature& other) const { return name && other.name && std::strcmp(name, other.name) == 0; }
};

int32_t hashFeature(const Feature& feature, int32_t buckets) {
    return int32_t(hashString8(feature.name, uint32_t(buckets)));
}

using FeatureTable = THashTable<Feature>;
FeatureTable* gApplicationFeatures = nullptr;
UpdateHandler* ownHandler = nullptr;  // made by the application, since there was none

/** Undo, commands and connections know neither application nor controller. */
void installHooks() {
    gActionHooks.application = []() -> CmObject* { return gApplication; };
    gActionHooks.isModal = [] { return gController && gController->isInModalMode(); };
    gActionHooks.isMainThread = [] { return !gController || gController->isInMainThread(); };
    gNetworkHooks.isMainThread = [] { return gController ? gController->isInMainThread() : isFirstThread(); };
    gActionHooks.idle = [] {
        if (gController)
            gController->onIdle(false);
    };
    gActionHooks.suspendMouse = [](bool state) { return gController && gController->suspendMouse(state); };
    gActionHooks.showText = [](const tchar* text) {
        if (gControllerHooks.showText)
            gControllerHooks.showText(text, 0);
    };
    gComponentEventHooks.newComponent = [](FComponentDescription& description) {
        if (gApplication)
            gApplication->notifyNewComponent(description);
    };
}
}  // namespace

IMPLEMENT_ABSTRACT_CLASS(UApplication, CmObject)

constinit UApplication* gApplication = nullptr;
constinit bool UApplication::isFailed = false;
FString UApplication::appName, UApplication::userFolderName;

UApplication::UApplication(UAppType type, const char* name) : appType(type) {
    isFailed = false;
    UApplication::setName(name);
    if (!gUpdateHandler)
        ownHandler = new UpdateHandler;
    gApplicationFeatures = new FeatureTable(kFeatureBuckets, hashFeature);
    gApplication = this;
    new UController(appType);  // stands in gController from now on
    installHooks();
}

UApplication::~UApplication() {
    destroyGlobals();
    if (gApplication == this)
        gApplication = nullptr;
}

/** In the reverse of what each one needs; the views' own services will stand between the messenger and the controller. */
void UApplication::destroyGlobals() {
    gActionHooks = {};
    gComponentEventHooks.newComponent = nullptr;
    OneTimeProcedure::terminate();
    FServiceManager::unuse();
    FComponentRegistry::unuse();
    FPresetPool::unuse();
    FDefaultPool::unuse();
    if (gMessenger)
        gMessenger->clear();
    if (gController)
        gController->release();
    OneTimeProcedure::cancel();
    delete gApplicationFeatures;
    gApplicationFeatures = nullptr;
    if (ownHandler)
        ownHandler->release();
    ownHandler = nullptr;
    userFolderName = FString();
}

void UApplication::run() {
    if (gController)
        gController->run(this);
}

void UApplication::preInit() {
    if (!OneTimeProcedure::initialize(kFirstProcedures))
        isFailed = true;
}

void UApplication::postInit() {
    OneTimeProcedure::initialize(kLastProcedures);
}

void UApplication::activate(bool state) {
    if (gController)
        gController->setActiveFlag(state);
}

bool UApplication::canQuit(bool /*force*/) {
    return true;
}

void UApplication::setName(const char* name) {
    appName.assign(name);
}

const FString& UApplication::getUserFolderName() {
    return userFolderName.isEmpty() ? appName : userFolderName;
}

void UApplication::setUserFolderName(const char* name) {
    userFolderName.assign(name);
}

bool UApplication::hasFeature(const char* name) const {
    return name && gApplicationFeatures && gApplicationFeatures->contains(Feature{name, {}});
}

int32_t UApplication::getFeatureValue(const char* name, FVariant& value) const {
    if (!hasFeature(name))
        return kAppFeatureNotDefined;
    value = gApplicationFeatures->lookup(Feature{name, {}}).value;
    return kResultOk;
}

void UApplication::registerFeatures(const AppFeatureTableEntry* entries, int32_t count) {
    for (int32_t i = 0; entries && gApplicationFeatures && i < count; ++i)
        gApplicationFeatures->add(Feature{entries[i].name, entries[i].value});
}

}  // namespace Tessarine
