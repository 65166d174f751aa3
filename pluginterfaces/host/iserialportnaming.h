#pragma once
#include "pluginterfaces/base/funknown.h"

namespace Tessarine {

/** Where serial ports are looked for. An optional service of a host; names are raw bytes, as the system gives them. */
class ISerialPortNaming : public FUnknown {
public:
    /** The folder, with a closing "/". Borrowed. */
    virtual const char* getFolder() const = 0;
    virtual int32_t countPrefixes() const = 0;
    /** Borrowed; null when the index is out of range. */
    virtual const char* getPrefix(int32_t index) const = 0;
    /** Whether a name that has one of the prefixes is worth a try to open. */
    virtual bool accepts(const char* name) const = 0;

    DECLARE_INTERFACE(ISerialPortNaming)
};

}  // namespace Tessarine
