#pragma once
#include <string>
#include <vector>

/** What the command line says. */
struct Options {
    bool console = false;
    std::string module;      // empty: the bundle in the Components folder
    std::string userFolder;  // empty: the user's own preferences
    std::string serialFolder = "/dev/";
    std::vector<std::string> serialPrefixes;  // empty: the usual ones
    std::string port;
    bool hasPort = false;
    int32_t inputs = 64;

    enum Result { kRun, kAnswered, kRefused };
};

inline constexpr int32_t kMaxDevice = 255;             // their numbers begin with 1
inline constexpr int32_t kMaxInputs = kMaxDevice * 8;  // with eight channels each

/** kAnswered: help or version are in text. kRefused: one line that says why is in text. */
Options::Result scanOptions(int count, char** arguments, Options& options, std::string& text);
