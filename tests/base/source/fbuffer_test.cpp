#include "base/source/fbuffer.h"
#include "base/source/fstring.h"
#include <gtest/gtest.h>
#include <stdlib.h>
#include <string>

namespace Tessarine {
namespace {
std::string bytesOf(const Buffer& buffer) {
    return {buffer.data() ? buffer.data() : "", buffer.getFillSize()};
}
Buffer filled(const std::string& bytes) {
    return Buffer(bytes.data(), uint32_t(bytes.size()));
}

TEST(Buffer, GrowsInSteps) {
    Buffer buffer;
    EXPECT_TRUE(buffer.put('x'));
    buffer.setDelta(0);  // stays as it was
    for (const auto& [wanted, size] : {
             std::pair(1u, 4096u), {4097u, 8192u },
               {10u,   8192u },
               {8193u, 12288u}
    })
        EXPECT_TRUE(buffer.grow(wanted) && buffer.getSize() == size) << wanted;
    EXPECT_FALSE(buffer.grow(UINT32_MAX));  // the next step would not fit a size
    Buffer fine;
    fine.setDelta(3);
    EXPECT_TRUE(fine.put("abcd", 4) && fine.getSize() == 6);
    EXPECT_TRUE(fine.setSize(3) && !fine.setFillSize(4));
    EXPECT_EQ(bytesOf(fine), "abc");
}

TEST(Buffer, TakesInAndGivesOut) {
    Buffer buffer;
    EXPECT_TRUE(buffer.put('a') && buffer.put(uint8_t(0xFE)) && buffer.put(uint16_t(0x4342)) && buffer.put(u'D'));
    EXPECT_TRUE(buffer.put(String("s")) && buffer.put(String(u"w")));
    EXPECT_TRUE(buffer.truncateToFillSize() && buffer.put(buffer.data(), 3));  // moves while it copies itself
    EXPECT_EQ(bytesOf(buffer), std::string("a\xFE\x42\x43\x44\0s\0w\0\0\0a\xFE\x42", 15));

    EXPECT_TRUE(buffer.truncateToFillSize() && buffer.setFillSize(0));
    std::string read(11, '\0');
    for (const uint32_t got : {11u, 4u, 0u})
        EXPECT_EQ(buffer.get(read.data(), 11), got);
    EXPECT_EQ(read.substr(1, 4), "a\xFE\x42\x44");
}

TEST(Buffer, ShiftsAndCopiesInside) {
    Buffer buffer = filled("abcdef");
    buffer.truncateToFillSize();
    buffer.move(2, '-');
    EXPECT_EQ(bytesOf(buffer), "--abcd");
    buffer.move(-3, '+');
    EXPECT_EQ(bytesOf(buffer), "bcd+++");
    buffer.move(INT32_MIN, '.');
    EXPECT_EQ(bytesOf(buffer), "......");

    Buffer text = filled("abcdef");
    EXPECT_TRUE(text.shiftAt(2, -3));
    EXPECT_EQ(bytesOf(text), "abf");
    EXPECT_TRUE(text.shiftAt(1, 2));
    EXPECT_EQ(bytesOf(text).substr(0, 1) + bytesOf(text).substr(3), "abf");
    EXPECT_TRUE(text.shiftAt(1, INT32_MIN));
    EXPECT_EQ(bytesOf(text), "a");
    EXPECT_FALSE(text.shiftAt(2, 1));

    Buffer inside = filled("abcdef");
    inside.truncateToFillSize();
    EXPECT_TRUE(inside.copy(0, 2, 4));
    EXPECT_EQ(bytesOf(inside), "ababcd");
    EXPECT_FALSE(inside.copy(3, 0, 4));
    EXPECT_FALSE(inside.copy(0, UINT32_MAX, 4));
    EXPECT_TRUE(inside.copy(0, 6, 6));
    EXPECT_EQ(std::string(inside + 6, 6), "ababcd");
    inside.setFillSize(1);
    inside.fillup('z');
    EXPECT_EQ(std::string(inside.data(), 3), "azz");
}

TEST(Buffer, CopiesAndHandsOver) {
    Buffer buffer = filled("abc");
    Buffer copy(buffer), assigned;
    assigned = copy;
    EXPECT_TRUE(copy == buffer && assigned == buffer && copy.put('d') && !(copy == buffer));
    buffer.take(copy);
    buffer.take(buffer);
    EXPECT_TRUE(copy == Buffer() && copy.getSize() == 0 && buffer.getSize() > 3);
    char* memory = buffer.pass();
    EXPECT_EQ(std::string(memory, 4), "abcd");
    free(memory);
    EXPECT_EQ(buffer.getSize(), 0u);
}

TEST(Buffer, SwapsWholeValues) {
    const std::pair<int16_t, const char*> rows[] = {
        {2, "badcfehgi"},
        {4, "dcbahgfei"},
        {8, "hgfedcbai"}
    };
    for (const auto& [width, expected] : rows) {
        Buffer buffer = filled("abcdefghi");
        EXPECT_TRUE(buffer.swap(width) && !buffer.swap(0) && !buffer.swap(3));
        EXPECT_EQ(bytesOf(buffer), expected);
    }
}

TEST(Buffer, HexadecimalText) {
    Buffer buffer;
    ASSERT_TRUE(buffer.fromHexString("00fFA5"));
    EXPECT_EQ(bytesOf(buffer), std::string("\0\xFF\xA5", 3));
    for (const char* bad : {"", "0", "abc", "0g", "-1", "0 "})
        EXPECT_FALSE(buffer.fromHexString(bad)) << bad;
    String text;
    buffer.makeHexString(text);
    EXPECT_STREQ(text.text8(), "00FFA5");
    Buffer().makeHexString(text);
    EXPECT_TRUE(text.isEmpty());
}

TEST(Buffer, CollectsAndConvertsText) {
    Buffer buffer;
    EXPECT_TRUE(buffer.appendString8("b\x8A") && buffer.prependString8("a") && buffer.appendString8(nullptr));
    EXPECT_TRUE(buffer.toWideString(0));
    EXPECT_EQ(std::u16string(buffer.data16()), u"ab\u00E4");
    EXPECT_EQ(buffer.getFillSize(), 6u);
    EXPECT_TRUE(buffer.prependString16(u"\u65E5") && buffer.appendString16(u"!"));
    EXPECT_TRUE(buffer.toMultibyteString(65001));
    EXPECT_EQ(bytesOf(buffer), "\u65E5ab\u00E4!");
    EXPECT_STREQ(buffer.data(), "\u65E5ab\u00E4!");
    Buffer malformed = filled("\xC3");
    EXPECT_FALSE(malformed.toWideString(65001) || bytesOf(malformed) != "\xC3");
}
}  // namespace
}  // namespace Tessarine
