#pragma once
#include "pluginterfaces/base/ipluginbase.h"
#include "public.sdk/source/main/export.h"

namespace Tessarine {

/** The classes of this module, for the host.

    Life      counted; the maker holds the first reference. When it dies it clears gPluginFactory if it stands there.
    Results   registerClass: false on a null record, a null create function or when the table can't grow; nothing
              changes then. The others as in IPluginFactory.
    Threads   the main thread, except addRef and release. */
class CPluginFactory : public IPluginFactory3 {
public:
    /** Makes an object with one reference, which passes to the caller; null when it can't. */
    using CreateFunction = FUnknown* (*)(void* context);

    explicit CPluginFactory(const PFactoryInfo& info);
    CPluginFactory(const CPluginFactory&) = delete;
    CPluginFactory& operator=(const CPluginFactory&) = delete;

    /** The context is borrowed, and handed to the create function. */
    bool registerClass(const PClassInfo* info, CreateFunction createFunction, void* context = nullptr);
    bool registerClass(const PClassInfo2* info, CreateFunction createFunction, void* context = nullptr);
    /** The class has Unicode information only. */
    bool registerClass(const PClassInfoW* info, CreateFunction createFunction, void* context = nullptr);
    bool isClassRegistered(const FUID& cid) const;
    void removeAllClasses() { classCount = 0; }

    int32_t queryInterface(const char* iid, void** obj) override;
    uint32_t addRef() override;
    uint32_t release() override;
    int32_t getFactoryInfo(PFactoryInfo* info) override;
    int32_t countClasses() override { return classCount; }
    int32_t getClassInfo(int32_t index, PClassInfo* info) override;
    int32_t createInstance(const char* cid, const char* iid, void** obj) override;
    int32_t getClassInfo2(int32_t index, PClassInfo2* info) override;
    int32_t getClassInfoUnicode(int32_t index, PClassInfoW* info) override;
    int32_t setHostContext(FUnknown* context) override;
    virtual ~CPluginFactory();

private:
    struct Entry {
        PClassInfo2 info8;  // unset when isUnicodeOnly
        PClassInfoW info16;
        CreateFunction createFunction;
        void* context;  // borrowed
        bool isUnicodeOnly;
    };

    /** The place of a new class; null when there is none to be had. */
    Entry* appendEntry(const void* info, CreateFunction createFunction, void* context);
    bool growClasses();
    const Entry* findEntry(const char* cid) const;
    bool isIndex(int32_t index) const { return index >= 0 && index < classCount; }
    template <class Info>
    int32_t copyInfo8(int32_t index, Info* info) const;

    int32_t refCount = 1;
    PFactoryInfo factoryInfo;
    Entry* classes = nullptr;  // owned, from malloc
    int32_t classCount = 0, maxClassCount = 0;
};

/** The one factory of this module, or null. Borrowed. */
extern CPluginFactory* gPluginFactory;

}  // namespace Tessarine

/** The module's factory, with one reference for the caller. */
extern "C" TALV_EXPORT Tessarine::IPluginFactory* GetPluginFactory();
