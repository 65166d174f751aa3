#pragma once
#include "pluginterfaces/base/smartpointer.h"
#include "storage/fbstream.h"

namespace Tessarine {
class FFileStream;

/** What a stream says of its size, in bytes; -1: it doesn't, or it is null. */
int64_t streamSize(FStream* stream);

/** A window of another stream, to be read from: its places begin where the window does.

    Stream    is shared, and lives as long. Byte order and file type are taken from it.
    Size      is cut to what the stream has, so that nobody is promised bytes that aren't there.
    Threads   one at a time. Over an FFileStream each window has a place of its own, and other threads may read through
              theirs meanwhile; over any other stream all windows move its place. */
class FStreamProxy : public FStream, public ISizeableStream {
public:
    /** size: in bytes, below 0: to the end. A window before the start is empty. */
    FStreamProxy(FStream* stream, int64_t offset, int64_t size);
    FStreamProxy(const FStreamProxy&) = delete;
    FStreamProxy& operator=(const FStreamProxy&) = delete;

    FStream* getStream() const { return stream; }
    /** Where it begins in the stream. */
    int64_t getOffset() const { return offset; }
    int64_t getSize() const { return windowSize; }

    int32_t queryInterface(const char* iid, void** obj) override;
    int64_t readRaw(void* buffer, int64_t count) override;
    int64_t writeRaw(const void* /*buffer*/, int64_t /*count*/) override { return 0; }
    /** Behind the end is allowed; before the start is the start. */
    int64_t seek(int64_t pos, FSeekMode mode) override;
    int64_t tell() override { return position; }
    bool verify() override;
    using FStream::seek;
    using FStream::tell;

    int32_t getStreamSize(int64_t& size) override;
    int32_t setStreamSize(int64_t size) override;

    DECLARE_ABSTRACT_CLASS(FStreamProxy, FStream)
    FORWARD_REFCOUNT(FStream)

private:
    IPtr<FStream> stream;
    FFileStream* file;  // the same, if it is one
    int64_t offset, windowSize;
    int64_t position = 0;
};

}  // namespace Tessarine
