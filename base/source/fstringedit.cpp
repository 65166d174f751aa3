#include "base/source/fstringconvert.h"
#include "base/source/fstringvector.h"
#include <algorithm>
#include <cstring>
#include <iterator>
#include <vector>

namespace Tessarine {
namespace {
/** What trimming leaves on. */
template <class Char>
bool isKept(Char c, CharGroup group) {
    switch (group) {
    case kAlphaNumeric:
        return ConstString::isCharAlphaNum(c);
    case kAlphabetic:
        return ConstString::isCharAlpha(c);
    default:
        return !ConstString::isCharSpace(c);
    }
}

/** Places of a text in another one; the first ones without an allocation. */
class Places {
public:
    void add(uint32_t place) {
        if (count < std::size(first))
            first[count] = place;
        else
            others.push_back(place);
        ++count;
    }
    uint32_t operator[](uint32_t i) const { return i < std::size(first) ? first[i] : others[i - std::size(first)]; }
    uint32_t size() const { return count; }

private:
    uint32_t first[64];
    uint32_t count = 0;
    std::vector<uint32_t> others;
};
}  // namespace

/** The usual case, more text of the same width, takes the short way. */
String& String::appendPart(const ConstString& text) {
    const uint32_t oldLength = len, newLength = oldLength + text.len;
    if (oldLength == 0 || text.len == 0 || text.isWide != isWide || owns(text.buffer))
        return replaceRange(oldLength, 0, text);
    if (hasRoom(newLength) || makeRoom(newLength)) {
        copyBytes(buffer8 + (size_t(oldLength) << isWide), text.buffer, size_t(text.len) << isWide);
        len = newLength;
        terminate();
    }
    return *this;
}

String& String::appendRepeated(char c, int32_t count) {
    return appendPart(String().assign(c, count));
}

String& String::appendRepeated(tchar c, int32_t count) {
    return appendPart(String().assign(c, count));
}

String& String::insertAt(uint32_t index, const ConstString& text, int32_t count) {
    return index > len ? *this : replaceRange(index, 0, text.part(0, count));
}

String& String::replace(uint32_t index, int32_t count, const ConstString& text) {
    return index > len ? *this : replaceRange(index, upTo(len - index, count), text);
}

String& String::remove(uint32_t index, int32_t count) {
    return index >= len ? *this : replaceRange(index, upTo(len - index, count), {});
}

/** Brings text and string to one width, then replaces. */
String& String::replaceRange(uint32_t index, uint32_t removed, const ConstString& text) {
    if (text.len > 0 && owns(text.buffer)) {
        const String copy(text);
        return copy.isEmpty() ? *this : replaceRange(index, removed, copy);
    }
    if (isEmpty() && text.len > 0)
        return assign(text);
    if (text.len > 0 && text.isWide != isWide) {
        if (isWide) {
            const WideText wide(text);
            const std::u16string_view widened = wide;
            return widened.empty() ? *this : replaceUnits(index, removed, widened.data(), uint32_t(widened.size()));
        }
        if (!convert(true, kCodePageDefault))
            return *this;
    }
    return isWide ? replaceUnits(index, removed, text.buffer16, text.len)
                  : replaceUnits(index, removed, text.buffer8, text.len);
}

template <class Char>
String& String::replaceUnits(uint32_t index, uint32_t removed, const Char* text, uint32_t count) {
    const uint32_t oldLength = len;
    index = std::min(index, oldLength);  // widening a text of two-byte characters makes it shorter
    removed = std::min(removed, oldLength - index);
    if ((count == 0 && removed == 0) || count > kMaxLength - (oldLength - removed))
        return *this;
    const uint32_t newLength = oldLength - removed + count;
    if (newLength == 0) {
        setBlock(nullptr, 0, isWide);
        return *this;
    }
    if (newLength > oldLength && !makeRoom(newLength))
        return *this;
    Char* place = units<Char>() + index;
    std::memmove(place + count, place + removed, (oldLength - index - removed) * sizeof(Char));
    std::copy_n(text, count, place);
    len = newLength;
    terminate();
    if (newLength < oldLength)
        makeRoom(newLength);
    return *this;
}

int32_t String::replace(const ConstString& what, const ConstString& with, CompareMode mode) {
    if (isEmpty() || what.isEmpty())
        return 0;
    if (owns(what.buffer) || owns(with.buffer)) {
        const String ownWhat(what), ownWith(with);
        return ownWith.len == with.len ? replace(ownWhat, ownWith, mode) : 0;
    }
    if (what.isWide && !convert(true, kCodePageDefault))
        return 0;
    if (with.len > 0 && with.isWide && !isWide) {
        if (findNext(0, what, mode) < 0)
            return 0;
        return convert(true, kCodePageDefault) ? replace(what, with, mode) : 0;
    }
    if (!isWide)
        return replaceAll(units8(what), units8(with), mode);
    const WideText wideWhat(what), wideWith(with);
    const std::u16string_view units = wideWith;
    return with.len > 0 && units.empty() ? 0 : replaceAll<tchar>(wideWhat, units, mode);
}

/** Finds all places first, so that one block of the right size does. */
template <class Char>
int32_t String::replaceAll(std::basic_string_view<Char> what, std::basic_string_view<Char> with, CompareMode mode) {
    const std::basic_string_view<Char> text(units<Char>(), len);
    Places places;
    for (int32_t at = 0; (at = findText(text, what, size_t(at), mode)) >= 0; at += int32_t(what.size()))
        places.add(uint32_t(at));
    const uint64_t newLength = len + uint64_t(places.size()) * with.size() - uint64_t(places.size()) * what.size();
    String result;
    if (places.size() == 0 || newLength > kMaxLength || !result.resize(uint32_t(newLength), isWide))
        return 0;
    const Char* source = units<Char>();
    Char* target = result.units<Char>();
    uint32_t from = 0;
    for (uint32_t i = 0; i < places.size(); ++i) {
        const uint32_t kept = places[i] - from;
        copyBytes(target, source + from, kept * sizeof(Char));
        copyBytes(target + kept, with.data(), with.size() * sizeof(Char));
        target += kept + with.size();
        from = places[i] + uint32_t(what.size());
    }
    std::copy(source + from, source + len, target);
    result.len = uint32_t(newLength);
    swapContent(result);
    return int32_t(places.size());
}

bool String::removeSubString(const ConstString& text, bool allOccurences) {
    if (allOccurences)
        return replace(text, {}) > 0;
    const int32_t place = findNext(0, text);
    if (place < 0)
        return false;
    if (text.isWide)
        convert(true, kCodePageDefault);
    const uint32_t size = isWide ? uint32_t(std::u16string_view(WideText(text)).size()) : text.len;
    remove(uint32_t(place), int32_t(size));
    return true;
}

/** Takes out each unit that the test holds for. */
template <class Test>
bool String::removeUnits(Test test) {
    const auto packed = [&](auto* text) {
        return uint32_t(std::remove_if(text, text + (text ? len : 0u), test) - text);
    };
    const uint32_t newLength = isWide ? packed(buffer16) : packed(buffer8);
    if (newLength == len)
        return false;
    if (newLength == 0) {
        setBlock(nullptr, 0, isWide);
        return true;
    }
    len = newLength;
    terminate();
    makeRoom(newLength);
    return true;
}

bool String::removeChars(CharGroup group) {
    return removeUnits([group](auto c) { return !isKept(c, group); });
}

/** Calls with a list of characters in the string's width. */
template <class Char, class Call>
bool String::withList(const Char* list, Call call) {
    const ConstString characters(list);
    if (isEmpty() || characters.isEmpty() || (characters.isWide && !convert(true, kCodePageDefault)))
        return false;
    return isWide ? call(std::u16string_view(WideText(characters))) : call(units8(characters));
}

template <class Char>
bool String::removeListed(const Char* list) {
    return withList(list, [this](auto characters) {
        return this->removeUnits([characters](auto c) {
            using Unit = typename decltype(characters)::value_type;
            return characters.find(Unit(c)) != characters.npos;
        });
    });
}

bool String::removeChars8(const char* list) {
    return removeListed(list);
}

bool String::removeChars16(const tchar* list) {
    return removeListed(list);
}

template <class Char>
bool String::replaceListed(const Char* list, Char with) {
    return with && withList(list, [&](auto characters) {
               using Unit = typename decltype(characters)::value_type;
               Unit replacement = Unit(with);
               if (sizeof(Unit) > sizeof(Char)) {
                   const WideText wide(ConstString(&with, 1));
                   const std::u16string_view units = wide;
                   if (units.empty())
                       return false;
                   replacement = Unit(units[0]);
               }
               bool found = false;
               mapUnits(0, len, [&](auto c) {
                   const bool listed = characters.find(Unit(c)) != characters.npos;
                   found |= listed;
                   return listed ? decltype(c)(replacement) : c;
               });
               return found;
           });
}

bool String::replaceChars8(const char* list, char with) {
    return replaceListed(list, with);
}

bool String::replaceChars16(const tchar* list, tchar with) {
    return replaceListed(list, with);
}

bool String::trim(CharGroup group) {
    const uint32_t oldLength = len;
    const auto keeps = [&](auto text) {
        const auto kept = [group](auto c) { return isKept(c, group); };
        const auto first = std::find_if(text.begin(), text.end(), kept);
        const auto last = std::find_if(text.rbegin(), std::make_reverse_iterator(first), kept).base();
        return std::pair(uint32_t(first - text.begin()), uint32_t(last - text.begin()));
    };
    const auto [first, last] = inItsWidth(*this, keeps);
    remove(last);
    remove(0, int32_t(first));
    return len != oldLength;
}

template <class Map>
void String::mapUnits(uint32_t from, uint32_t to, Map map) {
    const auto change = [&](auto* text) { std::transform(text + from, text + to, text + from, map); };
    if (from >= to || to > len)
        return;
    if (isWide)
        change(buffer16);
    else
        change(buffer8);
}

void String::toLower() {
    mapUnits(0, len, [](auto c) { return ConstString::toLower(c); });
}

void String::toUpper() {
    mapUnits(0, len, [](auto c) { return ConstString::toUpper(c); });
}

void String::toLower(uint32_t index) {
    mapUnits(index, index + 1, [](auto c) { return ConstString::toLower(c); });
}

void String::toUpper(uint32_t index) {
    mapUnits(index, index + 1, [](auto c) { return ConstString::toUpper(c); });
}

template <class Char>
bool String::setUnit(uint32_t index, Char c) {
    if (index >= len)
        return false;
    if (c == 0)
        remove(index);
    else
        replaceRange(index, 1, ConstString(&c, 1));
    return true;
}

bool String::setChar8(uint32_t index, char c) {
    return setUnit(index, c);
}

bool String::setChar16(uint32_t index, tchar c) {
    return setUnit(index, c);
}

}  // namespace Tessarine
