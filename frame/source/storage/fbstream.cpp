#include "storage/fbstream.h"
#include "collect/cmbuffer.h"
#include "pluginterfaces/base/smartpointer.h"
#include <algorithm>
#include <cstring>
#include <string_view>

namespace Tessarine {
namespace {
constexpr int64_t kBlockBytes = 1024;

constexpr std::string_view kLineEnds = "\n\r";
constexpr std::string_view kBlanks = " \t";

/** Where a line stands in its stream. */
struct LineBounds {
    int64_t begin, end;  // without what is trimmed
    int64_t next;        // the first byte of the next line
};

/** Reads on to the next line; false: there is nothing. */
bool scanLine(FStream& stream, bool trim, LineBounds& line) {
    const int64_t start = stream.tell();
    char block[kBlockBytes];
    bool ended = false, inText = false;
    int64_t at = start;
    line = {start, start, start};
    for (int64_t size; (size = stream.readRaw(block, kBlockBytes)) > 0;)
        for (const char c : std::string_view(block, size_t(size))) {
            const bool isEnd = kLineEnds.find(c) != kLineEnds.npos;
            if (ended && !isEnd)
                return true;
            line.next = ++at;
            ended |= isEnd;
            if (isEnd || (trim && kBlanks.find(c) != kBlanks.npos))
                continue;
            if (trim && !inText)
                line.begin = at - 1;
            inText = true;
            line.end = at;
        }
    return at > start;
}
}  // namespace

IMPLEMENT_ABSTRACT_CLASS(FStream, CmObject)
IMPLEMENT_CLASS(FStreamCounter, FStream)

int32_t FStream::queryInterface(const char* iid, void** obj) {
    if (answerInterface<IBStream>(this, iid, obj))
        return kResultOk;
    return CmObject::queryInterface(iid, obj);
}

uint32_t FStream::read(FStream& source, uint32_t count) {
    char block[kBlockBytes];
    uint32_t copied = 0;
    while (&source != this && copied < count) {
        const int64_t size = source.readRaw(block, std::min<int64_t>(count - copied, kBlockBytes));
        const int64_t written = size > 0 ? writeRaw(block, size) : 0;
        copied += uint32_t(std::max<int64_t>(written, 0));
        if (written <= 0 || written != size)
            break;
    }
    return copied;
}

bool FStream::copyTo(FStream& target) {
    if (&target == this)
        return false;
    if (tell() != 0)
        rewind();
    if (tell() != 0)
        return false;
    char block[kBlockBytes];
    for (int64_t size; (size = readRaw(block, kBlockBytes)) > 0;)
        if (target.writeRaw(block, size) != size)
            return false;
    return true;
}

int32_t FStream::read(void* buffer, int32_t numBytes, int32_t* numBytesRead) {
    const auto passed = int32_t(numBytes > 0 ? readRaw(buffer, numBytes) : 0);
    if (numBytesRead)
        *numBytesRead = passed;
    return passed > 0 || numBytes == 0 ? kResultOk : kResultFalse;
}

int32_t FStream::write(void* buffer, int32_t numBytes, int32_t* numBytesWritten) {
    const auto passed = int32_t(numBytes > 0 ? writeRaw(buffer, numBytes) : 0);
    if (numBytesWritten)
        *numBytesWritten = passed;
    return passed == numBytes ? kResultOk : kResultFalse;
}

int32_t FStream::seek(int64_t pos, int32_t mode, int64_t* result) {
    if (mode < kSeekSet || mode > kSeekEnd)
        return kInvalidArgument;
    const int64_t reached = seek(pos, FSeekMode(mode));
    if (result)
        *result = reached;
    return reached >= 0 ? kResultOk : kResultFalse;
}

int32_t FStream::tell(int64_t* pos) {
    const int64_t here = tell();
    if (pos)
        *pos = here;
    return here >= 0 ? kResultOk : kResultFalse;
}

bool FStream::isStreamEqual(FStream& other) {
    if (&other == this)
        return true;
    const int64_t place = tell(), otherPlace = other.tell();
    bool equal = seek(0, kFromStart) == 0 && other.seek(0, kFromStart) == 0;
    for (int64_t size = kBlockBytes; equal && size == kBlockBytes;) {
        char block[kBlockBytes], otherBlock[kBlockBytes];
        size = readRaw(block, kBlockBytes);
        equal = other.readRaw(otherBlock, kBlockBytes) == size &&
                (size <= 0 || std::memcmp(block, otherBlock, size_t(size)) == 0);
    }
    seek(place, kFromStart);
    other.seek(otherPlace, kFromStart);
    return equal;
}

bool FStream::readLine(CmBuffer& line, bool trim) {
    LineBounds bounds;
    if (tell() < 0 || !scanLine(*this, trim, bounds))
        return false;
    const int64_t length = bounds.end - bounds.begin;
    line.setFillSize(0);
    if (length >= UINT32_MAX || !line.grow(uint32_t(length) + 1) || seek(bounds.begin, kFromStart) != bounds.begin ||
        readRaw(line.data(), length) != length)
        return false;
    line.data()[length] = 0;
    return line.setFillSize(uint32_t(length)) && seek(bounds.next, kFromStart) == bounds.next;
}

bool FStream::writeString16(const tchar* text, bool terminated) {
    const std::u16string_view units(text ? text : u"");
    const size_t count = units.size() + terminated;
    return count <= INT32_MAX && writeUnits(units.data(), sizeof(tchar), int32_t(count));
}

int64_t FStream::bytesLeft() {
    return Tessarine::bytesLeft(this);
}

int64_t FStream::placeFrom(int64_t from, int64_t distance) {
    return from + std::clamp(distance, -from, kMaxPlace - from);
}

int64_t FStreamCounter::writeRaw(const void* /*buffer*/, int64_t size) {
    const int64_t counted = std::clamp<int64_t>(size, 0, kMaxPlace - count);
    count += counted;
    return counted;
}

int64_t FStreamCounter::seek(int64_t pos, FSeekMode mode) {
    return count = placeFrom(mode == kFromStart ? 0 : count, pos);
}

int64_t bytesLeft(IBStream* stream) {
    const FUnknownPtr<ISizeableStream> sizeable(stream);
    int64_t size = 0, place = 0;
    if (!sizeable || sizeable->getStreamSize(size) != kResultOk || stream->tell(&place) != kResultOk)
        return -1;
    return std::max<int64_t>(size - place, 0);
}

}  // namespace Tessarine
