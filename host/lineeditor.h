#pragma once
#include <string>
#include <vector>

/** A line that is typed on a terminal whose keys come at once: UTF-8, backspace, a history on the arrow keys. */
class LineEditor {
public:
    enum Result { kNothing, kLine, kEnd, kPageUp, kPageDown };

    /** One byte of what the terminal sends. kLine: it is whole now, see takeLine(). */
    Result take(char byte);
    std::string takeLine();
    const std::string& getText() const { return text; }

private:
    Result takeEscaped(char byte);
    void recall(int32_t step);

    std::string text, sequence;  // sequence: what came behind an escape so far
    bool inSequence = false;
    std::vector<std::string> history;
    size_t recalled = 0;  // index in the history; its size is the line of now
};
