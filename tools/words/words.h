#pragma once
#include <optional>
#include <string>
#include <vector>

/** The words of a command line, as all consoles of the house read it: blanks divide, a word may be a JSON string.
    Nothing: a string has no end, or isn't JSON, or something stands right behind it. */
std::optional<std::vector<std::string>> wordsOf(const std::string& line);

/** No command: an empty line, or one that begins with '#'. */
bool isComment(const std::string& line);
