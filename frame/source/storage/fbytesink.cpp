#include "fbytesink.h"
#include "storage/fmstream.h"

namespace Tessarine {

FByteSource::FByteSource(FStream& stream) : stream(stream), swapped(stream.byteOrder != 0) {
    if (auto* memory = classCast<FMemoryStream>(&stream)) {
        isMemory = true;
        next = memory->getData() + std::min(memory->tell(), memory->getSize());
        end = memory->getData() + memory->getSize();
        return;
    }
    readsAhead = stream.bytesLeft() > 0;
}

FByteSource::~FByteSource() {
    if (isMemory)
        stream.seek(next - static_cast<FMemoryStream&>(stream).getData(), kFromStart);
    else if (next != end)
        stream.seek(next - end, kFromCurrent);
}

bool FByteSource::refill(size_t count) {
    if (isMemory || count > kMaxPiece)
        return false;
    if (!block)
        block.reset(new char[kMaxPiece]);
    size_t filled = static_cast<size_t>(end - next);
    if (filled > 0)
        std::memmove(block.get(), next, filled);
    next = block.get();
    const size_t wanted = readsAhead ? kMaxPiece : count;
    while (filled < count) {
        const int64_t got = stream.readRaw(block.get() + filled, static_cast<int64_t>(wanted - filled));
        if (got <= 0)
            break;
        filled += static_cast<size_t>(got);
    }
    end = next + filled;
    return filled >= count;
}

bool FByteSource::skip(int64_t count) {
    while (count > 0) {
        const auto piece = static_cast<size_t>(std::min<int64_t>(count, kMaxPiece));
        if (!takeBytes(piece))
            return false;
        count -= static_cast<int64_t>(piece);
    }
    return true;
}

}  // namespace Tessarine
