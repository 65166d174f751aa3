#pragma once
#include "storage/fbstream.h"
#include <algorithm>
#include <cstring>

namespace Tessarine {

/** A stream in memory: a block that grows in steps of 4096 bytes, or a view of somebody else's, which never grows.

    Owns      its block, from malloc; not that of a view.
    Errors    a failure to grow is kept: nothing is written until setSize(0).
    Storage   a 32-bit size and the bytes; as an attribute "Data". Reading replaces the content and goes to its start. */
class FMemoryStream final : public FStream, public IMemoryStream, public ISizeableStream {
public:
    FMemoryStream() = default;
    /** A view; the memory is borrowed until the stream is emptied or ends. */
    FMemoryStream(void* memory, int32_t size);
    ~FMemoryStream() override;
    FMemoryStream(const FMemoryStream&) = delete;
    FMemoryStream& operator=(const FMemoryStream&) = delete;

    char* getData() override { return buffer; }
    int64_t getSize() const override { return limit > 0 ? std::max(size, cursor) : size; }
    bool getError() const { return error; }

    /** Changes the size; what is new isn't set. 0 or less frees and empties everything. A view keeps its memory, which
        must be whole steps: any other is an error, whatever the size. */
    void setSize(int64_t newSize);
    /** Ends the stream at the cursor, and frees what is behind it. A cursor behind the end extends it, with zeros. */
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
    bool flush() override { return !error; }
    bool verify() override { return !error; }
    using FStream::seek;
    using FStream::tell;

    int32_t getStreamSize(int64_t& bytes) override;
    int32_t setStreamSize(int64_t bytes) override;

    bool internalize(FArchive& archive) override;
    bool externalize(FArchive& archive) const override;
    bool storeAttributes(FAttributes& attributes) const override;
    bool restoreAttributes(FAttributes& attributes) override;

// The streamer's operations on single values, without a call as long as there is room.
#define MEMORY_STREAM_VALUE(Name, Type)                      \
    bool write##Name(Type value) { return putValue(value); } \
    bool read##Name(Type& value) { return takeValue(value); }
    MEMORY_STREAM_VALUE(Char8, char)
    MEMORY_STREAM_VALUE(UChar8, uint8_t)
    MEMORY_STREAM_VALUE(Char16, tchar)
    MEMORY_STREAM_VALUE(Int16, int16_t)
    MEMORY_STREAM_VALUE(Int16u, uint16_t)
    MEMORY_STREAM_VALUE(Int32, int32_t)
    MEMORY_STREAM_VALUE(Int32u, uint32_t)
    MEMORY_STREAM_VALUE(Int64, int64_t)
    MEMORY_STREAM_VALUE(Int64u, uint64_t)
    MEMORY_STREAM_VALUE(Float, float)
    MEMORY_STREAM_VALUE(Double, double)
#undef MEMORY_STREAM_VALUE

    DECLARE_CLASS(FMemoryStream, FStream)
    FORWARD_REFCOUNT(FStream)

private:
    template <class T>
    bool putValue(T value) {
        const int64_t at = cursor, end = at + int64_t(sizeof value);
        if (byteOrder != 0 || end > limit)
            return putSlowly(value);
        std::memcpy(buffer + at, &value, sizeof value);
        cursor = end;
        return true;
    }
    template <class T>
    bool takeValue(T& value) {
        const int64_t at = cursor, end = at + int64_t(sizeof value);
        if (byteOrder != 0 || end > size)
            return takeSlowly(value);
        cursor = end;
        std::memcpy(&value, buffer + at, sizeof value);
        return true;
    }
    template <class T>
    [[gnu::noinline, gnu::cold]] bool putSlowly(T value) {
        return writeUnits(&value, sizeof value, 1);
    }
    template <class T>
    [[gnu::noinline, gnu::cold]] bool takeSlowly(T& value) {
        return readUnits(&value, sizeof value, 1);
    }
    bool reallocate(int64_t capacity);
    bool makeRoom(int64_t end);
    bool readSteps(FStream& stream, int64_t count);
    void findLimit();
    void fail();
    void forget();

    char* buffer = nullptr;  // owned or borrowed
    int64_t memorySize = 0;
    int64_t size = 0;  // getSize() knows it: with a limit, the stream goes to the cursor at least
    bool ownsMemory = true;
    bool error = false;
    int64_t cursor = 0;
    int64_t limit = 0;  // how far writing needs no further look: memorySize, or 0 after an error and behind the end
};

/** A stream over a buffer that somebody else owns: it reads the bytes in use, from its own place, and writes with
    Buffer::put. Places behind the end are allowed; writing there fills the gap with zeros. */
class FBufferStream : public FStream {
public:
    /** Borrowed for the life of the stream. */
    explicit FBufferStream(CmBuffer& target) : buffer(target) {}

    int64_t readRaw(void* target, int64_t count) override;
    /** All or nothing. */
    int64_t writeRaw(const void* source, int64_t count) override;
    int64_t seek(int64_t pos, FSeekMode mode) override;
    int64_t tell() override { return cursor; }
    bool flush() override { return !failed; }
    bool verify() override { return !failed; }
    using FStream::seek;
    using FStream::tell;

    DECLARE_ABSTRACT_CLASS(FBufferStream, FStream)

private:
    bool fillTo(uint32_t place);

    CmBuffer& buffer;  // borrowed
    int64_t cursor = 0;
    bool failed = false;
};

}  // namespace Tessarine
