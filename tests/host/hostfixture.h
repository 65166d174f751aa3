#pragma once
#include "gui/os/linux/core/platformcore.h"
#include "gui/uctrler.h"
#include "host/modulehost.h"
#include "host/remote.h"
#include "pluginglue/uplugapp.h"
#include "pluginterfaces/gui/ivalue.h"
#include "tests/support/testfolder.h"
#include "tests/support/uncounted.h"
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <thread>

/** A host as the program is one, without its front end. The module is the built bundle; nothing of it is linked in
    here. */

namespace HostTest {
namespace fs = std::filesystem;

inline std::string bundlePath() {
    const char* build = std::getenv("TALV_BUILD_DIR");
    const fs::path tree = build ? fs::path(build) : fs::read_symlink("/proc/self/exe").parent_path().parent_path();
    return ModuleHost::findBundle((tree / "lib/talv-host/Components").string());
}

/** The application object of the host's copy of the framework, from start to quit. */
class Application {
public:
    Application() {
        Tessarine::installTessarinePlatformCore();
        application = new Tessarine::UPluginApplication("talv-host");
        EXPECT_TRUE(application->initPlugin());
    }
    ~Application() { application->release(); }
    Application(const Application&) = delete;

    /** Runs the main loop until it is so, or for so long. */
    static bool runUntil(const std::function<bool()>& isSo, int32_t milliseconds) {
        const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
        while (!isSo()) {
            while (Tessarine::gController->eventPending())
                Tessarine::gController->doNextEvent();
            if (std::chrono::steady_clock::now() > end)
                return isSo();
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        return true;
    }
    static void run(int32_t milliseconds) {
        runUntil([] { return false; }, milliseconds);
    }

private:
    Tessarine::UPluginApplication* application;
};

class SilentListener : public RemoteListener {
public:
    virtual ~SilentListener() = default;
    void readyChanged(bool) override {}
    void deviceFound(int32_t) override {}
    void devicesGone() override {}
    void valueChanged(const ParamAddress&) override {}
    void connectionChanged() override {}
};

/** Keeps the first text that the module asks for: the name of its port. */
class WatchedClasses : public HostClasses {
public:
    using HostClasses::HostClasses;
    int32_t createClassInstance(const char* iid, void** obj) override {
        const int32_t result = HostClasses::createClassInstance(iid, obj);
        if (result == Tessarine::kResultOk && !portValue && iid &&
            Tessarine::FUID::same(iid, Tessarine::IHostStringValue_iid))
            portValue = static_cast<Tessarine::IValue*>(*obj);
        return result;
    }

    Tessarine::IValue* portValue = nullptr;
};

/** A host with folders of its own. */
class HostFixture : public testing::Test {
protected:
    HostFixture() : naming(folder.path / "dev", {"tty."}), classes(naming, 64), module(classes) {
        fs::create_directory(folder.path / "dev");
        setenv("XDG_CONFIG_HOME", (folder.path / "user").c_str(), 1);
    }

    void load() { ASSERT_TRUE(module.load(bundlePath(), error)) << error; }
    void start() { ASSERT_TRUE(module.start(error)) << error; }
    /** The host quits, and the module ends in order. */
    void endModule() {
        Tessarine::gController->quit(true);
        module.unload();
    }

    TemporaryFolder folder;
    SerialNaming naming;
    WatchedClasses classes;
    ModuleHost module;
    std::string error;
};
}  // namespace HostTest
