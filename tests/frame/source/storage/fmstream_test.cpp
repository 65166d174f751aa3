#include "storage/fmstream.h"
#include "archiveprobes.h"
#include "collect/cmbuffer.h"
#include "pluginterfaces/base/smartpointer.h"
#include "storage/fpersistent.h"
#include <cstdlib>
#include <random>

namespace Tessarine {
namespace {
constexpr int64_t kFar = INT64_MAX;

/** What any stream in memory does, as a plain text does it: writing past the end fills with zeros. */
template <class Stream>
void agreesWithText(Stream& stream) {
    std::mt19937 random(1);
    std::string model;
    size_t place = 0;
    for (int32_t step = 0; step < 3000; ++step) {
        const std::string bytes(random() % 3 ? random() % 9 : 4000 + random() % 3000, char('a' + step % 26));
        switch (random() % 5) {
        case 0:
            place = random() % (model.size() + 100);
            ASSERT_EQ(stream.seek(int64_t(place) - int64_t(model.size()), kFromEnd), int64_t(place));
            break;
        case 1: {
            std::string read(bytes.size(), '?');
            const std::string expected = place < model.size() ? model.substr(place, read.size()) : "";
            read.resize(size_t(stream.readRaw(read.data(), int64_t(read.size()))));
            ASSERT_EQ(read, expected);
            place += read.size();
            break;
        }
        case 2:
            ASSERT_TRUE(stream.writeChar8('#'));
            model.resize(std::max(model.size(), place + 1));
            model[place++] = '#';
            break;
        default:
            ASSERT_EQ(stream.writeRaw(bytes.data(), int64_t(bytes.size())), int64_t(bytes.size()));
            if (!bytes.empty())
                model.resize(std::max(model.size(), place + bytes.size()));
            model.replace(place, bytes.size(), bytes);
            place += bytes.size();
        }
        ASSERT_EQ(stream.tell(), int64_t(place));
    }
    stream.rewind();
    std::string all(model.size() + 1, '?');
    all.resize(size_t(stream.readRaw(all.data(), int64_t(all.size()))));
    EXPECT_TRUE(all == model);
}

TEST(StreamsInMemory, AgreeWithAPlainText) {
    FMemoryStream memory;
    agreesWithText(memory);
    CmBuffer buffer;
    FBufferStream overBuffer(buffer);
    agreesWithText(overBuffer);
}

TEST(StreamsInMemory, PlacesAndFailuresAreBounded) {
    FMemoryStream memory;
    CmBuffer buffer;
    FBufferStream overBuffer(buffer);
    for (FStream* stream : {static_cast<FStream*>(&memory), static_cast<FStream*>(&overBuffer)}) {
        EXPECT_EQ(stream->writeRaw("ab", 2), 2);
        EXPECT_EQ(stream->seek(-kFar - 1, kFromCurrent), 0);
        EXPECT_GT(stream->seek(kFar, kFromEnd), 0);
        char byte;
        EXPECT_EQ(stream->readRaw(&byte, 1), 0);
        EXPECT_EQ(stream->writeRaw("c", 1), 0);
        EXPECT_EQ(stream->writeRaw("c", kFar), 0);
        EXPECT_FALSE(stream->verify() || stream->flush());
        stream->rewind();
        EXPECT_FALSE(stream->writeRaw("c", 1) || stream->writeInt32(1));  // the error is kept, and so is what stands
    }
    EXPECT_TRUE(static_cast<const Buffer&>(buffer) == Buffer("ab", 2));
    EXPECT_FALSE(memory.writeInt32(1));  // the inlined path
    memory.setSize(0);
    EXPECT_TRUE(memory.writeInt32(1));
}

TEST(FMemoryStream, TypedValuesPassOnEveryPath) {
    for (const int16_t order : {0, 1}) {
        FMemoryStream stream;
        stream.byteOrder = order;
        FStreamer& slow = stream;
        for (int32_t i = 0; i < 3000; ++i)  // over two steps of growth
            EXPECT_TRUE(i % 2 ? stream.writeInt32(i) : slow.writeInt32(i));
        stream.seek(4, kFromCurrent);
        EXPECT_TRUE(stream.writeDouble(1.5));
        stream.rewind();
        for (int32_t i = 0, read; i < 3001; ++i) {
            EXPECT_TRUE(i % 3 ? stream.readInt32(read) : slow.readInt32(read));
            ASSERT_EQ(read, i % 3000);  // and the gap
        }
        double number;
        EXPECT_TRUE(stream.readDouble(number) && number == 1.5);
        EXPECT_FALSE(stream.readDouble(number));
        EXPECT_EQ(number, 0);
    }
}

TEST(FMemoryStream, AViewNeverGrows) {
    char memory[6] = "12345";
    FMemoryStream stream(memory, 5);
    stream.seek(3, kFromStart);
    EXPECT_EQ(stream.writeRaw("ab", 2), 2);
    EXPECT_TRUE(stream.verify());
    EXPECT_EQ(stream.writeRaw("c", 1), 0);
    EXPECT_STREQ(memory, "123ab");
    EXPECT_EQ(stream.setStreamSize(3), kResultFalse);  // five bytes are no whole step
    EXPECT_EQ(stream.getSize(), 5);
    EXPECT_EQ(stream.setStreamSize(0), kResultOk);
    EXPECT_EQ(stream.writeRaw("own", 3), 3);
    EXPECT_EQ(textOf(stream), "own");
    FMemoryStream values(memory, 5);
    values.reset();
    EXPECT_TRUE(values.writeInt32(1) && !values.writeInt32(2));
    EXPECT_EQ(values.getSize(), 4);
}

TEST(FMemoryStream, EndsAtTheCursorAndHandsItsMemoryOver) {
    for (const bool freeing : {true, false}) {
        FMemoryStream stream, to;
        stream.setSize(20000);
        stream.writeRaw("abcdef", 6);
        for (const size_t end : {3, 30000, 3}) {  // behind the end too
            stream.seek(static_cast<int64_t>(end), kFromStart);
            freeing ? stream.truncate() : stream.truncateToCursor();
            EXPECT_EQ(textOf(stream), "abc" + std::string(end - 3, '\0'));
        }
        to.writeRaw("lost", 4);
        to.takeOver(stream);
        EXPECT_EQ(stream.getData(), nullptr);
        EXPECT_TRUE(to.writeInt16(0x6261));
        char* memory = static_cast<char*>(to.pass());
        EXPECT_EQ(std::string(memory, 5), "abcab");
        std::free(memory);
        EXPECT_EQ(to.getSize(), 0);
        EXPECT_TRUE(to.writeInt16(0));
    }
}

TEST(FMemoryStream, IsStoredAndRefusesSizesThatLie) {
    FMemoryStream source, archived, restored;
    source.setSize(0x18001);
    std::memset(source.getData(), 'x', 0x18001);
    ValueArchive archive(archived);
    ASSERT_TRUE(source.externalize(archive));
    for (const int32_t claim : {0x18001, 0x18000, 0, 0x18002, INT32_MAX, -1}) {
        SCOPED_TRACE(claim);
        archived.rewind();
        archived.writeInt32(claim);
        archived.rewind();
        const bool honest = claim >= 0 && claim <= 0x18001;
        EXPECT_EQ(restored.internalize(archive), honest);
        EXPECT_EQ(restored.getSize(), honest ? claim : 0);
    }
    FAttributes attributes;
    EXPECT_FALSE(restored.restoreAttributes(attributes));
}

TEST(FMemoryStream, SpeaksAsAComponent) {
    const OPtr<FMemoryStream> stream(new FMemoryStream);
    stream->writeInt32(0x04030201);
    const FUnknownPtr<IBStream> face(static_cast<CmObject*>(stream.get()));
    ASSERT_TRUE(face && FUnknownPtr<ISizeableStream>(face) && FUnknownPtr<IMemoryStream>(face)->getSize() == 4);
    char bytes[8];
    int32_t count = -1;
    EXPECT_EQ(face->read(bytes, 8, &count), kResultFalse);
    EXPECT_EQ(count, 0);
    EXPECT_EQ(face->read(bytes, -8, nullptr), kResultFalse);
    EXPECT_EQ(face->seek(0, 3, nullptr), kInvalidArgument);
    IBStreamer streamer(face);
    streamer.byteOrder = 1;
    EXPECT_TRUE(streamer.seek(0, kFromStart) == 0 && streamer.readInt32(count));
    EXPECT_EQ(count, 0x01020304);
    EXPECT_FALSE(streamer.readInt32(count));
    EXPECT_EQ(streamer.writeRaw("abc", 3), 3);
    EXPECT_EQ(streamer.tell(), 7);
}
}  // namespace
}  // namespace Tessarine
