#include "gui/os/linux/core/modulebundle.h"
#include "pluginterfaces/base/smartpointer.h"
#include "tests/frame/source/storage/tempfolder.h"
#include "tests/support/mapped.h"
#include <dlfcn.h>
#include <elf.h>
#include <gtest/gtest.h>
#include <link.h>
#include <sys/utsname.h>

using namespace Tessarine;

namespace {
namespace fs = std::filesystem;
using Bundle = OPtr<ModuleBundle>;

/** The file of a library that this program has anyway: as good a module as any. */
std::string someLibrary() {
    std::string found;
    const auto look = [](dl_phdr_info* info, size_t, void* result) {
        const bool wanted = std::string(info->dlpi_name).find("/libexpat.so") != std::string::npos;
        if (wanted)
            *static_cast<std::string*>(result) = info->dlpi_name;
        return int(wanted);
    };
    dl_iterate_phdr(look, &found);
    return found;
}

class ModuleBundleTest : public testing::Test {
protected:
    ModuleBundleTest() {
        utsname system = {};
        uname(&system);
        code = std::string(root) + "/Contents/" + system.machine + "-linux";
        object = code + "/My Module.1.so";
        fs::create_directories(code);
        fs::create_directories(root + "/Contents/Resources");
    }
    /** Never over one that may still be mapped. */
    void install() {
        fs::remove(object);
        fs::copy_file(someLibrary(), object);
    }
    void expectRefusal(const std::string& path, const std::string& why) {
        std::string error;
        EXPECT_FALSE(Bundle(ModuleBundle::open(path, error)));
        EXPECT_NE(error.find(why), std::string::npos) << error;
        EXPECT_NE(error.find(path), std::string::npos) << error;
    }

    TempFolder folder;
    std::string root = folder / "My Module.1.bundle";
    std::string code, object;
};
}  // namespace

TEST_F(ModuleBundleTest, LoadsByEitherOfItsPathsAndReallyUnloads) {
    install();
    fs::create_symlink(root, folder / "link");
    for (const std::string& path : {root, root + "/", object, folder / "link"}) {
        SCOPED_TRACE(path);
        std::string error;
        const Bundle bundle(ModuleBundle::open(path, error));
        ASSERT_TRUE(bundle) << error;
        EXPECT_EQ(bundle->getResourcePath(), fs::canonical(root).string() + "/Contents/Resources");
        for (int32_t round = 0; round < 2; ++round) {
            EXPECT_EQ(bundle->getProcAddress("XML_ExpatVersion"), nullptr) << "not loaded";
            ASSERT_TRUE(bundle->load(error) && bundle->load(error)) << error;
            void* own = bundle->getProcAddress("XML_ExpatVersion");
            ASSERT_NE(own, nullptr);
            EXPECT_NE(own, dlsym(RTLD_DEFAULT, "XML_ExpatVersion")) << "a module's names are its own";
            EXPECT_TRUE(bundle->unload());
            EXPECT_FALSE(bundle->unload());
            EXPECT_EQ(isMapped(object), kSanitized);
        }
    }
}

TEST_F(ModuleBundleTest, RefusesWhatIsNoModuleForThisMachine) {
    expectRefusal(folder / "missing", "No such file");
    expectRefusal(root, "no such module");
    fs::create_directory(object);
    expectRefusal(root, "no such module");
    fs::remove(object);
    install();
    fs::copy_file(object, folder / "alone.so");
    expectRefusal(folder / "alone.so", "not in a bundle");

    install();
    fs::resize_file(object, sizeof(Elf64_Ehdr));
    fs::resize_file(object, fs::file_size(someLibrary()));  // the loader would follow a table of zeros
    expectRefusal(object, "not a module for this machine");
}

TEST_F(ModuleBundleTest, MemoryThatTakesNothingFromTheFileMayStandBehindItsEnd) {
    constexpr uint64_t kFar = uint64_t(1) << 30;
    for (const uint64_t intoPage : {0, 16}) {
        SCOPED_TRACE(intoPage);
        install();
        std::fstream file(object, std::ios::in | std::ios::out | std::ios::binary);
        Elf64_Phdr segment = {};
        file.seekg(sizeof(Elf64_Ehdr));
        while (file.read(reinterpret_cast<char*>(&segment), sizeof(segment)) && segment.p_type != PT_GNU_RELRO) {}
        segment = {PT_LOAD, PF_R | PF_W, kFar + intoPage, kFar + intoPage, 0, 0, 4096, 4096};
        file.seekp(-std::streamoff(sizeof(segment)), std::ios::cur);
        file.write(reinterpret_cast<const char*>(&segment), sizeof(segment));
        file.close();
        std::string error;
        const Bundle bundle(ModuleBundle::open(root, error));
        ASSERT_EQ(bundle != nullptr, intoPage == 0) << error;
        EXPECT_TRUE(!bundle || (bundle->load(error) && bundle->unload())) << error;
    }
}

TEST_F(ModuleBundleTest, SaysWhyTheLoaderRefuses) {
    install();
    std::fstream(object, std::ios::in | std::ios::out | std::ios::binary).seekp(EI_VERSION).put(9);
    std::string error;
    const Bundle bundle(ModuleBundle::open(root, error));
    ASSERT_TRUE(bundle) << error;
    EXPECT_FALSE(bundle->load(error));
    EXPECT_NE(error.find("My Module.1.so"), std::string::npos) << error;
}
