#include "host/lineeditor.h"
#include "host/commands.h"
#include <algorithm>
#include <iterator>

namespace {
constexpr char kEscape = 27, kInterrupt = 3, kEndOfInput = 4, kOldBackspace = 8, kClearLine = 21, kBackspace = 127;
constexpr size_t kMaxHistory = 100, kMaxSequence = 16;

bool isContinuation(char byte) {
    return (uint8_t(byte) & 0xC0) == 0x80;
}

void dropLast(std::string& text) {
    while (!text.empty() && isContinuation(text.back()))
        text.pop_back();
    if (!text.empty())
        text.pop_back();
}
}  // namespace

LineEditor::Result LineEditor::take(char byte) {
    if (inSequence)
        return takeEscaped(byte);
    switch (byte) {
    case kEscape:
        inSequence = true;
        sequence.clear();
        return kNothing;
    case '\r':
    case '\n':
        return kLine;
    case kInterrupt:
        return kEnd;
    case kEndOfInput:
        return text.empty() ? kEnd : kNothing;
    case kBackspace:
    case kOldBackspace:
        dropLast(text);
        return kNothing;
    case kClearLine:
        text.clear();
        return kNothing;
    default:
        if (uint8_t(byte) >= ' ' && text.size() < Commands::kMaxLine)
            text += byte;
        return kNothing;
    }
}

/** "[A", "OA" or "[5~"; other sequences do nothing, a letter alone is a key with Alt. */
LineEditor::Result LineEditor::takeEscaped(char byte) {
    sequence += byte;
    const bool begins = sequence == "[" || sequence == "O";
    const bool goesOn = sequence[0] == '[' && uint8_t(byte) >= ' ' && uint8_t(byte) < '@';
    if (begins || (goesOn && sequence.size() < kMaxSequence))
        return kNothing;
    inSequence = false;
    if (sequence == "[A" || sequence == "OA")
        recall(-1);
    else if (sequence == "[B" || sequence == "OB")
        recall(1);
    return sequence == "[5~" ? kPageUp : sequence == "[6~" ? kPageDown : kNothing;
}

std::string LineEditor::takeLine() {
    if (!text.empty() && (history.empty() || history.back() != text))
        history.push_back(text);
    if (history.size() > kMaxHistory)
        history.erase(history.begin());
    recalled = history.size();
    return std::exchange(text, std::string());
}

void LineEditor::recall(int32_t step) {
    const auto wanted = std::clamp<int64_t>(int64_t(recalled) + step, 0, int64_t(history.size()));
    recalled = size_t(wanted);
    text = recalled < history.size() ? history[recalled] : std::string();
}
