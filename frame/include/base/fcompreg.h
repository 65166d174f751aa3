#pragma once
#include "base/fcompiledinclass.h"
#include "base/fmodman.h"
#include "base/source/tarray.h"
#include "pluginterfaces/host/icomponentfactory.h"
#include <span>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace Tessarine {
class FConsole;

/** How many objects of a class may exist; PClassInfo::kManyInstances is any number. */
using FCardinality = int32_t;

/** What is known of a class, and how to make its objects.

    Order     by type, then by name in any case: neither changes once it is in the registry.
    Results   a new object has one reference for the caller; null: it couldn't be made.
    Threads   the main thread. */
class FComponentDescription : public CmObject {
public:
    using CreateFunction = FObject* (*)();

    FComponentDescription() = default;
    FComponentDescription(const char* type, const tchar* name, const char* cid,
                          CreateFunction createFunction = nullptr);

    virtual const FString& getName() const { return name; }
    virtual void setName(const tchar* text) { name = text; }
    virtual const char* getType() const { return type.text8(); }
    virtual const FUID& getCID() const { return cid; }
    virtual FCardinality getCardinality() const { return cardinality; }
    virtual const FString& getVendor() const { return vendor; }
    virtual const FString& getVendorUrl() const { return url; }
    virtual const FString& getVendorContact() const { return contact; }
    /** Of the module; empty for what is part of the program, and no path then. */
    virtual const FString& getFileName() const { return fileName; }
    virtual const FPath* getPath() const { return nullptr; }
    /** As an object of this copy of the framework; context: for wrappers, may be null. */
    virtual CmObject* create(CmObject* context);
    /** The component's own face. counted: its module stays loaded as long as the object lives; otherwise from now on. */
    virtual FUnknown* createUnknown(bool counted);

    /** A number that no other description of this run has. */
    int32_t getRuntimeID() { return runtimeID < 0 ? assignRuntimeID() : runtimeID; }
    /** It has this one already. */
    bool hasRuntimeID(int32_t number) const { return number >= 0 && number == runtimeID; }
    bool isAvailable() const { return available; }
    void setAvailable(bool state) { available = state; }
    /** It is there for good: its module stays loaded, or it has none. */
    virtual bool isNonDiscardable() const { return true; }

    int32_t compare(const CmObject* other) const override;
    bool isEqual(const CmObject* other) const override { return this == other; }

    DECLARE_CLASS(FComponentDescription, CmObject)

protected:
    int32_t assignRuntimeID();

    FString vendor, url, contact, fileName;
    CreateFunction createFunction = nullptr;
    FCardinality cardinality = PClassInfo::kManyInstances;
    FString name;
    FString type;  // narrow
    FUID cid;
    int32_t runtimeID = -1;
    bool available = true;
};

/** A class of a module, or of a factory that somebody else loaded. */
class FPluginComponent : public FComponentDescription {
public:
    FPluginComponent() = default;
    /** Shares the module, where the factory comes from, or the factory when that is null. */
    FPluginComponent(const PClassInfoW& info, const PFactoryInfo& factoryInfo, FModule* module, IPluginFactory* factory,
                     FUnknown* context = nullptr);

    CmObject* create(CmObject* context) override;
    FUnknown* createUnknown(bool counted) override;
    const FPath* getPath() const override { return module ? module->getPath() : nullptr; }
    bool isNonDiscardable() const override { return !module || module->staysLoaded(); }

    FModule* getModule() const { return module; }
    const FString& getVersion() const { return version; }
    const FString& getSdkVersion() const { return sdkVersion; }
    const char* getSubCategories() const { return subCategories.text8(); }
    uint32_t getClassFlags() const { return classFlags; }
    /** What its objects are to be initialized with; null: the program's own. Borrowed. */
    FUnknown* getContext() const { return context; }

    DECLARE_CLASS(FPluginComponent, FComponentDescription)

private:
    FUnknown* createInstance();

