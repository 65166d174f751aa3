#include "base/source/fstreamer.h"
#include "tests/support/memorystreamer.h"
#include <gtest/gtest.h>
#include <memory>

namespace Tessarine {
namespace {
using std::string_literals::operator""s;

TEST(Streamer, ValuesPassInBothByteOrders) {
    MemoryStreamer little, big;
    big.byteOrder = 1;
    const auto pass = [&](auto write, auto read, auto value) {
        for (MemoryStreamer* stream : {&little, &big}) {
            const int64_t start = stream->cursor;
            EXPECT_TRUE((stream->*write)(value));
            stream->cursor = start;
            auto got = decltype(value)();
            EXPECT_TRUE((stream->*read)(got));
            EXPECT_EQ(got, value);
        }
    };
    pass(&FStreamer::writeChar8, &FStreamer::readChar8, 'a');
    pass(&FStreamer::writeUChar8, &FStreamer::readUChar8, uint8_t(0xFE));
    pass(&FStreamer::writeChar16, &FStreamer::readChar16, u'\u1234');
    pass(&FStreamer::writeInt16, &FStreamer::readInt16, int16_t(-2));
    pass(&FStreamer::writeInt16u, &FStreamer::readInt16u, uint16_t(0xABCD));
    pass(&FStreamer::writeInt32, &FStreamer::readInt32, 0x01020304);
    pass(&FStreamer::writeInt32u, &FStreamer::readInt32u, 0xFFFEFDFC);
    pass(&FStreamer::writeInt64, &FStreamer::readInt64, int64_t(0x0102030405060708));
    pass(&FStreamer::writeInt64u, &FStreamer::readInt64u, UINT64_MAX - 1);
    pass(&FStreamer::writeFloat, &FStreamer::readFloat, 1.5f);
    pass(&FStreamer::writeDouble, &FStreamer::readDouble, -2.25);
    pass(&FStreamer::writeBool, &FStreamer::readBool, true);
    EXPECT_EQ(little.bytes.substr(0, 12), "a\xFE\x34\x12\xFE\xFF\xCD\xAB\x04\x03\x02\x01");
    EXPECT_EQ(big.bytes.substr(0, 12), "a\xFE\x12\x34\xFF\xFE\xAB\xCD\x01\x02\x03\x04");
    EXPECT_EQ(little.bytes.substr(12 + 4 + 8 + 8), "\0\0\xC0\x3F\0\0\0\0\0\0\2\xC0\1\0"s);
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
        EXPECT_FALSE(cut.readInt32(part[0]) || part[0] || cut.readBool(flag) || flag);
        MemoryStreamer full;
        full.byteOrder = order;
        full.room = 3999;
        EXPECT_FALSE(full.writeInt32Array(values.data(), 1000));
        EXPECT_TRUE(full.readDoubleArray(nullptr, 0) && full.writeFloatArray(nullptr, -1));
    }
}

TEST(Streamer, SkipsAndPads) {
    MemoryStreamer stream;
    EXPECT_TRUE(stream.pad(2500) && stream.writeChar8('x'));
    EXPECT_EQ(stream.bytes, std::string(2500, '\0') + "x");
    stream.cursor = 0;
    EXPECT_TRUE(stream.skip(2500) && stream.skip(-1) && stream.pad(-1));
    EXPECT_EQ(stream.cursor, 2500);
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

TEST(Streamer, ReadsLinesOfBytes) {
    const std::tuple<std::string, int64_t, const char*, int64_t> rows[] = {
        {"ab\r\ncd", 20, "ab",     4},
        {"ab\0cd"s,  20, "ab",     3},
        {"abc",      4,  "abc",    3},
        {"ab\r\n",   4,  "ab\r",   3},
        {"abc",      1,  "",       0},
        {"a\rb\n",   20, "a\rb\n", 4},
    };
    for (const auto& [bytes, size, expected, cursor] : rows) {
        SCOPED_TRACE(bytes);
        MemoryStreamer stream(bytes);
        char text[20] = "untouched";
        EXPECT_EQ(stream.readString8(text, size), int64_t(strlen(expected)));
        EXPECT_STREQ(text, expected);
        EXPECT_EQ(stream.cursor, cursor);
    }
    EXPECT_EQ(MemoryStreamer("x").readString8(nullptr, 5), 0);
}

TEST(Streamer, Utf8Strings) {
    const std::pair<const tchar*, std::string> rows[] = {
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
    EXPECT_EQ(unmarked.cursor, 27) << "behind its end";
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
        EXPECT_EQ(stream.bytes[size_t(stream.cursor)], '!');
    }
}

TEST(StreamSizeHolder, NeverLeavesTheStreamOrGoesBack) {
    // what beginRead finds, and where the stream is behind endRead
    const std::tuple<const char*, std::string, int32_t, int64_t> rows[] = {
        {"all the rest",      "\3\0\0\0abc"s,              3,  7},
        {"one too long",      "\4\0\0\0abc"s,              -1, 4},
        {"far too long",      "\xFF\xFF\xFF\x7F"s + "abc", -1, 4},
        {"negative",          "\xF0\xFF\xFF\xFF"s + "abc", -1, 4},
        {"a size that's cut", "\1\0\0"s,                   -1, 3},
    };
    for (const auto& [name, bytes, size, cursor] : rows) {
        SCOPED_TRACE(name);
        MemoryStreamer stream(bytes);
        FStreamSizeHolder section(stream);
        EXPECT_EQ(section.beginRead(), size);
        EXPECT_EQ(section.endRead(), size >= 0);
        EXPECT_EQ(stream.cursor, cursor);
    }
    MemoryStreamer full;
    full.room = 2;
    EXPECT_FALSE(FStreamSizeHolder(full).beginWrite());
}
}  // namespace
}  // namespace Tessarine
