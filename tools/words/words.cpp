#include "tools/words/words.h"
#include <nlohmann/json.hpp>

namespace {
constexpr std::string_view kBlanks = " \t\r";

/** Behind the closing quote of the JSON string that begins at `first`; npos: it doesn't end. */
size_t endOfString(const std::string& line, size_t first) {
    for (size_t i = first + 1; i < line.size(); ++i) {
        if (line[i] == '\\')
            ++i;
        else if (line[i] == '"')
            return i + 1;
    }
    return std::string::npos;
}

std::optional<std::string> textOfString(const std::string& word) {
    const auto parsed = nlohmann::json::parse(word, nullptr, false);
    return parsed.is_string() ? std::optional(parsed.get<std::string>()) : std::nullopt;
}
}  // namespace

std::optional<std::vector<std::string>> wordsOf(const std::string& line) {
    std::vector<std::string> words;
    for (size_t at = line.find_first_not_of(kBlanks); at < line.size(); at = line.find_first_not_of(kBlanks, at)) {
        const bool isString = line[at] == '"';
        const size_t end = isString ? endOfString(line, at) : line.find_first_of(kBlanks, at);
        if (isString && (end == std::string::npos || (end < line.size() && kBlanks.find(line[end]) == kBlanks.npos)))
            return std::nullopt;
        const std::string word = line.substr(at, end - at);
        const std::optional<std::string> text = isString ? textOfString(word) : word;
        if (!text)
            return std::nullopt;
        words.push_back(*text);
        at = end;
    }
    return words;
}

bool isComment(const std::string& line) {
    const size_t first = line.find_first_not_of(kBlanks);
    return first == std::string::npos || line[first] == '#';
}
