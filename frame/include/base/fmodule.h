#pragma once
#include "base/fbundle.h"
#include "base/source/fthread.h"
#include "base/source/tcontainer.h"
#include "pluginterfaces/base/ipluginbase.h"
#include "pluginterfaces/base/smartpointer.h"
#include "storage/fpath.h"

namespace Tessarine {

/** A bundle that can be loaded, entered and left again.

    Loaded    by load, until unload, or until the last instance that it knows of has gone, unless it stays. One that still has
              instances outlives its object.
    Entries   `bundleEntry(IModuleBundle*)` when it is loaded, `bundleExit()` before it goes.
    Threads   loading and counting any, under its lock; all else main. */
class FModuleBase : public CmObject {
public:
    /** Takes the path over; an FNPath, or it can't be loaded. */
    explicit FModuleBase(FPath* path = nullptr) : path(path) {}
    ~FModuleBase() override;
    FModuleBase(const FModuleBase&) = delete;
    FModuleBase& operator=(const FModuleBase&) = delete;

    /** instance: for derived classes; null for a user that is no object. */
    virtual void addInstance(CmObject* instance);
    virtual void releaseInstance(CmObject* instance);
    /** The bundle's, without its extension. */
    virtual void getName(FString& name);
    /** true: it is loaded now. A failure is told once, by gBundleHooks.report. */
    virtual bool load();
    /** Whether it has instances or not; their code is gone then. */
    virtual void unload();
    /** false: it is of no use, and unloaded again. */
    virtual bool onLoad() { return true; }
    virtual void onUnload() {}

    /** By the files alone. */
    bool supportedOnRunningArchitecture() const;
    /** Adds names that stay. false: it is no bundle. */
    bool getBinaryArchitectures(TContainer<const char*>& architectures) const;
    /** Null when it isn't loaded. */
    void* getProcAddress(const char* name) const { return bundle ? bundle->getProcAddress(name) : nullptr; }
    bool isLoaded() const { return bundle; }
    /** It isn't unloaded with its last instance. */
    bool staysLoaded() const { return moduleFlags & kStaysLoaded; }
    const FPath* getPath() const { return path; }
    /** Where its resources are; null when it isn't loaded. */
    const char* getResourcePath() const { return resourceMap; }
    /** false: it is no bundle. */
    bool examine(FBundleFacts& facts) const;

    /** By the path. */
    bool isEqual(const CmObject* other) const override;

    DECLARE_CLASS(FModuleBase, CmObject)

protected:
    static constexpr int32_t kStaysLoaded = 1;

    bool fail(const std::string& why);
    bool enter();
    /** For destructors, as long as onUnload is the class's own. */
    void leaveAtEnd();

    OPtr<FPath> path;
    OPtr<FLoadableBundle> bundle;
    FLock lock{"FModuleBase"};  // guards bundle and the counters
    int32_t instanceCount = 0;
    int32_t moduleFlags = 0;
    const char* resourceMap = nullptr;  // the bundle's
};

/** A module with classes, by `GetPluginFactory`. */
class FModule : public FModuleBase {
public:
    explicit FModule(FPath* path = nullptr) : FModuleBase(path) {}
    ~FModule() override { leaveAtEnd(); }

    bool onLoad() override;
    void onUnload() override { factory = nullptr; }

    /** Borrowed, as long as the module is loaded; null: it isn't, or can't be. */
    IPluginFactory* getFactory(bool load);
    /** What its factory says of it, or said when it was here last. */
    void updateInfo(const PFactoryInfo& newInfo);
    const PFactoryInfo& getInfo() const { return info; }

    /** Bits of the factory's flags. */
    enum FactoryFlag : int32_t {
        kClassesVary = 1,  // they aren't the same each time
        kAsksEachTime = 2,
        kKeepsLoaded = 8,
        kIsUnicode = PFactoryInfo::kUnicode,
    };

    DECLARE_CLASS(FModule, FModuleBase)

private:
    PFactoryInfo info;
    OPtr<IPluginFactory> factory;
};

/** An instance to the end of the block: the module stays loaded meanwhile. Null is allowed. */
class FModulePin {
public:
    explicit FModulePin(FModuleBase* module) : module(module) {
        if (module)
            module->addInstance(nullptr);
    }
    ~FModulePin() {
        if (module)
            module->releaseInstance(nullptr);
    }
    FModulePin(const FModulePin&) = delete;
    FModulePin& operator=(const FModulePin&) = delete;

private:
    FModuleBase* module;
};

/** What components that are made here are given as their host.

    Threads   main. */
namespace StandardPluginContext {
/** The program's own; without one, what offers the framework's host classes. Borrowed. */
FUnknown* getInstance();
/** For components that stand in a container of their own; here the same. */
FUnknown* getContainerInstance();
/** Borrowed, until null takes it back. */
void setInstance(FUnknown* context);
}  // namespace StandardPluginContext

}  // namespace Tessarine
