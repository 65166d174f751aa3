#include "base/source/fstring.h"
#include "base/source/fstreamer.h"
#include "base/source/fstringconvert.h"
#include "pluginterfaces/base/fvariant.h"
#include "pluginterfaces/base/istringresult.h"
#include <algorithm>
#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <type_traits>
#include <unicode/uchar.h>
#include <unicode/ustring.h>

namespace Tessarine {
namespace {
constexpr int32_t kMaxStoredBytes = 50000;  // what load accepts
constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";

template <class Char>
using View = std::basic_string_view<Char>;

/** Characters up to the terminator, at most count of them when it isn't negative. */
template <class Char>
uint32_t countOf(const Char* text, int32_t count) {
    if (!text || count == 0)
        return 0;
    const size_t limit = count < 0 ? ConstString::kMaxLength : size_t(count);
    if constexpr (sizeof(Char) == 1)
        return uint32_t(strnlen(text, limit));
    size_t length = 0;
    while (length < limit && text[length])
        ++length;
    return uint32_t(length);
}

uint32_t upTo(uint32_t available, int32_t count) {
    return count < 0 ? available : std::min(available, uint32_t(count));
}

template <class Char>
View<Char> partOf(View<Char> text, uint32_t index, int32_t count = -1) {
    if (index >= text.size())
        return {};
    return text.substr(index, upTo(uint32_t(text.size()) - index, count));
}

ConstString viewOf(const ConstString& text, uint32_t index, int32_t count) {
    if (index >= text.length())
        return {};
    const int32_t size = int32_t(upTo(text.length() - index, count));
    if (text.isWideString())
        return ConstString(units16(text).data() + index, size);
    return ConstString(units8(text).data() + index, size);
}

template <class Char, class Fold>
int32_t compareUnits(View<Char> a, View<Char> b, Fold fold) {
    using Unit = std::make_unsigned_t<Char>;
    const auto [atA, atB] = std::mismatch(a.begin(), a.end(), b.begin(), b.end(), [fold](Char left, Char right) {
        return left == right || fold(left) == fold(right);
    });
    if (atA != a.end() && atB != b.end())
        return int32_t(Unit(fold(*atA))) - int32_t(Unit(fold(*atB)));
    return (atA != a.end()) - (atB != b.end());
}

int32_t compareViews(std::string_view a, std::string_view b, int32_t count, CompareMode mode) {
    a = partOf(a, 0, count);
    b = partOf(b, 0, count);
    if (mode == kMatchCase)
        return compareUnits(a, b, std::identity());
    return compareUnits(a, b, [](char c) { return foldUnit(c); });
}

int32_t compareIgnoringCase(std::u16string_view a, std::u16string_view b) {
    const auto [atA, atB] = std::mismatch(a.begin(), a.end(), b.begin(), b.end(), [](tchar left, tchar right) {
        return ConstString::isCharAscii(left) && ConstString::isCharAscii(right) && foldUnit(left) == foldUnit(right);
    });
    UErrorCode error = U_ZERO_ERROR;
    const size_t same = size_t(atA - a.begin());
    const int32_t result = u_strCaseCompare(a.data() + same, int32_t(a.size() - same), b.data() + same,
                                            int32_t(b.size() - same), U_FOLD_CASE_DEFAULT, &error);
    return (result > 0) - (result < 0);
}

/** Ignoring case, a count asks whether the other text's start stands here; all else compares both starts. */
int32_t compareViews(std::u16string_view a, std::u16string_view b, int32_t count, CompareMode mode) {
    b = partOf(b, 0, count);
    if (mode == kMatchCase)
        return compareUnits(partOf(a, 0, count), b, std::identity());
    return compareIgnoringCase(count < 0 ? a : partOf(a, 0, int32_t(b.size())), b);
}

template <class Char>
bool sameUnit(Char a, Char b, CompareMode mode) {
    return a == b || (mode == kIgnoreCase && foldUnit(a) == foldUnit(b));
}

template <class Char>
bool standsAt(View<Char> text, size_t at, View<Char> what, CompareMode mode) {
    return std::equal(what.begin(), what.end(), text.begin() + at,
                      [mode](Char a, Char b) { return sameUnit(a, b, mode); });
}

template <class Char>
int32_t firstPlace(View<Char> text, View<Char> what, size_t start, size_t end, CompareMode mode) {
    text = text.substr(0, end);
    if (mode == kMatchCase) {
        const size_t place = text.find(what, start);
        return place == text.npos ? -1 : int32_t(place);
    }
    for (size_t at = start; at + what.size() <= text.size(); ++at)
        if (standsAt(text, at, what, mode))
            return int32_t(at);
    return -1;
}

template <class Char>
int32_t lastPlace(View<Char> text, View<Char> what, size_t start, CompareMode mode) {
    if (what.size() > text.size())
        return -1;
    for (size_t at = std::min(start, text.size() - what.size()) + 1; at-- > 0;)
        if (standsAt(text, at, what, mode))
            return int32_t(at);
    return -1;
}

template <class Char>
int32_t copyUnits(View<Char> text, Char* dst) {
    std::copy(text.begin(), text.end(), dst);
    dst[text.size()] = 0;
    return int32_t(text.size());
}

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

template <class Char>
ConstString trimmed(View<Char> text, CharGroup group) {
    const auto kept = [group](Char c) { return isKept(c, group); };
    const auto first = std::ranges::find_if(text, kept);
    const auto last = std::find_if(text.rbegin(), std::make_reverse_iterator(first), kept).base();
    return ConstString(text.data() + (first - text.begin()), int32_t(last - first));
}

/** A stored text: what of it is the text itself. */
struct StoredText {
    std::string_view bytes;
    bool utf8;
};

StoredText withoutMark(std::string_view bytes) {
    const bool behind = bytes.size() > kUtf8Mark.size() && bytes.ends_with(kUtf8Mark);
    const bool before = bytes.size() > kUtf8Mark.size() && bytes.starts_with(kUtf8Mark);
    if (behind)
        bytes.remove_suffix(kUtf8Mark.size());
    if (before)
        bytes.remove_prefix(std::min(kUtf8Mark.size(), bytes.size()));
    const size_t last = bytes.find_last_not_of('\0');
    return {bytes.substr(0, last == bytes.npos ? 0 : last + 1), behind || before};
}

/** h = (c + (h << 6)) % n; Signed is the type whose sign counts. */
template <class Char, class Signed>
uint32_t hashUnits(const Char* text, uint32_t n) {
    uint32_t h = 0;
    for (; text && *text; ++text)
        h = (uint32_t(Signed(*text)) + (h << 6)) % n;
    return h;
}
}  // namespace

constinit const FString FEmptyString;

uint32_t hashString8(const char* text, uint32_t n) {
    return hashUnits<char, int8_t>(text, n);
}

uint32_t hashString16(const tchar* text, uint32_t n) {
    return hashUnits<tchar, uint16_t>(text, n);
}

ConstString::ConstString(const char* text, int32_t count) : len(countOf(text, count)), isWide(0) {
    buffer8 = const_cast<char*>(text);
}

ConstString::ConstString(const tchar* text, int32_t count) : len(countOf(text, count)), isWide(1) {
    buffer16 = const_cast<tchar*>(text);
}

ConstString::ConstString(const ConstString& text, int32_t offset)
    : buffer(text.buffer), len(text.len), isWide(text.isWide) {
    if (offset <= 0 || !buffer)
        return;
    const uint32_t skipped = std::min(uint32_t(offset), uint32_t(len));
    if (isWide)
        buffer16 += skipped;
    else
        buffer8 += skipped;
    len -= skipped;
}

ConstString::ConstString(const FVariant& value) : ConstString() {
    if (value.getType() == FVariant::kString8)
        *this = ConstString(value.getString8());
    else if (value.getType() == FVariant::kString16)
        *this = ConstString(value.getString16());
}

const char* ConstString::text8() const {
    return !isWide && buffer8 ? buffer8 : "";
}

const tchar* ConstString::text16() const {
    return isWide && buffer16 ? buffer16 : u"";
}

char ConstString::getChar8(uint32_t index) const {
    return !isWide && buffer8 && index < len ? buffer8[index] : char(0);
}

tchar ConstString::getChar16(uint32_t index) const {
    return isWide && buffer16 && index < len ? buffer16[index] : tchar(0);
}

int32_t ConstString::compare(const ConstString& other, int32_t count, CompareMode mode) const {
    if (count == 0)
        return 0;
    if (other.isEmpty())
        return isEmpty() ? 0 : 1;
    if (isEmpty())
        return -1;
    return inOneWidth(*this, other, [&](auto a, auto b) { return compareViews(a, b, count, mode); });
}

int32_t ConstString::compareAt(uint32_t index, const ConstString& other, int32_t count, CompareMode mode) const {
    return viewOf(*this, index, -1).compare(other, count, mode);
}

int32_t ConstString::findNext(int32_t start, const ConstString& text, CompareMode mode, int32_t end) const {
    if (text.isEmpty() || start >= int32_t(len))
        return -1;
    return inOneWidth(*this, text, [&](auto here, auto what) {
        return firstPlace(here, what, size_t(std::max(start, 0)), upTo(uint32_t(here.size()), end), mode);
    });
}

int32_t ConstString::findNext(int32_t start, char c, CompareMode mode, int32_t end) const {
    return findNext(start, ConstString(&c, 1), mode, end);
}

int32_t ConstString::findNext(int32_t start, tchar c, CompareMode mode, int32_t end) const {
    return findNext(start, ConstString(&c, 1), mode, end);
}

int32_t ConstString::findPrev(int32_t start, const ConstString& text, CompareMode mode) const {
    if (text.isEmpty())
        return -1;
    return inOneWidth(*this, text, [&](auto here, auto what) {
        return lastPlace(here, what, start < 0 ? here.size() : size_t(start), mode);
    });
}

int32_t ConstString::findPrev(int32_t start, char c, CompareMode mode) const {
    return findPrev(start, ConstString(&c, 1), mode);
}

int32_t ConstString::findPrev(int32_t start, tchar c, CompareMode mode) const {
    return findPrev(start, ConstString(&c, 1), mode);
}

bool ConstString::startsWith(const ConstString& text, CompareMode mode) const {
    if (text.isEmpty())
        return isEmpty();
    return inOneWidth(
        *this, text, [&](auto here, auto what) { return what.size() <= here.size() && standsAt(here, 0, what, mode); });
}

bool ConstString::endsWith(const ConstString& text, CompareMode mode) const {
    if (text.isEmpty())
        return isEmpty();
    return inOneWidth(*this, text, [&](auto here, auto what) {
        return what.size() <= here.size() && standsAt(here, here.size() - what.size(), what, mode);
    });
}

bool ConstString::extract(String& out, uint32_t index, int32_t count) const {
    if (index >= len)
        return false;
    String part(viewOf(*this, index, count));
    out.take(part);
    return true;
}

int32_t ConstString::copyTo8(char* dst, uint32_t index, int32_t count) const {
    if (!isWide)
        return copyUnits(partOf(units8(*this), index, count), dst);
    String copy(*this);
    return copyUnits(partOf(std::string_view(copy.text8()), index, count), dst);
}

int32_t ConstString::copyTo16(tchar* dst, uint32_t index, int32_t count) const {
    return copyUnits(partOf(std::u16string_view(WideText(*this)), index, count), dst);
}

void ConstString::copyTo(IString& out) const {
    const String copy(*this);
    if (isWide)
        out.setText16(copy.text16());
    else
        out.setText8(copy.text8());
}

void ConstString::copyTo(IStringResult* out) const {
    if (out)
        out->setText(String(*this).text8());
}

bool ConstString::isDigit(uint32_t index) const {
    if (index >= len)
        return false;
    return isWide ? isCharDigit(buffer16[index]) : isCharDigit(buffer8[index]);
}

bool ConstString::isAsciiString() const {
    const auto ascii = [](auto c) { return isCharAscii(c); };
    return isWide ? std::ranges::all_of(units16(*this), ascii) : std::ranges::all_of(units8(*this), ascii);
}

template <class Char>
Char* String::units() const {
    if constexpr (sizeof(Char) == 1)
        return buffer8;
    else
        return buffer16;
}

/** Any part of the text is the string's own. */
bool String::owns(const void* text) const {
    const char* place = static_cast<const char*>(text);
    return buffer && !std::less<>()(place, buffer8) && !std::less<>()(buffer8 + (size_t(len) << isWide), place);
}

void String::setBlock(void* block, uint32_t newLength, bool wide) const {
    std::free(buffer);
    buffer = block;
    len = newLength;
    isWide = wide;
}

const char* String::text8() const {
    if (isWide && !narrow(kCodePageDefault))
        return "";
    return ConstString::text8();
}

const tchar* String::text16() const {
    if (!isWide && !widen(kCodePageDefault))
        return u"";
    return ConstString::text16();
}

char String::getChar8(uint32_t index) const {
    if (isWide)
        narrow(kCodePageDefault);
    return ConstString::getChar8(index);
}

tchar String::getChar16(uint32_t index) const {
    if (!isWide)
        widen(kCodePageDefault);
    return ConstString::getChar16(index);
}

template <class Char>
String& String::assignUnits(const Char* text, uint32_t count) {
    if (buffer && static_cast<const void*>(text) == buffer)
        return *this;
    if (owns(text)) {
        String copy(text, int32_t(count));
        swapContent(copy);
    } else if (resize(count, sizeof(Char) == sizeof(tchar)) && count > 0) {
        std::copy_n(text, count, units<Char>());
        len = count;
    }
    return *this;
}

String& String::assign(const char* text, int32_t count) {
    return assignUnits(text, countOf(text, count));
}

String& String::assign(const tchar* text, int32_t count) {
    return assignUnits(text, countOf(text, count));
}

String& String::assign(const ConstString& text, int32_t count) {
    const uint32_t size = upTo(text.length(), count);
    return text.isWideString() ? assignUnits(units16(text).data(), size) : assignUnits(units8(text).data(), size);
}

template <class Char>
String& String::assignRepeated(Char c, int32_t count) {
    const uint32_t size = c ? uint32_t(std::max(count, 0)) : 0;
    if (resize(size, sizeof(Char) == sizeof(tchar)) && size > 0) {
        std::fill_n(units<Char>(), size, c);
        len = size;
    }
    return *this;
}

String& String::assign(char c, int32_t count) {
    return assignRepeated(c, count);
}

String& String::assign(tchar c, int32_t count) {
    return assignRepeated(c, count);
}

String& String::append(const char* text, int32_t count) {
    return append(ConstString(text, count));
}

String& String::append(const tchar* text, int32_t count) {
    return append(ConstString(text, count));
}

String& String::append(const ConstString& text, int32_t count) {
    return replaceRange(len, 0, viewOf(text, 0, count));
}

String& String::append(char c, int32_t count) {
    return append(String().assign(c, count));
}

String& String::append(tchar c, int32_t count) {
    return append(String().assign(c, count));
}

String& String::insertAt(uint32_t index, const char* text, int32_t count) {
    return insertAt(index, ConstString(text, count));
}

String& String::insertAt(uint32_t index, const tchar* text, int32_t count) {
    return insertAt(index, ConstString(text, count));
}

String& String::insertAt(uint32_t index, const ConstString& text, int32_t count) {
    return index > len ? *this : replaceRange(index, 0, viewOf(text, 0, count));
}

String& String::replace(uint32_t index, int32_t count, const ConstString& text) {
    return index > len ? *this : replaceRange(index, upTo(len - index, count), text);
}

int32_t String::replace(const ConstString& what, const ConstString& with, CompareMode mode) {
    String source(*this), search(what), result;
    if ((source.isWide || search.isWide) && !(source.widen(kCodePageDefault) && search.widen(kCodePageDefault)))
        return 0;
    int32_t found = 0, from = 0;
    for (int32_t at; (at = source.findNext(from, search, mode)) >= 0; ++found) {
        result.append(viewOf(source, uint32_t(from), at - from)).append(with);
        from = at + int32_t(search.len);
    }
    if (found > 0)
        take(result.append(viewOf(source, uint32_t(from), -1)));
    return found;
}

String& String::remove(uint32_t index, int32_t count) {
    return index >= len ? *this : replaceRange(index, upTo(len - index, count), {});
}

String& String::operator=(String&& text) noexcept {
    take(text);
    return *this;
}

/** Brings text and string to one width, then replaces. */
String& String::replaceRange(uint32_t index, uint32_t removed, const ConstString& text) {
    if (owns(text.ptr()))
        return replaceRange(index, removed, String(text));
    if (isEmpty() && !text.isEmpty())
        return assign(text);
    if (text.isEmpty() || text.isWideString() == isWideString()) {
        return isWide ? replaceUnits(index, removed, units16(text).data(), text.length())
                      : replaceUnits(index, removed, units8(text).data(), text.length());
    }
    if (isWide) {
        const WideText wide(text);
        const std::u16string_view units = wide;
        return replaceUnits(index, removed, units.data(), uint32_t(units.size()));
    }
    return widen(kCodePageDefault) ? replaceUnits(index, removed, units16(text).data(), text.length()) : *this;
}

template <class Char>
String& String::replaceUnits(uint32_t index, uint32_t removed, const Char* text, uint32_t count) {
    const uint32_t oldLength = len;
    index = std::min(index, oldLength);  // widening a text of two-byte characters makes it shorter
    removed = std::min(removed, oldLength - index);
    if ((count == 0 && removed == 0) || count > kMaxLength - (oldLength - removed))
        return *this;
    const uint32_t newLength = oldLength - removed + count;
    if (newLength > oldLength && !resize(newLength, isWide))
        return *this;
    Char* place = units<Char>() + index;
    std::memmove(place + count, place + removed, (oldLength - index - removed) * sizeof(Char));
    std::copy_n(text, count, place);
    units<Char>()[newLength] = 0;
    len = newLength;
    if (newLength < oldLength)
        resize(newLength, isWide);
    return *this;
}

bool String::trim(CharGroup group) {
    const ConstString rest = isWide ? trimmed(units16(*this), group) : trimmed(units8(*this), group);
    if (rest.length() == len)
        return false;
    String copy(rest);
    swapContent(copy);
    return true;
}

template <class Map>
void String::mapUnits(uint32_t from, uint32_t to, Map map) {
    for (uint32_t i = from; i < std::min(to, uint32_t(len)); ++i) {
        if (isWide)
            buffer16[i] = map(buffer16[i]);
        else
            buffer8[i] = map(buffer8[i]);
    }
}

void String::toLower() {
    mapUnits(0, len, [](auto c) { return ConstString::toLower(c); });
}

void String::toUpper() {
    mapUnits(0, len, [](auto c) { return ConstString::toUpper(c); });
}

void String::toLower(uint32_t index) {
    if (index < len)
        mapUnits(index, index + 1, [](auto c) { return ConstString::toLower(c); });
}

void String::toUpper(uint32_t index) {
    if (index < len)
        mapUnits(index, index + 1, [](auto c) { return ConstString::toUpper(c); });
}

bool String::setChar8(uint32_t index, char c) {
    if (index >= len)
        return false;
    if (c == 0)
        remove(index);
    else
        replaceRange(index, 1, ConstString(&c, 1));
    return true;
}

bool String::setChar16(uint32_t index, tchar c) {
    if (index >= len)
        return false;
    if (c == 0)
        remove(index);
    else
        replaceRange(index, 1, ConstString(&c, 1));
    return true;
}

bool String::resize(uint32_t newLength, bool wide, bool fill) {
    if (newLength == 0) {
        setBlock(nullptr, 0, wide);
        return true;
    }
    if (newLength > kMaxLength)
        return false;
    const bool fresh = !buffer;
    void* block = std::realloc(buffer, (size_t(newLength) + 1) << wide);
    if (!block)
        return false;
    buffer = block;
    isWide = wide;
    const auto prepare = [&](auto* text) {
        if (fresh)
            text[0] = 0;
        if (fill && newLength > len)
            std::fill(text + len, text + newLength, ' ');
        text[newLength] = 0;
    };
    if (wide)
        prepare(buffer16);
    else
        prepare(buffer8);
    return true;
}

void String::updateLength() {
    len = isWide ? countOf(buffer16, -1) : countOf(buffer8, -1);
}

bool String::toWideString(uint32_t codePage) {
    return widen(codePage);
}

bool String::toMultiByte(uint32_t codePage) {
    if (isWide)
        return narrow(codePage);
    if (codePage == kCodePageDefault || isEmpty())
        return true;
    String copy(*this);
    if (!copy.widen(kCodePageDefault) || !copy.narrow(codePage))
        return false;
    swapContent(copy);
    return true;
}

bool String::widen(uint32_t codePage) const {
    if (isWide)
        return true;
    if (isEmpty()) {
        setBlock(nullptr, 0, true);
        return true;
    }
    tchar* block = static_cast<tchar*>(std::malloc((size_t(len) + 1) * sizeof(tchar)));
    const int64_t count = block ? decodeText({buffer8, countOf(buffer8, int32_t(len))}, block, len, codePage) : -1;
    if (count <= 0) {
        std::free(block);
        return false;
    }
    block[count] = 0;
    setBlock(block, uint32_t(count), true);
    return true;
}

bool String::narrow(uint32_t codePage) const {
    if (!isWide)
        return true;
    if (isEmpty()) {
        setBlock(nullptr, 0, false);
        return true;
    }
    const std::u16string_view text(buffer16, countOf(buffer16, int32_t(len)));
    uint64_t capacity = uint64_t(text.size()) * maxBytesPerUnit(codePage);
    if (capacity > kMaxLength)
        capacity = uint64_t(encodeText(text, nullptr, 0, codePage));
    char* block = capacity > kMaxLength ? nullptr : static_cast<char*>(std::malloc(capacity + 1));
    const int64_t count = block ? encodeText(text, block, capacity, codePage) : 0;
    if (count <= 0) {
        std::free(block);
        return false;
    }
    block[count] = 0;
    setBlock(block, uint32_t(count), false);
    return true;
}

bool String::fromUTF8(const char* text) {
    String converted(text);
    if (!converted.widen(kCodePageUTF8))
        return false;
    swapContent(converted);
    return true;
}

void String::take(void* text, bool wide) {
    if (text && text == buffer)
        return;
    setBlock(text, 0, wide);
    updateLength();
}

void String::take(String& other) {
    if (this == &other)
        return;
    swapContent(other);
    other.setBlock(nullptr, 0, other.isWide);
}

void* String::pass() {
    void* block = buffer;
    buffer = nullptr;
    len = 0;
    return block;
}

void String::swapContent(String& other) {
    std::swap(buffer, other.buffer);
    const uint32_t length = len;
    const bool wide = isWide;
    len = other.len;
    isWide = other.isWide;
    other.len = length;
    other.isWide = wide;
}

bool FString::load(FStreamer& stream) {
    int32_t size = 0;
    if (!stream.readInt32(size) || size < 0)
        return false;
    if (size > kMaxStoredBytes) {
        stream.seek(size, kFromCurrent);
        return false;
    }
    std::string bytes(size_t(size), '\0');
    if (stream.readRaw(bytes.data(), size) != size)
        return false;
    const StoredText stored = withoutMark(bytes);
    const uint32_t length = uint32_t(stored.bytes.size());
    FString text;
    if (!text.resize(length, false))
        return false;
    stored.bytes.copy(text.buffer8, length);
    text.len = length;
    if (stored.utf8 && !text.toWideString(kCodePageUTF8))
        return false;
    swapContent(text);
    return true;
}

bool FString::store(FStreamer& stream) const {
    return isWide ? storeString16(stream, buffer16, int32_t(len)) : storeString8(stream, buffer8, int32_t(len));
}

bool FString::storeString8(FStreamer& stream, const char* text, int32_t count) {
    const uint32_t size = countOf(text, count);
    if (size == 0)
        return stream.writeInt32(0);
    return stream.writeInt32(int32_t(size) + 1) && stream.writeRaw(text, size) == size && stream.writeChar8(0);
}

bool FString::storeString16(FStreamer& stream, const tchar* text, int32_t count) {
    String utf8(text, count);
    if (utf8.isEmpty())
        return stream.writeInt32(0);
    if (!utf8.toMultiByte(kCodePageUTF8))
        return false;
    const int32_t size = int32_t(utf8.length()) + 1;
    const int32_t markSize = int32_t(kUtf8Mark.size());
    return stream.writeInt32(size + markSize) && stream.writeRaw(utf8.text8(), size) == size &&
           stream.writeRaw(kUtf8Mark.data(), markSize) == markSize;
}

}  // namespace Tessarine
