#pragma once
#include "base/source/cmobject.h"
#include "base/source/tarray.h"
#include <string>
#include <unordered_map>

namespace Tessarine {
class FStream;

/** Hears of each error of an archive when it happens. */
class IArchiveErrorHook {
public:
    /** code: an FArchive::Error; className: of the object that failed, null when it is unknown. */
    virtual void archiveError(int32_t code, const char* className) = 0;

protected:
    ~IArchiveErrorHook() = default;
};

/** An archive that objects write themselves to, and are made from again: the route of internalize and externalize. The
    derived class knows the format.

    Stream   borrowed, and at the place of the next byte; objects put plain values there between their parts.
    Errors   each kind is kept once; the first one stays the last error, unless a kStreamError comes. The rest of the stream
             can still be read.
    Threads  one at a time. */
class FArchive {
public:
    enum Error : int32_t {
        kStreamError = -100,      // also: an object that can't be written
        kUnreadableObject = -99,  // a class or an object that can't be read
        kValueError = -97,        // a value of no known kind
    };

    FArchive(FStream* stream, bool writing, IArchiveErrorHook* errorHook = nullptr);
    virtual ~FArchive();
    FArchive(const FArchive&) = delete;
    FArchive& operator=(const FArchive&) = delete;

    /** Null is an object too. keepReference: the same object is written once, and referred to later. */
    virtual bool save(const CmObject* object, bool keepReference) = 0;
    /** The next object with a reference for the caller; null for a null object, and for one that can't be read or isn't of
        the class. A null className means any. */
    virtual CmObject* load(const char* className, bool keepReference) = 0;
    bool save(const CmObject* object) { return save(object, true); }
    CmObject* load(const char* className) { return load(className, true); }

    FStream& getStream() const { return *stream; }
    bool isWriting() const { return writing; }
    /** The version of the class whose object is being read. */
    int32_t getVersion() const { return version; }
    /** The version that a class had when the stream was written, as far as it has been read; 0 for others. */
    int32_t getClassVersion(const char* className) const;
    /** The object that is being read has so many bytes more; true too when its end is unknown. */
    bool hasLeft(int64_t bytes) const;
    /** Takes the reference over and drops it when the archive ends, so that no other object gets this one's address. */
    void forgetLater(CmObject* object);
    /** 0 as long as all went well, the stream included. */
    int32_t getLastError();
    /** In the order of their first appearance. */
    const TArray<int32_t>& getErrors() const { return errors; }
    /** Tells the hook and keeps the code. */
    void reportError(int32_t code, const char* className = nullptr);

    /** Functions that run before anything is saved, so that open changes get into their objects. */
    static void registerPreSaveFunction(void (*function)());
    static void beforeSave();

protected:
    FStream* stream;  // borrowed
    bool writing;
    int32_t version = 0;
    int64_t enclosingEnd = -1;  // in the stream, of the object that is being read; -1: unknown, or none is
    std::unordered_map<std::string, int32_t> classVersions;  // read

private:
    IArchiveErrorHook* errorHook;  // borrowed, may be null
    int32_t lastError = 0;
    TArray<int32_t> errors;
    TArray<CmObject*> forgotten;  // counted
};

}  // namespace Tessarine
