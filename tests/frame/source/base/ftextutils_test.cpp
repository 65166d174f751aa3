#include "base/ftextutils.h"
#include "base/source/fstring.h"
#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace Tessarine {
namespace {

TEST(FTextUtils, PrintsFloats) {
    struct Row {
        double number;
        int32_t digits;
        const char* text;
    };
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    constexpr Row kRows[] = {
        {0.5,        4,  "0.5000"                 },
        {2.5,        0,  "2"                      }, // to even, as the C library does
        {3.5,        0,  "4"                      },
        {-0.004,     2,  "0.00"                   },
        {-0.006,     2,  "-0.01"                  },
        {-0.4,       0,  "0"                      },
        {-0.0,       1,  "0.0"                    },
        {-0.001,     -1, "0."                     }, // the tail goes, the point stays
        {1.25,       -1, "1.25"                   },
        {1.5,        -1, "1.5"                    },
        {100.0,      -1, "100."                   },
        {1e20,       1,  "100000000000000000000.0"},
        {-kInfinity, 2,  "-inf"                   },
    };
    for (const Row& row : kRows) {
        SCOPED_TRACE(testing::Message() << row.number << " with " << row.digits);
        String text;
        FTextUtils::printFloat(text, row.number, row.digits);
        EXPECT_STREQ(text.text8(), row.text);
    }
}

TEST(FTextUtils, PrintsTheLongestFloatsWhole) {
    String text;
    FTextUtils::printFloat(text, -std::numeric_limits<double>::max(), std::numeric_limits<int32_t>::max());
    EXPECT_GT(text.length(), 309u + 1000u);
    FTextUtils::printFloat(text, std::numeric_limits<double>::denorm_min(), 1100);
    EXPECT_EQ(text.length(), 1102u);
}

}  // namespace
}  // namespace Tessarine