    IPtr<FModule> module;
    IPtr<IPluginFactory> factory;  // when there is no module
    IPtr<FUnknown> context;
    FString version, sdkVersion, subCategories;
    uint32_t classFlags = 0;
};

/** A class that is part of the program, by its static record. */
class FCompiledInComponentDescription : public FComponentDescription {
public:
    FCompiledInComponentDescription() = default;
    explicit FCompiledInComponentDescription(const FCompiledInClass& record);

    DECLARE_CLASS(FCompiledInComponentDescription, FComponentDescription)
};

/** What makes views of a name; the views themselves are of floors above. */
class FViewComponent : public FComponentDescription {
public:
    using CreateViewFunction = CmObject* (*)(CmObject* context);

    FViewComponent() = default;
    FViewComponent(const char* type, const tchar* name, CreateViewFunction createView);
    /** context: what the view shows. */
    CmObject* create(CmObject* context) override { return createView ? createView(context) : nullptr; }
    FUnknown* createUnknown(bool /*counted*/) override { return create(nullptr); }

    DECLARE_CLASS(FViewComponent, FComponentDescription)

private:
    CreateViewFunction createView = nullptr;
};

/** The class that stands around the components of a category in this program. */
class FPluginWrapper : public CmObject {
public:
    /** Shares the component, of which module may be null. */
    using WrapFunction = CmObject* (*)(FUnknown* component, FModule* module, CmObject* context);

    FPluginWrapper() = default;
    FPluginWrapper(const char* category, WrapFunction wrap) : category(category), wrap(wrap) {}
    bool isFor(const char* type) const { return category == ConstString(type); }
    CmObject* create(FUnknown* component, FModule* module, CmObject* context) const {
        return wrap ? wrap(component, module, context) : nullptr;
    }

    DECLARE_CLASS(FPluginWrapper, CmObject)

private:
    FString category;
    WrapFunction wrap = nullptr;
};

/** All classes that components can be made of: those of the program and those of the modules in the "Components" folder.

    Found     by identifier, or by type and name; types as they are written, names in any case. The first count of a type
              scans the folder.
    Owns      its descriptions, which are handed out borrowed, until they are removed.
    Threads   the main thread. */
class FComponentRegistry : public FModuleManager, public IComponentFactory {
public:
    /** Hears of each component of a module that is made, before anybody else. */
    using PluginInitHook = void (*)(FUnknown* component, FComponentDescription& description);

    FComponentRegistry();
    ~FComponentRegistry() override;

    // FModuleManager
    /** The classes of all factories go first: any of them may be code of a module. */
    void removeAll() override;
    FModuleBase* createModule(FPath* path) override;
    bool onRestoreModule(FDefaults* defaults, FModuleBase* module) override;
    bool onRegisterModule(FDefaults* defaults, FModuleBase* module) override;

    // IComponentFactory
    int32_t queryInterface(const char* iid, void** obj) override;
    int32_t countClasses(const char* type) override { return countComponentClasses(type); }
    const tchar* getClassName(const char* type, int32_t index) override;
    FUnknown* createClassInstance(const char* type, const char* name) override;
    void releaseClassInstance(FUnknown* object) override;
    int32_t addComponentClasses(IPluginFactory* factory, FUnknown* context) override;

    /** Takes it over; false, and it is released: null, or its identifier is known. */
    bool addComponentClass(FComponentDescription* description);
    bool addComponentClass(const char* type, const tchar* name, const char* cid,
                           FComponentDescription::CreateFunction create);
    bool removeComponentClass(const FUID& cid);

