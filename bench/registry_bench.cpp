// A start of the program with so many bundles in its folder, of three classes each, that haven't changed since the last one:
// what each offers is known without loading it.
#include "base/fcompreg.h"
#include "gui/os/linux/core/platformcore.h"
#include "storage/hooks.h"
#include "tests/support/bundles.h"
#include <benchmark/benchmark.h>
#include <unistd.h>

using namespace Tessarine;

namespace {
namespace fs = std::filesystem;

constexpr int kClasses = 3;  // of each bundle

fs::path root() {
    return fs::temp_directory_path() / ("registry_bench." + std::to_string(::getpid()));
}

/** All folders are one; it goes at the end. */
class Folder {
public:
    explicit Folder(int64_t bundles) {
        installTessarinePlatformCore();
        gStorageHooks.standardFolder = [](int32_t, FNPath& folder) { return folder.fromPlatformPath(root().c_str()); };
        for (int bundle = 0; bundle < int(bundles); ++bundle) {
            std::string text = "flags 16\n";
            for (int i = 0; i < kClasses; ++i)
                text += classLine(bundle * kClasses + i, i == 0 ? "Service" : "Private",
                                  "Class " + std::to_string(i) + " of " + std::to_string(bundle));
            TestBundle(root() / "Components", "Bundle " + std::to_string(bundle), text);
        }
    }
    ~Folder() { fs::remove_all(root()); }
    Folder(const Folder&) = delete;
};

/** true: everything is known, and nothing was loaded. */
bool start(int64_t bundles) {
    FComponentRegistry* registry = FComponentRegistry::use();
    if (registry->countComponentClasses("Service") != bundles)
        return false;
    for (int32_t i = 0; i < registry->countModules(); ++i)
        if (registry->getModule(i)->isLoaded())
            return false;
    return registry->countModules() == bundles;
}
}  // namespace

void StartWithCachedBundles(benchmark::State& state) {
    const Folder folder(state.range());
    bool ok = start(state.range());  // loads each, and keeps what it says
    FComponentRegistry::unuse();
    const auto loads = [] {
        std::ifstream text(root() / "Components/Bundle 0.bundle/Contents/Resources/loads");
        return std::count(std::istreambuf_iterator<char>(text), {}, '\n');
    };
    for (auto _ : state) {
        ok = ok && start(state.range());
        state.PauseTiming();
        FComponentRegistry::unuse();
        state.ResumeTiming();
    }
    if (!ok || loads() != 1)
        state.SkipWithError("bundles were missed, or loaded");
}
BENCHMARK(StartWithCachedBundles)->Arg(200)->Unit(benchmark::kMillisecond);
