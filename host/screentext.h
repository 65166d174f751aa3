#pragma once
#include <string>
#include <vector>

/** Texts for a terminal, where control characters of others must never arrive. Widths are in characters. */

/** UTF-8 in which each control character, and what is malformed, is a "?". */
std::string printable(const std::string& text);
/** Exactly so wide: cut, or filled up with blanks. */
std::string fitted(const std::string& text, size_t width);
/** The last characters of a text that is too wide. */
std::string tailOf(const std::string& text, size_t width);
/** Lines of at most this width, broken at blanks where there are some. */
std::vector<std::string> wrapped(const std::string& text, size_t width);
