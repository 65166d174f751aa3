#include "host/modulehost.h"
#include <algorithm>
#include <filesystem>
#include <vector>

using namespace Tessarine;

namespace {
namespace fs = std::filesystem;

constexpr const char* kServiceCategory = "Service";
constexpr const char* kBundleExtension = ".bundle";

using BundleEntry = bool (*)(void*);
using BundleExit = bool (*)();
using FactoryGetter = IPluginFactory* (*)();

template <class Function>
Function entryOf(const ModuleBundle& bundle, const char* name) {
    return reinterpret_cast<Function>(bundle.getProcAddress(name));
}
}  // namespace

ModuleHost::~ModuleHost() {
    unload();
    if (!bundle)
        return;
    service.detach();  // it goes on, and its code with it
    factory.detach();
    bundle.detach();
}

std::string ModuleHost::findBundle(const std::string& folder) {
    std::vector<std::string> found;
    std::error_code error;
    for (fs::directory_iterator each(folder, error), end; !error && each != end; each.increment(error))
        if (each->path().extension() == kBundleExtension)
            found.push_back(each->path().string());
    return found.empty() ? "" : *std::ranges::min_element(found);
}

bool ModuleHost::load(const std::string& path, std::string& error) {
    bundle = ModuleBundle::open(path, error);
    if (bundle && bundle->load(error) && enter(error))
        return true;
    unload();
    return false;
}

bool ModuleHost::enter(std::string& error) {
    const auto bundleEntry = entryOf<BundleEntry>(*bundle, "bundleEntry");
    const auto getFactory = entryOf<FactoryGetter>(*bundle, "GetPluginFactory");
    error = bundle->getExecutablePath() + ": ";
    if (!bundleEntry || !getFactory || !entryOf<BundleExit>(*bundle, "bundleExit")) {
        error += "not an extension of this host";
        return false;
    }
    entered = bundleEntry(static_cast<IModuleBundle*>(bundle.get()));
    if (!entered) {
        error += "refuses to start";
        return false;
    }
    const OPtr<IPluginFactory> given(getFactory());
    factory = OPtr<IPluginFactory3>(FUnknownPtr<IPluginFactory3>(given).detach());
    if (!factory) {
        error += "offers no classes";
        return false;
    }
    factory->setHostContext(&hostClasses);
    hostClasses.getDevices().setFactory(factory);
    return true;
}

bool ModuleHost::findService(PClassInfo2& info) const {
    for (int32_t i = 0; factory && i < factory->countClasses(); ++i)
        if (factory->getClassInfo2(i, &info) == kResultOk && std::strcmp(info.category, kServiceCategory) == 0)
            return true;
    return false;
}

std::string ModuleHost::getVersion() const {
    PClassInfo2 info;
    return findService(info) ? info.version : "";
}

bool ModuleHost::start(std::string& error) {
    PClassInfo2 info;
    void* made = nullptr;
    if (!findService(info) || factory->createInstance(info.cid, IPluginBase::iid, &made) != kResultOk) {
        error = getPath() + ": has no service";
        return false;
    }
    service = static_cast<IPluginBase*>(made);
    if (service->initialize(&hostClasses) == kResultOk)
        return true;
    error = std::string(info.name) + " can't start";
    return false;
}

bool ModuleHost::stop() {
    if (service && service->terminate() != kResultOk)
        return false;
    service = nullptr;
    hostClasses.getDevices().clear();
    return true;
}

void ModuleHost::unload() {
    if (!bundle || !stop())
        return;
    hostClasses.getDevices().setFactory(nullptr);
    factory = nullptr;
    if (entered)
        entryOf<BundleExit>(*bundle, "bundleExit")();
    entered = false;
    bundle->unload();
    bundle = nullptr;
}
