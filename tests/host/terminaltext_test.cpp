#include "host/lineeditor.h"
#include "host/linereader.h"
#include "host/screentext.h"
#include "host/spoken.h"
#include <gtest/gtest.h>
#include <thread>
#include <unistd.h>

namespace HostTest {
namespace {
using Lines = std::vector<std::string>;

struct TextRow {
    const char *text, *printable, *fittedTo4;
};
constexpr TextRow kTexts[] = {
    {"",                             "",                             "    "                          },
    {"a\x1b[2J",                     "a?[2J",                        "a?[2"                          },
    {"\t\n\x7f",                     "???",                          "??? "                          },
    {"\xC2\x9B"
     "1m",                      "?1m",                          "?1m "                          },
    {"d\xC3\xA9j\xC3\xA0",           "d\xC3\xA9j\xC3\xA0",           "d\xC3\xA9j\xC3\xA0"            },
    {"\xE2\x82\xAC\xF0\x9F\x8E\xA4", "\xE2\x82\xAC\xF0\x9F\x8E\xA4", "\xE2\x82\xAC\xF0\x9F\x8E\xA4  "},
    {"\xE2\x82",                     "??",                           "??  "                          },
    {"\xFF\x80z",                    "??z",                          "??z "                          },
};

TEST(ScreenText, NothingControlsTheTerminal) {
    for (const TextRow& row : kTexts) {
        SCOPED_TRACE(row.printable);
        EXPECT_EQ(printable(row.text), row.printable);
        EXPECT_EQ(fitted(row.text, 4), row.fittedTo4);
    }
}

void saysOk(const std::string& fields, const std::string& expected) {
    EXPECT_EQ(spoken(Json::parse(R"({"reply":1,"ok":true,)" + fields + "}")), "ok  " + expected);
}

TEST(Spoken, RepliesAreWordsWithoutBracketsAndQuotes) {
    saysOk(R"("id":1,"param":"gain","ch":0,"value":40)", "id 1  param gain  ch 0  value 40");
    saysOk(R"("steps":[{"id":1,"param":"plus48V","ch":2,"value":0},{"id":1,"param":"brightness","value":3},
                       {"id":1,"channel":8},{"id":2,"channel":-1}],"missing":[3,4])",
           "steps plus48V 1/2 = 0, brightness 1 = 3, device 1 on input 8, device 2 off  missing 3, 4");
    saysOk(R"("entries":[{"title":"gain 1/0 = 4","time":"2026-11-21T09:05:00","source":"set"},
                         {"title":"recall A","time":"2026-11-21T09:06:00","source":"scene"}],"position":1)",
           "entries 1: gain 1/0 = 4 at 09:05:00, 2: recall A at 09:06:00  position 1");
    saysOk(R"("name":"A","sent":0,"left":[{"id":1,"ch":3}],"missing":[])", "name A  sent 0  left 1/3  missing none");
    saysOk(R"("links":[{"master":{"id":1,"ch":0},"slave":{"id":2,"ch":7},"allow48v":true}])",
           "links 1/0 to 2/7 with +48V");
    saysOk(R"("devices":[{"id":1,"name":"A","mode":3,"channel":-1}])", "devices id 1 name A mode 3 channel -1");
}

TEST(ScreenText, WrapsAtBlanksAndNeverLosesMore) {
    EXPECT_EQ(wrapped("one two  three", 7), (Lines{"one two", " three"}));
    EXPECT_EQ(wrapped("abcdefgh ij", 3), (Lines{"abc", "def", "gh", "ij"}));
    EXPECT_EQ(wrapped("", 5), Lines{""});
    EXPECT_EQ(wrapped("ab", 0), (Lines{"a", "b"}));
    EXPECT_EQ(wrapped("\xC3\xA9\xC3\xA9\xC3\xA9", 2), (Lines{"\xC3\xA9\xC3\xA9", "\xC3\xA9"}));
    EXPECT_EQ(tailOf("d\xC3\xA9j\xC3\xA0", 3), "\xC3\xA9j\xC3\xA0");
    EXPECT_EQ(tailOf("ab", 3), "ab");
}

struct KeyRow {
    const char *keys, *text;
    LineEditor::Result last;
};
constexpr KeyRow kKeys[] = {
    {"ab\x7f"
     "c",                            "ac",     LineEditor::kNothing },
    {"a\xC3\xA9\x7f",                     "a",      LineEditor::kNothing },
    {"\xA9\xA9\x7f",                      "",       LineEditor::kNothing },
    {"abc\x15z",                          "z",      LineEditor::kNothing },
    {"a\x1b[Dz\x1b[1;5Cy",                "azy",    LineEditor::kNothing },
    {"ab\x1b[5~",                         "ab",     LineEditor::kPageUp  },
    {"\x1b[6~",                           "",       LineEditor::kPageDown},
    {"\x04",                              "",       LineEditor::kEnd     },
    {"abc\x03",                           "abc",    LineEditor::kEnd     },
    {"first\nsecond\n\x1b[A",             "second", LineEditor::kNothing },
    {"first\nsecond\n\x1b[A\x1bOA\x1b[A", "first",  LineEditor::kNothing },
    {"first\n\x1b[A\x1b[B\x1b[B",         "",       LineEditor::kNothing },
    {"ab\r",                              "ab",     LineEditor::kLine    },
};

TEST(LineEditor, TakesWhatATerminalSends) {
    for (const KeyRow& row : kKeys) {
        SCOPED_TRACE(testing::PrintToString(row.keys));
        LineEditor editor;
        auto result = LineEditor::kNothing;
        for (const char* key = row.keys; *key; ++key) {
            if (result == LineEditor::kLine)
                editor.takeLine();
            result = editor.take(*key);
        }
        EXPECT_EQ(editor.getText(), row.text);
        EXPECT_EQ(result, row.last);
    }
}

/** A pipe with a reader of lines at its end. */
struct Pipe : testing::Test {
    Pipe() { EXPECT_EQ(pipe(ends), 0); }
    ~Pipe() override {
        close(ends[0]);
        closeWriter();
    }
    void closeWriter() {
        if (ends[1] >= 0)
            close(std::exchange(ends[1], -1));
    }
    int ends[2] = {-1, -1};
};

TEST_F(Pipe, LinesComeWholeHoweverTheyAreCut) {
    LineReader reader(ends[0]);
    Lines lines;
    for (const char* part : {"on", "e\n\ntwo \n", "the ", "last"}) {
        ASSERT_TRUE(writeAll(ends[1], part));
        EXPECT_TRUE(reader.read(lines));
    }
    closeWriter();
    EXPECT_FALSE(reader.read(lines));
    EXPECT_EQ(lines, (Lines{"one", "", "two ", "the last"}));
}

TEST_F(Pipe, AnEndlessLineIsOneLineAndBounded) {
    std::thread writer([this] {
        EXPECT_TRUE(writeAll(ends[1], std::string(3 * LineReader::kMaxLine, 'x') + "\nnext\n"));
        closeWriter();
    });
    LineReader reader(ends[0]);
    Lines lines;
    while (reader.read(lines)) {}
    writer.join();
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_GE(lines[0].size(), LineReader::kMaxLine);
    EXPECT_LT(lines[0].size(), LineReader::kMaxLine + 8192);
    EXPECT_EQ(lines[1], "next");
}

}  // namespace
}  // namespace HostTest
