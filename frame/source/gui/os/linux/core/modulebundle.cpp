#include "gui/os/linux/core/modulebundle.h"
#include <cstring>
#include <dlfcn.h>
#include <elf.h>
#include <filesystem>
#include <fstream>
#include <sys/utsname.h>
#include <unistd.h>

namespace Tessarine {
namespace {
namespace fs = std::filesystem;

#ifdef TESSARINE_SANITIZED
constexpr int kLoadFlags = RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE;
#else
constexpr int kLoadFlags = RTLD_NOW | RTLD_LOCAL;
#endif

constexpr const char* kContents = "Contents";

bool readHeader(const fs::path& file, Elf64_Ehdr& header) {
    std::ifstream stream(file, std::ios::binary);
    return bool(stream.read(reinterpret_cast<char*>(&header), sizeof(header)));
}

/** What the running program was built for; a module for another machine is refused before the loader sees it. */
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

/** The folder and the shared object of a bundle, by the path of either of them. */
struct Parts {
    fs::path folder, object;
};

Parts partsOf(const fs::path& path) {
    std::error_code failure;
    if (fs::is_directory(path, failure))
        return {path, path / kContents / machineFolder() / (path.stem().string() + ".so")};
    return {path.parent_path().parent_path().parent_path(), path};
}

/** What keeps a module from being loaded; null: nothing that can be seen from outside. */
const char* faultOf(const Parts& parts) {
    std::error_code failure;
    if (!fs::is_regular_file(parts.object, failure))
        return "no such module";
    if (parts.object.parent_path().parent_path() != parts.folder / kContents)
        return "not in a bundle";
    if (access(parts.object.c_str(), R_OK) != 0)
        return "can't be read";
    return isOurMachine(parts.object) ? nullptr : "not a module for this machine";
}
}  // namespace

ModuleBundle* ModuleBundle::open(const std::string& path, std::string& error) {
    std::error_code failure;
    const fs::path given = fs::canonical(path, failure);
    if (failure) {
        error = path + ": " + failure.message();
        return nullptr;
    }
    const Parts parts = partsOf(given);
    if (const char* fault = faultOf(parts)) {
        error = parts.object.string() + ": " + fault;
        return nullptr;
    }
    auto* result = new ModuleBundle;
    result->folder = parts.folder.string();
    result->resources = (parts.folder / kContents / "Resources").string();
    result->executable = parts.object.string();
    return result;
}

bool ModuleBundle::load(std::string& error) {
    if (handle)
        return true;
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
