#pragma once
#include "gui/os/linux/core/modulebundle.h"
#include "host/hostclasses.h"
#include "pluginterfaces/base/ipluginbase.h"
#include <string>

/** The extension as a loaded module: it is reached only through its entry points and interfaces.

    Life      load, start, stop, unload, in this order; each once, or all of them again.
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

    bool load(const std::string& path, std::string& error);
    /** Makes and initializes the module's service. */
    bool start(std::string& error);
    /** false: the service refuses to end, since the program isn't quitting. Then nothing may be released. */
    bool stop();
    void unload();

    /** Null before load. Borrowed. */
    Tessarine::IPluginFactory3* getFactory() const { return factory; }
    std::string getPath() const { return bundle ? bundle->getPath() : ""; }
    /** Of the service class. */
    std::string getVersion() const;

private:
    bool enter(std::string& error);
    bool findService(Tessarine::PClassInfo2& info) const;

    HostClasses& hostClasses;
    Tessarine::OPtr<Tessarine::ModuleBundle> bundle;
    Tessarine::OPtr<Tessarine::IPluginFactory3> factory;
    Tessarine::OPtr<Tessarine::IPluginBase> service;
    bool entered = false;
};
