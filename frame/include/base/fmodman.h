#pragma once
#include "base/fdefaults.h"
#include "base/fmodule.h"
#include <vector>

namespace Tessarine {
class FComponentDescription;
class UStringListValue;

/** What modules and components tell the application. Null until it listens. Main thread. */
struct ComponentEventHooks {
    /** What is being done, to be shown; null: nothing any more. */
    void (*showStatus)(const tchar* text) = nullptr;
    void (*newComponent)(FComponentDescription& description) = nullptr;
};
extern ComponentEventHooks gComponentEventHooks;
/** By the hook, if there is one. */
void showComponentStatus(const tchar* text);

/** Finds modules in folders, and remembers what they offer, so that one that hasn't changed needn't be loaded.

    Owns      its modules. What is remembered is kept in the user file "Module Cache": a group of a pool for each module.
    Results   a count, false or null for a miss; nothing is told.
    Threads   the main thread. */
class FModuleManager : public CmObject {
public:
    /** The name of the folder below the application's, and of the cached groups. */
    explicit FModuleManager(const tchar* folderName);
    ~FModuleManager() override;

    /** What modules are, as files. */
    virtual const FFileType& getFileType() const;
    /** It has the extension of a module, or is a bundle. */
    virtual bool isModule(const FPath* path) const;
    virtual void removeAll();
    /** Takes the path over; null: it makes none. */
    virtual FModuleBase* createModule(FPath* path);
    /** What it offers, out of the cache; false: it must be loaded. */
    virtual bool onRestoreModule(FDefaults* defaults, FModuleBase* module);
    /** The same from the module itself, and into the cache; false: it is of no use. */
    virtual bool onRegisterModule(FDefaults* defaults, FModuleBase* module);

    /** Scans the application's folder, which isn't made when it is missing, the first time; 0 later on. */
    int32_t findModules();
    /** In a folder and those below; a null fileType takes all that are modules. The result counts the modules that were
        taken. */
    int32_t findModules(const FNPath& path, const FFileType* fileType);
    /** Scans the application's folder again for new ones. */
    int32_t rescanModules();
    /** From now on findModules() answers 0: the modules were named one by one. */
    void setScanned() { isScanned = true; }

    int32_t countModules() const { return modules.total(); }
    /** Borrowed; null: there is none. */
    FModuleBase* getModule(int32_t index) const;
    FModuleBase* getModule(const tchar* name) const { return getModule(getModuleIndex(name)); }
    /** -1: there is none of this name. */
    int32_t getModuleIndex(const tchar* name) const;
    /** One module, by its bundle or the code in it; borrowed, one that is here already as well. Null: it was refused. */
    FModuleBase* addModule(const FNPath* path);
    /** Both add the module, which they share, when it is of use. */
    bool registerModule(FModuleBase* module);
    bool restoreModule(FModuleBase* module);
    /** Writes the cache if it has changed. */
    bool saveDefaults();

    /** What a module is known by in the cache. */
    void makeGroupId(FString& id, const FPath* path) const;
    /** The folders between the one that is being scanned and the path, with a delimiter on both sides, or one alone. */
    void getFolderName(const FNPath* path, FString& name) const;
    /** Their names; with one reference for the caller. */
    UStringListValue* getModulesValue() const;

    DECLARE_ABSTRACT_CLASS(FModuleManager, CmObject)

protected:
    static constexpr const char* kCacheName = "Module Cache";

    FDefaultPool* useCache();
    /** Keys and groups of pools in ASCII, so that they mean the same in each encoding. */
    static void makeKey(FString& key, const ConstString& text);

    CmLinkedList modules;
    FString folderName, cacheName = kCacheName;
    OPtr<FDefaultPool> cache;  // made on first use
    int32_t cacheVersion = 1;
    bool isScanned = false;
    const FNPath* scanRoot = nullptr;  // borrowed, while it is scanned

private:
    struct Entry;
    bool openEntry(FModuleBase* module, Entry& entry);
    bool closeEntry(const Entry& entry);
    FModuleBase* takeModule(OPtr<FModuleBase> module);

    std::vector<const FModuleBase*> beingTaken;  // borrowed: one that is entered may have its own folder scanned
    bool cacheChanged = false;
};

}  // namespace Tessarine
