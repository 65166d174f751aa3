#pragma once
#include "storage/fbstream.h"
#include <algorithm>
#include <cstring>
#include <memory>

/** Values to and from a stream in pieces, in the stream's byte order. */

namespace Tessarine {

template <class T>
T inOrder(T value, bool swapped) {
    if (swapped) {
        char bytes[sizeof value];
        std::memcpy(bytes, &value, sizeof value);
        std::reverse(bytes, bytes + sizeof value);
        std::memcpy(&value, bytes, sizeof value);
    }
    return value;
}

/** Collects what is written. */
class FByteSink {
public:
    explicit FByteSink(FStream& stream)
        : stream(stream), block(new char[kBlockSize]), end(block.get()), swapped(stream.byteOrder != 0) {}

    template <class T>
    void put(T value) {
        value = inOrder(value, swapped);
        putBytes(&value, sizeof value);
    }
    void putBytes(const void* bytes, size_t count) {
        if (count > room())
            return putMany(bytes, count);
        end = std::copy_n(static_cast<const char*>(bytes), count, end);
    }
    /** Bytes to fill, to be followed by fill; null for more than a few thousand. */
    char* reserve(size_t count) {
        if (count > room())
            flush();
        return count <= room() ? end : nullptr;
    }
    void fill(size_t count) { end += count; }
    /** False: not all that was put has been written, now or before. */
    bool flush() {
        const int64_t count = end - block.get();
        good = good && stream.writeRaw(block.get(), count) == count;
        end = block.get();
        return good;
    }

private:
    static constexpr size_t kBlockSize = 0x8000;

    size_t room() const { return static_cast<size_t>(block.get() + kBlockSize - end); }
    [[gnu::noinline]] void putMany(const void* bytes, size_t count) {
        flush();
        if (count <= kBlockSize / 2)
            return putBytes(bytes, count);
        good = good && stream.writeRaw(bytes, static_cast<int64_t>(count)) == static_cast<int64_t>(count);
    }

    FStream& stream;
    const std::unique_ptr<char[]> block;
    char* end;
    const bool swapped;
    bool good = true;
};

/** Gives what is read. Reads ahead only where the stream can go back: it ends where the last value ended. */
class FByteSource {
public:
    explicit FByteSource(FStream& stream);
    ~FByteSource();
    FByteSource(const FByteSource&) = delete;
    FByteSource& operator=(const FByteSource&) = delete;

    template <class T>
    bool take(T& value) {
        const char* bytes = takeBytes(sizeof value);
        if (!bytes)
            return false;
        std::memcpy(&value, bytes, sizeof value);
        value = inOrder(value, swapped);
        return true;
    }
    /** Valid until the next call; null: there are not so many. At most kMaxPiece. */
    const char* takeBytes(size_t count) {
        if (static_cast<size_t>(end - next) < count && !refill(count))
            return nullptr;
        const char* bytes = next;
        next += count;
        return bytes;
    }
    bool skip(int64_t count);
    static constexpr size_t kMaxPiece = 0x10000;

private:
    bool refill(size_t count);

    FStream& stream;
    std::unique_ptr<char[]> block;  // kMaxPiece, made when it is needed
    const char *next = nullptr, *end = nullptr;
    const bool swapped;
    bool isMemory = false;  // next and end are in the stream's own memory
    bool readsAhead = false;
};

}  // namespace Tessarine
