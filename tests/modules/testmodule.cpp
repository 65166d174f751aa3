// A module that is what the file "module.txt" in its resources says, one setting a line:
//
//   flags N          of the factory               level N       1 to 3: how much of a factory it is
//   initialize N     what its objects answer      terminate N
//   factory 0        it has none
//   uses N           one of its own components, when it hears of its host: 1 for a moment, 2 until it is left
//   adds 1           makes its own factory known as well then
//   class CID CARDINALITY CATEGORY NAME           up to the end of the line
//
// It adds a line to "loads" there each time it is entered.
#include "pluginterfaces/base/imodulebundle.h"
#include "pluginterfaces/base/ipluginbase.h"
#include "pluginterfaces/base/smartpointer.h"
#include "pluginterfaces/host/icomponentfactory.h"
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

using namespace Tessarine;

#define MODULE_ENTRY extern "C" __attribute__((visibility("default")))

namespace {
struct Settings {
    int32_t flags = 0, level = 3, initialize = kResultOk, terminate = kResultOk, factory = 1, uses = 0, adds = 0;
    std::vector<PClassInfo2> classes;
};
Settings settings;
OPtr<FUnknown> ownComponent;

class Component : public IPluginBase {
public:
    virtual ~Component() = default;
    int32_t queryInterface(const char* iid, void** obj) override {
        return answerInterface<IPluginBase>(this, iid, obj) || answerInterface<FUnknown>(this, iid, obj)
                   ? kResultOk
                   : noInterface(obj);
    }
    uint32_t addRef() override { return uint32_t(++references); }
    uint32_t release() override {
        const int32_t left = --references;
        if (left == 0)
            delete this;
        return uint32_t(left);
    }
    int32_t initialize(FUnknown* context) override { return context ? settings.initialize : kInvalidArgument; }
    int32_t terminate() override { return settings.terminate; }

private:
    int32_t references = 1;
};

/** The first class, as the host knows it. */
void useOwnComponent(IComponentFactory& components) {
    const char* category = settings.classes.front().category;
    if (components.countClasses(category) > 0)
        ownComponent = components.createClassInstance(category, settings.classes.front().name);
    if (settings.uses == 1)
        ownComponent = nullptr;
}

class Factory : public IPluginFactory3 {
public:
    virtual ~Factory() = default;
    int32_t queryInterface(const char* iid, void** obj) override {
        const bool known = answerInterface<IPluginFactory>(this, iid, obj) ||
                           answerInterface<FUnknown>(this, iid, obj) ||
                           (settings.level > 1 && answerInterface<IPluginFactory2>(this, iid, obj)) ||
                           (settings.level > 2 && answerInterface<IPluginFactory3>(this, iid, obj));
        return known ? kResultOk : noInterface(obj);
    }
    uint32_t addRef() override { return 1; }
    uint32_t release() override { return 1; }
    int32_t getFactoryInfo(PFactoryInfo* info) override {
        *info = PFactoryInfo("Maker", "maker.test", "post@maker.test", 0);
        info->flags = settings.flags;
        return kResultOk;
    }
    int32_t countClasses() override { return int32_t(settings.classes.size()); }
    int32_t getClassInfo(int32_t index, PClassInfo* info) override {
        const PClassInfo2& row = settings.classes[size_t(index)];
        *info = PClassInfo(row.cid, row.cardinality, row.category, row.name);
        return kResultOk;
    }
    int32_t getClassInfo2(int32_t index, PClassInfo2* info) override {
        *info = settings.classes[size_t(index)];
        return kResultOk;
    }
    int32_t getClassInfoUnicode(int32_t index, PClassInfoW* info) override {
        info->fromAscii(settings.classes[size_t(index)]);
        return kResultOk;
    }
    int32_t setHostContext(FUnknown* context) override {
        const FUnknownPtr<IHostClasses> host(context);
        const FInstancePtr<IComponentFactory> components(host);
        if (components && settings.uses)
            useOwnComponent(*components);
        if (components && settings.adds)
            components->addComponentClasses(this, nullptr);
        return context ? kResultOk : kInvalidArgument;
    }
    int32_t createInstance(const char* cid, const char* iid, void** obj) override {
        for (const PClassInfo2& row : settings.classes)
            if (FUID::same(row.cid, cid)) {
                auto* made = new Component;
                const int32_t result = made->queryInterface(iid, obj);
                made->release();
                return result;
            }
        return noInterface(obj);
    }
};
Factory factory;

void takeLine(const std::string& line) {
    const std::pair<const char*, int32_t*> numbers[] = {
        {"flags",      &settings.flags     },
        {"level",      &settings.level     },
        {"initialize", &settings.initialize},
        {"terminate",  &settings.terminate },
        {"factory",    &settings.factory   },
        {"uses",       &settings.uses      },
        {"adds",       &settings.adds      },
    };
    std::istringstream words(line);
    std::string word, cid, category, name;
    words >> word;
    for (const auto& [known, number] : numbers)
        if (word == known)
            words >> *number;
    int32_t cardinality = 0;
    FUID id;
    if (word == "class" && words >> cid >> cardinality >> category >> std::ws && std::getline(words, name) &&
        id.fromString(cid.c_str()))
        settings.classes.emplace_back(id, cardinality, category.c_str(), name.c_str(), 7, "Sub|Other", "", "1.2.3",
                                      "0.9");
}
}  // namespace

MODULE_ENTRY bool bundleEntry(void* bundleRef) {
    const std::string resources = static_cast<IModuleBundle*>(bundleRef)->getResourcePath();
    std::ofstream(resources + "/loads", std::ios::app) << "loaded\n";
    std::ifstream text(resources + "/module.txt");
    settings = Settings();
    for (std::string line; std::getline(text, line);)
        takeLine(line);
    return true;
}

MODULE_ENTRY bool bundleExit() {
    ownComponent = nullptr;
    return true;
}

MODULE_ENTRY IPluginFactory* GetPluginFactory() {
    return settings.factory ? &factory : nullptr;
}
