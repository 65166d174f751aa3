#include "storage/fmstream.h"
#include "collect/cmbuffer.h"
#include "storage/farchive.h"
#include "storage/fpersistent.h"
#include <algorithm>
#include <cstdlib>

namespace Tessarine {
namespace {
constexpr int64_t kStep = 4096;

constexpr const char* kDataKey = "Data";

int64_t roundedUp(int64_t size) {
    return (size + kStep - 1) / kStep * kStep;
}
}  // namespace

IMPLEMENT_CLASS(FMemoryStream, FStream)
IMPLEMENT_ABSTRACT_CLASS(FBufferStream, FStream)

FMemoryStream::FMemoryStream(void* memory, int32_t size)
    : buffer(static_cast<char*>(memory)), memorySize(memory ? std::max(size, 0) : 0), size(memorySize),
      ownsMemory(!memory), limit(memorySize) {}

FMemoryStream::~FMemoryStream() {
    setSize(0);
}

void FMemoryStream::setSize(int64_t newSize) {
    if (newSize <= 0) {
        if (ownsMemory)
            std::free(buffer);
        forget();
    } else if (newSize > kMaxPlace || !reallocate(roundedUp(std::max(newSize, memorySize)))) {
        fail();
    } else {
        size = newSize;
        findLimit();
    }
}

void FMemoryStream::truncate() {
    truncateToCursor();
    if (size == 0)
        setSize(0);
    else if (ownsMemory && reallocate(roundedUp(size)))
        findLimit();
}

void FMemoryStream::truncateToCursor() {
    if (cursor > getSize())
        makeRoom(cursor);
    else
        size = cursor;
    findLimit();
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
    limit = other.limit;
    other.forget();
}

void FMemoryStream::reset() {
    size = 0;
    cursor = 0;
    findLimit();
}

int32_t FMemoryStream::queryInterface(const char* iid, void** obj) {
    if (answerInterface<ISizeableStream>(this, iid, obj) || answerInterface<IMemoryStream>(this, iid, obj))
        return kResultOk;
    return FStream::queryInterface(iid, obj);
}

int64_t FMemoryStream::readRaw(void* target, int64_t count) {
    size = getSize();
    const int64_t passed = std::clamp<int64_t>(count, 0, std::max<int64_t>(size - cursor, 0));
    if (passed > 0)
        std::memcpy(target, buffer + cursor, size_t(passed));
    cursor += passed;
    return passed;
}

int64_t FMemoryStream::writeRaw(const void* source, int64_t count) {
    if (error || count <= 0 || !makeRoom(cursor + std::min(count, kMaxPlace)))
        return 0;
    std::memcpy(buffer + cursor, source, size_t(count));
    cursor += count;
    findLimit();
    return count;
}

int64_t FMemoryStream::seek(int64_t pos, FSeekMode mode) {
    size = getSize();
    const int64_t from[] = {0, cursor, size};
    cursor = placeFrom(from[mode], pos);
    findLimit();
    return cursor;
}

int32_t FMemoryStream::getStreamSize(int64_t& bytes) {
    bytes = getSize();
    return kResultOk;
}

int32_t FMemoryStream::setStreamSize(int64_t bytes) {
    setSize(bytes);
    return error ? kResultFalse : kResultOk;
}

bool FMemoryStream::internalize(FArchive& archive) {
    FStream& stream = archive.getStream();
    int32_t stored;
    if (!stream.readInt32(stored) || stored < 0)
        return false;
    const int64_t left = stream.bytesLeft();
    FMemoryStream content;
    if ((left >= 0 && left < stored) || !archive.hasLeft(stored) || !content.readSteps(stream, stored))
        return false;
    takeOver(content);
    rewind();
    return true;
}

bool FMemoryStream::externalize(FArchive& archive) const {
    FStream& stream = archive.getStream();
    const int64_t bytes = getSize();
    return bytes <= INT32_MAX && stream.writeInt32(int32_t(bytes)) && stream.writeRaw(buffer, bytes) == bytes;
}

bool FMemoryStream::storeAttributes(FAttributes& attributes) const {
    return getSize() <= UINT32_MAX && attributes.setBinary(kDataKey, buffer, uint32_t(getSize()));
}

bool FMemoryStream::restoreAttributes(FAttributes& attributes) {
    if (!attributes.containsAttribute(kDataKey))
        return false;
    const uint32_t stored = attributes.getBinarySize(kDataKey);
    FMemoryStream content;
    content.setSize(stored);
    if (content.error || !attributes.getBinary(kDataKey, content.buffer, stored))
        return false;
    takeOver(content);
    return true;
}

/** Whole steps; a view has what it has. */
bool FMemoryStream::reallocate(int64_t capacity) {
    if (capacity == memorySize)
        return true;
    void* memory = buffer && !ownsMemory ? nullptr : std::realloc(buffer, size_t(capacity));
    if (!memory)
        return false;
    buffer = static_cast<char*>(memory);
    memorySize = capacity;
    ownsMemory = true;
    return true;
}

/** Extends the stream to end, with zeros up to the cursor. */
bool FMemoryStream::makeRoom(int64_t end) {
    const int64_t oldSize = size = getSize();
    if (end > memorySize)
        setSize(end);
    if (error)
        return false;
    size = std::max(size, end);
    if (cursor > oldSize)
        std::memset(buffer + oldSize, 0, size_t(cursor - oldSize));
    return true;
}

/** Appends count bytes of the stream, which may have fewer: there is room for what has come and one step more. */
bool FMemoryStream::readSteps(FStream& stream, int64_t count) {
    char block[kTrustedBytes];
    for (int64_t step; count > 0; count -= step) {
        step = std::min<int64_t>(count, kTrustedBytes);
        if (stream.readRaw(block, step) != step || writeRaw(block, step) != step)
            return false;
    }
    return true;
}

/** To be called when size, cursor or memory have changed otherwise than by a single value. */
void FMemoryStream::findLimit() {
    limit = error || cursor > size ? 0 : memorySize;
}

void FMemoryStream::fail() {
    size = getSize();
    error = true;
    limit = 0;
}

void FMemoryStream::forget() {
    buffer = nullptr;
    memorySize = size = cursor = limit = 0;
    ownsMemory = true;
    error = false;
}

// --- FBufferStream

int64_t FBufferStream::readRaw(void* target, int64_t count) {
    const int64_t passed = std::clamp<int64_t>(count, 0, std::max<int64_t>(int64_t(buffer.getFillSize()) - cursor, 0));
    if (passed > 0)
        std::memcpy(target, buffer + uint32_t(cursor), size_t(passed));
    cursor += passed;
    return passed;
}

int64_t FBufferStream::writeRaw(const void* source, int64_t count) {
    const uint32_t oldFill = buffer.getFillSize();
    if (failed || count <= 0)
        return 0;
    failed = count > UINT32_MAX || cursor > UINT32_MAX - count || !fillTo(uint32_t(cursor)) ||
             !buffer.put(source, uint32_t(count));
    buffer.setFillSize(failed ? oldFill : std::max(oldFill, buffer.getFillSize()));
    cursor += failed ? 0 : count;
    return failed ? 0 : count;
}

int64_t FBufferStream::seek(int64_t pos, FSeekMode mode) {
    const int64_t from[] = {0, cursor, buffer.getFillSize()};
    return cursor = placeFrom(from[mode], pos);
}

/** Puts the end of what is in use there, with zeros up to it. */
bool FBufferStream::fillTo(uint32_t place) {
    const uint32_t oldFill = buffer.getFillSize();
    if (!buffer.grow(place))
        return false;
    if (place > oldFill)
        std::memset(buffer + oldFill, 0, place - oldFill);
    return buffer.setFillSize(place);
}

}  // namespace Tessarine
