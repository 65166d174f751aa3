#include "tools/talv-sim/options.h"
#include "tests/support/pieces.h"
#include <gtest/gtest.h>

namespace TalvSim {
namespace {
TEST(Options, BadOnesAreNamedInOneLine) {
    for (const std::string& line :
         piecesOf("|--link|--link=|--link x --bogus|--link x extra|--link x --baud|--link x --baud fast|"
                  "--link x --baud -1|--link x --baud 99999999999|--link x --corrupt 101|--link x --corrupt nan|"
                  "--link x --drop -0.5|--link x --drop 5%|--link x --seed 1e3|--link x --delay-ms 1.5|"
                  "--link x --split=yes|--link x --devices 0|--link x --devices 256|--link x --devices 1,,2|"
                  "--link x --devices 1,|--link x --devices=|--link x --devices one|--link x --devices 1,1|"
                  "--link x --devices 1:\xc3\xa9|--li x")) {
        std::string error;
        EXPECT_FALSE(readOptions(line.empty() ? std::vector<std::string>() : piecesOf(line, ' '), error)) << line;
        EXPECT_FALSE(error.empty()) << line;
        EXPECT_EQ(error.find('\n'), std::string::npos) << line;
    }
}

TEST(Options, AreReadInEitherForm) {
    std::string error;
    const auto options = readOptions(piecesOf("--link=a=b --devices 7,1:Drums,255:A:B --baud 0 --corrupt 0.5 "
                                              "--drop=100 --seed 12345678901 --delay-ms 3 --split --log",
                                              ' '),
                                     error);
    ASSERT_TRUE(options) << error;
    EXPECT_EQ(options->link, "a=b");
    EXPECT_EQ(options->devices, (std::map<uint8_t, std::string>{
                                    {1,   "Drums" },
                                    {7,   "HA-8CH"},
                                    {255, "A:B"   }
    }));
    EXPECT_EQ(options->quality.baud, 0u);
    EXPECT_EQ(options->quality.corruptPercent, 0.5);
    EXPECT_EQ(options->quality.dropPercent, 100);
    EXPECT_EQ(options->quality.seed, 12345678901u);
    EXPECT_EQ(options->quality.delayMs, 3u);
    EXPECT_TRUE(options->quality.split && options->log);
}

TEST(Options, HelpWinsOverWhatFollowsAndWhatIsMissing) {
    std::string error;
    for (const char* line : {"--help", "--version", "--help --bogus"}) {
        const auto options = readOptions(piecesOf(line, ' '), error);
        EXPECT_TRUE(options && !options->answer.empty()) << line;
    }
}
}  // namespace
}  // namespace TalvSim
