// From the extension's file to a service that runs, on a machine without serial ports. Each round is a process of its own, as
// a host's start is: what the loader has resolved once it would not resolve again.
#include "gui/os/linux/core/platformcore.h"
#include "gui/uctrler.h"
#include "host/modulehost.h"
#include "pluginglue/uplugapp.h"
#include <benchmark/benchmark.h>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <sys/wait.h>
#include <unistd.h>

using namespace Tessarine;

namespace {
namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

constexpr int kRounds = 20;

struct Times {
    double load, initialize;  // seconds
};

double secondsSince(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

/** An empty folder for devices, and one for settings; both go with it. */
class Folders {
public:
    Folders() {
        std::string name = (fs::temp_directory_path() / "talv-XXXXXX").string();
        root = mkdtemp(name.data()) ? name : "";
        fs::create_directory(root / "dev");
        setenv("XDG_CONFIG_HOME", root.c_str(), 1);
    }
    ~Folders() {
        std::error_code ignored;
        fs::remove_all(root, ignored);
    }
    Folders(const Folders&) = delete;
    std::string devices() const { return (root / "dev/").string(); }

private:
    fs::path root;
};

std::string bundlePath() {
    const fs::path build = fs::read_symlink("/proc/self/exe").parent_path().parent_path();
    return ModuleHost::findBundle((build / "lib/talv-host/Components").string());
}

/** What a host does from its start to its end. false: the module didn't start or end. */
bool runOnce(const std::string& devices, Times& times) {
    installTessarinePlatformCore();
    auto* application = new UPluginApplication("moduleload_bench");
    if (!application->initPlugin())
        return false;
    SerialNaming naming(devices, {});
    HostClasses classes(naming, 64);
    ModuleHost module(classes);
    std::string error;
    const Clock::time_point start = Clock::now();
    const bool loaded = module.load(bundlePath(), error);
    times.load = secondsSince(start);
    const bool started = loaded && module.start(error);
    times.initialize = secondsSince(start) - times.load;
    if (!started)
        std::fprintf(stderr, "%s\n", error.c_str());
    gController->quit(true);
    const bool ended = module.stop();
    module.unload();
    return started && ended;
}

/** The same in a process of its own. */
bool runApart(const std::string& devices, Times& times) {
    int ends[2];
    if (pipe(ends) != 0)
        return false;
    const pid_t child = fork();
    if (child == 0) {
        const bool ok = runOnce(devices, times) && write(ends[1], &times, sizeof(times)) == ssize_t(sizeof(times));
        _exit(ok ? 0 : 1);
    }
    close(ends[1]);
    const bool told = child > 0 && read(ends[0], &times, sizeof(times)) == ssize_t(sizeof(times));
    close(ends[0]);
    int status = 1;
    return child > 0 && waitpid(child, &status, 0) == child && status == 0 && told;
}
}  // namespace

void ModuleLoad(benchmark::State& state) {
    const Folders folders;
    Times times = {};
    bool ok = runApart(folders.devices(), times);  // writes the settings that all later starts find
    for (auto _ : state) {
        ok = ok && runApart(folders.devices(), times);
        state.SetIterationTime(times.load + times.initialize);
        state.counters["load_ms"] = times.load * 1e3;
        state.counters["initialize_ms"] = times.initialize * 1e3;
    }
    if (!ok)
        state.SkipWithError("the extension didn't start");
}
BENCHMARK(ModuleLoad)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(1)->Repetitions(kRounds);
