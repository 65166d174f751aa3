#pragma once
#include "base/source/cmobject.h"
#include "base/source/fstring.h"

namespace Tessarine {

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

    /** Makes a type known; it is borrowed for good. Start-up and main thread. */
    static void registerType(const FFileType* type);
    /** The first known type with this extension, in any case; null: there is none. */
    static const FFileType* getTypeByString(const ConstString& extension);

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

}  // namespace Tessarine
