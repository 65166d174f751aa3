#pragma once
#include "pluginterfaces/base/iattributes.h"
#include "pluginterfaces/base/ibstream.h"

/** Components of the category "VirtualFileSystem": what a kind of container holds, as files. Paths are UTF-16, with "/" between
    the names and none at either end; the root is the empty one. */

namespace Tessarine {

struct VirtualFileInfo {
    int64_t size;      // in bytes; 0 of a folder
    int64_t modified;  // seconds since 1970, 0: not known
    int32_t isFolder;  // 0 or 1
    int32_t reserved;  // 0
};
static_assert(sizeof(VirtualFileInfo) == 24);

class IVirtualFileIterator : public FUnknown {
public:
    /** The next entry of the folder; name is borrowed until the next call. kResultFalse: that was all. */
    virtual int32_t getNext(const tchar** name, VirtualFileInfo* info) = 0;

    DECLARE_INTERFACE(IVirtualFileIterator)
};

/** Called by one thread at a time. Out parameters are written only with kResultOk; what they get has a reference for the
    caller. */
class IVirtualFileSystem : public FUnknown {
public:
    static constexpr const char* kCategory = "VirtualFileSystem";
    static constexpr const char* kCanRead = "CanRead";  // 0 or 1, as the next two
    static constexpr const char* kCanWrite = "CanWrite";
    static constexpr const char* kCanIterate = "CanIterate";
    static constexpr const char* kFileTypes = "FileTypes";  // a list of extensions, without their dots

    /** Sets the attributes above. */
    virtual int32_t describe(IAttributes* attributes) = 0;
    /** Shares the stream until unmount. kResultFalse: not a container of this kind. */
    virtual int32_t mount(IBStream* stream) = 0;
    virtual int32_t unmount() = 0;
    /** mode: bits 1 read, 2 write, 8 create or empty. Streams may outlive each other, but not unmount; each may be used by a
        thread of its own. */
    virtual int32_t openFile(const tchar* path, int32_t mode, IBStream** stream) = 0;
    virtual int32_t removeFile(const tchar* path) = 0;
    virtual int32_t renameFile(const tchar* path, const tchar* newName) = 0;
    virtual int32_t getFileInfo(const tchar* path, VirtualFileInfo* info) = 0;
    virtual int32_t newIterator(const tchar* folder, IVirtualFileIterator** iterator) = 0;

    DECLARE_INTERFACE(IVirtualFileSystem)
};

}  // namespace Tessarine
