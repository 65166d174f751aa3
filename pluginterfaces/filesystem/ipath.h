#pragma once
#include "pluginterfaces/base/istringresult.h"

namespace Tessarine {

/** A place of a file or folder on disk. */
class IPath : public FUnknown {
public:
    /** The whole path, with "/" between the names. */
    virtual int32_t getFullPath(IString* path) = 0;

    DECLARE_INTERFACE(IPath)
};

class IFileIterator : public FUnknown {
public:
    /** The next file, with a reference for the caller; null: that was all. */
    virtual IPath* next() = 0;

    DECLARE_INTERFACE(IFileIterator)
};

}  // namespace Tessarine
