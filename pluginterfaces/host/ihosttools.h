#pragma once
#include "pluginterfaces/base/funknown.h"

/** Small services of the host that a module needn't have itself. */

namespace Tessarine {

/** Orders objects of the host as its sorted containers do. */
class IComparer : public FUnknown {
public:
    /** Below, at or above 0. What is no object of the host is ordered by its identity. */
    virtual int32_t compare(FUnknown* a, FUnknown* b) = 0;

    DECLARE_INTERFACE(IComparer)
};

/** Blocks that one side takes and the other gives back. Any thread. */
class IMemoryAllocator : public FUnknown {
public:
    /** Null: there is no memory. */
    virtual void* allocate(uint32_t bytes) = 0;
    /** The block with its content, moved where it must be; null, and the block stays: there is no memory. */
    virtual void* reallocate(void* block, uint32_t bytes) = 0;
    /** Null is allowed. */
    virtual void free(void* block) = 0;

    DECLARE_INTERFACE(IMemoryAllocator)
};

/** Objects in a row, each with a reference of the list. Main thread. */
class IList : public FUnknown {
public:
    virtual int32_t count() = 0;
    /** Borrowed; null out of range. */
    virtual FUnknown* at(int32_t index) = 0;
    /** kResultFalse: null. */
    virtual int32_t add(FUnknown* object) = 0;
    /** kInvalidArgument: out of range. */
    virtual int32_t removeAt(int32_t index) = 0;
    virtual void removeAll() = 0;

    DECLARE_INTERFACE(IList)
};

/** A loadable library of the host or of the module. It goes with the object. Main thread. */
class IDynamicLibrary : public FUnknown {
public:
    /** The name without an extension, or with isAbsolute a whole path without one. Once. kResultFalse: it isn't found. */
    virtual int32_t load(const tchar* name, bool isAbsolute) = 0;
    /** Null: there is no such symbol, or nothing is loaded. */
    virtual void* getProcAddress(const char* name) = 0;
    virtual void unload() = 0;

    DECLARE_INTERFACE(IDynamicLibrary)
};

}  // namespace Tessarine