    FComponentDescription* getComponentDescription(const FUID& cid);
    FComponentDescription* getComponentDescription(const char* type, const tchar* name);
    /** The index-th of the type. */
    FComponentDescription* getComponentDescription(const char* type, int32_t index);
    /** The first of the type with the identifier that the object's IPersistent tells, or with its class for a name. */
    FComponentDescription* getComponentDescription(FUnknown* object, const char* type);
    FComponentDescription* getComponentDescriptionByRuntimeID(int32_t runtimeID);
    const tchar* getComponentClassName(const FUID& cid);
    /** 1 for a class that isn't known. */
    FCardinality getComponentCardinality(const FUID& cid);
    int32_t countComponentClasses(const char* type);
    int32_t countComponentClasses() { return int32_t(sortedClasses().size()); }
    /** It is known, and wasn't switched off. */
    bool isAvailable(const FUID& cid);
    /** Its module is never unloaded. */
    bool nonDiscardable(const FUID& cid);

    // with one reference for the caller; null: no such class, or it can't be made
    CmObject* createComponent(const FUID& cid, CmObject* context = nullptr);
    CmObject* createComponent(const char* type, const tchar* name, CmObject* context = nullptr);
    CmObject* createComponent(const char* type, int32_t index, CmObject* context = nullptr);
    FUnknown* createUnknownComponent(const FUID& cid, bool counted);
    FUnknown* createUnknownComponent(const char* type, const tchar* name, bool counted);

    /** Takes it over; the first one of a category counts. */
    bool addPluginWrapper(FPluginWrapper* wrapper);
    /** The component in the wrapper of its category, or in a plain one. */
    CmObject* createWrapper(const char* type, FUnknown* component, FModule* module, CmObject* context);
    void addPluginInitHook(PluginInitHook hook) { initHooks.add(hook); }
    bool removePluginInitHook(PluginInitHook hook) { return initHooks.remove(hook); }
    void callPluginInitHooks(FUnknown* component, FComponentDescription& description) const;

    /** Takes it over. false, and it is released: there is one of its type and name. */
    bool registerView(FViewComponent* view);
    bool unregisterView(const char* type, const tchar* name);
    FViewComponent* getView(const char* type, const tchar* name) const;
    FViewComponent* getView(int32_t index) const;
    int32_t countViews() const { return views.total(); }
    bool isViewRegistered(const char* type, const tchar* name) const { return getView(type, name) != nullptr; }

    /** As findModules, and in the folder that all users share. */
    int32_t findSharedModules();
    /** Keeps in the defaults which classes are switched off. */
    void storeAvailableFlags();
    /** A line for each class. */
    void dump(FConsole& console);

    /** Modules of this category needn't say that they are Unicode. The text is borrowed. */
    void addUnicodeCategory(const char* category) { unicodeCategories.add(category); }
    /** Modules of these file names are never loaded. */
    static void addDoNotLoad(const tchar* fileName);

    /** Makes gComponentRegistry if there is none. */
    static FComponentRegistry* use();
    /** Ends it, and what it loaded. */
    static void unuse();

    DECLARE_CLASS(FComponentRegistry, FModuleManager)
    FORWARD_REFCOUNT(FModuleManager)

private:
    using Sorted = std::vector<FComponentDescription*>;
    using Run = std::span<FComponentDescription* const>;

    Sorted& sortedClasses();
    Run runOf(const char* type);
    bool insert(OPtr<FComponentDescription> description);
    void forget(FComponentDescription* description);
    bool isKnownCategory(const char* category) const;
    bool checkForUnicodeCompliantInterfaces(IPluginFactory& factory) const;
    bool registerClasses(FDefaults& defaults, FModule& module, IPluginFactory& factory);

    CmLinkedList classes;  // of FComponentDescription, sorted
    CmLinkedList views;
    TArray<const char*> unicodeCategories{0, -1};
    TArray<PluginInitHook> initHooks{0, -1};
    CmLinkedList wrappers;

    Sorted sorted;                                                      // the classes once more
    std::unordered_map<std::string_view, FComponentDescription*> byID;  // by their own bytes
    std::vector<const FCompiledInClass*> takenIn;                       // records that have a description, or had one
};

/** The program's; null before use(). */
extern FComponentRegistry* gComponentRegistry;

}  // namespace Tessarine
