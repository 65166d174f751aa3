#include "tools/talv-sim/wire.h"
#include <algorithm>
#include <gtest/gtest.h>

namespace TalvSim {
namespace {
Bytes hex(const std::string& text) {
    return fromHex(text).value_or(Bytes());
}

constexpr std::pair<const char*, const char*> kFrames[] = {
    {"03 00 00 FF",                            "device id broadcast"                    },
    {"04 01 01 03 FA",                         "devMode = 3"                            },
    {"05 20 01 03 20 BB",                      "gain ch 3 = 40"                         },
    {"05 60 01 00 08 96",                      "request gain ch 0 to 7"                 },
    {"05 24 01 02 FB DD",                      "gainTrim ch 2 = 10"                     },
    {"03 80 05 7A",                            "device 5 is here"                       },
    {"0C 81 05 03 48 41 2D 38 43 48 20 20 BD", "devMode = 3, devName = \"HA-8CH  \""    },
    {"0C A0 05 00 48 3C 32 28 1E 14 0A 00 40", "gain ch 0 to 7 = 0 12 22 32 42 52 62 72"},
    {"03 80 05 7B",                            "bad checksum"                           },
    {"03 82 05 78",                            "unknown command"                        },
    {"03 20 01 DE",                            "gain without a channel"                 },
    {"68 65 6C",                               "no frame"                               },
};

TEST(Wire, FramesAreBuiltCheckedAndDescribed) {
    for (const auto& [digits, text] : kFrames) {
        SCOPED_TRACE(digits);
        const Bytes bytes = hex(digits);
        EXPECT_EQ(toHex(bytes), digits);
        EXPECT_EQ(describe(bytes), text);
        if (isFrame(bytes)) {
            EXPECT_EQ(makeFrame(bytes[1], bytes[2], payloadOf(bytes)), bytes);
        }
    }
}

TEST(Wire, ValuesAreBoundedWhateverTheByte) {
    for (const ParamRow& row : kParams) {
        SCOPED_TRACE(row.name);
        for (int32_t value = 0; value <= row.max; ++value)
            EXPECT_EQ(row.fromWire(row.toWire(value)), value);
        for (int32_t byte = 0; byte < 256; ++byte) {
            EXPECT_GE(row.fromWire(uint8_t(byte)), 0);
            EXPECT_LE(row.fromWire(uint8_t(byte)), row.max);
        }
    }
    EXPECT_EQ(kParams[kGainTrim].fromWire(0x80), 0);
    EXPECT_EQ(kParams[kGain].fromWire(0xFF), 0);
    EXPECT_EQ(kParams[kHPFFreq].fromWire(3), 0);
}

std::vector<std::string> scanned(const Bytes& bytes, size_t step, FrameScanner& scanner) {
    std::vector<std::string> pieces;
    for (size_t at = 0; at < bytes.size(); at += step) {
        scanner.append(std::span(bytes).subspan(at, std::min(step, bytes.size() - at)));
        while (const auto piece = scanner.next())
            pieces.push_back(toHex(*piece));
    }
    return pieces;
}

TEST(FrameScanner, CutsFramesOutOfNoise) {
    const std::string longest = "0C 20 01 00 01 02 03 04 05 06 07 08 BA";
    const std::tuple<const char*, std::vector<std::string>, const char*> rows[] = {
        {"03 00 00 FF 03 41 01 BD", {"03 00 00 FF", "03 41 01 BD"}, ""        },
        {"00 02 0D FF 03 00 00 FF", {"00 02 0D FF", "03 00 00 FF"}, ""        },
        {"03 00 00 FE 03 00 00 FF", {"03 00 00 FE", "03 00 00 FF"}, ""        }, // a bad one
        {"00 00",                   {"00 00"},                      ""        },
        {"03 00 00 FF 05 20 01",    {"03 00 00 FF"},                "05 20 01"},
        {longest.c_str(),           {longest},                      ""        },
    };
    for (const auto& [bytes, pieces, rest] : rows) {
        SCOPED_TRACE(bytes);
        FrameScanner scanner;
        EXPECT_EQ(scanned(hex(bytes), 1000, scanner), pieces);
        EXPECT_EQ(scanner.isWaiting(), *rest != 0);
        EXPECT_EQ(toHex(scanner.takeRest()), rest);
        EXPECT_FALSE(scanner.isWaiting());
    }
    FrameScanner byteByByte;
    EXPECT_EQ(scanned(hex("03 41 01 BD 05 20 01 03 20 BB"), 1, byteByByte),
              (std::vector<std::string>{"03 41 01 BD", "05 20 01 03 20 BB"}));
}
}  // namespace
}  // namespace TalvSim
