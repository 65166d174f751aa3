#pragma once
#include "pluginterfaces/base/imodulebundle.h"
#include <string>
#include <vector>

namespace Tessarine {

/** Code that can be loaded, as the platform carries it: a bundle or a plain library. Texts are UTF-8.

    Life      counted, so that the code itself can keep it. Unload before the last release; none of the code may be on any
              stack then.
    Threads   one at a time. */
class FLoadableBundle : public IModuleBundle {
public:
    /** Once is enough: further calls change nothing. false, and why. */
    virtual bool load(std::string& error) = 0;
    /** false: it isn't loaded. */
    virtual bool unload() = 0;
    /** Null when it isn't loaded, or has no such symbol. */
    virtual void* getProcAddress(const char* name) const = 0;

protected:
    ~FLoadableBundle() = default;
};

/** Takes the reference over and never gives it back: the object, or its code, is in use by somebody who won't tell when that
    ends. Null is allowed. Main thread. */
void keepForGood(FUnknown* object);

/** The hook's way to say why something couldn't be loaded. */
void reportLoadFailure(const std::string& text);

/** What can be seen of a bundle from outside, without loading it. */
struct FBundleFacts {
    std::string folder;
    std::string version;                     // empty: it tells none
    int64_t modified = 0;                    // seconds since 1970: the newest of what makes it another one
    std::vector<const char*> architectures;  // that it has whole code for; names that stay

    /** There is code for the running program. */
    bool runsHere() const;
};

/** What loading asks of the platform; paths are whole ones. Null until a platform fills it: then nothing can be loaded. */
struct BundleHooks {
    /** By the path of a bundle, or of the code in it. false: there is no such thing. Any thread. */
    bool (*examine)(const char* path, FBundleFacts& facts) = nullptr;
    /** With one reference for the caller; null, and why. Nothing is loaded yet. Any thread. */
    FLoadableBundle* (*openBundle)(const char* path, std::string& error) = nullptr;
    FLoadableBundle* (*openLibrary)(const char* path, std::string& error) = nullptr;
    /** Of the running program, one of the names of FBundleFacts. */
    const char* (*architecture)() = nullptr;
    /** The extension of plain libraries. */
    const char* libraryExtension = nullptr;
    /** Hears why something couldn't be loaded; null: standard error does. Any thread. */
    void (*report)(const std::string& text) = nullptr;
};
extern BundleHooks gBundleHooks;

}  // namespace Tessarine
