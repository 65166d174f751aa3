#pragma once
#include <string>
#include <vector>

/** The pieces between the bars of a text: a table of short texts in a few lines. */
inline std::vector<std::string> piecesOf(const std::string& text, char bar = '|') {
    std::vector<std::string> pieces(1);
    for (const char each : text) {
        if (each == bar)
            pieces.emplace_back();
        else
            pieces.back() += each;
    }
    return pieces;
}
