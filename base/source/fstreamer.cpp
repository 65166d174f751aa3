#include "base/source/fstreamer.h"
#include "base/source/fstringconvert.h"
#include <algorithm>
#include <cstring>
#include <string>

namespace Tessarine {
namespace {
constexpr int64_t kBlockBytes = 1024;  // what is copied at a time, on the stack
constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
constexpr size_t kMostUtf8Bytes = 4;  // of a character

// not inlined: the optimiser of g++ 12 takes the loop over a single small unit for a store behind it, and warns
[[gnu::noinline]] void swapUnits(char* units, int32_t width, int32_t count) {
    for (char* end = units + int64_t(width) * count; units < end; units += width)
        std::reverse(units, units + width);
}

/** Text up to a 0 that must come; at most limit bytes of it are kept. */
bool readToTerminator(FStreamer& stream, std::string& text, size_t limit) {
    for (char c; stream.readChar8(c);) {
        if (c == 0)
            return true;
        if (text.size() < limit)
            text += c;
    }
    return false;
}

/** Passes all in calls of at most 32-bit sizes, up to the first that comes short. */
template <class Call>
int64_t passInSteps(int64_t size, Call call) {
    int64_t passed = 0;
    for (int32_t step, done; passed < size; passed += done) {
        step = int32_t(std::min<int64_t>(size - passed, INT32_MAX));
        done = 0;
        call(passed, step, &done);
        done = std::clamp(done, 0, step);
        if (done < step)
            return passed + done;
    }
    return passed;
}
}  // namespace

bool FStreamer::writeUnits(const void* units, int32_t width, int32_t count) {
    const int64_t size = count > 0 ? int64_t(width) * count : 0;
    if (byteOrder == 0 || width == 1)
        return size == 0 || writeRaw(units, size) == size;
    char block[kBlockBytes];
    for (int64_t done = 0, step; done < size; done += step) {
        step = std::min(size - done, kBlockBytes);
        std::memcpy(block, static_cast<const char*>(units) + done, size_t(step));
        swapUnits(block, width, int32_t(step / width));
        if (writeRaw(block, step) != step)
            return false;
    }
    return true;
}

bool FStreamer::readUnits(void* units, int32_t width, int32_t count) {
    if (count <= 0)
        return true;
    char* bytes = static_cast<char*>(units);
    const int64_t read = std::max<int64_t>(readRaw(bytes, int64_t(width) * count), 0);
    const int32_t whole = int32_t(read / width);
    if (byteOrder != 0)
        swapUnits(bytes, width, whole);
    std::memset(bytes + int64_t(width) * whole, 0, size_t(width) * size_t(count - whole));
    return whole == count;
}

bool FStreamer::readBool(bool& value) {
    int16_t number;
    const bool whole = readInt16(number);
    value = number != 0;
    return whole;
}

bool FStreamer::skip(int64_t bytes) {
    char dropped[kBlockBytes];
    for (int64_t size; bytes > 0; bytes -= size) {
        size = std::min(bytes, kBlockBytes);
        if (readRaw(dropped, size) != size)
            return false;
    }
    return true;
}

bool FStreamer::pad(int64_t bytes) {
    static constexpr char kZeros[kBlockBytes] = {};
    for (int64_t size; bytes > 0; bytes -= size) {
        size = std::min(bytes, kBlockBytes);
        if (writeRaw(kZeros, size) != size)
            return false;
    }
    return true;
}

char* FStreamer::readStr8() {
    int32_t size;
    if (!readInt32(size) || size <= 0)
        return nullptr;
    std::string text;
    for (int32_t read = 0, step; read < size; read += step) {
        step = std::min(size - read, kTrustedBytes);
        text.resize(size_t(read) + size_t(step));
        if (readRaw(&text[size_t(read)], step) != step)
            return nullptr;
    }
    char* copy = new char[text.size() + 1];
    std::memcpy(copy, text.c_str(), text.size() + 1);
    return copy;
}

bool FStreamer::writeStr8(const char* text) {
    if (!text)
        return writeInt32(0);
    const int64_t size = int64_t(std::strlen(text)) + 1;
    return size <= INT32_MAX && writeInt32(int32_t(size)) && writeRaw(text, size) == size;
}

int32_t FStreamer::getStr8Size(const char* text) {
    return int32_t(std::strlen(text) + 5);
}

int64_t FStreamer::readString8(char* text, int64_t size) {
    if (!text || size < 1)
        return 0;
    int64_t length = 0;
    for (char c; length < size - 1 && readChar8(c);) {
        text[length++] = c;
        if (c == 0 || c == '\n')
            break;
    }
    if (length > 1 && text[length - 1] == '\n' && text[length - 2] == '\r')
        length -= 2;
    text[length] = 0;
    return int64_t(std::strlen(text));
}

bool FStreamer::writeString8(const char* text, bool terminated) {
    const char* bytes = text ? text : "";
    const int64_t size = int64_t(std::strlen(bytes)) + terminated;
    return writeRaw(bytes, size) == size;
}

bool FStreamer::readStringUtf8(tchar* text, int32_t count) {
    if (!text || count < 1)
        return false;
    text[0] = 0;
    const size_t most = maxBytesPerUnit(kCodePageUTF8) * size_t(count - 1) + kMostUtf8Bytes;  // the last one is whole
    std::string bytes;
    if (!readToTerminator(*this, bytes, kUtf8Mark.size() + most))
        return false;
    const bool utf8 = bytes.starts_with(kUtf8Mark);
    const char* plain = bytes.c_str() + (utf8 ? kUtf8Mark.size() : 0);
    return ConstString::multiByteToWideString(text, plain, count, utf8 ? kCodePageUTF8 : kCodePageDefault) > 0;
}

bool FStreamer::writeStringUtf8(const tchar* text) {
    String utf8(text);
    const bool ascii = utf8.isAsciiString();
    if (!utf8.toMultiByte(kCodePageUTF8))
        return false;
    return (ascii || writeString8(kUtf8Mark.data(), false)) && writeString8(utf8.text8());
}

// --- IBStreamer

int64_t IBStreamer::readRaw(void* buffer, int64_t size) {
    return passInSteps(size, [&](int64_t passed, int32_t step, int32_t* done) {
        stream->read(static_cast<char*>(buffer) + passed, step, done);
    });
}

int64_t IBStreamer::writeRaw(const void* buffer, int64_t size) {
    char* bytes = static_cast<char*>(const_cast<void*>(buffer));  // the face takes it so, and only reads
    return passInSteps(size,
                       [&](int64_t passed, int32_t step, int32_t* done) { stream->write(bytes + passed, step, done); });
}

int64_t IBStreamer::seek(int64_t position, FSeekMode mode) {
    int64_t reached = -1;
    return stream->seek(position, mode, &reached) == kResultOk ? reached : -1;
}

int64_t IBStreamer::tell() {
    int64_t place = -1;
    return stream->tell(&place) == kResultOk ? place : -1;
}

// --- FStreamSizeHolder

bool FStreamSizeHolder::beginWrite() {
    sizePos = stream.tell();
    return sizePos >= 0 && stream.writeInt32(0);
}

int32_t FStreamSizeHolder::endWrite() {
    if (sizePos < 0)
        return 0;
    const int64_t end = stream.tell();
    const int64_t size = end - sizePos - int64_t(sizeof(int32_t));
    if (size < 0 || size > INT32_MAX || stream.seek(sizePos, kFromStart) != sizePos)
        return -1;
    const bool written = stream.writeInt32(int32_t(size));
    return stream.seek(end, kFromStart) == end && written ? int32_t(size) : -1;
}

int32_t FStreamSizeHolder::beginRead() {
    sizePos = -1;
    int32_t size;
    if (!stream.readInt32(size) || size < 0)
        return -1;
    const int64_t start = stream.tell();
    const int64_t end = stream.seek(0, kFromEnd);
    if (start < 0 || stream.seek(start, kFromStart) != start || size > end - start)
        return -1;
    sizePos = start + size;
    return size;
}

bool FStreamSizeHolder::endRead() {
    return sizePos >= 0 && stream.seek(sizePos, kFromStart) == sizePos;
}

}  // namespace Tessarine
