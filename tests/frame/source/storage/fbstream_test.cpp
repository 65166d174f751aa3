#include "archiveprobes.h"
#include "collect/cmbuffer.h"
#include <vector>

namespace Tessarine {
namespace {
using std::string_literals::operator""s;

TEST(FStream, ReadsLineByLine) {
    const std::tuple<const char*, std::string, bool, std::vector<std::string>> rows[] = {
        {"ends of all kinds", "a\nb\r\nc\rd", false, {"a", "b", "c", "d"}},
        {"empty lines vanish", "a\n\n\r\n\nb\n", false, {"a", "b"}},
        {"but the first", "\n\na", false, {"", "a"}},
        {"blanks stay", " \ta b\t \n ", false, {" \ta b\t ", " "}},
        {"blanks go", " \ta \tb\t \n \nc ", true, {"a \tb", "", "c"}},
        {"a zero is a character", "a\0b\nc"s, true, {"a\0b"s, "c"}},
        {"more than one block",
         std::string(5000, 'x') + "\n" + std::string(1023, 'y') + "\n\nz",
         true, {std::string(5000, 'x'), std::string(1023, 'y'), "z"}},
        {"nothing", "", true, {}},
    };
    for (const auto& [name, bytes, trim, lines] : rows) {
        SCOPED_TRACE(name);
        const OPtr<FMemoryStream> stream = streamOf(bytes);
        CmBuffer line;
        for (const std::string& expected : lines) {
            ASSERT_TRUE(stream->readLine(line, trim));
            EXPECT_EQ(std::string(line.data(), line.getFillSize()), expected);
            EXPECT_EQ(line.data()[line.getFillSize()], 0);
        }
        EXPECT_FALSE(stream->readLine(line, trim));
    }
}

TEST(FStream, CopiesAndCompares) {
    FMemoryStream source, target, full(nullptr, 0);
    for (int32_t i = 0; i < 1000; ++i)
        source.writeInt32(i);
    EXPECT_TRUE(target.copyFrom(source) && target.isStreamEqual(source));
    source.seek(1000, kFromStart);
    EXPECT_EQ(target.read(source, 2000), 2000u);
    EXPECT_EQ(source.write(target, 5000), 1000u);
    EXPECT_EQ(source.write(target, 5000), 0u);
    EXPECT_EQ(std::memcmp(target.getData() + 4000, source.getData() + 1000, 3000), 0);
    EXPECT_FALSE(target.isStreamEqual(source) || source.isStreamEqual(target));
    EXPECT_FALSE(source.copyTo(source));
    char memory[3999];
    FMemoryStream small(memory, 3999);
    EXPECT_FALSE(source.copyTo(small));
}

TEST(FStream, CountsAndWritesUnits) {
    FStreamCounter counter;
    FStreamSizeHolder section(counter);
    EXPECT_TRUE(section.beginWrite() && counter.writeString16(u"abc") && counter.writeString16(nullptr, false));
    EXPECT_EQ(section.endWrite(), 8);
    FMemoryStream stream;
    stream.byteOrder = 1;
    stream.writeString16(u"\u1234", false);
    EXPECT_EQ(textOf(stream), "\x12\x34");
}
}  // namespace
}  // namespace Tessarine
