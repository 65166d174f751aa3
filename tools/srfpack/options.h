#pragma once
#include <optional>
#include <string>
#include <vector>

namespace SrfPack {
struct Options {
    std::string command;
    std::vector<std::string> operands;  // as many as the command wants
    bool compress = false;
    bool json = false;
    std::string answer;  // of --help and --version: to be printed instead of running
};

/** Reads the command line; arguments without the program's name. Nothing: bad usage, and error is one line on it. */
std::optional<Options> readOptions(const std::vector<std::string>& arguments, std::string& error);
}  // namespace SrfPack
