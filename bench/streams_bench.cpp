// Values through a memory stream, beside a loop of memcpy into memory that was there before; and compression through the
// streams beside zlib called for the same work: init and end for each piece, the same level, blocks of 64 KB, memory to memory.
#include "libraries/source/zlib/zlibcomp.h"
#include "pluginterfaces/base/smartpointer.h"
#include "storage/fcstream.h"
#include <benchmark/benchmark.h>
#include <cstring>
#include <random>
#include <string>
#include <vector>

using namespace Tessarine;

namespace {
constexpr int32_t kValues = 1000;
constexpr int64_t kTextBytes = 1 << 20;
constexpr int64_t kItemBytes = 1024;
constexpr uint32_t kBlockBytes = 0x10000;

std::vector<int32_t> someValues() {
    return std::vector<int32_t>(kValues, 42);
}

/** As settings and logs look. */
const std::string& sampleText() {
    static const std::string text = [] {
        std::mt19937 random(1);
        std::string made;
        while (int64_t(made.size()) < kTextBytes)
            made += "<channel id=\"" + std::to_string(random() % 64) + "\" gain=\"" + std::to_string(random() % 600) +
                    "\"/>\n";
        made.resize(size_t(kTextBytes));
        return made;
    }();
    return text;
}

Bytef* bytesOf(const void* bytes) {
    return static_cast<Bytef*>(const_cast<void*>(bytes));
}

voidpf allocate(voidpf, uInt count, uInt size) {
    return std::malloc(size_t(count) * size);
}
void deallocate(voidpf, voidpf memory) {
    std::free(memory);
}

struct Ours {
    FMemoryStream values, stored, plain;
    OPtr<FCompressionEngine> engine{new ZLib::ZLibEngine};
    std::vector<char> piece = std::vector<char>(kBlockBytes);

    void begin() { values.rewind(); }
    void write(int32_t value) { values.writeInt32(value); }
    void read(int32_t& value) { values.readInt32(value); }

    void compress(int32_t level) {
        stored.reset();
        FCompressionStream stream(&stored, engine);
        stream.beginCompress((float(level) + 0.5f) / 9);
        const std::string& text = sampleText();
        for (int64_t at = 0; at < kTextBytes; at += kBlockBytes)
            stream.writeRaw(text.data() + at, kBlockBytes);
        stream.finish();
    }
    int64_t inflate() {
        stored.rewind();
        FCompressionStream stream(&stored, engine);
        stream.beginDecompress();
        int64_t total = 0;
        for (int64_t size; (size = stream.readRaw(piece.data(), kBlockBytes)) > 0; total += size)
            benchmark::DoNotOptimize(piece.data());
        return total;
    }
    int64_t storedSize() const { return stored.getSize(); }
};

/** By hand, without byte order, growth or an error to remember; the place is a member, as with any stream. */
struct Bare {
    std::vector<char> memory = std::vector<char>(kValues * sizeof(int32_t));
    char* at = nullptr;
    std::vector<char> stored, block = std::vector<char>(kBlockBytes), piece = block;

    void begin() { at = memory.data(); }
    void write(int32_t value) {
        std::memcpy(at, &value, sizeof value);
        at += sizeof value;
        benchmark::ClobberMemory();  // value by value: one copy of all isn't what is compared
    }
    void read(int32_t& value) {
        std::memcpy(&value, at, sizeof value);
        at += sizeof value;
        benchmark::ClobberMemory();
    }

