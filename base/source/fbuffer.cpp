#include "base/source/fbuffer.h"
#include "base/source/fstringconvert.h"
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <utility>

namespace Tessarine {
namespace {
constexpr char kHexDigits[] = "0123456789ABCDEF";

/** -1: no digit. */
int32_t hexDigit(char c) {
    const char* place = c ? std::strchr(kHexDigits, ConstString::toUpper(c)) : nullptr;
    return place ? int32_t(place - kHexDigits) : -1;
}
}  // namespace

Buffer& Buffer::operator=(const Buffer& other) {
    if (this != &other && setSize(0))
        copyFrom(other);
    return *this;
}

Buffer::~Buffer() {
    std::free(buffer);
}

void Buffer::copyFrom(const Buffer& other) {
    delta = other.delta;
    if (!setSize(other.memSize) || other.fillSize == 0)
        return;
    std::memcpy(buffer, other.buffer, other.fillSize);
    fillSize = other.fillSize;
}

bool Buffer::owns(const void* bytes) const {
    const char* place = static_cast<const char*>(bytes);
    return buffer && !std::less<>()(place, buffer) && std::less<>()(place, buffer + memSize);
}

bool Buffer::put(const void* bytes, uint32_t count) {
    return insert(fillSize, bytes, count);
}

bool Buffer::put(const String& text) {
    if (text.isWideString())
        return put(text.text16(), (text.length() + 1) * uint32_t(sizeof(tchar)));
    return put(text.text8(), text.length() + 1);
}

uint32_t Buffer::get(void* bytes, uint32_t count) {
    count = std::min(count, getFree());
    if (count > 0)
        std::memcpy(bytes, buffer + fillSize, count);
    fillSize += count;
    return count;
}

bool Buffer::grow(uint32_t size) {
    if (size <= memSize)
        return true;
    if (delta == 0)
        delta = kDefaultDelta;
    const uint64_t rounded = (uint64_t(size) + delta - 1) / delta * delta;
    return rounded <= UINT32_MAX && setSize(uint32_t(rounded));
}

bool Buffer::setSize(uint32_t size) {
    if (size == 0) {
        std::free(std::exchange(buffer, nullptr));
    } else if (size != memSize) {
        void* block = std::realloc(buffer, size);
        if (!block)
            return false;
        buffer = static_cast<char*>(block);
    }
    memSize = size;
    fillSize = std::min(fillSize, size);
    return true;
}

bool Buffer::setFillSize(uint32_t size) {
    if (size > memSize)
        return false;
    fillSize = size;
    return true;
}

void Buffer::set(uint8_t byte) {
    if (buffer)
        std::memset(buffer, byte, memSize);
}

void Buffer::fillup(uint8_t byte) {
    if (buffer)
        std::memset(buffer + fillSize, byte, getFree());
}

void Buffer::take(Buffer& other) {
    if (this == &other)
        return;
    std::free(buffer);
    buffer = std::exchange(other.buffer, nullptr);
    memSize = std::exchange(other.memSize, 0);
    fillSize = std::exchange(other.fillSize, 0);
}

char* Buffer::pass() {
    memSize = fillSize = 0;
    return std::exchange(buffer, nullptr);
}

bool Buffer::copy(uint32_t from, uint32_t to, uint32_t count) {
    if (uint64_t(from) + count > memSize || uint64_t(to) + count > UINT32_MAX || !grow(to + count))
        return false;
    if (count > 0)
        std::memmove(buffer + to, buffer + from, count);
    return true;
}

void Buffer::move(int32_t amount, uint8_t byte) {
    if (!buffer)
        return;
    const uint32_t gap = uint32_t(std::min<int64_t>(std::abs(int64_t(amount)), memSize));
    const uint32_t kept = memSize - gap;
    std::memmove(buffer + (amount > 0 ? gap : 0), buffer + (amount > 0 ? 0 : gap), kept);
    std::memset(buffer + (amount > 0 ? 0 : kept), byte, gap);
}

bool Buffer::shiftAt(uint32_t position, int32_t amount) {
    if (position > fillSize)
        return false;
    if (amount >= 0)
        return insert(position, nullptr, size_t(amount));
    const uint32_t removed = uint32_t(std::min<int64_t>(-int64_t(amount), fillSize - position));
    if (removed > 0)
        std::memmove(buffer + position, buffer + position + removed, fillSize - position - removed);
    fillSize -= removed;
    return true;
}

/** Null bytes leave the gap as it is. The bytes may stand in this buffer. */
bool Buffer::insert(uint32_t position, const void* bytes, size_t count) {
    if (count > UINT32_MAX - fillSize)
        return false;
    if (owns(bytes)) {
        const Buffer copy(bytes, uint32_t(count));
        return copy.fillSize == count && insert(position, copy.buffer, count);
    }
    if (!grow(fillSize + uint32_t(count)))
        return false;
    if (position < fillSize)
        std::memmove(buffer + position + count, buffer + position, fillSize - position);
    if (bytes && count > 0)
        std::memcpy(buffer + position, bytes, count);
    fillSize += uint32_t(count);
    return true;
}

bool Buffer::operator==(const Buffer& other) const {
    return fillSize == other.fillSize && (fillSize == 0 || std::memcmp(buffer, other.buffer, fillSize) == 0);
}

bool Buffer::swap(int16_t width) {
    if (width != 2 && width != 4 && width != 8)
        return false;
    for (uint32_t at = 0; at + uint32_t(width) <= fillSize; at += uint32_t(width))
        std::reverse(buffer + at, buffer + at + width);
    return true;
}

bool Buffer::appendString8(const char* text) {
    return !text || insert(fillSize, text, std::strlen(text));
}

bool Buffer::appendString16(const tchar* text) {
    return !text || insert(fillSize, text, std::u16string_view(text).size() * sizeof(tchar));
}

bool Buffer::prependString8(const char* text) {
    return !text || insert(0, text, std::strlen(text));
}

bool Buffer::prependString16(const tchar* text) {
    return !text || insert(0, text, std::u16string_view(text).size() * sizeof(tchar));
}

void Buffer::makeHexString(String& text) const {
    if (uint64_t(fillSize) * 2 > ConstString::kMaxLength || !text.resize(fillSize * 2, false))
        return;
    char* digits = text.writable8();
    if (!digits || !buffer)
        return;
    for (uint32_t i = 0; i < fillSize; ++i) {
        *digits++ = kHexDigits[uint8_t(buffer[i]) >> 4];
        *digits++ = kHexDigits[buffer[i] & 0xF];
    }
    text.updateLength();
}

bool Buffer::fromHexString(const char* text) {
    const size_t length = text ? std::strlen(text) : 0;
    if (length == 0 || length % 2 != 0 || length / 2 > UINT32_MAX)
        return false;
    Buffer scanned(uint32_t(length / 2));
    if (scanned.memSize == 0)
        return false;
    for (; scanned.fillSize < scanned.memSize; ++scanned.fillSize, text += 2) {
        const int32_t high = hexDigit(text[0]), low = hexDigit(text[1]);
        if (high < 0 || low < 0)
            return false;
        scanned.buffer[scanned.fillSize] = char(high << 4 | low);
    }
    take(scanned);
    return true;
}

bool Buffer::toWideString(int32_t codePage) {
    if (fillSize == 0)
        return true;
    const std::string_view text(buffer, strnlen(buffer, fillSize));
    const uint64_t size = (uint64_t(text.size()) + 1) * sizeof(tchar);
    Buffer wide(size <= UINT32_MAX ? uint32_t(size) : 0);
    const int64_t count = wide.buffer ? decodeText(text, wide.data16(), text.size(), uint32_t(codePage)) : -1;
    if (count < 0)
        return false;
    wide.data16()[count] = 0;
    wide.fillSize = uint32_t(count) * uint32_t(sizeof(tchar));
    take(wide);
    return true;
}

bool Buffer::toMultibyteString(int32_t codePage) {
    if (fillSize == 0)
        return true;
    std::u16string_view text(data16(), fillSize / sizeof(tchar));
    text = text.substr(0, text.find(u'\0'));
    const uint64_t size = uint64_t(text.size()) * maxBytesPerUnit(uint32_t(codePage)) + 1;
    Buffer narrow(size <= UINT32_MAX ? uint32_t(size) : 0);
    if (!narrow.buffer)
        return false;
    narrow.fillSize = uint32_t(encodeText(text, narrow.buffer, size - 1, uint32_t(codePage)));
    narrow.buffer[narrow.fillSize] = 0;
    take(narrow);
    return true;
}

}  // namespace Tessarine
