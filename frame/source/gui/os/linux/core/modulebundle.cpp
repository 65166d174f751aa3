#include "gui/os/linux/core/modulebundle.h"
#include <cstring>
#include <dlfcn.h>
#include <elf.h>
#include <filesystem>
#include <fstream>
#include <sys/utsname.h>

namespace Tessarine {
namespace {
namespace fs = std::filesystem;

#ifdef TESSARINE_SANITIZED
constexpr int kLoadFlags = RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE;
#else
constexpr int kLoadFlags = RTLD_NOW | RTLD_LOCAL;
#endif

/** What the running program was built for; a module for another machine is refused before the loader sees it. */
bool readHeader(const fs::path& file, Elf64_Ehdr& header) {
    std::ifstream stream(file, std::ios::binary);
    return bool(stream.read(reinterpret_cast<char*>(&header), sizeof(header)));
}

bool isOurMachine(const fs::path& file) {
    Elf64_Ehdr ours = {}, theirs = {};
    return readHeader("/proc/self/exe", ours) && readHeader(file, theirs) &&
           std::memcmp(theirs.e_ident, ELFMAG, SELFMAG) == 0 && theirs.e_ident[EI_CLASS] == ours.e_ident[EI_CLASS] &&
           theirs.e_ident[EI_DATA] == ours.e_ident[EI_DATA] && theirs.e_machine == ours.e_machine &&
           theirs.e_type == ET_DYN;
}

std::string machineFolder() {
    utsname system = {};
    uname(&system);
    return std::string(system.machine) + "-linux";
}

/** The folder that a path names: itself, or for a shared object the bundle around it. */
fs::path bundleOf(const fs::path& path) {
    return fs::is_directory(path) ? path : path.parent_path().parent_path().parent_path();
}
}  // namespace

ModuleBundle* ModuleBundle::open(const std::string& path, std::string& error) {
    std::error_code failure;
    const fs::path given = fs::canonical(path, failure);
    if (failure) {
        error = path + ": " + failure.message();
        return nullptr;
    }
    const fs::path bundle = bundleOf(given);
    const fs::path object =
        fs::is_directory(given) ? bundle / "Contents" / machineFolder() / (bundle.stem().string() + ".so") : given;
    if (!fs::is_regular_file(object, failure)) {
        error = object.string() + ": no such module";
        return nullptr;
    }
    if (!isOurMachine(object)) {
        error = object.string() + ": not a module for this machine";
        return nullptr;
    }
    auto* result = new ModuleBundle;
    result->folder = bundle.string();
    result->resources = (bundle / "Contents" / "Resources").string();
    result->executable = object.string();
    return result;
}

bool ModuleBundle::load(std::string& error) {
    handle = dlopen(executable.c_str(), kLoadFlags);
    if (!handle)
        error = dlerror();
    return handle != nullptr;
}

bool ModuleBundle::unload() {
    void* loaded = handle;
    handle = nullptr;
    return loaded && dlclose(loaded) == 0;
}

void* ModuleBundle::getProcAddress(const char* name) const {
    return handle ? dlsym(handle, name) : nullptr;
}

int32_t ModuleBundle::queryInterface(const char* iid, void** obj) {
    const bool known = answerInterface<IModuleBundle>(this, iid, obj) || answerInterface<FUnknown>(this, iid, obj);
    return known ? kResultOk : noInterface(obj);
}

uint32_t ModuleBundle::addRef() {
    return uint32_t(atomicAdd(refCount, 1));
}

uint32_t ModuleBundle::release() {
    const int32_t left = atomicAdd(refCount, -1);
    if (left == 0)
        delete this;
    return uint32_t(left);
}

}  // namespace Tessarine