    void compress(int32_t level) {
        stored.clear();
        z_stream state = {};
        state.zalloc = allocate;
        state.zfree = deallocate;
        deflateInit(&state, level);
        const std::string& text = sampleText();
        for (int64_t at = 0; at < kTextBytes; at += kBlockBytes)
            deflatePiece(state, text.data() + at, kBlockBytes, Z_NO_FLUSH);
        deflatePiece(state, nullptr, 0, Z_FINISH);
        deflateEnd(&state);
    }
    void deflatePiece(z_stream& state, const char* bytes, uint32_t size, int mode) {
        state.next_in = bytesOf(bytes);
        state.avail_in = size;
        do {
            if (state.avail_out == 0 && state.next_out)
                keepBlock(state);
            if (!state.next_out)
                emptyBlock(state);
            deflate(&state, mode);
        } while (state.avail_out == 0);
        if (mode == Z_FINISH)
            keepBlock(state);
    }
    void emptyBlock(z_stream& state) {
        state.next_out = bytesOf(block.data());
        state.avail_out = kBlockBytes;
    }
    void keepBlock(z_stream& state) {
        stored.insert(stored.end(), block.data(), block.data() + (kBlockBytes - state.avail_out));
        emptyBlock(state);
    }
    int64_t inflate() {
        z_stream state = {};
        state.zalloc = allocate;
        state.zfree = deallocate;
        inflateInit(&state);
        int64_t total = 0;
        size_t taken = 0;
        for (int result = Z_OK; result == Z_OK;) {
            state.next_out = bytesOf(piece.data());
            state.avail_out = kBlockBytes;
            while (result == Z_OK && state.avail_out > 0) {
                if (state.avail_in == 0) {
                    state.avail_in = uInt(std::min<size_t>(kBlockBytes, stored.size() - taken));
                    std::memcpy(block.data(), stored.data() + taken, state.avail_in);
                    taken += state.avail_in;
                    state.next_in = bytesOf(block.data());
                }
                result = ::inflate(&state, Z_NO_FLUSH);
            }
            total += kBlockBytes - state.avail_out;
            benchmark::DoNotOptimize(piece.data());
        }
        inflateEnd(&state);
        return total;
    }
    int64_t storedSize() const { return int64_t(stored.size()); }
};
}  // namespace

template <class Peer>
void WriteInt32(benchmark::State& state) {
    Peer peer;
    const std::vector<int32_t> values = someValues();
    for (auto _ : state) {
        peer.begin();
        for (const int32_t value : values)
            peer.write(value);
        benchmark::DoNotOptimize(peer);
    }
    state.SetItemsProcessed(state.iterations() * kValues);
}

template <class Peer>
void ReadInt32(benchmark::State& state) {
    Peer peer;
    peer.begin();
    std::vector<int32_t> values = someValues();
    for (const int32_t value : values)
        peer.write(value);
    for (auto _ : state) {
        peer.begin();
        for (int32_t& value : values)
            peer.read(value);
        benchmark::DoNotOptimize(values.data());
    }
    state.SetItemsProcessed(state.iterations() * kValues);
}

/** Time of one KB of text. */
template <class Peer>
void Compress(benchmark::State& state) {
    Peer peer;
    for (auto _ : state)
        peer.compress(int32_t(state.range(0)));
    benchmark::DoNotOptimize(peer.storedSize());
    state.SetItemsProcessed(state.iterations() * (kTextBytes / kItemBytes));
}

template <class Peer>
void Inflate(benchmark::State& state) {
    Peer peer;
    peer.compress(int32_t(state.range(0)));
    for (auto _ : state)
        if (peer.inflate() != kTextBytes)
            state.SkipWithError("not what was compressed");
    state.SetItemsProcessed(state.iterations() * (kTextBytes / kItemBytes));
}

#define BENCHMARK_ALL(Peer)                                     \
    BENCHMARK_TEMPLATE(WriteInt32, Peer);                       \
    BENCHMARK_TEMPLATE(ReadInt32, Peer);                        \
    BENCHMARK_TEMPLATE(Compress, Peer)->Arg(1)->Arg(4)->Arg(6); \
    BENCHMARK_TEMPLATE(Inflate, Peer)->Arg(4)

BENCHMARK_ALL(Ours);
BENCHMARK_ALL(Bare);
