#include "source/TALV_Extension/COM Port/TALV_CircularBuffer.h"
#include <algorithm>

using Tessarine::FGuard;

namespace TALV {
namespace {
/** The index behind count bytes from position on, all within a ring of that size. */
int32_t advanced(int32_t position, int32_t count, int32_t size) {
    const int32_t toEnd = size - position;
    return count < toEnd ? position + count : count - toEnd;
}
}  // namespace

void TALV_CircularBuffer::initialize(int32_t size) {
    data.reset(new unsigned char[size_t(size)]);
    bufferSize = size;
}

int32_t TALV_CircularBuffer::avail() const {
    FGuard guard(countLock);
    return availCount;
}

int32_t TALV_CircularBuffer::read(unsigned char* buffer, int32_t count) {
    if (!buffer || !data)
        return 0;
    count = std::clamp(count, 0, avail());
    const int32_t upToEnd = std::min(count, bufferSize - readPos);
    std::copy_n(data.get() + readPos, upToEnd, buffer);
    std::copy_n(data.get(), count - upToEnd, buffer + upToEnd);
    readPos = advanced(readPos, count, bufferSize);
    FGuard guard(countLock);
    availCount -= count;
    return count;
}

int32_t TALV_CircularBuffer::write(const unsigned char* bytes, int32_t count) {
    if (!bytes || !data)
        return 0;
    count = std::clamp(count, 0, space());
    const int32_t upToEnd = std::min(count, bufferSize - writePos);
    std::copy_n(bytes, upToEnd, data.get() + writePos);
    std::copy_n(bytes + upToEnd, count - upToEnd, data.get());
    writePos = advanced(writePos, count, bufferSize);
    FGuard guard(countLock);
    availCount += count;
    return count;
}

void TALV_CircularBuffer::stepBack(int32_t count) {
    FGuard guard(countLock);
    if (avail() + count > bufferSize)
        return;
    availCount += count;
    readPos -= count;
    if (readPos < 0)
        readPos = bufferSize - 1;
}

void TALV_CircularBuffer::clear() {
    FGuard guard(countLock);
    availCount = 0;
    writePos = 0;
    readPos = 0;
}

}  // namespace TALV
