#pragma once
#include "pluginterfaces/base/imodulebundle.h"
#include <string>

namespace Tessarine {

/** A loadable bundle on disk: a folder `NAME.bundle/Contents/` with `<arch>-linux/NAME.so`, `Resources/` and `Info.plist`.

    Life      counted, so that the module can keep it. Unload before the last release; the module's code may not be on any
              stack then.
    Results   a miss gives null or false, and a text that says why.
    Threads   main. */
class ModuleBundle : public IModuleBundle {
public:
    /** The bundle folder, or the shared object in it. Its machine is looked at, nothing is loaded yet. */
    static ModuleBundle* open(const std::string& path, std::string& error);

    /** Once is enough: further calls change nothing. */
    bool load(std::string& error);
    /** Really unmapped, except under a sanitizer, whose reports need the symbols. false: it isn't loaded. */
    bool unload();
    /** Null when it isn't loaded, or has no such symbol. */
    void* getProcAddress(const char* name) const;
    const std::string& getExecutablePath() const { return executable; }

    // IModuleBundle
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

}  // namespace Tessarine
