#include "storage/fmstream.h"
#include "pluginterfaces/base/smartpointer.h"
#include <cstdlib>
#include <gtest/gtest.h>
#include <limits>
#include <string>

namespace Tessarine {
namespace {

std::string contentOf(FMemoryStream& stream) {
    return {stream.getData(), size_t(stream.getSize())};
}

TEST(FMemoryStream, GrowsReadsAndOverwrites) {
    FMemoryStream stream;
    const std::string block(3000, 'x');
    for (int32_t i = 0; i < 5; ++i)
        EXPECT_EQ(stream.writeRaw(block.data(), 3000), 3000);
    stream.seek(-3, kFromEnd);
    EXPECT_EQ(stream.writeRaw("abcdef", 6), 6);
    EXPECT_EQ(stream.getSize(), 15003);
    stream.seek(-7, kFromCurrent);
    char bytes[10];
    EXPECT_EQ(stream.readRaw(bytes, 10), 7);
    EXPECT_EQ(std::string(bytes, 7), "xabcdef");
    EXPECT_EQ(stream.readRaw(bytes, 10), 0);
    stream.rewind();
    EXPECT_EQ(stream.tell(), 0);
}

TEST(FMemoryStream, GapsAreZeroAndPlacesBounded) {
    FMemoryStream stream;
    stream.setSize(9000);
    std::memset(stream.getData(), 'x', 9000);
    stream.reset();
    stream.writeRaw("ab", 2);
    EXPECT_EQ(stream.seek(3, kFromCurrent), 5);
    char byte;
    EXPECT_EQ(stream.readRaw(&byte, 1), 0);
    stream.writeRaw("c", 1);
    EXPECT_EQ(contentOf(stream), std::string("ab\0\0\0c", 6));
    EXPECT_EQ(stream.seek(-100, kFromCurrent), 0);
    constexpr int64_t kFar = std::numeric_limits<int64_t>::max();
    EXPECT_GT(stream.seek(kFar, kFromEnd), 0);
    EXPECT_EQ(stream.writeRaw("c", 1), 0);
    EXPECT_TRUE(stream.getError());
    stream.rewind();
    EXPECT_EQ(stream.writeRaw("c", 1), 0);  // the error is kept
    stream.setSize(0);
    EXPECT_EQ(stream.writeRaw("c", 1), 1);
}

TEST(FMemoryStream, AViewNeverGrows) {
    char memory[6] = "12345";
    FMemoryStream stream(memory, 5);
    stream.seek(3, kFromStart);
    EXPECT_EQ(stream.writeRaw("ab", 2), 2);
    EXPECT_STREQ(memory, "123ab");
    EXPECT_FALSE(stream.getError());
    EXPECT_EQ(stream.writeRaw("c", 1), 0);
    EXPECT_TRUE(stream.getError());
    stream.rewind();
    EXPECT_EQ(stream.writeRaw("c", 1), 0);
    EXPECT_STREQ(memory, "123ab");
    EXPECT_EQ(stream.setStreamSize(0), kResultOk);
    EXPECT_EQ(stream.writeRaw("own", 3), 3);
    EXPECT_EQ(contentOf(stream), "own");
}

TEST(FMemoryStream, EndsAtTheCursor) {
    for (const bool freeing : {true, false}) {
        FMemoryStream stream;
        stream.setSize(20000);
        stream.writeRaw("abcdef", 6);
        stream.seek(3, kFromStart);
        freeing ? stream.truncate() : stream.truncateToCursor();
        EXPECT_EQ(contentOf(stream), "abc");
        EXPECT_EQ(stream.writeRaw("x", 1), 1);
        stream.rewind();
        freeing ? stream.truncate() : stream.truncateToCursor();
        EXPECT_EQ(stream.getSize(), 0);
        EXPECT_EQ(stream.getData() == nullptr, freeing);
    }
}

TEST(FMemoryStream, HandsItsMemoryOver) {
    FMemoryStream from, to;
    from.writeRaw("abc", 3);
    to.writeRaw("lost", 4);
    to.takeOver(from);
    EXPECT_EQ(from.getData(), nullptr);
    EXPECT_EQ(contentOf(to), "abc");
    EXPECT_EQ(to.writeRaw("d", 1), 1);
    char* memory = static_cast<char*>(to.pass());
    EXPECT_EQ(std::string(memory, 4), "abcd");
    EXPECT_EQ(to.getSize(), 0);
    std::free(memory);
}

TEST(FMemoryStream, SpeaksAsAComponent) {
    OPtr<FMemoryStream> stream(new FMemoryStream);
    stream->byteOrder = 1;
    EXPECT_TRUE(stream->writeInt32(0x01020304));
    EXPECT_EQ(contentOf(*stream), "\x01\x02\x03\x04");
    FUnknownPtr<IBStream> face(static_cast<CmObject*>(stream.get()));
    ASSERT_TRUE(face);
    char bytes[8];
    int32_t count = -1;
    int64_t place = -1;
    EXPECT_EQ(face->seek(1, IBStream::kSeekSet, &place), kResultOk);
    EXPECT_EQ(place, 1);
    EXPECT_EQ(face->read(bytes, 8, &count), kResultOk);
    EXPECT_EQ(count, 3);
    EXPECT_EQ(face->read(bytes, 8, &count), kResultFalse);
    EXPECT_EQ(count, 0);
    EXPECT_EQ(face->read(bytes, -8, nullptr), kResultFalse);
    EXPECT_EQ(face->write(bytes, 2, nullptr), kResultOk);
    EXPECT_EQ(face->tell(&place), kResultOk);
    EXPECT_EQ(place, 6);
    EXPECT_EQ(face->seek(0, 3, &place), kInvalidArgument);
    EXPECT_EQ(place, 6);
}

}  // namespace
}  // namespace Tessarine
