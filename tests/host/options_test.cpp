#include "host/options.h"
#include "host/serialnaming.h"
#include "tests/support/pieces.h"
#include <algorithm>
#include <gtest/gtest.h>

namespace HostTest {
namespace {
using Words = std::vector<std::string>;

Options::Result scan(Words words, Options& options, std::string& text) {
    words.insert(words.begin(), "talv-host");
    std::vector<char*> arguments;
    for (std::string& word : words)
        arguments.push_back(word.data());
    return scanOptions(int(arguments.size()), arguments.data(), options, text);
}

TEST(HostOptions, AllOfThemInBothForms) {
    for (const Words& words : {
             Words{"--console", "--module", "m", "--user-folder", "u", "--serial-dir", "d", "--serial-prefix", "a",
                   "--serial-prefix", "b", "--port", "p", "--inputs", "2040"},
             Words{"--inputs=2040", "--port=p", "--serial-prefix=a", "--serial-prefix=b", "--serial-dir=d",
                   "--user-folder=u", "--module=m", "--console"}
    }) {
        Options options;
        std::string text;
        ASSERT_EQ(scan(words, options, text), Options::kRun) << text;
        EXPECT_TRUE(options.console && options.hasPort);
        EXPECT_EQ((Words{options.module, options.userFolder, options.serialFolder, options.port}),
                  (Words{"m", "u", "d", "p"}));
        EXPECT_EQ(options.serialPrefixes, (Words{"a", "b"}));
        EXPECT_EQ(options.inputs, 2040);
    }
    Options options;
    std::string text;
    EXPECT_EQ(scan({"--port", "", "--module=a=b"}, options, text), Options::kRun);
    EXPECT_TRUE(options.hasPort) << "no port is a port, too";
    EXPECT_EQ(options.module, "a=b");
}

TEST(HostOptions, RefusesWithOneLine) {
    for (const std::string& row :
         piecesOf("--bogus|word||-c|--console=1|--inputs|--inputs,|--inputs,2041|--inputs,-1|--inputs,1x|--inputs, 1|"
                  "--inputs,99999999999|--inputs=|--port|--port,/dev/ttyS0|--module,|--user-folder=|--serial-dir,|"
                  "--serial-prefix,|--bo\ngus|--inputs,1\n2|--port,\x1b/|--console,--bogus")) {
        Options options;
        std::string text;
        SCOPED_TRACE(row);
        EXPECT_EQ(scan(piecesOf(row, ','), options, text), Options::kRefused);
        EXPECT_EQ(std::ranges::count(text, '\n'), 1);
        EXPECT_TRUE(text.starts_with("talv-host: ") && text.ends_with('\n'));
        EXPECT_EQ(text.find('\x1b'), std::string::npos);
    }
}

TEST(SerialNaming, ClosesTheFolderAndFallsBackToTheUsualPrefixes) {
    const SerialNaming usual("/dev", {}), own("/tmp/x/", {"tty.", "cu."});
    EXPECT_STREQ(usual.getFolder(), "/dev/");
    EXPECT_STREQ(own.getFolder(), "/tmp/x/");
    EXPECT_EQ(usual.countPrefixes(), 4);
    EXPECT_STREQ(usual.getPrefix(3), "ttyACM");
    EXPECT_EQ(own.getPrefix(2), nullptr);
    EXPECT_TRUE(own.accepts("ttyS0")) << "elsewhere nothing is a port of the board";
    EXPECT_TRUE(usual.accepts("ttyUSB999")) << "unknown to the kernel's list";
}
}  // namespace
}  // namespace HostTest
