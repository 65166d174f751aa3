#include "base/fmodule.h"
#include "base/fhostclasses.h"
#include <algorithm>

namespace Tessarine {
namespace {
using BundleEntry = bool (*)(void*);
using BundleExit = bool (*)();
using FactoryGetter = IPluginFactory* (*)();

template <class Function>
Function entryOf(const FModuleBase& module, const char* name) {
    return reinterpret_cast<Function>(module.getProcAddress(name));
}

/** As the platform takes it; empty: it can't be expressed. */
std::string platformPathOf(const FPath* path) {
    char text[FNPath::kPlatformPathLength];
    const auto* own = classCast<FNPath>(path);
    return own && own->toPlatformPath(text) ? text : "";
}

constinit FUnknown* ownContext = nullptr;  // borrowed
}  // namespace

IMPLEMENT_CLASS(FModuleBase, CmObject)
IMPLEMENT_CLASS(FModule, FModuleBase)

FModuleBase::~FModuleBase() {
    leaveAtEnd();
}

void FModuleBase::leaveAtEnd() {
    if (bundle && instanceCount < 1)
        unload();
    keepForGood(bundle.detach());  // what still runs keeps its code
}

void FModuleBase::addInstance(CmObject* /*instance*/) {
    FGuard guard(lock);
    ++instanceCount;
}

void FModuleBase::releaseInstance(CmObject* /*instance*/) {
    FGuard guard(lock);
    instanceCount = std::max(instanceCount - 1, 0);  // loading may have failed since, which ended them all
    if (instanceCount == 0 && !staysLoaded())
        unload();
}

void FModuleBase::getName(FString& name) {
    if (path)
        path->getNameWithoutExtension(name, false);
}

bool FModuleBase::examine(FBundleFacts& facts) const {
    const std::string text = platformPathOf(path);
    return gBundleHooks.examine && !text.empty() && gBundleHooks.examine(text.c_str(), facts);
}

bool FModuleBase::supportedOnRunningArchitecture() const {
    FBundleFacts facts;
    return examine(facts) && facts.runsHere();
}

bool FModuleBase::getBinaryArchitectures(TContainer<const char*>& architectures) const {
    FBundleFacts facts;
    if (!examine(facts))
        return false;
    for (const char* architecture : facts.architectures)
        architectures.add(architecture);
    return true;
}

bool FModuleBase::fail(const std::string& why) {
    reportLoadFailure(why);
    return false;
}

bool FModuleBase::load() {
    FGuard guard(lock);
    if (bundle)
        return true;
    const std::string text = platformPathOf(path);
    if (!gBundleHooks.openBundle || text.empty())
        return false;
    std::string error;
    bundle = gBundleHooks.openBundle(text.c_str(), error);
    if (!bundle || !bundle->load(error)) {
        bundle = nullptr;
        return fail(error);
    }
    ++instanceCount;  // what it makes and drops meanwhile doesn't unload it
    const bool entered = enter();
    instanceCount = std::max(instanceCount - 1, 0);
    return entered;
}

bool FModuleBase::enter() {
    const auto bundleEntry = entryOf<BundleEntry>(*this, "bundleEntry");
    if (!bundleEntry || !bundleEntry(static_cast<IModuleBundle*>(bundle.get()))) {
        const std::string name = bundle->getPath();
        bundle->unload();
        bundle = nullptr;
        return fail(name + (bundleEntry ? ": refuses to start" : ": not an extension of this host"));
    }
    resourceMap = bundle->getResourcePath();
    if (onLoad())
        return true;
    const std::string name = bundle->getPath();
    unload();
    return fail(name + ": not an extension of this host");
}

void FModuleBase::unload() {
    FGuard guard(lock);
    if (!bundle)
        return;
    ++instanceCount;  // the last one that it drops itself doesn't unload it once more
    onUnload();
    if (const auto bundleExit = entryOf<BundleExit>(*this, "bundleExit"))
        bundleExit();
    resourceMap = nullptr;
    bundle->unload();
    bundle = nullptr;
    instanceCount = 0;
}

bool FModuleBase::isEqual(const CmObject* other) const {
    const auto* module = classCast<FModuleBase>(other);
    return module && path && module->path && path->getFileName() == module->path->getFileName() &&
           path->isEqual(module->path);
}

bool FModule::onLoad() {
    const auto getPluginFactory = entryOf<FactoryGetter>(*this, "GetPluginFactory");
    factory = getPluginFactory ? getPluginFactory() : nullptr;
    if (const FUnknownPtr<IPluginFactory3> hosted(factory.get()); hosted)
        hosted->setHostContext(StandardPluginContext::getInstance());
    return factory;
}

IPluginFactory* FModule::getFactory(bool load) {
    if (load)
        this->load();
    return factory;
}

void FModule::updateInfo(const PFactoryInfo& newInfo) {
    info = newInfo;
    moduleFlags = newInfo.flags & kKeepsLoaded ? moduleFlags | kStaysLoaded : moduleFlags & ~kStaysLoaded;
}

namespace StandardPluginContext {

FUnknown* getInstance() {
    if (ownContext)
        return ownContext;
    static FHostClasses usual;  // the reference that it is made with stays
    return &usual;
}

FUnknown* getContainerInstance() {
    return getInstance();
}

void setInstance(FUnknown* context) {
    ownContext = context;
}

}  // namespace StandardPluginContext
}  // namespace Tessarine
