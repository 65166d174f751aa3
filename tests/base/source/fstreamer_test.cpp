#include "base/source/fstreamer.h"
#include "tests/support/memorystreamer.h"
#include <gtest/gtest.h>
#include <memory>

namespace Tessarine {
namespace {
using std::string_literals::operator""s;

void writeOneOfEach(FStreamer& stream) {
    EXPECT_TRUE(stream.writeChar8('a') && stream.writeUChar8(0xFE) && stream.writeChar16(u'\u1234'));
    EXPECT_TRUE(stream.writeInt16(-2) && stream.writeInt16u(0xABCD) && stream.writeInt32(0x01020304));
    EXPECT_TRUE(stream.writeInt32u(0xFFFEFDFC) && stream.writeInt64(0x0102030405060708) &&
                stream.writeInt64u(UINT64_MAX - 1));
    EXPECT_TRUE(stream.writeFloat(1.5f) && stream.writeDouble(-2.25) && stream.writeBool(true) &&
                stream.writeBool(false));
}

void readOneOfEach(FStreamer& stream) {
    char c;
    uint8_t u8;
    tchar c16;
    int16_t i16;
    uint16_t u16;
    int32_t i32;
    uint32_t u32;
    int64_t i64;
    uint64_t u64;
    float f;
    double d;
    bool yes, no;
    EXPECT_TRUE(stream.readChar8(c) && stream.readUChar8(u8) && stream.readChar16(c16) && stream.readInt16(i16));
    EXPECT_TRUE(stream.readInt16u(u16) && stream.readInt32(i32) && stream.readInt32u(u32) && stream.readInt64(i64));
    EXPECT_TRUE(stream.readInt64u(u64) && stream.readFloat(f) && stream.readDouble(d) && stream.readBool(yes) &&
                stream.readBool(no));
    EXPECT_EQ(std::tuple(c, u8, c16, i16, u16, i32, u32),
              std::tuple('a', 0xFE, u'\u1234', -2, 0xABCD, 0x01020304, 0xFFFEFDFC));
    EXPECT_EQ(std::tuple(i64, u64, f, d, yes, no),
              std::tuple(0x0102030405060708, UINT64_MAX - 1, 1.5f, -2.25, true, false));
}

TEST(Streamer, ValuesPassInBothByteOrders) {
    MemoryStreamer little, big;
    big.byteOrder = 1;
    for (MemoryStreamer* stream : {&little, &big}) {
        writeOneOfEach(*stream);
        ASSERT_EQ(stream->bytes.size(), 1u + 1 + 2 + 2 + 2 + 4 + 4 + 8 + 8 + 4 + 8 + 2 + 2);
        stream->cursor = 0;
        readOneOfEach(*stream);
    }
    EXPECT_EQ(little.bytes.substr(0, 12), "a\xFE\x34\x12\xFE\xFF\xCD\xAB\x04\x03\x02\x01");
    EXPECT_EQ(big.bytes.substr(0, 12), "a\xFE\x12\x34\xFF\xFE\xAB\xCD\x01\x02\x03\x04");
    EXPECT_EQ(little.bytes.substr(little.bytes.size() - 4), "\1\0\0\0"s);
}

TEST(Streamer, ArraysPassWholeAndShort) {
    std::vector<int32_t> values(1000), read(1000, 7);  // more than one block
    for (int32_t i = 0; i < 1000; ++i)
        values[size_t(i)] = i * 65537 - 500;
    for (const int16_t order : {0, 1}) {
        MemoryStreamer stream;
        stream.byteOrder = order;
        ASSERT_TRUE(stream.writeInt32Array(values.data(), 1000));
        stream.cursor = 0;
        ASSERT_TRUE(stream.readInt32Array(read.data(), 1000));
        EXPECT_EQ(read, values);

        MemoryStreamer cut(stream.bytes.substr(0, 7));
        cut.byteOrder = order;
        std::vector<int32_t> part(3, 7);
        EXPECT_FALSE(cut.readInt32Array(part.data(), 3));
        EXPECT_EQ(part, (std::vector<int32_t>{values[0], 0, 0}));
        cut.cursor = 4;
        bool flag = true;
        EXPECT_FALSE(cut.readInt32(part[0]) || cut.readBool(flag));
        EXPECT_TRUE(part[0] == 0 && !flag);
        MemoryStreamer full;
        full.byteOrder = order;
        full.room = 3999;
        EXPECT_FALSE(full.writeInt32Array(values.data(), 1000));
    }
    MemoryStreamer none;
    EXPECT_TRUE(none.readDoubleArray(nullptr, 0) && none.writeFloatArray(nullptr, -1));
}

TEST(Streamer, SkipsAndPads) {
    MemoryStreamer stream;
    EXPECT_TRUE(stream.pad(2500) && stream.writeChar8('x'));
    EXPECT_EQ(stream.bytes, std::string(2500, '\0') + "x");
    stream.cursor = 0;
    char c;
    EXPECT_TRUE(stream.skip(2500) && stream.readChar8(c));
    EXPECT_EQ(c, 'x');
    EXPECT_TRUE(stream.skip(-1) && stream.pad(-1));
    EXPECT_EQ(stream.cursor, 2501);
    EXPECT_FALSE(stream.skip(INT64_MAX));
}

TEST(Streamer, Str8WithItsSize) {
    MemoryStreamer stream;
    EXPECT_TRUE(stream.writeStr8(nullptr) && stream.writeStr8("abc"));
    EXPECT_EQ(stream.bytes, std::string(4, '\0') + "\4\0\0\0abc\0"s);
    EXPECT_EQ(FStreamer::getStr8Size("abc"), 8);
    stream.cursor = 0;
    EXPECT_EQ(stream.readStr8(), nullptr);
    EXPECT_STREQ(std::unique_ptr<char[]>(stream.readStr8()).get(), "abc");
    for (const std::string& hostile : {"\xFF\xFF\xFF\x7F"s + "abc", "\xFF\xFF\xFF\xFF"s + "abc", "\1\0"s})
        EXPECT_EQ(MemoryStreamer(hostile).readStr8(), nullptr);
    EXPECT_STREQ(std::unique_ptr<char[]>(MemoryStreamer("\2\0\0\0ab"s).readStr8()).get(), "ab");
}

struct LineRow {
    std::string bytes;
    int64_t size;
    const char* text;
    int64_t cursor;
};

TEST(Streamer, ReadsLinesOfBytes) {
    const LineRow rows[] = {
        {"ab\r\ncd", 20, "ab",     4},
        {"ab\ncd",   20, "ab\n",   3},
        {"ab\0cd"s,  20, "ab",     3},
        {"abcdef",   4,  "abc",    3},
        {"abc",      4,  "abc",    3},
        {"ab\r\n",   4,  "ab\r",   3},
        {"abc",      1,  "",       0},
        {"\r\nx",    20, "",       2},
        {"a\rb\n",   20, "a\rb\n", 4},
    };
    for (const LineRow& row : rows) {
        SCOPED_TRACE(row.bytes);
        MemoryStreamer stream(row.bytes);
        char text[20] = "untouched";
        EXPECT_EQ(stream.readString8(text, row.size), int64_t(strlen(row.text)));
        EXPECT_STREQ(text, row.text);
        EXPECT_EQ(stream.cursor, row.cursor);
    }
    EXPECT_EQ(MemoryStreamer("x").readString8(nullptr, 5), 0);
}

TEST(Streamer, Utf8Strings) {
    const std::pair<const tchar*, std::string> rows[] = {
        {u"plain",        "plain\0"s                           },
        {u"\u00E4\u65E5", "\xEF\xBB\xBF\xC3\xA4\xE6\x97\xA5\0"s},
        {u"",             "\0"s                                },
    };
    for (const auto& [text, bytes] : rows) {
        MemoryStreamer stream;
        ASSERT_TRUE(stream.writeStringUtf8(text));
        EXPECT_EQ(stream.bytes, bytes);
        stream.cursor = 0;
        tchar read[20] = u"old";
        ASSERT_TRUE(stream.readStringUtf8(read, 20));
        EXPECT_EQ(std::u16string(read), text);
    }
    tchar read[4];
    MemoryStreamer unmarked(
        "\x8A"
        "bcdefghijklmnopqrstuvwxyz\0z"s);
    EXPECT_TRUE(unmarked.readStringUtf8(read, 4));
    EXPECT_EQ(std::u16string(read), u"\u00E4bc");
    char next;
    EXPECT_TRUE(unmarked.readChar8(next));
    EXPECT_EQ(next, 'z');
    MemoryStreamer longText(
        "\xEF\xBB\xBF"
        "a\U0001F600\U0001F600\U0001F600\U0001F600\U0001F600\0"s);
    EXPECT_TRUE(longText.readStringUtf8(read, 4));
    EXPECT_EQ(std::u16string(read), u"a\U0001F600");
    for (const int32_t room : {1, 2}) {  // the character behind the last one that fits is not looked at in half
        MemoryStreamer cut(room == 1 ? "\xEF\xBB\xBF\U0001F600\0"s : "\xEF\xBB\xBF\u65E5\U0001F600\0"s);
        EXPECT_TRUE(cut.readStringUtf8(read, room));
        EXPECT_EQ(std::u16string(read), std::u16string(u"\u65E5", size_t(room - 1)));
    }
    for (const std::string& bad : {"\xEF\xBB\xBF\xC3\0"s, "no end"s, ""s}) {
        EXPECT_FALSE(MemoryStreamer(bad).readStringUtf8(read, 4));
        EXPECT_EQ(read[0], 0);
    }
}

TEST(StreamSizeHolder, SectionsMayBeLeftUnread) {
    for (const int16_t order : {0, 1}) {
        MemoryStreamer stream("head");
        stream.byteOrder = order;
        stream.cursor = 4;
        FStreamSizeHolder outer(stream), inner(stream);
        EXPECT_EQ(outer.endWrite(), 0);
        outer.beginWrite();
        stream.writeInt32(1);
        inner.beginWrite();
        EXPECT_TRUE(stream.pad(5));
        EXPECT_EQ(inner.endWrite(), 5);
        EXPECT_EQ(outer.endWrite(), 4 + 4 + 5);
        stream.writeChar8('!');
        EXPECT_EQ(stream.bytes.substr(4, 4), order ? "\0\0\0\x0D"s : "\x0D\0\0\0"s);

        stream.cursor = 4;
        FStreamSizeHolder section(stream);
        EXPECT_EQ(section.beginRead(), 13);
        int32_t first;
        EXPECT_TRUE(stream.readInt32(first));
        section.endRead();
        char behind;
        EXPECT_TRUE(stream.readChar8(behind));
        EXPECT_EQ(behind, '!');
    }
}

struct SectionRow {
    const char* name;
    std::string bytes;
    int32_t size;    // what beginRead finds
    int64_t cursor;  // behind endRead
};

TEST(StreamSizeHolder, NeverLeavesTheStreamOrGoesBack) {
    const SectionRow rows[] = {
        {"all the rest",      "\3\0\0\0abc"s,              3,  7},
        {"one too long",      "\4\0\0\0abc"s,              -1, 4},
        {"far too long",      "\xFF\xFF\xFF\x7F"s + "abc", -1, 4},
        {"negative",          "\xF0\xFF\xFF\xFF"s + "abc", -1, 4},
        {"a size that's cut", "\1\0\0"s,                   -1, 3},
    };
    for (const SectionRow& row : rows) {
        SCOPED_TRACE(row.name);
        MemoryStreamer stream(row.bytes);
        FStreamSizeHolder section(stream);
        EXPECT_EQ(section.beginRead(), row.size);
        EXPECT_EQ(section.endRead(), row.size >= 0);
        EXPECT_EQ(stream.cursor, row.cursor);
    }
    MemoryStreamer full;
    full.room = 2;
    EXPECT_FALSE(FStreamSizeHolder(full).beginWrite());
}
}  // namespace
}  // namespace Tessarine
