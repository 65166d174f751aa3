#include "tools/talv-sim/simulator.h"
#include "tools/words/answer.h"
#include <cstdio>

int main(int count, char** words) {
    const std::vector<std::string> arguments(words + (count > 0 ? 1 : 0), words + count);
    std::string error;
    const auto options = TalvSim::readOptions(arguments, error);
    if (!options) {
        std::fprintf(stderr, "talv-sim: %s\n", error.c_str());
        return 2;
    }
    int status = 0;
    if (options->answer.empty())
        status = TalvSim::Simulator(*options).run(error);
    else if (!(error = printAnswer(options->answer)).empty())
        status = 1;
    if (status != 0)
        std::fprintf(stderr, "talv-sim: %s\n", error.c_str());
    return status;
}
