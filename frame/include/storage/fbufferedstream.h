#pragma once
#include "collect/cmbuffer.h"
#include "storage/fbstream.h"

namespace Tessarine {

/** A cache of one block over another stream, for reading and writing many small values.

    Owns      its block, and the stream when it is told so. A pool, borrowed, lends the block.
    Writing   collects in the block; a change of block, seek, flush and the end bring it to the stream. What couldn't be
              brought there stays in the block for the next try, and nothing that needs another block is done until
              then: places don't move, counts are short.
    Stream    must be able to seek, and isn't used by others meanwhile. One that can only be written to is never read as
              long as nobody reads here. */
class FBufferedStream : public FStream {
public:
    /** A bufferSize of 0 is 4096. A null stream reads and takes nothing. */
    FBufferedStream(FStream* stream, uint32_t bufferSize, bool ownsStream = false, CmBufferPool* pool = nullptr);
    ~FBufferedStream() override;
    FBufferedStream(const FBufferedStream&) = delete;
    FBufferedStream& operator=(const FBufferedStream&) = delete;

    /** Writes back, and lets go of the old stream as the constructor was told; the new one is held in the same way. */
    void setStream(FStream* newStream);
    FStream* getStream() const { return stream; }
    bool hasCurrentBlockBeenWrittenTo() const { return changed; }

    int64_t readRaw(void* target, int64_t count) override;
    int64_t writeRaw(const void* source, int64_t count) override;
    /** Places behind the end are allowed; what lies between is as the stream makes it. Before the start is the start.
        -1: the block couldn't be written back. */
    int64_t seek(int64_t pos, FSeekMode mode) override;
    int64_t tell() override { return position; }
    bool flush() override;
    bool verify() override;
    void setReadWriteHook(UProgressHook* hook, int32_t blockSize) override;
    using FStream::seek;
    using FStream::tell;

    DECLARE_ABSTRACT_CLASS(FBufferedStream, FStream)

private:
    void verifyAndAdjustBufferSize();
    bool getBlock();
    bool enterBlock();
    bool loadBlock();
    bool writeBack();
    void letGo();

    FStream* stream;  // owned or borrowed
    bool ownsStream;
    CmBufferPool* pool;  // borrowed
    uint32_t bufferSize;
    CmBuffer* block = nullptr;              // made at first use; from the pool when there is one
    int64_t blockPos = 0;                   // where the block begins in the stream; a multiple of its size
    uint32_t validBegin = 0, validEnd = 0;  // what the block holds of the stream
    bool changed = false;                   // that isn't in the stream yet
    bool failed = false;                    // and couldn't be brought there
    int64_t position = 0, size = 0;         // where the next byte is; where stream and block end
};

/** A cache of one block over another stream, for reading only: writing does nothing. */
class FBlockStreamReader : public FStream {
public:
    FBlockStreamReader(FStream* stream, uint32_t blockSize, bool ownsStream = false)
        : cache(stream, blockSize, ownsStream) {}

    int64_t readRaw(void* target, int64_t count) override { return cache.readRaw(target, count); }
    int64_t writeRaw(const void* /*source*/, int64_t /*count*/) override { return 0; }
    int64_t seek(int64_t pos, FSeekMode mode) override { return cache.seek(pos, mode); }
    int64_t tell() override { return cache.tell(); }
    bool verify() override { return cache.verify(); }
    void setReadWriteHook(UProgressHook* hook, int32_t blockSize) override { cache.setReadWriteHook(hook, blockSize); }
    using FStream::seek;
    using FStream::tell;

    DECLARE_ABSTRACT_CLASS(FBlockStreamReader, FStream)

private:
    FBufferedStream cache;
};

/** A buffered stream, with one reference, over a stream whose reference it takes over; null for null. */
FStream* createWritableBufferedStream(FStream* stream);

}  // namespace Tessarine
