#include "tools/srfpack/commands.h"
#include "tools/srfpack/names.h"
#include <cstdio>

int main(int count, char** words) {
    const std::vector<std::string> arguments(words + (count > 0 ? 1 : 0), words + count);
    std::string error;
    const auto options = SrfPack::readOptions(arguments, error);
    if (!options) {
        std::fprintf(stderr, "srfpack: %s\n", SrfPack::printable(error).c_str());
        return 2;
    }
    if (!options->answer.empty())
        return std::fputs(options->answer.c_str(), stdout) < 0 || std::fflush(stdout) != 0;
    error = SrfPack::run(*options);
    if (!error.empty())
        std::fprintf(stderr, "srfpack: %s\n", error.c_str());
    return error.empty() ? 0 : 1;
}
