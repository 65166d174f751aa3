#pragma once
#include "pluginterfaces/base/funknown.h"

namespace Tessarine {

/** Bytes to read and write. Counts are in bytes; the count pointers and result pointers may be null. */
class IBStream : public FUnknown {
public:
    enum SeekMode : int32_t { kSeekSet = 0, kSeekCur = 1, kSeekEnd = 2 };

    virtual int32_t read(void* buffer, int32_t numBytes, int32_t* numBytesRead) = 0;
    virtual int32_t write(void* buffer, int32_t numBytes, int32_t* numBytesWritten) = 0;
    virtual int32_t seek(int64_t pos, int32_t mode, int64_t* result) = 0;
    virtual int32_t tell(int64_t* pos) = 0;

    DECLARE_INTERFACE(IBStream)
};

/** A stream whose size can be asked and set, in bytes. */
class ISizeableStream : public FUnknown {
public:
    virtual int32_t getStreamSize(int64_t& size) = 0;
    virtual int32_t setStreamSize(int64_t size) = 0;

    DECLARE_INTERFACE(ISizeableStream)
};

/** A stream whose bytes are in memory. */
class IMemoryStream : public FUnknown {
public:
    /** Borrowed, until the stream is written to, resized or gone; null when it is empty. */
    virtual char* getData() = 0;
    virtual int64_t getSize() const = 0;

    DECLARE_INTERFACE(IMemoryStream)
};

}  // namespace Tessarine
