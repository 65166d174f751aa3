#pragma once
#include "base/fbundle.h"
#include <string>

namespace Tessarine {

/** A loadable bundle on disk: a folder `NAME.bundle/Contents/` with `<arch>-linux/NAME.so`, `Resources/` and `Info.plist`.

    Results   a miss gives null or false, and a text that says why.
    Threads   main. */
class ModuleBundle : public FLoadableBundle {
public:
    /** The bundle folder, or the shared object in it. Its machine is looked at, nothing is loaded yet. */
    static ModuleBundle* open(const std::string& path, std::string& error);
    /** A shared object alone; its folder stands for the bundle's. */
    static ModuleBundle* openLibrary(const std::string& path, std::string& error);
    /** Reads headers and the property list alone. false: there is no bundle. */
    static bool examine(const std::string& path, FBundleFacts& facts);
    /** Of the running program, such as "x86_64". */
    static const char* runningArchitecture();

    const std::string& getExecutablePath() const { return executable; }

    // FLoadableBundle
    bool load(std::string& error) override;
    /** Really unmapped, except under a sanitizer, whose reports need the symbols. */
    bool unload() override;
    void* getProcAddress(const char* name) const override;
    int32_t queryInterface(const char* iid, void** obj) override;
    uint32_t addRef() override;
    uint32_t release() override;
    const char* getPath() const override { return folder.c_str(); }
    const char* getResourcePath() const override { return resources.c_str(); }
    int32_t references() const { return refCount; }

private:
    ModuleBundle() = default;
    virtual ~ModuleBundle() = default;

    int32_t refCount = 1;
    std::string folder, resources, executable;
    void* handle = nullptr;  // of the loader
};

/** The hooks of loading. */
void fillBundleHooks();

}  // namespace Tessarine
