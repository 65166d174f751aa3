#include "host/screentext.h"
#include <algorithm>
#include <cstdint>

namespace {
/** The bytes of the character that begins here; 0: it is malformed. */
size_t lengthOf(const std::string& text, size_t at) {
    const auto lead = uint8_t(text[at]);
    const size_t length = lead < 0x80 ? 1 : lead < 0xC2 ? 0 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : lead < 0xF5 ? 4 : 0;
    for (size_t i = 1; i < length; ++i)
        if (at + i >= text.size() || (uint8_t(text[at + i]) & 0xC0) != 0x80)
            return 0;
    return length;
}

bool isControl(const std::string& character) {
    const auto first = uint8_t(character[0]);
    return first < ' ' || first == 0x7F || (first == 0xC2 && uint8_t(character[1]) < 0xA0);
}

std::vector<std::string> charactersOf(const std::string& text) {
    std::vector<std::string> characters;
    for (size_t at = 0; at < text.size();) {
        const size_t length = lengthOf(text, at);
        std::string character = text.substr(at, std::max<size_t>(length, 1));
        characters.push_back(length == 0 || isControl(character) ? "?" : std::move(character));
        at += std::max<size_t>(length, 1);
    }
    return characters;
}

template <class Iterator>
std::string joined(Iterator first, Iterator last) {
    std::string text;
    for (; first != last; ++first)
        text += *first;
    return text;
}
}  // namespace

std::string printable(const std::string& text) {
    const std::vector<std::string> characters = charactersOf(text);
    return joined(characters.begin(), characters.end());
}

std::string fitted(const std::string& text, size_t width) {
    std::vector<std::string> characters = charactersOf(text);
    characters.resize(width, " ");
    return joined(characters.begin(), characters.end());
}

std::string tailOf(const std::string& text, size_t width) {
    const std::vector<std::string> characters = charactersOf(text);
    return joined(characters.end() - std::ptrdiff_t(std::min(width, characters.size())), characters.end());
}

std::vector<std::string> wrapped(const std::string& text, size_t width) {
    const std::vector<std::string> characters = charactersOf(text);
    std::vector<std::string> lines;
    const auto end = characters.end();
    auto first = characters.begin();
    width = std::max<size_t>(width, 1);
    while (size_t(end - first) > width) {
        const auto limit = first + std::ptrdiff_t(width);
        auto last = limit;
        while (last != first && *last != " ")
            --last;
        const bool hasBlank = last != first;
        lines.push_back(joined(first, hasBlank ? last : limit));
        first = hasBlank ? last + 1 : limit;
    }
    lines.push_back(joined(first, end));
    return lines;
}
