#include "base/fmessage.h"
#include "base/source/updatehandler.h"
#include "storage/ffilesystem.h"
#include "tests/host/hostfixture.h"
#include <cstdio>
#include <map>
#include <sstream>

using namespace Tessarine;

namespace HostTest {
namespace {
/** The addresses of the module's symbols relative to its base, hidden ones too: the linker's own table tells them. */
std::map<std::string, uintptr_t> symbolsOf(const std::string& file) {
    std::map<std::string, uintptr_t> symbols;
    const std::string command = "nm --defined-only '" + file + "'";
    FILE* output = popen(command.c_str(), "r");
    char line[4096];
    while (output && std::fgets(line, sizeof(line), output)) {
        std::istringstream words(line);
        std::string kind, name;
        uintptr_t address = 0;
        if (words >> std::hex >> address >> kind >> name)
            symbols[name] = address;
    }
    if (output)
        pclose(output);
    return symbols;
}

const std::pair<const char*, const void*> kGlobals[] = {
    {"_ZN9Tessarine11gControllerE",            &gController            },
    {"_ZN9Tessarine12gApplicationE",           &gApplication           },
    {"_ZN9Tessarine10gMessengerE",             &gMessenger             },
    {"_ZN9Tessarine7FObject14gUpdateHandlerE", &FObject::gUpdateHandler},
    {"_ZN9Tessarine11gFileSystemE",            &gFileSystem            },
    {"_ZN9Tessarine7FObject3iidE",             &FObject::iid           },
};

class TwoCopies : public HostFixture {
protected:
    /** Where the module has it; null: nowhere. */
    const void* inModule(const std::string& symbol) const {
        const auto entry = symbols.find("bundleEntry"), wanted = symbols.find(symbol);
        if (entry == symbols.end() || wanted == symbols.end())
            return nullptr;
        const auto* bundleEntry = static_cast<const char*>(bundle->getProcAddress("bundleEntry"));
        return bundleEntry + (std::ptrdiff_t(wanted->second) - std::ptrdiff_t(entry->second));
    }
    void SetUp() override {
        load();
        start();
        bundle = OPtr<ModuleBundle>(ModuleBundle::open(bundlePath(), error));
        ASSERT_TRUE(bundle && bundle->load(error)) << error;
        symbols = symbolsOf(bundle->getExecutablePath());
    }
    void TearDown() override {
        bundle->unload();
        endModule();
    }

    const Application application;
    OPtr<ModuleBundle> bundle;  // once more: the loader counts
    std::map<std::string, uintptr_t> symbols;
};

TEST_F(TwoCopies, NoGlobalIsShared) {
    for (const auto& [symbol, ours] : kGlobals) {
        SCOPED_TRACE(symbol);
        const void* theirs = inModule(symbol);
        ASSERT_TRUE(theirs);
        EXPECT_NE(theirs, ours);
        void* inside = nullptr;  // pointers, or of the identifier its first bytes
        std::memcpy(&inside, theirs, sizeof(inside));
        EXPECT_NE(inside, nullptr) << "both are in use";
        EXPECT_NE(std::memcmp(theirs, ours, sizeof(void*)), 0);
    }
}

}  // namespace
}  // namespace HostTest
