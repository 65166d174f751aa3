#pragma once
#include "tools/talv-sim/outbox.h"
#include <map>
#include <string>

namespace TalvSim {
struct Options {
    std::string link;
    std::map<uint8_t, std::string> devices;  // id, name
    LineQuality quality;
    bool log = false;
    std::string answer;  // of --help and --version: to be printed instead of running
};

/** Reads the command line; arguments without the program's name. Nothing: a bad option, and error is one line on it. */
std::optional<Options> readOptions(const std::vector<std::string>& arguments, std::string& error);
}  // namespace TalvSim
