#pragma once
#include <string>

/** A text to standard output, with all that was printed before. The result is what went wrong; empty: it is out. */
std::string printAnswer(const std::string& text);
