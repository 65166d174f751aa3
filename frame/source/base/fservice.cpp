#include "base/fservice.h"
#include <cstring>
#include <utility>

namespace Tessarine {

IMPLEMENT_CLASS(FServiceCategory, CmObject)
IMPLEMENT_CLASS(FServicePlug, CmObject)
IMPLEMENT_CLASS(FServiceManager, CmObject)

constinit FServiceManager* gServiceManager = nullptr;

FServicePlug::FServicePlug(IPluginBase* service, CmObject* object, const FUID& cid)
    : service(service), object(object), cid(cid) {}

FServicePlug::~FServicePlug() {
    if (!end())
        abandon();
}

void FServicePlug::abandon() {
    keepForGood(service.detach());
    keepForGood(object.detach());  // and with it the module's code
}

bool FServicePlug::end() {
    if (service && service->terminate() != kResultOk)
        return false;
    service = nullptr;
    object = nullptr;
    return true;
}

FServiceManager::FServiceManager() {
    categories._ownsObjects = CmContainer::kTakesOver;
    services._ownsObjects = CmContainer::kTakesOver;
}

FServiceManager::~FServiceManager() {
    terminate();
}

FServiceManager* FServiceManager::use() {
    FComponentRegistry::use();
    if (!gServiceManager)
        gServiceManager = new FServiceManager;
    return gServiceManager;
}

void FServiceManager::unuse() {
    if (FServiceManager* ended = std::exchange(gServiceManager, nullptr))
        ended->release();
}

FServiceCategory* FServiceManager::findCategory(const char* name) const {
    for (CmLinkedListIterator each(categories); !each.done();)
        if (auto* category = static_cast<FServiceCategory*>(each.next()); std::strcmp(category->getName(), name) == 0)
            return category;
    return nullptr;
}

FServicePlug* FServiceManager::findService(const FUID& cid) const {
    for (CmLinkedListIterator each(services); !each.done();)
        if (auto* plug = static_cast<FServicePlug*>(each.next()); plug->getCID() == cid)
            return plug;
    return nullptr;
}

void FServiceManager::registerServiceCategory(const char* name, FUnknown* context) {
    FServiceCategory* category = findCategory(name);
    if (!category)
        categories.add(new FServiceCategory(name, context));
    else if (context)
        category->setContext(context);
}

int32_t FServiceManager::start() {
    int32_t started = 0;
    const OPtr<CmLinkedList> found(new CmLinkedList);
    found->_ownsObjects = CmContainer::kShares;
    collectServiceDescriptions(*found);
    for (CmLinkedListIterator each(*found); !each.done();) {
        auto* description = static_cast<FComponentDescription*>(each.next());
        if (!description->isAvailable() || findService(description->getCID()))
            continue;
        if (startService(description, findCategory(description->getType())->getContext()))
            ++started;
        else
            description->setAvailable(false);
    }
    return started;
}

bool FServiceManager::startService(const FUID& cid) {
    FComponentDescription* description =
        gComponentRegistry ? gComponentRegistry->getComponentDescription(cid) : nullptr;
    const FServiceCategory* category = description ? findCategory(description->getType()) : nullptr;
    return category && !findService(cid) && startService(description, category->getContext());
}

bool FServiceManager::startService(FComponentDescription* description, FUnknown* context) {
    const IPtr<FComponentDescription> kept(description);  // the service may do anything
    const OPtr<CmObject> object(description ? description->create(nullptr) : nullptr);
    const FUnknownPtr<IPluginBase> service(object.get());
    if (!service)
        return false;
    showComponentStatus(description->getName().text16());
    if (service->initialize(context) == kResultOk)
        return services.prepend(new FServicePlug(service, object, description->getCID()));
    service->terminate();
    return false;
}

void FServiceManager::terminate() {
    while (CmObject* plug = services.removeFirst())
        plug->release();
}

bool FServiceManager::terminateService(const FUID& cid) {
    const IPtr<FServicePlug> plug(findService(cid));  // its end may end them all
    return plug && plug->end() && services.removeAbs(plug);
}

bool FServiceManager::abandonService(const FUID& cid) {
    FServicePlug* plug = findService(cid);
    if (plug)
        plug->abandon();
    return services.removeAbs(plug);
}

void FServiceManager::storeActivation() {
    if (gComponentRegistry)
        gComponentRegistry->storeAvailableFlags();
}

IPluginBase* FServiceManager::getServiceInstance(const FUID& cid) const {
    const FServicePlug* plug = findService(cid);
    return plug ? plug->getService() : nullptr;
}

void FServiceManager::collectServiceDescriptions(CmContainer& descriptions) const {
    for (CmLinkedListIterator each(categories); gComponentRegistry && !each.done();) {
        const char* type = static_cast<FServiceCategory*>(each.next())->getName();
        const int32_t count = gComponentRegistry->countComponentClasses(type);
        for (int32_t i = 0; i < count; ++i) {
            FComponentDescription* description = gComponentRegistry->getComponentDescription(type, i);
            if (descriptions.add(description) && descriptions._ownsObjects == CmContainer::kTakesOver)
                description->addRef();
        }
    }
}

}  // namespace Tessarine
