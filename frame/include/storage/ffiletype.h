#pragma once
#include "base/source/cmobject.h"
#include "base/source/fstring.h"

namespace Tessarine {
class FStream;

/** What kind of file something is: a name to show, and the marks by which systems tell. */
class FFileType : public CmObject {
public:
    FFileType() = default;
    /** Null leaves a mark out. */
    explicit FFileType(const tchar* name, const tchar* dosType = nullptr, const tchar* unixType = nullptr,
                       uint32_t macType = 0, const tchar* mimeType = nullptr, const tchar* uti = nullptr);

    const FString& getName() const { return name; }
    const FString& getDosType() const { return dosType; }
    const FString& getUnixType() const { return unixType; }
    uint32_t getMacType() const { return macType; }
    const FString& getMimeType() const { return mimeType; }
    const FString& getUTI() const { return uti; }

    /** There is a mark at all. */
    bool isValid() const;
    /** Both have a mark in common, and no mark that both have differs; extensions ignore case. The name doesn't
        count. */
    bool operator==(const FFileType& other) const;

    /** Says which type some bytes are of, the first of a file; null: none that it knows. */
    using Identifier = const FFileType* (*)(const char* bytes, int32_t size);
    static constexpr int32_t kIdentifiedBytes = 1024;  // are at hand at most

    bool isEqual(const CmObject* other) const override;
    bool storeAttributes(FAttributes& attributes) const override;
    bool restoreAttributes(FAttributes& attributes) override;

    /** Makes a type known; it is borrowed for good. Start-up and main thread. */
    static void registerType(const FFileType* type);
    /** The first known type with this extension, in any case; null: there is none. */
    static const FFileType* getTypeByString(const ConstString& extension);
    /** Start-up and main thread. */
    static void registerTypeIdentifier(Identifier identifier);
    /** What the first function says that knows the bytes at the stream's place, which stays; null: none does. */
    static const FFileType* getTypeByStream(FStream* stream);
    /** The extension is one of the type, in any case. */
    bool hasExtension(const ConstString& extension) const;

    DECLARE_CLASS(FFileType, CmObject)
    DECLARE_NEWCOPY(FFileType)

private:
    FString name;
    FString dosType;   // extension
    FString unixType;  // extension
    uint32_t macType = 0;
    FString mimeType;
    FString uti;
};

/** Types that belong to no reader. */
namespace StdFileType {
const FFileType& getTextFileType();
}

}  // namespace Tessarine
