// Compressed bytes from outside. The first two bytes say in which pieces they are read and what size is declared; the rest
// is the stream.
#include "libraries/source/zlib/zlibcomp.h"
#include "pluginterfaces/base/smartpointer.h"
#include "storage/fcstream.h"
#include <algorithm>
#include <string>

using namespace Tessarine;

namespace {
constexpr size_t kMostBytes = 1 << 17;  // what this consumer takes
constexpr size_t kMostPerByte = 1032, kMostExtra = 64;

void demand(bool holds) {
    if (!holds)
        __builtin_trap();
}

OPtr<FMemoryStream> streamOf(const uint8_t* bytes, size_t size) {
    auto* stream = new FMemoryStream;
    stream->writeRaw(bytes, int64_t(size));
    stream->rewind();
    return stream;
}

OPtr<FCompressionStream> inflaterOf(const uint8_t* bytes, size_t size, int64_t declared) {
    const OPtr<FCompressionEngine> engine(new ZLib::ZLibEngine);
    auto* stream = new FCompressionStream(streamOf(bytes, size), engine);
    demand(stream->beginDecompress(declared));
    return stream;
}

std::string inflated(FStream& stream, size_t piece) {
    std::string text, block(piece, '\0');
    for (int64_t size; text.size() < kMostBytes && (size = stream.readRaw(block.data(), int64_t(piece))) > 0;)
        text.append(block, 0, size_t(size));
    return text;
}

/** zlib by itself, in one piece: all that comes out before the end, or before the damage. */
std::string plainlyInflated(const uint8_t* bytes, size_t size, bool& whole) {
    std::string text(kMostBytes, '\0');
    z_stream state = {};
    inflateInit(&state);
    state.next_in = const_cast<Bytef*>(bytes);
    state.avail_in = uInt(size);
    state.next_out = reinterpret_cast<Bytef*>(text.data());
    state.avail_out = uInt(text.size());
    const int result = inflate(&state, Z_NO_FLUSH);
    whole = result == Z_STREAM_END;
    text.resize(state.total_out);
    inflateEnd(&state);
    return text;
}

void goesThereAndBack(const uint8_t* bytes, size_t size, float quality) {
    const OPtr<FCompressionEngine> engine(new ZLib::ZLibEngine);
    const OPtr<FMemoryStream> plain = streamOf(bytes, size);
    FMemoryStream stored;
    demand(FCompressData(plain, &stored, engine, quality));
    stored.rewind();
    FMemoryStream back;
    demand(FDecompressData(&stored, &back, engine) && back.isStreamEqual(*plain));
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 2)
        return 0;
    const size_t piece = size_t(data[0]) * 64 + 1, declared = size_t(data[1]) * 100;
    goesThereAndBack(data, size, float(data[0]) / 255);
    data += 2;
    size -= 2;

    bool whole = false;
    const std::string model = plainlyInflated(data, size, whole);
    const std::string text = inflated(*inflaterOf(data, size, -1), piece);
    demand(text.size() <= size * kMostPerByte + kMostExtra);
    demand(whole ? text == model : model.starts_with(text) || text.size() >= kMostBytes);
    const std::string bounded = inflated(*inflaterOf(data, size, int64_t(declared)), piece);
    demand(bounded.size() <= declared && model.starts_with(bounded));
    if (text.size() >= kMostBytes)
        return 0;
    const OPtr<FStream> plain(createUncompressedStream(inflaterOf(data, size, -1).detach()));
    demand(plain && inflated(*plain, piece).size() <= size * kMostPerByte + kMostExtra);
    return 0;
}
