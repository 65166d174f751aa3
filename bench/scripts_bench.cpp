// Small calculations and calls. An item of Evaluate is one operation of an expression that was read before, ours on operands that
// are texts, as skins write them; the peer is the script engine itself, with numbers in variables, and called as the framework calls
// it. An item of the others is one call in a loop of a script.
#include "base/fcompreg.h"
#include "base/foperatortree.h"
#include "base/fscripts.h"
#include "gui/os/linux/core/platformcore.h"
#include "storage/hooks.h"
#include <benchmark/benchmark.h>
#include <filesystem>
#include <string>

using namespace Tessarine;

namespace {
namespace fs = std::filesystem;

constexpr int kCalls = 1000;

/** A method that does nothing with its argument. */
class Fader final : public FScriptObject {
public:
    static const SClassInfo __classInfo;
    const SClassInfo* getTypeInfo() override { return &__classInfo; }
    int32_t invoke(char, SArgs& args, SVariant& result) override {
        result.setInteger(args.variants[0].getInteger());
        return kResultOk;
    }
};
constexpr SMethod kFaderMethods[] = {
    {0, "move", 1},
};
const SClassInfo Fader::__classInfo = {"Fader", nullptr, 0, nullptr, 1, kFaderMethods};

/** The engine that was built beside this program. */
FScriptContext& context() {
    static FScriptContext* const made = [] {
        installTessarinePlatformCore();
        gStorageHooks.standardFolder = [](int32_t number, FNPath& folder) {
            const fs::path build = fs::read_symlink("/proc/self/exe").parent_path().parent_path();
            return number == kApplicationFolder && folder.fromPlatformPath((build / "lib/tessarine").c_str());
        };
        FComponentRegistry::use();
        auto* result = new FScriptContext(FScriptingManager::use()->createContext());
        const OPtr<Fader> fader(new Fader);
        result->getEngineContext()->registerObject("fader", fader);
        result->getEngineContext()->setLimits(60000, 64 << 20);
        return result;
    }();
    return *made;
}

/** first + - * and so on, with brackets that say the same order to both. */
std::string expression(int64_t operations, const char* first, const char* second) {
    constexpr const char* kOperators[] = {" - ", " * "};
    std::string text = first;
    for (int64_t i = 0; i < operations; ++i)
        text = "(" + text + kOperators[i % 2] + second + ")";
    return text;
}

struct Ours {
    explicit Ours(int64_t operations) {
        const std::string text = expression(operations, "1", "3");
        const char* cursor = text.c_str();
        tree.reset(CmVariantExprParser().parse(cursor));
    }
    int64_t evaluate() { return tree->evaluate(nullptr).getLong(); }

    std::unique_ptr<FExpressionNode<CmVariant>> tree;
};

struct Engine {
    explicit Engine(int64_t operations) {
        const std::string text = "local a, b = 1, 3 return " + expression(operations, "a", "b");
        script = OPtr<FScript>(context().compile(text.c_str(), -1, nullptr));
    }
    int64_t evaluate() {
        CmVariant value;
        script->execute(&value);
        return value.getLong();
    }

    IPtr<FScript> script;
};

template <class Peer>
void Evaluate(benchmark::State& state) {
    Peer peer(state.range());
    if (peer.evaluate() == 0 || Ours(state.range()).evaluate() != Engine(state.range()).evaluate())
        state.SkipWithError("the results differ");
    for (auto _ : state)
        benchmark::DoNotOptimize(peer.evaluate());
    state.SetItemsProcessed(state.iterations() * state.range());
}

void callInLoop(benchmark::State& state, const std::string& call) {
    const std::string text =
        "local function move(x) return x end for i = 1, " + std::to_string(kCalls) + " do " + call + " end return 1";
    const OPtr<FScript> script(context().compile(text.c_str(), -1, nullptr));
    CmVariant value;
    for (auto _ : state)
        if (!script || !script->execute(&value))
            state.SkipWithError("the script fails");
    state.SetItemsProcessed(state.iterations() * kCalls);
}

void CallOfNativeMethod(benchmark::State& state) {
    callInLoop(state, "fader:move(i)");
}

void CallOfScriptFunction(benchmark::State& state) {
    callInLoop(state, "move(i)");
}
}  // namespace

BENCHMARK(Evaluate<Ours>)->Arg(1)->Arg(100);
BENCHMARK(Evaluate<Engine>)->Arg(1)->Arg(100);
BENCHMARK(CallOfNativeMethod);
BENCHMARK(CallOfScriptFunction);
