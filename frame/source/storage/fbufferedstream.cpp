#include "storage/fbufferedstream.h"
#include "storage/ffstream.h"
#include <algorithm>
#include <cstring>

namespace Tessarine {
namespace {
constexpr uint32_t kDefaultBufferSize = 4096;
}  // namespace

IMPLEMENT_ABSTRACT_CLASS(FBufferedStream, FStream)
IMPLEMENT_ABSTRACT_CLASS(FBlockStreamReader, FStream)

FBufferedStream::FBufferedStream(FStream* target, uint32_t bufferSize, bool ownsStream, CmBufferPool* pool)
    : stream(nullptr), ownsStream(ownsStream), pool(pool), bufferSize(bufferSize) {
    setStream(target);
}

FBufferedStream::~FBufferedStream() {
    letGo();
}

void FBufferedStream::setStream(FStream* newStream) {
    letGo();
    stream = newStream;
    verifyAndAdjustBufferSize();
    if (!stream)
        return;
    position = std::max<int64_t>(stream->tell(), 0);
    size = std::max<int64_t>(stream->seek(0, kFromEnd), 0);
    stream->seek(position, kFromStart);
}

int64_t FBufferedStream::readRaw(void* target, int64_t count) {
    char* bytes = static_cast<char*>(target);
    int64_t passed = 0;
    while (passed < count && enterBlock()) {
        const uint32_t at = uint32_t(position - blockPos);
        const bool held = at >= validBegin && at < validEnd;
        if (!held && (!loadBlock() || at >= validEnd))
            break;
        const int64_t step = std::min<int64_t>(count - passed, validEnd - at);
        std::memcpy(bytes + passed, block->data() + at, size_t(step));
        passed += step;
        position += step;
    }
    return passed;
}

int64_t FBufferedStream::writeRaw(const void* source, int64_t count) {
    const char* bytes = static_cast<const char*>(source);
    int64_t passed = 0;
    while (passed < count && enterBlock()) {
        const uint32_t at = uint32_t(position - blockPos);
        const uint32_t end = at + uint32_t(std::min<int64_t>(bufferSize - at, count - passed));
        const bool adjoins = at <= validEnd && end >= validBegin;
        if (!adjoins && !writeBack())
            break;
        std::memcpy(block->data() + at, bytes + passed, end - at);
        validBegin = adjoins && validEnd > 0 ? std::min(validBegin, at) : at;
        validEnd = adjoins ? std::max(validEnd, end) : end;
        changed = true;
        passed += end - at;
        position += end - at;
        size = std::max(size, position);
    }
    return passed;
}

int64_t FBufferedStream::seek(int64_t pos, FSeekMode mode) {
    if (!stream || !writeBack())
        return -1;
    const int64_t from[] = {0, position, size};
    return position = placeFrom(from[mode], pos);
}

bool FBufferedStream::flush() {
    const bool written = writeBack();
    return stream && stream->flush() && written;
}

bool FBufferedStream::verify() {
    return stream && stream->verify() && !failed;
}

void FBufferedStream::setReadWriteHook(UProgressHook* hook, int32_t blockSize) {
    if (stream)
        stream->setReadWriteHook(hook, blockSize);
}

/** Whole units of what a file wants. */
void FBufferedStream::verifyAndAdjustBufferSize() {
    auto* file = classCast<FFileStream>(stream);
    const uint32_t align = file ? file->getSeekAlign() : 0;
    if (bufferSize == 0)
        bufferSize = kDefaultBufferSize;
    if (align > 0 && bufferSize % align != 0)
        bufferSize = align;
}

bool FBufferedStream::getBlock() {
    if (!block)
        block = pool ? pool->allocateBuffer(bufferSize) : new CmBuffer;
    return block->grow(bufferSize);
}

/** Makes the block the one that the position is in. */
bool FBufferedStream::enterBlock() {
    const int64_t begin = position / bufferSize * bufferSize;
    if (!stream || !getBlock())
        return false;
    if (begin == blockPos)
        return true;
    if (!writeBack())
        return false;
    blockPos = begin;
    validBegin = validEnd = 0;
    return true;
}

bool FBufferedStream::loadBlock() {
    if (!writeBack())
        return false;
    validBegin = validEnd = 0;
    if (stream->seek(blockPos, kFromStart) != blockPos)
        return false;
    validEnd = uint32_t(std::clamp<int64_t>(stream->readRaw(block->data(), bufferSize), 0, bufferSize));
    return true;
}

bool FBufferedStream::writeBack() {
    if (!changed)
        return true;
    const int64_t begin = blockPos + validBegin, count = validEnd - validBegin;
    failed = stream->seek(begin, kFromStart) != begin || stream->writeRaw(block->data() + validBegin, count) != count;
    changed = failed;
    return !failed;
}

/** Writes back and forgets the stream; what can't be written is lost. */
void FBufferedStream::letGo() {
    writeBack();
    if (block)
        pool ? pool->deleteBuffer(block) : void(block->release());
    if (stream && ownsStream)
        stream->release();
    block = nullptr;
    stream = nullptr;
    blockPos = position = size = 0;
    validBegin = validEnd = 0;
    changed = failed = false;
}

FStream* createWritableBufferedStream(FStream* stream) {
    return stream ? new FBufferedStream(stream, kDefaultBufferSize, true) : nullptr;
}

}  // namespace Tessarine
