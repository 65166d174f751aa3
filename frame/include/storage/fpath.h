#pragma once
#include "base/source/cmobject.h"
#include "base/source/fstring.h"
#include "storage/ffiletype.h"

namespace Tessarine {

/** What a path leads to; one of the kinds, with kHiddenPath added when it isn't to be shown. */
enum PathType : int16_t {
    kFilePath = 0,
    kFolderPath = 1,
    kLinkPath = 2,
    kBundlePath = 3,
    kPathKindMask = 15,
    kHiddenPath = 16,
};

/** Folders that the system knows by number; the floors above say where they are. */
enum StandardFolder : int32_t {
    kUserFolder = 1,
    kCommonFolder = 2,  // of all users
    kApplicationFolder = 3,
};

/** A path as text: the folders, each followed by "/", and the name of what lies in the last one. A folder's own name
    is the name too; only the root has none. A plain value, which never looks at a disk. */
class FPath : public CmObject {
public:
    FPath() = default;

    const tchar* getName() const { return name.text16(); }
    void setName(const tchar* text) { name = text; }
    /** The folders, with "/" at the end; empty when the path is a mere name. */
    const tchar* getPathName() const { return pathName.text16(); }
    void setPathName(const tchar* text);
    void getFullPath(FString& text) const;
    /** The last "/" separates folders and name; a text that ends in "/" is a folder. */
    void setFullPath(const tchar* text, int32_t kind) { fromString(text, kind); }
    void fromString(const tchar* text, int32_t kind);
    bool isEmpty() const { return name.isEmpty() && pathName.isEmpty(); }

    int16_t getKind() const { return kind; }
    bool isFile() const { return (kind & kPathKindMask) == kFilePath; }
    bool isFolder() const { return (kind & kPathKindMask) == kFolderPath; }
    bool isLink() const { return (kind & kPathKindMask) == kLinkPath; }
    bool isBundle() const { return (kind & kPathKindMask) == kBundlePath; }
    bool isVisible() const { return (kind & kHiddenPath) == 0; }
    const FFileType& getFileType() const { return fileType; }
    void setFileType(const FFileType& type) { fileType = type; }

    /** What the path led to becomes the folder of text. Text may hold "/" itself. */
    void descend(const tchar* text, int32_t kind);
    /** Up to the folder that holds this; false at the root and for a mere name. */
    bool ascend();
    bool isRootDir() const;
    /** The same full text. */
    bool operator==(const FPath& other) const;

    DECLARE_CLASS(FPath, CmObject)
    DECLARE_NEWCOPY(FPath)

private:
    FString name;
    FString pathName;
    FFileType fileType;
    int16_t kind = kFilePath;
};

/** A path on the system's disks. */
class FNPath : public FPath {
public:
    explicit FNPath(int32_t kind = kFilePath);
    FNPath(const tchar* text, int32_t kind);
    /** Text in a folder; a null folder is none. */
    FNPath(const tchar* text, const FNPath* folder, int32_t kind);
    /** Text in a standard folder or, when subFolder isn't null, in a folder below that. create makes the folders that
        are missing. The path is empty when the standard folder isn't known. Main thread. */
    FNPath(const tchar* text, int32_t standardFolder, int32_t kind, const tchar* subFolder, bool create);

    /** Becomes a standard folder, or a folder below it. false: it isn't known, and the path is empty, or it couldn't
        be made. Main thread. */
    bool getStandardFolder(int32_t number, const tchar* subFolder, bool create);

    DECLARE_CLASS(FNPath, FPath)
    DECLARE_NEWCOPY(FNPath)
};

}  // namespace Tessarine
