#pragma once
#include "base/source/cmobject.h"
#include "base/source/fstring.h"
#include "storage/ffiletype.h"

namespace Tessarine {
class FUrl;

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
    kTemporaryFolder = 4,
    kSystemFolder = 5,
};

/** A path as text: the folders, each followed by "/", and the name of what lies in the last one. A folder's own name
    is the name too; only the root has none. A plain value, which never looks at a disk.

    Extensions  what follows the last "." of the name, unless that is its first character. With checkType it must be one
                of the file type, in any case; with a type that has none, what holds a blank is no extension. */
class FPath : public CmObject {
public:
    FPath() = default;

    const tchar* getName() const { return name.text16(); }
    void setName(const tchar* text) { name = text; }
    /** The folders, with "/" at the end; empty when the path is a mere name. */
    const tchar* getPathName() const { return pathName.text16(); }
    void setPathName(const tchar* text);
    virtual void getFullPath(FString& text) const;
    /** As fromString. */
    void setFullPath(const tchar* text, int32_t kind) { fromString(text, kind); }
    const FString& getFileName() const { return name; }
    /** The name, and with it the file type that its extension stands for, if that is known. */
    void setFileName(const ConstString& text);
    bool isEmpty() const { return name.isEmpty() && pathName.isEmpty(); }

    /** Without the dot; false, and an empty text: there is none. */
    bool getExtension(FString& text, bool checkType = false) const;
    /** Where it begins in the name; -1: there is none. */
    int32_t getExtensionIndex(bool checkType) const;
    void getNameWithoutExtension(FString& text, bool checkType) const;
    /** Gives the name an extension of the file type. replace: instead of another one that it has. false: the type has none,
        or the name had one of it. */
    bool updateExtension(bool replace);

    int16_t getKind() const { return kind; }
    void setKind(int32_t newKind) { kind = int16_t(newKind); }
    bool isFile() const { return (kind & kPathKindMask) == kFilePath; }
    bool isFolder() const { return (kind & kPathKindMask) == kFolderPath; }
    bool isLink() const { return (kind & kPathKindMask) == kLinkPath; }
    bool isBundle() const { return (kind & kPathKindMask) == kBundlePath; }
    bool isVisible() const { return (kind & kHiddenPath) == 0; }
    const FFileType& getFileType() const { return fileType; }
    void setFileType(const FFileType& type) { fileType = type; }
    /** The known type of the extension. always: also in place of a valid one. false: none is known, the old one stays. */
    bool detectFileType(bool always);

    /** What the path led to becomes the folder of text. Text may hold "/" itself. */
    virtual void descend(const tchar* text, int32_t kind);
    /** Up to the folder that holds this; false at the root and for a mere name. */
    virtual bool ascend();
    void goDown(const tchar* folder) { descend(folder, kFolderPath); }
    bool goUp() { return ascend(); }
    virtual bool isRootDir() const;
    static bool isRoot(const tchar* text);
    bool isAbsolute() const;
    /** It lies in the folder, or in one below; by the texts. */
    bool isInDir(const FPath* folder) const;
    /** Gives the name, before its extension, a mark that no other name has. false: the system gives no random bytes. */
    bool makeUnique();
    /** The last "/" separates folders and name; a text that ends in "/" is a folder. */
    virtual void fromString(const tchar* text, int32_t kind);

    /** The same full text. */
    bool operator==(const FPath& other) const;
    bool isEqual(const CmObject* other) const override;
    /** Over the full text. */
    uint32_t hash(uint32_t buckets) const override;
    /** As FPathCompare, with other paths. */
    int32_t compare(const CmObject* other) const override;

    DECLARE_CLASS(FPath, CmObject)
    DECLARE_NEWCOPY(FPath)

private:
    FString name;
    FString pathName;
    FFileType fileType;
    int16_t kind = kFilePath;
};

