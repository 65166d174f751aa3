#include "storage/fcstream.h"
#include <algorithm>

namespace Tessarine {
namespace {
constexpr uint32_t kBlockBytes = 0x10000;
constexpr int64_t kMaxRatio = 1032, kMaxExtra = 64;  // no byte of deflated data stands for more

/** What a size from outside may be: so much as the stored bytes can hold. */
int64_t believable(int64_t size, IBStream* stored) {
    const int64_t left = bytesLeft(stored);
    return left < 0 || left > (INT64_MAX - kMaxExtra) / kMaxRatio ? size : std::min(size, left * kMaxRatio + kMaxExtra);
}

/** Hands blocks of the stream to a taker, to the end; false: that didn't take one. */
template <class Take>
bool takeAll(FStream& stream, Take take) {
    Buffer block(kBlockBytes);
    if (!block.data())
        return false;
    for (int64_t size; (size = stream.readRaw(block.data(), kBlockBytes)) > 0;)
        if (!take(block.data(), size))
            return false;
    return true;
}
}  // namespace

IMPLEMENT_ABSTRACT_CLASS(FCompressionStream, FStream)

FCompressionStream::FCompressionStream(IBStream* stream, FCompressionEngine* given)
    : stream(stream),
      engine(given ? IPtr<FCompressionEngine>(given) : OPtr<FCompressionEngine>(FCompressionEngine::createDefault())) {}

FCompressionStream::~FCompressionStream() {
    finish();
}

bool FCompressionStream::beginCompress(float quality) {
    finish();
    if (!stream || !engine)
        return false;
    std::unique_ptr<ICompressor> made(engine->createCompressor());
    if (!made || !made->prepare(stream, quality))
        return false;
    compressor = std::move(made);
    position = 0;
    failed = false;
    return true;
}

bool FCompressionStream::beginDecompress(int64_t size) {
    finish();
    if (!stream || !engine)
        return false;
    originalSize = believable(size, stream);
    std::unique_ptr<IDecompressor> made(engine->createDecompressor());
    if (!made || !made->prepare(stream))
        return false;
    decompressor = std::move(made);
    position = 0;
    failed = false;
    return true;
}

bool FCompressionStream::finish() {
    if (compressor)
        failed |= !compressor->finish();
    if (decompressor)
        decompressor->finish();
    compressor.reset();
    decompressor.reset();
    return !failed;
}

int64_t FCompressionStream::readRaw(void* buffer, int64_t count) {
    if (!decompressor)
        return 0;
    if (originalSize >= 0)
        count = std::min(count, originalSize - position);
    char* bytes = static_cast<char*>(buffer);
    int64_t passed = 0;
    while (passed < count) {
        const int32_t step = int32_t(std::min<int64_t>(count - passed, INT32_MAX));
        const int32_t done = decompressor->decompress(bytes + passed, step);
        passed += std::clamp(done, 0, step);
        if (done < step)
            break;
    }
    position += passed;
    return passed;
}

int64_t FCompressionStream::writeRaw(const void* buffer, int64_t count) {
    const char* bytes = static_cast<const char*>(buffer);
    int64_t passed = 0;
    while (compressor && !failed && passed < count) {
        const int32_t step = int32_t(std::min<int64_t>(count - passed, INT32_MAX));
        failed = !compressor->compress(bytes + passed, step);
        passed += failed ? 0 : step;
    }
    position += passed;
    return passed;
}

int64_t FCompressionStream::seek(int64_t pos, FSeekMode mode) {
    const bool toEnd = mode == kFromEnd;
    const int64_t from[] = {0, position, originalSize};
    if ((!toEnd || originalSize >= 0) && placeFrom(from[mode], pos) == position)
        return position;
    if (!decompressor || !decompressor->isSeekSupported())
        return -1;
    const int64_t reached = decompressor->seek(pos, mode);
    position = reached >= 0 ? reached : position;
    return reached;
}

bool FCompressionStream::flush() {
    if (compressor && !failed)
        failed = !compressor->flush();
    return !failed;
}

FStream* createUncompressedStream(FStream* stream) {
    auto* compressed = classCast<FCompressionStream>(stream);
    if (!compressed)
        return stream;
    OPtr<FMemoryStream> memory(new FMemoryStream);
    const bool taken =
        takeAll(*compressed, [&](const char* bytes, int64_t size) { return memory->writeRaw(bytes, size) == size; });
    memory->setFileType(stream->getFileType());
    memory->rewind();
    stream->release();
    return taken ? memory.detach() : nullptr;
}

FStreamUnpacker::FStreamUnpacker(FStream* given) : stream(given) {
    auto* compressed = classCast<FCompressionStream>(given);
    if (!compressed)
        return;
    buffer.setDelta(kBlockBytes);
    stream = nullptr;
    if (!takeAll(*compressed, [&](const char* bytes, int64_t size) { return buffer.put(bytes, uint32_t(size)); }) ||
        buffer.getFillSize() > INT32_MAX)
        return;
    view = new FMemoryStream(buffer.data(), int32_t(buffer.getFillSize()));
    stream = view;
}

}  // namespace Tessarine
