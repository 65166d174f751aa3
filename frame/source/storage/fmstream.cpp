#include "storage/fmstream.h"
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>

namespace Tessarine {
namespace {
constexpr int64_t kStep = 4096;
constexpr int64_t kMaxSize = std::numeric_limits<int64_t>::max() - kStep;

int64_t roundedUp(int64_t size) {
    return (size + kStep - 1) / kStep * kStep;
}
}  // namespace

IMPLEMENT_CLASS(FMemoryStream, FStream)

FMemoryStream::FMemoryStream(void* memory, int32_t size)
    : buffer(static_cast<char*>(memory)), memorySize(size), size(size), ownsMemory(false) {}

FMemoryStream::~FMemoryStream() {
    setSize(0);
}

void FMemoryStream::setSize(int64_t newSize) {
    if (newSize <= 0) {
        if (ownsMemory)
            std::free(buffer);
        forget();
    } else if (reserve(newSize)) {
        size = newSize;
    }
}

void FMemoryStream::truncate() {
    truncateToCursor();
    if (size == 0)
        setSize(0);
    else if (ownsMemory)
        reallocate(roundedUp(size));
}

void FMemoryStream::truncateToCursor() {
    size = std::min(size, cursor);
}

void* FMemoryStream::pass() {
    void* memory = buffer;
    forget();
    return memory;
}

void FMemoryStream::takeOver(FMemoryStream& other) {
    if (this == &other)
        return;
    setSize(0);
    buffer = other.buffer;
    memorySize = other.memorySize;
    size = other.size;
    ownsMemory = other.ownsMemory;
    error = other.error;
    cursor = other.cursor;
    other.forget();
}

void FMemoryStream::reset() {
    size = 0;
    cursor = 0;
}

int32_t FMemoryStream::queryInterface(const char* iid, void** obj) {
    if (answerInterface<ISizeableStream>(this, iid, obj))
        return kResultOk;
    return FStream::queryInterface(iid, obj);
}

int64_t FMemoryStream::readRaw(void* target, int64_t count) {
    const int64_t passed = std::clamp<int64_t>(count, 0, std::max<int64_t>(size - cursor, 0));
    if (passed > 0)
        std::memcpy(target, buffer + cursor, size_t(passed));
    cursor += passed;
    return passed;
}

int64_t FMemoryStream::writeRaw(const void* source, int64_t count) {
    if (error || count <= 0 || !makeRoom(cursor > kMaxSize - count ? kMaxSize + 1 : cursor + count))
        return 0;
    std::memcpy(buffer + cursor, source, size_t(count));
    cursor += count;
    return count;
}

int64_t FMemoryStream::seek(int64_t pos, FSeekMode mode) {
    const int64_t from = mode == kFromStart ? 0 : mode == kFromCurrent ? cursor : size;
    const int64_t bounded = pos > kMaxSize - from ? kMaxSize : from + pos;
    cursor = std::max<int64_t>(bounded, 0);
    return cursor;
}

int32_t FMemoryStream::getStreamSize(int64_t& bytes) {
    bytes = size;
    return kResultOk;
}

int32_t FMemoryStream::setStreamSize(int64_t bytes) {
    setSize(bytes);
    return error ? kResultFalse : kResultOk;
}

/** Room for so many bytes, whole steps of it; a view has what it has. */
bool FMemoryStream::reserve(int64_t capacity) {
    const bool isView = buffer && !ownsMemory;
    if (isView ? capacity <= memorySize : capacity <= kMaxSize && reallocate(roundedUp(std::max(capacity, memorySize))))
        return true;
    error = true;
    return false;
}

bool FMemoryStream::reallocate(int64_t capacity) {
    if (capacity == memorySize)
        return true;
    void* memory = std::realloc(buffer, size_t(capacity));
    if (!memory)
        return false;
    buffer = static_cast<char*>(memory);
    memorySize = capacity;
    ownsMemory = true;
    return true;
}

/** Extends the stream to end, with zeros up to the cursor. */
bool FMemoryStream::makeRoom(int64_t end) {
    const int64_t oldSize = size;
    if (end > memorySize && !reserve(end))
        return false;
    if (end > size)
        size = end;
    if (cursor > oldSize)
        std::memset(buffer + oldSize, 0, size_t(cursor - oldSize));
    return true;
}

void FMemoryStream::forget() {
    buffer = nullptr;
    memorySize = size = cursor = 0;
    ownsMemory = true;
    error = false;
}

}  // namespace Tessarine
