#pragma once
#include "base/fbundle.h"
#include "base/source/fobject.h"
#include "pluginterfaces/base/smartpointer.h"
#include "storage/fpath.h"

namespace Tessarine {

/** Code that is loaded by name: a bundle of that name or, where no folder has one, a plain library. It goes with the object.

    Names     without an extension; a whole path, or one below the program's folder or a folder that was added.
    Results   a library that can't be had has no addresses.
    Threads   main, the addresses any. */
class FDynLibrary : public FObject {
public:
    explicit FDynLibrary(const tchar* name, bool isAbsolute = false) { init(name, isAbsolute); }
    ~FDynLibrary() override { unload(); }
    FDynLibrary(const FDynLibrary&) = delete;
    FDynLibrary& operator=(const FDynLibrary&) = delete;

    bool isLoaded() const { return bundle; }
    void* getProcAddress(const char* name) const { return bundle ? bundle->getProcAddress(name) : nullptr; }
    void unload();

    /** Looked into behind the program's own, in the order of adding. */
    static void addFolder(const FNPath& folder);

protected:
    FDynLibrary() = default;
    /** false: there is none, or one is loaded. */
    bool init(const tchar* name, bool isAbsolute);

private:
    bool take(FLoadableBundle* opened);

    OPtr<FLoadableBundle> bundle;
};

}  // namespace Tessarine
