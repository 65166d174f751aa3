#include "base/fdefaults.h"
#include "base/source/finitializer.h"
#include "gui/os/linux/core/platformcore.h"
#include "gui/uctrler.h"
#include "host/console.h"
#include "host/liveview.h"
#include "host/options.h"
#include "host/screentext.h"
#include "host/settingsport.h"
#include "pluginglue/uplugapp.h"
#include "tools/words/answer.h"
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <unistd.h>

using namespace Tessarine;

namespace {
namespace fs = std::filesystem;

constexpr int kFailed = 1, kBadUsage = 2;

int fail(const std::string& why) {
    std::fprintf(stderr, "talv-host: %s\n", printable(why).c_str());
    return kFailed;
}

/** A standard stream that is closed would be the next file that is opened, be it a serial line. */
void openStandardStreams() {
    int descriptor = open("/dev/null", O_RDWR);
    while (descriptor >= 0 && descriptor <= STDERR_FILENO)
        descriptor = dup(descriptor);
    if (descriptor >= 0)
        close(descriptor);
}

/** The preferences root for this program and, through the environment, for the module. */
bool useUserFolder(const std::string& folder, std::string& error) {
    if (folder.empty())
        return true;
    std::error_code failure;
    fs::create_directories(folder, failure);
    const fs::path absolute = failure ? fs::path() : fs::canonical(folder, failure);
    error = folder + ": " + failure.message();
    return !failure && setenv("XDG_CONFIG_HOME", absolute.c_str(), 1) == 0;
}

/** From the module's start to its end; what happens in between is the main loop's. */
int runModule(ModuleHost& module, HostClasses& classes, FrontEnd& front, std::string& error) {
    front.started(module);
    if (!module.start(error))
        return kFailed;
    const IPtr<Remote> remote = OPtr<Remote>(new Remote(&classes.getDevices(), front));
    front.run(*remote, module);
    remote->start();
    gController->run(gApplication);
    front.stop();
    remote->stop();
    return 0;
}

std::unique_ptr<FrontEnd> makeFront(const Options& options) {
    if (options.console || !isatty(STDOUT_FILENO))
        return std::make_unique<Console>();
    return std::make_unique<LiveView>();
}

int runHost(const Options& options, std::string& error) {
    SerialNaming naming(options.serialFolder, options.serialPrefixes);
    HostClasses classes(naming, options.inputs);
    ModuleHost module(classes);
    if (options.hasPort && !putPortIntoSettings(options.port, error))
        return kFailed;
    if (!module.load(options.module, error))
        return kFailed;
    const auto onSignal = watchQuitSignals();
    const std::unique_ptr<FrontEnd> front = makeFront(options);
    const int result = runModule(module, classes, *front, error);
    gController->quit(true);
    module.unload();
    if (result == 0 && !gDefaults->save(true))
        fail("the settings can't be written");  // which is no reason to end otherwise than in order
    front->stopped();
    return result;
}
}  // namespace

int main(int count, char** arguments) {
    openStandardStreams();
    Options options;
    std::string text;
    const Options::Result scanned = scanOptions(count, arguments, options, text);
    if (scanned == Options::kRefused)
        return std::fputs(text.c_str(), stderr), kBadUsage;
    if (scanned == Options::kAnswered)
        return (text = printAnswer(text)).empty() ? 0 : fail(text);
    std::signal(SIGPIPE, SIG_IGN);
    holdQuitSignals();
    if (!useUserFolder(options.userFolder, text))
        return fail(text);
    installTessarinePlatformCore();
    auto* application = new UPluginApplication("talv-host");
    int result = kFailed;
    if (!application->initPlugin())
        text = "can't start";
    else
        result = runHost(options, text);
    application->release();
    return result == 0 ? 0 : fail(text);
}
