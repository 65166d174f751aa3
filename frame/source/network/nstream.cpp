#include "network/nstream.h"
#include <algorithm>
#include <cstring>

namespace Tessarine {
namespace {
constexpr int64_t kBufferBytes = 16384;  // a record of a secured connection
}

IMPLEMENT_CLASS(NStream, FStream)

NStream::~NStream() = default;

bool NStream::connect(const char* host, uint16_t port) {
    close();
    return socket->connect(host, port);
}

bool NStream::secure(const char* host) {
    if (next == filled && socket->secure(host))
        return true;
    socket->fail(NError::kNoSecurity);
    close();
    return false;
}

void NStream::close() {
    socket->close();
    next = filled = place = 0;
    contentLeft = kUnbounded;
}

void NStream::beginContent(int64_t bytes) {
    place = 0;
    if (bytes >= 0)
        filled = next + std::min(filled - next, bytes);  // more than was said is not of the content
    contentLeft = bytes < 0 ? kUnbounded : bytes - (filled - next);
}

int64_t NStream::receive(void* target, int64_t count) {
    if (count <= 0)
        return 0;
    if (next == filled && count < kBufferBytes && !fillBuffer())
        return verify() ? 0 : -1;
    const int64_t received = next < filled ? takeBuffered(target, count) : receiveNew(target, count);
    place += std::max<int64_t>(received, 0);
    return received;
}

int64_t NStream::takeBuffered(void* target, int64_t count) {
    const int64_t taken = std::min(count, filled - next);
    std::memcpy(target, &buffer[size_t(next)], size_t(taken));
    next += taken;
    return taken;
}

/** From the socket; knows where the content ends. */
int64_t NStream::receiveNew(void* target, int64_t count) {
    if (contentLeft == 0)
        return 0;
    const int64_t received = socket->receive(target, contentLeft < 0 ? count : std::min(count, contentLeft));
    if (received == 0 && contentLeft > 0) {
        socket->fail(NError::kBroken);
        return -1;
    }
    if (contentLeft > 0)
        contentLeft -= std::max<int64_t>(received, 0);
    return received;
}

bool NStream::fillBuffer() {
    if (!buffer)
        buffer = std::make_unique_for_overwrite<char[]>(kBufferBytes);
    next = 0;
    filled = std::max<int64_t>(receiveNew(buffer.get(), kBufferBytes), 0);
    return filled > 0;
}

bool NStream::readLine(std::string& line, uint32_t maxBytes) {
    line.clear();
    for (;;) {
        if (next == filled && !fillBuffer())
            return false;
        const char* const begin = &buffer[size_t(next)];
        const void* const end = std::memchr(begin, '\n', size_t(filled - next));
        const int64_t size = end ? static_cast<const char*>(end) - begin : filled - next;
        if (line.size() + size_t(size) > maxBytes)
            return false;
        line.append(begin, size_t(size));
        next += size + (end != nullptr);
        place += size + (end != nullptr);
        if (!end)
            continue;
        if (line.ends_with('\r'))
            line.pop_back();
        return true;
    }
}

int64_t NStream::readRaw(void* target, int64_t count) {
    int64_t passed = 0;
    while (passed < count) {
        const int64_t received = receive(static_cast<char*>(target) + passed, count - passed);
        if (received <= 0)
            break;
        passed += received;
    }
    return passed;
}

int64_t NStream::writeRaw(const void* bytes, int64_t count) {
    return count > 0 && socket->send(bytes, count) ? count : 0;
}

int64_t NStream::seek(int64_t pos, FSeekMode mode) {
    if (mode == kFromEnd)
        return -1;
    const int64_t target = placeFrom(mode == kFromCurrent ? place : 0, pos);
    char dropped[4096];
    while (place < target)
        if (receive(dropped, std::min<int64_t>(target - place, sizeof dropped)) <= 0)
            return -1;
    return place == target ? place : -1;
}

}  // namespace Tessarine
