#pragma once
#include "base/fservice.h"
#include "gui/os/linux/core/modulebundle.h"
#include "host/hostclasses.h"
#include <string>

/** The extension as a loaded module: the component registry finds it, the service manager runs it, and it is reached only
    through its entry points and interfaces.

    Life      load, start, stop, unload, in this order; each once, or all of them again. The program's application is there.
    Results   false, and a text that says why.
    Threads   main. */
class ModuleHost {
public:
    explicit ModuleHost(HostClasses& classes) : hostClasses(classes) {}
    ~ModuleHost();
    ModuleHost(const ModuleHost&) = delete;
    ModuleHost& operator=(const ModuleHost&) = delete;

    /** The bundle in a folder of bundles whose name sorts first; empty when there is none. */
    static std::string findBundle(const std::string& folder);

    /** The bundle folder, or the shared object in it; empty: the first service of the program's "Components" folder. */
    bool load(const std::string& path, std::string& error);
    /** Makes and initializes the module's service. */
    bool start(std::string& error);
    /** false: the service refuses to end, since the program isn't quitting. Then nothing may be released. */
    bool stop();
    void unload();

    /** Null before load. Borrowed. */
    Tessarine::IPluginFactory3* getFactory() const { return factory; }
    /** Of the bundle. */
    const std::string& getPath() const { return path; }
    /** Of the service class. */
    std::string getVersion() const;

private:
    bool findModule(const std::string& given, std::string& error);
    bool enter(std::string& error);
    void leave();
    bool isRunning() const;

    HostClasses& hostClasses;
    Tessarine::IPtr<Tessarine::FModule> module;
    Tessarine::IPtr<Tessarine::FPluginComponent> service;  // of the module; null: it has none
    Tessarine::OPtr<Tessarine::IPluginFactory3> factory;
    std::string path;
};
