#include "gui/os/linux/core/modulebundle.h"
#include "objectfile.h"
#include <algorithm>
#include <cstring>
#include <dlfcn.h>
#include <filesystem>
#include <fstream>
#include <string_view>
#include <sys/stat.h>
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
constexpr const char* kObjectExtension = ".so";
constexpr std::string_view kPlatform = "-linux";  // behind the machine, the name of a folder of code
constexpr std::string_view kVersionKey = "<key>CFBundleVersion</key>", kText = "<string>", kTextEnd = "</string>";
constexpr uintmax_t kMaxPropertyList = 65536;  // bytes that are looked at

std::string machineFolder() {
    return std::string(machineOfProgram()).append(kPlatform);
}

/** The folder and the shared object of a bundle, by the path of either of them. */
struct Parts {
    fs::path folder, object;
};

Parts partsOf(const fs::path& path) {
    std::error_code failure;
    if (fs::is_directory(path, failure))
        return {path, path / kContents / machineFolder() / (path.stem().string() + kObjectExtension)};
    return {path.parent_path().parent_path().parent_path(), path};
}

bool isInBundle(const Parts& parts) {
    return parts.object.parent_path().parent_path() == parts.folder / kContents;
}

/** What keeps code from being loaded; null: nothing that can be seen from outside. */
const char* faultOf(const fs::path& object) {
    std::error_code failure;
    if (!fs::is_regular_file(object, failure))
        return "no such module";
    if (access(object.c_str(), R_OK) != 0)
        return "can't be read";
    const char* machine = machineOfObject(object.string());
    return machine && std::strcmp(machine, machineOfProgram()) == 0 ? nullptr : "not a module for this machine";
}

bool findPath(const std::string& path, fs::path& found, std::string& error) {
    std::error_code failure;
    found = fs::canonical(path, failure);
    error = path + ": " + failure.message();
    return !failure;
}

/** Seconds; 0: there is no such file. */
int64_t timeOf(const fs::path& file) {
    struct stat status = {};
    return stat(file.c_str(), &status) == 0 ? int64_t(status.st_mtim.tv_sec) : 0;
}

/** As it stands in the property list, which programs write and not people. */
std::string versionIn(const fs::path& propertyList) {
    std::error_code failure;
    if (!fs::is_regular_file(propertyList, failure))  // a pipe would never answer
        return "";
    std::string content(std::min<uintmax_t>(fs::file_size(propertyList, failure), kMaxPropertyList), 0);
    std::ifstream stream(propertyList, std::ios::binary);
    content.resize(size_t(stream.read(content.data(), std::streamsize(content.size())).gcount()));
    const size_t key = content.find(kVersionKey);
    const size_t text = key == std::string::npos ? key : content.find_first_not_of(" \t\r\n", key + kVersionKey.size());
    if (text == std::string::npos || content.compare(text, kText.size(), kText) != 0)
        return "";
    const size_t end = content.find(kTextEnd, text);
    return end == std::string::npos ? "" : content.substr(text + kText.size(), end - text - kText.size());
}

std::vector<const char*> machinesOf(const fs::path& bundle) {
    std::vector<const char*> machines;
    std::error_code failure;
    for (fs::directory_iterator each(bundle / kContents, failure), end; !failure && each != end;
         each.increment(failure)) {
        const std::string name = each->path().filename().string();
        const char* machine = name.ends_with(kPlatform)
                                  ? machineOfObject(each->path() / (bundle.stem().string() + kObjectExtension))
                                  : nullptr;
        if (machine && std::string_view(name).substr(0, name.size() - kPlatform.size()) == machine)
            machines.push_back(machine);
    }
    return machines;
}

FLoadableBundle* openBundle(const char* path, std::string& error) {
    return ModuleBundle::open(path, error);
}

FLoadableBundle* openLibrary(const char* path, std::string& error) {
    return ModuleBundle::openLibrary(path, error);
}

bool examine(const char* path, FBundleFacts& facts) {
    return ModuleBundle::examine(path, facts);
}
}  // namespace

ModuleBundle* ModuleBundle::open(const std::string& path, std::string& error) {
    fs::path given;
    if (!findPath(path, given, error))
        return nullptr;
    const Parts parts = partsOf(given);
    const char* fault = faultOf(parts.object);
    if (!fault && !isInBundle(parts))
        fault = "not in a bundle";
    if (fault) {
        error = parts.object.string() + ": " + fault;
        return nullptr;
    }
    auto* result = new ModuleBundle;
    result->folder = parts.folder.string();
    result->resources = (parts.folder / kContents / "Resources").string();
    result->executable = parts.object.string();
    return result;
}

ModuleBundle* ModuleBundle::openLibrary(const std::string& path, std::string& error) {
    fs::path object;
    if (!findPath(path, object, error))
        return nullptr;
    if (const char* fault = faultOf(object)) {
        error = object.string() + ": " + fault;
        return nullptr;
    }
    auto* result = new ModuleBundle;
    result->folder = result->resources = object.parent_path().string();
    result->executable = object.string();
    return result;
}

bool ModuleBundle::examine(const std::string& path, FBundleFacts& facts) {
    fs::path given;
    std::string ignored;
    if (!findPath(path, given, ignored))
        return false;
    const Parts parts = partsOf(given);
    std::error_code failure;
    if (!isInBundle(parts) || !fs::is_directory(parts.folder / kContents, failure))
        return false;
    const fs::path propertyList = parts.folder / kContents / "Info.plist";
    facts.folder = parts.folder.string();
    facts.version = versionIn(propertyList);
    facts.modified = std::max(timeOf(parts.object), timeOf(propertyList));
    facts.architectures = machinesOf(parts.folder);
    return true;
}

const char* ModuleBundle::runningArchitecture() {
    return machineOfProgram();
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

void fillBundleHooks() {
    gBundleHooks.examine = examine;
    gBundleHooks.openBundle = openBundle;
    gBundleHooks.openLibrary = openLibrary;
    gBundleHooks.architecture = ModuleBundle::runningArchitecture;
    gBundleHooks.libraryExtension = "so";
}

}  // namespace Tessarine
