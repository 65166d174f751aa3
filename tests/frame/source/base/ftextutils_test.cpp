#include "base/ftextutils.h"
#include "base/source/fstring.h"
#include "collect/cmdate.h"
#include <gtest/gtest.h>
#include <limits>

namespace Tessarine {
namespace {

TEST(FTextUtils, PrintsIntegersByTheirKind) {
    constexpr std::tuple<UTextFormatType, int64_t, const char*> kRows[] = {
        {kPlainFormat,       -5000000000,    "-5000000000"         },
        {kSampleRateFormat,  44100,          "44.100 kHz"          },
        {kChannelsFormat,    2,              "Stereo"              },
        {kChannelsFormat,    0,              "0 Channels"          },
        {kBitDepthFormat,    32,             "32 bit float"        },
        {kBitRateFormat,     1411200,        "1411 kBit/s"         },
        {kFileSizeFormat,    1024,           "1024 Bytes"          },
        {kFileSizeFormat,    1048576,        "1024.00 KB"          },
        {kFileSizeFormat,    INT64_MAX,      "8388608.00 TB"       },
        {kFileSizeFormat,    -1,             "-1 Bytes"            },
        {kDurationFormat,    60,             "60 seconds"          },
        {kDurationFormat,    61,             "1 minute 1 second"   },
        {kDurationFormat,    3605,           "60 minutes 5 seconds"},
        {kDurationFormat,    86400 + 300,    "24 hours 5 minutes"  },
        {kDurationFormat,    2 * 86400 + 61, "2 days"              },
        {kHexFormat,         -1,             "FFFFFFFF"            },
        {UTextFormatType(8), 9,              "9"                   },
    };
    for (const auto& [type, value, expected] : kRows) {
        String text("old");
        FTextUtils::printInt(text, value, type);
        EXPECT_STREQ(text.text8(), expected);
    }
    String text;
    FTextUtils::printFriendlyDuration(text, 90061);
    EXPECT_STREQ(text.text8(), "1 day 1 hour 1 minute 1 second");
}

TEST(FTextUtils, ScansIntegersByTheirKind) {
    constexpr std::tuple<UTextFormatType, const char*, bool, int64_t> kRows[] = {
        {kPlainFormat,    "x -7",                     true,  -7       },
        {kFileSizeFormat, "1.5 kb",                   true,  1536     },
        {kFileSizeFormat, "2,5M",                     true,  2621440  },
        {kFileSizeFormat, "1 GB, not KB",             true,  1024     }, // K is looked for first
        {kFileSizeFormat, "3 TB",                     true,  3        }, // there is no T
        {kFileSizeFormat, "1e300 G",                  true,  INT64_MAX},
        {kFileSizeFormat, "-1e300",                   true,  INT64_MIN},
        {kFileSizeFormat, "nan",                      false, 77       },
        {kFileSizeFormat, "KB",                       false, 77       },
        {kDateTimeFormat, "yesterday",                false, 77       },
        {kDateTimeFormat, "2026-11-21 9:61:00",       false, 77       },
        {kDateTimeFormat, "2026-11-21 9:05:00 later", false, 77       },
    };
    for (const auto& [type, text, scans, expected] : kRows) {
        int64_t value = 77;
        EXPECT_EQ(FTextUtils::scanInt(text, value, type), scans) << text;
        EXPECT_EQ(value, expected) << text;
    }
    String text;
    int64_t value = 0;
    ASSERT_TRUE(FTextUtils::scanInt("2026-11-21 9:05:07", value, kDateTimeFormat));
    FTextUtils::printInt(text, value, kDateTimeFormat);
    EXPECT_STREQ(text.text8(), "2026-11-21 9:05:07");
    CmTime midnight;
    EXPECT_TRUE(FTextUtils::scanDateTime(u" 2026-11-21 ", midnight) && midnight.getTotalSeconds() == 0);
}

TEST(FTextUtils, ScansVersions) {
    // a number below 0: none
    constexpr std::tuple<const char*, int32_t, int32_t, int32_t, int32_t, float> kRows[] = {
        {"1.2.34",    3,  1,  2,  34,  1.234f},
        {" 5 . 06 ",  2,  5,  6,  77,  5.6f  },
        {"3.0.0.125", 4,  3,  0,  0,   3.f   },
        {"1.x.3",     1,  1,  77, 77,  1.f   },
        {"1.10.0",    3,  1,  10, 0,   -1.f  },
        {"1.0.100",   3,  1,  0,  100, -1.f  },
        {"beta",      -1, 77, 77, 77,  -1.f  },
        {"",          0,  77, 77, 77,  -1.f  },
    };
    for (const auto& [text, parts, expectedA, expectedB, expectedC, expectedNumber] : kRows) {
        SCOPED_TRACE(text);
        int32_t a = 77, b = 77, c = 77;
        EXPECT_EQ(FTextUtils::scanVersion(text, a, b, c), parts);
        EXPECT_EQ(a * 10000 + b * 100 + c, expectedA * 10000 + expectedB * 100 + expectedC);
        float number = -1.f;
        EXPECT_EQ(FTextUtils::scanVersionToFloat(text, number), expectedNumber >= 0);
        EXPECT_FLOAT_EQ(number, expectedNumber);  // what is missing counts as 0
    }
}

TEST(FTextUtils, PrintsSegments) {
    constexpr std::pair<int32_t, const char*> kRows[] = {
        {0,     "0|00|0 s|0 seconds|0:00:00|"                          },
        {1,     "1|01|1 s|1 second|0:00:01|"                           },
        {65,    "1:05|01:05|1:05 m|1:05 minutes|0:01:05|"              },
        {3600,  "1:00:00|01:00:00|1:00:00 h|1:00:00 hour|1:00:00|"     },
        {36061, "10:01:01|10:01:01|10:01:01 h|10:01:01 hours|10:01:01|"},
    };
    for (const auto& [seconds, printed] : kRows) {
        String all, texts[5];
        FTextUtils::printSegments(texts[0], seconds);
        FTextUtils::printSegments(texts[1], seconds, true);
        FTextUtils::printSegments(texts[2], seconds, false, FTextUtils::kShortUnit);
        FTextUtils::printSegments(texts[3], seconds, false, FTextUtils::kUnitName);
        FTextUtils::print3Segments(texts[4], seconds);
        for (const String& text : texts)
            all.append(text).append("|");
        EXPECT_STREQ(all.text8(), printed);
    }
}

TEST(FTextUtils, PrintsFloats) {
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    constexpr std::tuple<double, int32_t, const char*> kRows[] = {
        {2.5,        0,  "2"                      }, // to even, as the C library does
        {-0.004,     2,  "0.00"                   },
        {-0.006,     2,  "-0.01"                  },
        {-0.4,       0,  "0"                      },
        {-0.001,     -1, "0."                     }, // the tail goes, the point stays
        {1.5,        -1, "1.5"                    },
        {100.0,      -1, "100."                   },
        {1e20,       1,  "100000000000000000000.0"},
        {-kInfinity, 2,  "-inf"                   },
    };
    String text;
    for (const auto& [number, digits, expected] : kRows) {
        FTextUtils::printFloat(text, number, digits);
        EXPECT_STREQ(text.text8(), expected) << number << " with " << digits;
    }
    FTextUtils::printFloat(text, -std::numeric_limits<double>::max(), std::numeric_limits<int32_t>::max());
    EXPECT_GT(text.length(), 309u + 1000u);
    FTextUtils::printFloat(text, std::numeric_limits<double>::denorm_min(), 1100);
    EXPECT_EQ(text.length(), 1102u);
}

}  // namespace
}  // namespace Tessarine
