#pragma once
#include "pluginterfaces/base/funknown.h"
#include <cstddef>

/** What a host knows of a module before it creates anything. The records cross by value: their fields, widths and order
    are fixed. */

namespace Tessarine {

/** A component that is started and ended by its host. */
class IPluginBase : public FUnknown {
public:
    virtual int32_t initialize(FUnknown* context) = 0;
    virtual int32_t terminate() = 0;

    DECLARE_INTERFACE(IPluginBase)
};

struct PFactoryInfo {
    enum Flags : int32_t { kUnicode = 16 };  // class information is Unicode

    static constexpr int32_t kVendorSize = 64, kUrlSize = 256, kEmailSize = 128;

    PFactoryInfo() = default;
    /** Texts are cut to their field and zero padded; null is empty. */
    PFactoryInfo(const char* vendor, const char* url, const char* email, int32_t flags);

    char vendor[kVendorSize] = {};
    char url[kUrlSize] = {};
    char email[kEmailSize] = {};
    int32_t flags = kUnicode;
};

struct PClassInfo {
    static constexpr int32_t kCategorySize = 32, kNameSize = 64;
    static constexpr int32_t kManyInstances = 0x7FFFFFFF;

    PClassInfo() = default;
    PClassInfo(const char* cid, int32_t cardinality, const char* category, const char* name);

    char cid[FUID::kSize] = {};
    int32_t cardinality = 0;  // how many instances may exist
    char category[kCategorySize] = {};
    char name[kNameSize] = {};
};

struct PClassInfo2 {
    static constexpr int32_t kVendorSize = 64, kSubCategoriesSize = 128, kVersionSize = 64;

    PClassInfo2() = default;
    PClassInfo2(const char* cid, int32_t cardinality, const char* category, const char* name, uint32_t classFlags,
                const char* subCategories, const char* vendor, const char* version, const char* sdkVersion);
    explicit PClassInfo2(const PClassInfo& info);

    char cid[FUID::kSize] = {};
    int32_t cardinality = 0;
    char category[PClassInfo::kCategorySize] = {};
    char name[PClassInfo::kNameSize] = {};
    uint32_t classFlags = 0;
    char subCategories[kSubCategoriesSize] = {};
    char vendor[kVendorSize] = {};
    char version[kVersionSize] = {};
    char sdkVersion[kVersionSize] = {};
};

struct PClassInfoW {
    /** Widens the four texts character by character. */
    void fromAscii(const PClassInfo2& info);

    char cid[FUID::kSize] = {};
    int32_t cardinality = 0;
    char category[PClassInfo::kCategorySize] = {};
    tchar name[PClassInfo::kNameSize] = {};
    uint32_t classFlags = 0;
    char subCategories[PClassInfo2::kSubCategoriesSize] = {};
    tchar vendor[PClassInfo2::kVendorSize] = {};
    tchar version[PClassInfo2::kVersionSize] = {};
    tchar sdkVersion[PClassInfo2::kVersionSize] = {};
};

static_assert(sizeof(PFactoryInfo) == 452 && offsetof(PFactoryInfo, flags) == 448);
static_assert(sizeof(PClassInfo) == 116 && offsetof(PClassInfo, name) == 52);
static_assert(sizeof(PClassInfo2) == 440 && offsetof(PClassInfo2, sdkVersion) == 376);
static_assert(sizeof(PClassInfoW) == 696 && offsetof(PClassInfoW, name) == 52 && offsetof(PClassInfoW, vendor) == 312);

/** The classes of a module. Index and record checks: kInvalidArgument. */
class IPluginFactory : public FUnknown {
public:
    virtual int32_t getFactoryInfo(PFactoryInfo* info) = 0;
    virtual int32_t countClasses() = 0;
    virtual int32_t getClassInfo(int32_t index, PClassInfo* info) = 0;
    /** A new object's face iid with one reference; kNoInterface and null when the class or its face is missing. */
    virtual int32_t createInstance(const char* cid, const char* iid, void** obj) = 0;

    DECLARE_INTERFACE(IPluginFactory)
};

class IPluginFactory2 : public IPluginFactory {
public:
    virtual int32_t getClassInfo2(int32_t index, PClassInfo2* info) = 0;

    DECLARE_INTERFACE(IPluginFactory2)
};

class IPluginFactory3 : public IPluginFactory2 {
public:
    virtual int32_t getClassInfoUnicode(int32_t index, PClassInfoW* info) = 0;
    virtual int32_t setHostContext(FUnknown* context) = 0;

    DECLARE_INTERFACE(IPluginFactory3)
};

}  // namespace Tessarine
