#pragma once
#include "base/fcompreg.h"

namespace Tessarine {

/** A category whose components are services, and what they are started with: a context that is borrowed, or the program's
    own. */
class FServiceCategory : public CmObject {
public:
    FServiceCategory() = default;
    FServiceCategory(const char* name, FUnknown* context) : name(name), context(context) {}
    const char* getName() const { return name.text8(); }
    FUnknown* getContext() const { return context ? context : StandardPluginContext::getContainerInstance(); }
    void setContext(FUnknown* newContext) { context = newContext; }

    DECLARE_CLASS(FServiceCategory, CmObject)

private:
    FString name;
    FUnknown* context = nullptr;
};

/** A service that runs. Its end ends the service; one that refuses keeps its references, and goes on alone. */
class FServicePlug : public CmObject {
public:
    FServicePlug() = default;
    /** Both are shared; the service is a face of the object. */
    FServicePlug(IPluginBase* service, CmObject* object, const FUID& cid);
    ~FServicePlug() override;

    /** false: it refuses, and runs on. */
    bool end();
    void abandon();
    IPluginBase* getService() const { return service; }
    const FUID& getCID() const { return cid; }

    DECLARE_CLASS(FServicePlug, CmObject)

private:
    IPtr<IPluginBase> service;
    IPtr<CmObject> object;
    FUID cid;
};

/** Starts the components of some categories and ends them again.

    Results   false or null for a miss; a service that runs isn't started twice.
    Threads   the main thread. */
class FServiceManager : public CmObject {
public:
    FServiceManager();
    ~FServiceManager() override;

    /** The context is borrowed; a null one leaves that of a category that is there, and is the program's own for a new
        one. */
    void registerServiceCategory(const char* name, FUnknown* context);
    /** Starts all that are available; one that fails is switched off until the program ends. The result counts those that
        were started. */
    int32_t start();
    bool startService(const FUID& cid);
    bool startService(FComponentDescription* description, FUnknown* context);
    /** Ends all, the latest first. */
    void terminate();
    /** false: it isn't running, or refuses to end and runs on. */
    bool terminateService(const FUID& cid);
    /** Lets it run on, alone and for good. false: it isn't running. */
    bool abandonService(const FUID& cid);
    /** Keeps in the defaults which ones are switched off. */
    void storeActivation();
    /** Borrowed. */
    IPluginBase* getServiceInstance(const FUID& cid) const;
    /** Adds those of all categories; a container that owns its elements shares them. */
    void collectServiceDescriptions(CmContainer& descriptions) const;

    /** Makes gServiceManager if there is none, and the registry. */
    static FServiceManager* use();
    static void unuse();

    DECLARE_CLASS(FServiceManager, CmObject)

private:
    FServiceCategory* findCategory(const char* name) const;
    FServicePlug* findService(const FUID& cid) const;

    CmLinkedList categories;  // of FServiceCategory
    CmLinkedList services;    // of FServicePlug, the latest first
};

/** The program's; null before use(). */
extern FServiceManager* gServiceManager;

}  // namespace Tessarine
