#pragma once
#include "gui/uapp.h"

namespace Tessarine {

/** The application inside a host: the host owns the loop, so there is no run, no menu and no splash. */
class UPluginApplication : public UApplication {
public:
    DECLARE_ABSTRACT_CLASS(UPluginApplication, UApplication)

    explicit UPluginApplication(const char* name) : UApplication(kPlugin, name) {}

    /** Start-up. false: it failed, and nothing more will run. */
    bool initPlugin();
    void masterIdle() {}
    void run() override {}
    /** Loads the defaults as well. */
    void preInit() override;
    /** Brings what is kept in the defaults to life as well. */
    void postInit() override;
};

}  // namespace Tessarine
