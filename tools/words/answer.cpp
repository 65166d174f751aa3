#include "tools/words/answer.h"
#include <cerrno>
#include <cstdio>
#include <cstring>

std::string printAnswer(const std::string& text) {
    std::fputs(text.c_str(), stdout);
    const bool out = std::fflush(stdout) == 0 && !std::ferror(stdout);
    return out ? "" : std::string("standard output: ") + std::strerror(errno);
}
