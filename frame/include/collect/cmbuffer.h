#pragma once
#include "base/source/fbuffer.h"
#include "base/source/fthread.h"
#include "collect/cmarray.h"

namespace Tessarine {

/** A block of memory as an object. */
class CmBuffer : public Buffer, public CmObject {
public:
    CmBuffer() = default;
    explicit CmBuffer(uint32_t size) : Buffer(size) {}
    CmBuffer(const void* bytes, uint32_t size) : Buffer(bytes, size) {}

    DECLARE_CLASS(CmBuffer, CmObject)
    DECLARE_NEWCOPY(CmBuffer)
    /** The bytes in use: their count, then they. */
    bool internalize(FArchive& archive) override;
    bool externalize(FArchive& archive) const override;
};

/** Buffers that nobody uses at the moment, kept for the next who needs memory. What comes out has nothing in use.

    Owns      what is in it.
    Threads   the operations below: any. Those of the array are for who holds the pool alone. */
class CmBufferPool : public CmArray {
public:
    DECLARE_CLASS(CmBufferPool, CmArray)
    CmBufferPool() = default;
    CmBufferPool(const CmBufferPool&) = delete;
    CmObject* newCopy() const override { return nullptr; }
    ~CmBufferPool() override;

    /** The first buffer of at least size bytes, else a new one of this size, with a reference for the caller. For a
        size of 0 always a new one. */
    CmBuffer* allocateBuffer(uint32_t size);
    /** Takes the caller's reference; a buffer without memory ends here. */
    void deleteBuffer(CmBuffer* buffer);
    /** Keeps the memory; the buffer is empty then. */
    void freeBuffer(Buffer& buffer);
    /** An empty buffer gets the memory of the first one here that is large enough, any other is resized. False: no
        memory. */
    bool configBuffer(Buffer& buffer, uint32_t size);
    /** Releases the last ones until so many are left. */
    void reduceBuffers(int32_t count);

private:
    CmBuffer* takeLargeEnough(uint32_t size);

    FLock bufferLock{"CmBufferPool"};  // guards the array
};

}  // namespace Tessarine
