#pragma once
#include <string>
#include <vector>

/** Lines out of a descriptor, as they come. A line that never ends is cut into pieces of a bounded size. */
class LineReader {
public:
    explicit LineReader(int fileDescriptor) : descriptor(fileDescriptor) {}

    /** Reads what is there, once; appends the whole lines. false: the end of the input, whose last line counts too. */
    bool read(std::vector<std::string>& lines);

private:
    int descriptor;  // borrowed
    std::string rest;
};

/** All of it, or false: nobody reads it any more. */
bool writeAll(int descriptor, const std::string& text);
