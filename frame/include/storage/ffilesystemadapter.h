#pragma once
#include "base/source/fthread.h"
#include "pluginterfaces/base/smartpointer.h"
#include "pluginterfaces/filesystem/ivirtualfilesystem.h"
#include "storage/fbstream.h"
#include "storage/ffilesystem.h"
#include <atomic>

namespace Tessarine {

/** A file system that can be taken away as long as nobody uses it. */
class FRemovableFileSystem : public FFileSystem {
public:
    /** Any thread. */
    int32_t incUseCount() { return useCount += 1; }
    int32_t decUseCount() { return useCount -= 1; }
    int32_t getUseCount() const { return useCount; }
    /** Lets go of all behind it; every call misses from then on. false: it is in use, and nothing has happened. */
    virtual bool unmount() = 0;

    DECLARE_ABSTRACT_CLASS(FRemovableFileSystem, FFileSystem)

private:
    std::atomic<int32_t> useCount{0};  // streams and walks, and calls under way
};

/** A component's virtual file system. Paths are those below its root; ".." goes up to the root and no further.

    Owns      shares the component, the stream of the container, and the owner that the component belongs to.
    Writing   needs a component that can; what a component can't do answers as a miss, unasked.
    Threads   any; the component is called by one at a time. Streams belong to their threads. */
class FFileSystemAdapter : public FRemovableFileSystem {
public:
    /** Mounts the first component whose file types have the path's extension, and that takes it: of the program and,
        on the main thread, of its modules. With a reference for the caller; null: there is none. */
    static FFileSystemAdapter* mount(FPath* path);

    /** The component is mounted on the stream already. */
    FFileSystemAdapter(IVirtualFileSystem* component, IBStream* stream, FUnknown* owner);
    ~FFileSystemAdapter() override;
    FFileSystemAdapter(const FFileSystemAdapter&) = delete;
    FFileSystemAdapter& operator=(const FFileSystemAdapter&) = delete;

    bool unmount() override;
    /** A stream or a walk of this file system has ended. */
    void notifyStreamDestruction() { decUseCount(); }

    FStream* createFile(FPath* path, int32_t mode, int32_t* error = nullptr) override;
    FStream* openFile(FPath* path, int32_t mode, int32_t* error = nullptr) override;
    bool closeFile(FStream* stream) override;
    bool removeFile(FPath* path) override;
    bool fileExists(FPath* path) override;
    bool renameFile(FPath* path, const tchar* newName) override;
    /** The component knows one time only, that of the last change. */
    bool getFileTimes(FPath* path, CmTime& created, CmTime& modified) override;
    int64_t getFileSize(FPath* path) override;
    int64_t getFileSize(FStream* stream) override;
    /** In the component's order; entries whose names can't be steps of a path are left out. */
    FFileIterator* newIterator(const FPath* folder, bool withHidden) override;

    DECLARE_ABSTRACT_CLASS(FFileSystemAdapter, FRemovableFileSystem)

private:
    friend class FFileSysIteratorAdapter;

    template <class Ask>
    bool ask(const FPath* path, bool able, Ask ask);
    bool infoOf(const FPath* path, VirtualFileInfo& info);

    FLock lock;  // guards the component
    IPtr<IVirtualFileSystem> component;
    IPtr<IBStream> stream;
    IPtr<FUnknown> owner;
    bool canRead = false, canWrite = false, canIterate = false;
};

/** Walks over a folder of a component's file system; keeps it in use. */
class FFileSysIteratorAdapter : public FFileIterator {
public:
    /** folder: below the root. */
    FFileSysIteratorAdapter(FFileSystemAdapter* fileSystem, const FPath& folder, bool withHidden);
    ~FFileSysIteratorAdapter() override;

    /** false: no such folder. */
    bool restart();
    FPath* first() override { return restart() ? next() : nullptr; }
    FPath* next() override;
    FPath* current() override { return present ? &shown : nullptr; }

    DECLARE_ABSTRACT_CLASS(FFileSysIteratorAdapter, FFileIterator)

private:
    bool fetch(FString& name, VirtualFileInfo& info);

    IPtr<FFileSystemAdapter> fileSystem;
    OPtr<IVirtualFileIterator> inner;
    FPath folder, shown;
    bool withHidden, present = false;
};

/** A component's stream; keeps its file system in use. */
class FPluginStreamProxy : public FStream, public ISizeableStream {
public:
    /** Shares both. */
    FPluginStreamProxy(FFileSystemAdapter* fileSystem, IBStream* stream);
    ~FPluginStreamProxy() override;
    FPluginStreamProxy(const FPluginStreamProxy&) = delete;
    FPluginStreamProxy& operator=(const FPluginStreamProxy&) = delete;

    int32_t queryInterface(const char* iid, void** obj) override;
    int64_t readRaw(void* buffer, int64_t count) override { return bytes.readRaw(buffer, count); }
    int64_t writeRaw(const void* buffer, int64_t count) override;
    int64_t seek(int64_t pos, FSeekMode mode) override { return bytes.seek(pos, mode); }
    int64_t tell() override { return bytes.tell(); }
    bool verify() override { return !failed; }
    using FStream::seek;
    using FStream::tell;

    int32_t getStreamSize(int64_t& size) override;
    int32_t setStreamSize(int64_t size) override;

    DECLARE_ABSTRACT_CLASS(FPluginStreamProxy, FStream)
    FORWARD_REFCOUNT(FStream)

private:
    IPtr<FFileSystemAdapter> fileSystem;
    IPtr<IBStream> stream;
    IBStreamer bytes;
    bool failed = false;  // something wasn't taken
};

}  // namespace Tessarine