namespace FPathCompare {
/** The order of paths in a tree: a folder, what it holds, then its neighbours. length: so many characters at most, all when it
    is negative. Below, at or above 0. Null is empty. */
int32_t compareTreeStyle(const tchar* a, const tchar* b, int32_t length = -1);
}  // namespace FPathCompare

/** The full text of a path, to be shown. */
class FFullPathString : public FString {
public:
    explicit FFullPathString(const FPath& path) { path.getFullPath(*this); }
    /** Shortens to so many characters: folders in the middle give way to "...", the name at last loses its end. false: it
        fits as it is. */
    bool wordWrap(uint32_t maxLength);
};

/** A path on the system's disks.

    Storage   name, folders and kind; a bag keeps the file type as well while storeAttrFileType is set. */
class FNPath : public FPath {
public:
    static constexpr int32_t kPathForm = 2;               // of stored paths: folders with "/" between them
    static constexpr int32_t kPlatformPathLength = 4096;  // bytes of a name as the system takes it, with its terminator
    static bool storeAttrFileType;                        // off at first; main thread

    explicit FNPath(int32_t kind = kFilePath);
    FNPath(const tchar* text, int32_t kind);
    /** Text in a folder; a null folder is none. */
    FNPath(const tchar* text, const FNPath* folder, int32_t kind);
    /** As assignRelative; empty where that fails. */
    FNPath(const FNPath* base, const FNPath* target);
    /** Text in a standard folder or, when subFolder isn't null, in a folder below that. create makes the folders that
        are missing. The path is empty when the standard folder isn't known. Main thread. */
    FNPath(const tchar* text, int32_t standardFolder, int32_t kind, const tchar* subFolder, bool create);

    /** A terminated name as the system has it: UTF-8. false, and the path stays: malformed, or null. */
    bool fromPlatformPath(const void* bytes);
    /** The reverse, into kPlatformPathLength bytes; false, and an empty name: it doesn't fit, or can't be expressed. */
    bool toPlatformPath(void* bytes) const;
    /** A "file" URL, with one reference for the caller; null for a relative path, or one that no disk can have. */
    FUrl* createURL() const;
    /** Of the file, in bytes; -1: there is none. */
    int64_t getSize() const;

    /** Becomes the way from the folder base to target: ".." for each folder to leave, "." to target itself. false, and as it
        was: one of the two isn't absolute, or base holds "..". */
    bool assignRelative(const FNPath* base, const FNPath* target);
    bool makeRelative(const FNPath* base) { return assignRelative(base, this); }
    /** The path from the folder base on, "." and ".." resolved; at the root, ".." stays there. An absolute path is only
        resolved. */
    FNPath createAbsolutePath(const FNPath* base) const;
    /** false, and as it was: base isn't absolute. */
    bool makeAbsolute(const FNPath* base);
    /** How many ".." the path begins with. */
    int32_t countAscendLevels() const;
    /** As long as the path exists, its name gets "-01", "-02" ... before the extension. false: it was free. */
    bool uniqueName();
    /** See FFileSystem::makeValidName. */
    bool makeValidName(tchar replacement = 0);

    /** The path's place in the pool of defaults "Default Paths". false: there is no such pool, or no such key. Main thread. */
    bool storeAsDefault(const char* key) const;
    bool fromDefault(const char* key);
    /** Becomes a standard folder, or a folder below it. false: it isn't known, and the path is empty, or it couldn't
        be made. Main thread. */
    bool getStandardFolder(int32_t number, const tchar* subFolder, bool create);
    /** The user's folder, made when it is missing. Main thread. */
    bool createUserFolderPath() { return getStandardFolder(kUserFolder, nullptr, true); }

    bool internalize(FArchive& archive) override;
    bool externalize(FArchive& archive) const override;
    bool storeAttributes(FAttributes& attributes) const override;
    bool restoreAttributes(FAttributes& attributes) override;

    DECLARE_CLASS(FNPath, FPath)
    DECLARE_NEWCOPY(FNPath)
};

}  // namespace Tessarine
