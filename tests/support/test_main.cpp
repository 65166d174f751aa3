#include <cstdio>
#include <cstdlib>
#include <gtest/gtest.h>
#include <locale.h>

namespace {
constexpr int kSkipped = 77;  // what CTest takes for it
}

/** TALV_TEST_LOCALE: the locale that the process has, as a host's may. */
int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    const char* name = std::getenv("TALV_TEST_LOCALE");
    if (name && !setlocale(LC_ALL, name)) {
        std::printf("no locale %s on this machine\n", name);
        return kSkipped;
    }
    return RUN_ALL_TESTS();
}
