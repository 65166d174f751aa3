#pragma once
#include "base/source/fthread.h"
#include "public.sdk/source/main/export.h"
#include <memory>

namespace TALV {

/** A ring of bytes between one thread that writes and one that reads.

    Results   read and write give the bytes moved: what doesn't fit, or isn't there, is cut off; 0 for null or without
              storage.
    Threads   read, stepBack and clear on the reading side, write on the writing one; the counts anywhere. A record of
              several pieces is one unit while recordLock is held around it by both sides; take it first. */
class TALV_EXPORT TALV_CircularBuffer {
public:
    TALV_CircularBuffer() = default;
    TALV_CircularBuffer(const TALV_CircularBuffer&) = delete;
    TALV_CircularBuffer& operator=(const TALV_CircularBuffer&) = delete;
    virtual ~TALV_CircularBuffer() = default;

    /** Makes storage of so many bytes. */
    void initialize(int32_t size);
    int32_t size() const { return bufferSize; }
    int32_t avail() const;
    int32_t space() const { return bufferSize - avail(); }
    int32_t read(unsigned char* buffer, int32_t count);
    int32_t write(const unsigned char* bytes, int32_t count);
    /** Takes back the last read of count bytes; nothing when the ring couldn't hold them. A step over the start of the
        storage ends at its last byte, however long it is. */
    void stepBack(int32_t count);
    void clear();

private:
    std::unique_ptr<unsigned char[]> data;
    int32_t bufferSize = 0;
    int32_t availCount = 0;  // stored and not yet read
    int32_t writePos = 0;
    int32_t readPos = 0;
    mutable Tessarine::FLock countLock{"FLock"};  // guards availCount, and the positions in stepBack and clear

public:
    Tessarine::FLock recordLock{"FLock"};
};

}  // namespace TALV
