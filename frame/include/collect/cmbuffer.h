#pragma once
#include "base/source/cmobject.h"
#include "base/source/fbuffer.h"

namespace Tessarine {

/** A block of memory as an object. */
class CmBuffer : public Buffer, public CmObject {
public:
    CmBuffer() = default;
    explicit CmBuffer(uint32_t size) : Buffer(size) {}
    CmBuffer(const void* bytes, uint32_t size) : Buffer(bytes, size) {}

    DECLARE_CLASS(CmBuffer, CmObject)
    DECLARE_NEWCOPY(CmBuffer)
};

}  // namespace Tessarine
