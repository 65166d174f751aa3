#include "host/modulehost.h"
#include "gui/uctrler.h"
#include "host/texts.h"
#include <algorithm>
#include <filesystem>
#include <vector>

using namespace Tessarine;

namespace {
namespace fs = std::filesystem;

constexpr const char* kServiceCategory = "Service";
constexpr const char* kComponentsFolder = "Components";
constexpr const char* kBundleExtension = ".bundle";

/** The last reason why something couldn't be loaded, while this lives. */
class LoadReport {
public:
    LoadReport() {
        text().clear();
        gBundleHooks.report = [](const std::string& why) { text() = why; };
    }
    ~LoadReport() { gBundleHooks.report = before; }
    LoadReport(const LoadReport&) = delete;

    static std::string& text() {
        static std::string last;
        return last;
    }

private:
    void (*before)(const std::string& text) = gBundleHooks.report;
};

std::string componentsFolder() {
    FString folder;
    if (const FNPath* application = UController::getAppPath())
        application->getFullPath(folder);
    return utf8Of(folder) + "/" + kComponentsFolder;
}

/** Why the registry wouldn't have a module; the path is of a bundle, or of the folder that has none. */
std::string refusalOf(const std::string& path) {
    std::string why;
    const OPtr<ModuleBundle> bundle(ModuleBundle::open(path, why));
    if (!bundle)
        return why;
    if (!FNPath().fromPlatformPath(bundle->getPath()))
        return path + ": not a name in UTF-8";
    if (!LoadReport::text().empty())
        return LoadReport::text();
    return bundle->getExecutablePath() + ": offers nothing for this host";
}

FModule* moduleOf(FComponentDescription* description) {
    const auto* component = classCast<FPluginComponent>(description);
    return component ? component->getModule() : nullptr;
}

/** The first service that one module has, or that any has. */
FPluginComponent* serviceOf(const FModule* module) {
    const int32_t count = gComponentRegistry->countComponentClasses(kServiceCategory);
    for (int32_t i = 0; i < count; ++i) {
        FComponentDescription* each = gComponentRegistry->getComponentDescription(kServiceCategory, i);
        if (const FModule* owner = moduleOf(each); owner && (!module || owner == module))
            return static_cast<FPluginComponent*>(each);
    }
    return nullptr;
}
}  // namespace

ModuleHost::~ModuleHost() {
    unload();
    StandardPluginContext::setInstance(nullptr);
    if (!module)
        return;
    if (gServiceManager)
        gServiceManager->abandonService(service->getCID());  // it goes on, and its code with it
    factory.detach();
}

std::string ModuleHost::findBundle(const std::string& folder) {
    std::vector<std::string> found;
    std::error_code error;
    for (fs::directory_iterator each(folder, error), end; !error && each != end; each.increment(error))
        if (each->path().extension() == kBundleExtension)
            found.push_back(each->path().string());
    return found.empty() ? "" : *std::ranges::min_element(found);
}

bool ModuleHost::load(const std::string& given, std::string& error) {
    const LoadReport report;
    StandardPluginContext::setInstance(&hostClasses);
    if (findModule(given, error) && enter(error))
        return true;
    leave();
    return false;
}

bool ModuleHost::findModule(const std::string& given, std::string& error) {
    FComponentRegistry* registry = FComponentRegistry::use();
    FNPath named;
    if (given.empty()) {
        registry->findModules();
    } else {
        registry->setScanned();  // this one, and no other
        if (std::error_code failure; named.fromPlatformPath(fs::absolute(given, failure).c_str()))
            module = classCast<FModule>(registry->addModule(&named));
    }
    if (given.empty() || module)
        service = serviceOf(module);
    if (service)
        module = moduleOf(service);
    if (module)
        return true;
    const std::string first = given.empty() ? findBundle(componentsFolder()) : given;
    error = refusalOf(first.empty() ? componentsFolder() : first);
    return false;
}

bool ModuleHost::enter(std::string& error) {
    FBundleFacts facts;
    if (module->examine(facts))
        path = facts.folder;
    factory = OPtr<IPluginFactory3>(FUnknownPtr<IPluginFactory3>(module->getFactory(true)).detach());
    if (!factory) {
        error = refusalOf(path);
        return false;
    }
    module->addInstance(nullptr);  // stays loaded until it is left
    hostClasses.getDevices().setFactory(factory);
    return true;
}

std::string ModuleHost::getVersion() const {
    return service ? utf8Of(service->getVersion()) : "";
}

bool ModuleHost::isRunning() const {
    return service && gServiceManager && gServiceManager->getServiceInstance(service->getCID());
}

bool ModuleHost::start(std::string& error) {
    if (!service) {
        error = path + ": has no service";
        return false;
    }
    FServiceManager* services = FServiceManager::use();
    services->registerServiceCategory(kServiceCategory, nullptr);
    if (services->startService(service->getCID()))
        return true;
    error = utf8Of(service->getName()) + " can't start";
    return false;
}

bool ModuleHost::stop() {
    if (isRunning() && !gServiceManager->terminateService(service->getCID()))
        return false;
    hostClasses.getDevices().clear();
    return true;
}

void ModuleHost::unload() {
    if (!module || !stop())
        return;
    hostClasses.getDevices().setFactory(nullptr);
    leave();
}

void ModuleHost::leave() {
    factory = nullptr;
    service = nullptr;
    if (module)
        module->unload();
    module = nullptr;
    path.clear();
    StandardPluginContext::setInstance(nullptr);
}
