#include "libraries/source/zlib/zlibcomp.h"
#include "base/fcompiledinclass.h"
#include "base/source/finitializer.h"
#include "base/uprogresshook.h"
#include "storage/fcstream.h"
#include "storage/ffstream.h"
#include "storage/fxmlarchive.h"
#include "tests/frame/source/storage/archiveprobes.h"
#include <random>
#include <string>

namespace Tessarine {
namespace {
/** Something between text and noise. */
std::string sampleOf(size_t size) {
    std::mt19937 random(3);
    std::string text;
    while (text.size() < size)
        text += random() % 3 ? "gain " + std::to_string(random() % 60) + "\n" : std::string(1, char(random()));
    text.resize(size);
    return text;
}

std::string deflated(const std::string& text, int level, const std::string& dictionary = {}) {
    z_stream state = {};
    deflateInit(&state, level);
    if (!dictionary.empty())
        deflateSetDictionary(&state, reinterpret_cast<const Bytef*>(dictionary.data()), uInt(dictionary.size()));
    std::string bytes(deflateBound(&state, uLong(text.size())), '\0');
    state.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(text.data()));
    state.avail_in = uInt(text.size());
    state.next_out = reinterpret_cast<Bytef*>(bytes.data());
    state.avail_out = uInt(bytes.size());
    EXPECT_EQ(deflate(&state, Z_FINISH), Z_STREAM_END);
    bytes.resize(state.total_out);
    deflateEnd(&state);
    return bytes;
}

/** What comes out of stored bytes, read in pieces of a size. */
std::string inflated(const std::string& stored, int32_t piece, int64_t originalSize = -1) {
    const OPtr<FCompressionEngine> engine(new ZLib::ZLibEngine);
    FCompressionStream stream(streamOf(stored), engine);
    EXPECT_TRUE(stream.beginDecompress(originalSize));
    std::string text, block(size_t(piece), '\0');
    for (int64_t size; (size = stream.readRaw(block.data(), piece)) > 0;)
        text.append(block, 0, size_t(size));
    EXPECT_EQ(stream.tell(), int64_t(text.size()));
    return text;
}

TEST(ZLib, WritesWhatZlibWritesAtTheSameLevel) {
    const std::pair<float, int> rows[] = {
        {-1,    -1},
        {0,     0 },
        {0.1f,  0 },
        {0.5f,  4 },
        {0.99f, 8 },
        {1,     9 },
        {7,     9 }
    };
    for (const auto& [quality, level] : rows)
        for (const size_t size : {0, 1, 65535, 65536, 200000}) {
            SCOPED_TRACE(testing::Message() << quality << " " << size);
            const std::string text = sampleOf(size);
            FMemoryStream stored;
            const OPtr<FMemoryStream> source = streamOf(text);
            const OPtr<ZLib::ZLibEngine> engine(new ZLib::ZLibEngine);
            ASSERT_TRUE(FCompressData(source, &stored, engine, quality));
            // level 0 is cut up as the output has room
            EXPECT_TRUE(level == 0 || textOf(stored) == deflated(text, level));
            EXPECT_TRUE(size < 2 || (level == 0) == (stored.getSize() > int64_t(size)));
            EXPECT_TRUE(inflated(textOf(stored), 1000) == text);
        }
}

TEST(ZLib, WhatIsFlushedCanBeRead) {
    FMemoryStream stored;
    const OPtr<ZLib::ZLibEngine> engine(new ZLib::ZLibEngine);
    FCompressionStream stream(&stored, engine);
    EXPECT_FALSE(stream.writeInt32(1));  // not begun
    ASSERT_TRUE(stream.beginCompress(1));
    const std::string text = sampleOf(300000);
    for (const size_t size : {0, 1, 100, 300000}) {
        const int64_t before = stream.tell(), more = int64_t(size) - before;
        EXPECT_EQ(stream.writeRaw(text.data() + before, more), more);
        EXPECT_TRUE(stream.flush() && stream.flush());
        EXPECT_TRUE(inflated(textOf(stored), 777) == text.substr(0, size));
    }
    EXPECT_EQ(stream.seek(0, kFromCurrent), 300000);
    EXPECT_EQ(stream.seek(0, kFromStart), -1);
    EXPECT_TRUE(stream.finish() && stream.finish());
}

TEST(ZLib, DamagedInputEndsWithAShortCount) {
    const std::string text = sampleOf(3000), stored = deflated(text, 6);
    for (size_t cut = 0; cut < stored.size(); ++cut) {
        const std::string read = inflated(stored.substr(0, cut), 100);
        ASSERT_TRUE(text.starts_with(read)) << cut;
    }
    std::mt19937 random(5);
    for (int32_t i = 0; i < 2000; ++i) {
        std::string damaged = stored;
        damaged[random() % damaged.size()] ^= char(1 << random() % 8);
        ASSERT_LE(inflated(damaged, 100 + int32_t(random() % 5000)).size(), stored.size() * 1032 + 64);
    }
    EXPECT_EQ(inflated(deflated(text, 6, "gain "), 100), "");  // wants a dictionary, and would go on wanting
    EXPECT_EQ(inflated(stored + stored, 100), text);
}

TEST(ZLib, ADeclaredSizeIsBelievedWithinReason) {
    const std::string stored = deflated(std::string(5'000'000, '\0'), 9);
    EXPECT_EQ(inflated(stored, 1 << 20).size(), 5'000'000u);
    EXPECT_EQ(inflated(stored, 1 << 20, 1000).size(), 1000u);
    EXPECT_EQ(inflated(stored, 1 << 20, 0).size(), 0u);
    const OPtr<ZLib::ZLibEngine> engine(new ZLib::ZLibEngine);
    FCompressionStream stream(streamOf("12345"), engine);
    stream.beginDecompress(INT64_MAX);
    EXPECT_EQ(stream.getOriginalSize(), 5 * 1032 + 64);
}

TEST(ZLib, AFullTargetIsAFailureAtOnce) {
    const OPtr<ZLib::ZLibEngine> engine(new ZLib::ZLibEngine);
    char room[70000];
    FMemoryStream small(room, sizeof room);
    const std::string text = sampleOf(2'000'000);
    EXPECT_FALSE(FCompressData(streamOf(text), &small, engine, 0));
    FMemoryStream tiny(room, 100);
    EXPECT_FALSE(FCompressData(streamOf(text.substr(0, 1000)), &tiny, engine, 0));  // only the end doesn't fit
    FMemoryStream output(room, 100);
    EXPECT_FALSE(FDecompressData(streamOf(deflated(text, 1)), &output, engine));
    FCompressionStream stream(&tiny, engine);
    ASSERT_TRUE(stream.beginCompress(0));
    stream.writeRaw(text.data(), 1000);
    EXPECT_FALSE(stream.flush() || stream.verify() || stream.writeInt32(1) || stream.finish());
}

TEST(ZLib, AHookHearsOfEachBlockAndStops) {
    struct : UProgressHook {
        bool setProgress(int32_t) override { return ++calls < limit; }
        int32_t limit, calls = 0;
    } hook;
    const OPtr<ZLib::ZLibEngine> engine(new ZLib::ZLibEngine);
    const std::string text = sampleOf(0x40000);
    for (hook.limit = 2; hook.limit < 10000; hook.limit *= 500) {
        FMemoryStream stored, back;
        hook.calls = 0;
        EXPECT_EQ(FCompressData(streamOf(text), &stored, engine, 1, &hook), hook.limit > 2);
        EXPECT_EQ(hook.calls, std::min(hook.limit, 4));
        hook.calls = 0;
        EXPECT_EQ(FDecompressData(streamOf(deflated(text, 6)), &back, engine, &hook, 1000), hook.limit > 2);
        EXPECT_TRUE(textOf(back) == text.substr(0, hook.limit > 2 ? text.size() : 2000));
    }
}

TEST(ZLib, TheDefaultEngineUnpacksAndMeasures) {
    OneTimeProcedure::initialize(0);
    const std::string text = sampleOf(100000);
    const OPtr<FMemoryStream> source = streamOf(text);
    source->seek(10, kFromStart);
    EXPECT_DOUBLE_EQ(FGetCompressionRatio(source, nullptr, 0.5f),
                     double(deflated(text.substr(10, 8192), 4).size()) / 8192);
    EXPECT_EQ(source->tell(), 10);
    FMemoryStream empty;
    EXPECT_EQ(FGetCompressionRatio(&empty, nullptr, 0.5f), 1.0);

    auto* compressed = new FCompressionStream(streamOf(deflated(text, 6)));
    ASSERT_TRUE(compressed->beginDecompress(100000));
    EXPECT_EQ(createUncompressedStream(source), source);
    source->rewind();
    EXPECT_TRUE(OPtr<FStream>(createUncompressedStream(compressed))->isStreamEqual(*source));
    FCompressionStream again(streamOf(deflated(text, 6)));
    again.beginDecompress();
    EXPECT_TRUE(FStreamUnpacker(&again).getStream()->isStreamEqual(*source));
}

/** Its text is read to the end, wherever the reader's buffer happens to cut it. */
TEST(ZLib, HoldsArchives) {
    for (uint32_t size = 940; size < 960; ++size) {
        const OPtr<FMemoryStream> packed(new FMemoryStream);
        const OPtr<ZLib::ZLibEngine> engine(new ZLib::ZLibEngine);
        const OPtr<FAttributes> bag(new FAttributes), read(new FAttributes);
        const std::string bytes(size, 'q');
        bag->setBinary("bytes", bytes.data(), size);
        const OPtr<FCompressionStream> in(new FCompressionStream(packed, engine));
        in->beginCompress(0.5F);
        FXmlArchive writer(in, true);
        EXPECT_TRUE(writer.saveAttributes("Test", *bag));
        in->finish();
        packed->rewind();
        const OPtr<FCompressionStream> out(new FCompressionStream(packed, engine));
        out->beginDecompress();
        FXmlArchive reader(out, false);
        EXPECT_TRUE(reader.loadAttributes("Test", *read));
        EXPECT_EQ(read->getBinarySize("bytes"), size);
    }
}
}  // namespace
}  // namespace Tessarine
