#pragma once
#include "base/source/fobject.h"
#include <memory>

namespace Tessarine {
class IString;

/** The static record of a run-time class. It registers itself when it can create or has a base; the factory never owns it. */
class MetaClass {
public:
    using CreateFunction = FUnknown* (*)();

    /** classIDBytes: 16 bytes or null. version is read by archives. */
    MetaClass(const char* name, CreateFunction createFunction, const char* classIDBytes, MetaClass* baseClass,
              int16_t version = 0);
    /** The renaming record: objects stored under oldName become current's class, and current goes on being stored under it. */
    MetaClass(MetaClass* current, const char* oldName);
    ~MetaClass();
    MetaClass(const MetaClass&) = delete;
    MetaClass& operator=(const MetaClass&) = delete;

    /** Up the chain of bases, by name. */
    bool isTypeOf(const char* name) const;

    const char* className;       // null for a pure interface implementation
    const char* persistentName;  // the name in storage
    FUID classID;                // may be invalid
    CreateFunction createFunction;
    MetaClass* baseClass;
    int16_t version;

private:
    void registerSelf();

    bool isRegistered = false;
};

namespace MetaClasses {
class Tables;
}

/** All class records, by name and by identifier. No lock: static initialisation, start-up and main thread. */
class ClassFactory : public FObject {
public:
    /** Null without create when there is none yet, and always once the singletons were ended. */
    static ClassFactory* instance(bool create);

    /** Duplicates aren't looked for: the older record is found first. */
    void registerMetaClass(MetaClass* metaClass);
    void unregisterMetaClass(MetaClass* metaClass);
    /** Null on a miss. */
    MetaClass* getMetaClassByName(const char* name) const;
    MetaClass* getMetaClassByID(const char* classID) const;
    /** A new object with one reference; null when the class is missing or can't create. The text is a class name, or the 32
        digits of an identifier. */
    FUnknown* createObjectByName(const char* text) const;
    FUnknown* createObjectByID(const char* classID) const;
    /** The text that stands for the object's class in storage; false: it has none. */
    bool getStorageID(FUnknown* object, IString& result, bool usePersistentName) const;
    /** Records by name; for tests that count what the linker kept. */
    int32_t countClasses() const;

    ~ClassFactory() override;

private:
    ClassFactory();

    std::unique_ptr<MetaClasses::Tables> tables;
};

}  // namespace Tessarine
