#pragma once
#include <string>
#include <vector>

/** Lines out of a descriptor, as they come. Of a line that never ends only the beginning is kept. */
class LineReader {
public:
    explicit LineReader(int fileDescriptor) : descriptor(fileDescriptor) {}

    /** Reads what is there, once; appends the whole lines. false: the end of the input, whose last line counts too. */
    bool read(std::vector<std::string>& lines);

    /** Bytes that are kept of a line. */
    static constexpr size_t kMaxLine = 1 << 20;

private:
    int descriptor;  // borrowed
    std::string rest;
};

/** Waits until all of it is taken. false: nobody reads it any more; or it isn't taken, and giveUp can be read. */
bool writeAll(int descriptor, const std::string& text, int giveUp = -1);
