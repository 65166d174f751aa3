#pragma once
#include "storage/fbstream.h"

namespace Tessarine {

/** A stream in memory: a block that grows in steps of 4096 bytes, or a view of somebody else's, which never grows.

    Owns      its block, from malloc; not that of a view.
    Errors    a failure to grow is kept: nothing is written until setSize(0). */
class FMemoryStream : public FStream, public ISizeableStream {
public:
    FMemoryStream() = default;
    /** A view; the memory is borrowed until the stream is emptied or ends. */
    FMemoryStream(void* memory, int32_t size);
    ~FMemoryStream() override;
    FMemoryStream(const FMemoryStream&) = delete;
    FMemoryStream& operator=(const FMemoryStream&) = delete;

    char* getData() { return buffer; }
    int64_t getSize() const { return size; }
    bool getError() const { return error; }

    /** Changes the size; what is new isn't set. 0 or less frees and empties everything. */
    void setSize(int64_t newSize);
    /** Ends the stream at the cursor, and frees what is behind it. */
    void truncate();
    /** The same without freeing. */
    void truncateToCursor();
    /** Hands the memory to the caller, who frees it with free() unless it was a view, and empties the stream. */
    void* pass();
    /** Takes the other's memory, with its size and cursor, and empties the other. */
    void takeOver(FMemoryStream& other);
    /** Empties the stream and keeps the memory. */
    void reset();

    int32_t queryInterface(const char* iid, void** obj) override;
    int64_t readRaw(void* target, int64_t count) override;
    int64_t writeRaw(const void* source, int64_t count) override;
    /** Places behind the end are allowed; writing there fills the gap with zeros. Before the start is the start. */
    int64_t seek(int64_t pos, FSeekMode mode) override;
    int64_t tell() override { return cursor; }
    using FStream::seek;
    using FStream::tell;

    int32_t getStreamSize(int64_t& bytes) override;
    int32_t setStreamSize(int64_t bytes) override;

    DECLARE_CLASS(FMemoryStream, FStream)
    FORWARD_REFCOUNT(FStream)

private:
    bool reserve(int64_t capacity);
    bool reallocate(int64_t capacity);
    bool makeRoom(int64_t end);
    void forget();

    char* buffer = nullptr;  // owned or borrowed
    int64_t memorySize = 0;
    int64_t size = 0;
    bool ownsMemory = true;
    bool error = false;
    int64_t cursor = 0;
};

}  // namespace Tessarine
