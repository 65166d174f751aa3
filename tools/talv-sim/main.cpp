#include "tools/talv-sim/simulator.h"
#include <cstdio>

int main(int count, char** words) {
    const std::vector<std::string> arguments(words + (count > 0 ? 1 : 0), words + count);
    std::string error;
    const auto options = TalvSim::readOptions(arguments, error);
    if (!options) {
        std::fprintf(stderr, "talv-sim: %s\n", error.c_str());
        return 2;
    }
    if (!options->answer.empty())
        return std::fputs(options->answer.c_str(), stdout) < 0 || std::fflush(stdout) != 0;
    const int status = TalvSim::Simulator(*options).run(error);
    if (status != 0)
        std::fprintf(stderr, "talv-sim: %s\n", error.c_str());
    return status;
}
