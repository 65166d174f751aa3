#include "base/source/fstring.h"
#include "base/source/fstringconvert.h"
#include "base/source/fstringvector.h"
#include "pluginterfaces/base/fvariant.h"
#include "pluginterfaces/base/istringresult.h"
#include <algorithm>
#include <cstring>
#include <functional>
#include <string>

namespace Tessarine {
namespace {
constexpr size_t kSlackBytes = 256;  // a block may be so much larger than twice its text

/** Characters up to the terminator, at most count of them when it isn't negative. */
template <class Char>
uint32_t countOf(const Char* text, int32_t count) {
    if (!text || count == 0)
        return 0;
    const size_t limit = count < 0 ? ConstString::kMaxLength : size_t(count);
    if constexpr (sizeof(Char) == 1)
        return uint32_t(strnlen(text, limit));
    else
        return uint32_t(countUnits(text, limit));
}

/** A part of a text, whatever stands in it. */
template <class Char>
std::basic_string_view<Char> partOf(std::basic_string_view<Char> text, uint32_t index, int32_t count = -1) {
    return text.substr(std::min<size_t>(index, text.size()), size_t(count));
}

template <class Char>
int32_t copyUnits(std::basic_string_view<Char> text, Char* dst) {
    std::copy(text.begin(), text.end(), dst);
    dst[text.size()] = 0;
    return int32_t(text.size());
}
}  // namespace

constinit const FString FEmptyString;

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

ConstString ConstString::part(uint32_t index, int32_t count) const {
    ConstString view(*this, int32_t(std::min(index, kMaxLength)));
    view.len = upTo(view.len, count);
    return view;
}

bool ConstString::extract(String& out, uint32_t index, int32_t count) const {
    if (index >= len)
        return false;
    const ConstString found = part(index, count);
    String copy(found);
    if (copy.len != found.len)
        return false;
    out.take(copy);
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

void ConstString::toVariant(FVariant& value) const {
    if (isWide)
        value.setString16(text16());
    else
        value.setString8(text8());
}

bool ConstString::isDigit(uint32_t index) const {
    return inItsWidth(*this, [index](auto text) { return index < text.size() && isCharDigit(text[index]); });
}

bool ConstString::isAsciiString() const {
    return inItsWidth(*this, [](auto text) { return asciiRun(text) == text.size(); });
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
    room = block ? uint32_t((size_t(newLength) + 1) << wide) : 0;
}

/** The length, or what is left of it in a block that resize made smaller. */
uint32_t String::countedLength() const {
    if (hasRoom(len))
        return len;
    return isWide ? countOf(buffer16, int32_t(len)) : countOf(buffer8, int32_t(len));
}

/** Room for an edit of the present width: grows in steps, so that many small ones stay cheap, and gives back what has
    become much too large. Never for more than the longest text, so that what has room may be written. */
bool String::makeRoom(uint32_t newLength) {
    if (newLength > kMaxLength)
        return false;
    const size_t needed = (size_t(newLength) + 1) << isWide;
    if (needed <= room && room <= 2 * needed + kSlackBytes)
        return true;
    const size_t most = (size_t(kMaxLength) + 1) << isWide;
    const size_t wanted = needed > room && len > 0 ? std::min(needed + needed / 2, most) : needed;
    void* block = std::realloc(buffer, wanted);
    if (block) {
        buffer = block;
        room = uint32_t(wanted);
    }
    return block || needed <= room;
}

const char* String::text8() const {
    return convert(false, kCodePageDefault) ? ConstString::text8() : "";
}

const tchar* String::text16() const {
    return convert(true, kCodePageDefault) ? ConstString::text16() : u"";
}

char String::getChar8(uint32_t index) const {
    return convert(false, kCodePageDefault) ? ConstString::getChar8(index) : char(0);
}

tchar String::getChar16(uint32_t index) const {
    return convert(true, kCodePageDefault) ? ConstString::getChar16(index) : tchar(0);
}

template <class Char>
String& String::assignUnits(const Char* text, uint32_t count) {
    if (buffer && static_cast<const void*>(text) == buffer)
        return *this;
    if (owns(text)) {
        String copy;
        copy.assignUnits(text, count);
        if (copy.len == count)
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
    const uint32_t size = upTo(text.len, count);
    return text.isWide ? assignUnits(text.buffer16, size) : assignUnits(text.buffer8, size);
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
    room = uint32_t((size_t(newLength) + 1) << wide);
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
    return convert(true, codePage);
}

bool String::toMultiByte(uint32_t codePage) {
    if (isWide || codePage == kCodePageDefault || isEmpty())
        return convert(false, codePage);
    String copy(*this);
    if (copy.isEmpty() || !copy.convert(true, kCodePageDefault) || !copy.convert(false, codePage))
        return false;
    swapContent(copy);
    return true;
}

/** Brings the text to a width; it may end before its length. */
bool String::convert(bool wide, uint32_t codePage) const {
    if (wide == isWideString())
        return true;
    if (isEmpty()) {
        setBlock(nullptr, 0, wide);
        return true;
    }
    if (wide) {
        const ConvertedText decoded = decodedBlock({buffer8, countOf(buffer8, int32_t(len))}, codePage);
        if (decoded.block)
            setBlock(decoded.block, decoded.length, true);
        return decoded.block;
    }
    const ConvertedText encoded = encodedBlock({buffer16, countedLength()}, codePage);
    if (encoded.block)
        setBlock(encoded.block, countOf(static_cast<char*>(encoded.block), int32_t(encoded.length)), false);
    return encoded.block;
}

bool String::fromUTF8(const char* text) {
    const std::string_view bytes(text ? text : "");
    const ConvertedText converted =
        bytes.empty() || bytes.size() > kMaxLength ? ConvertedText() : decodedBlock(bytes, kCodePageUTF8);
    if (!converted.block && !bytes.empty())
        return false;
    setBlock(converted.block, converted.length, true);
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
    len = room = 0;
    return block;
}

void String::swapContent(String& other) {
    std::swap(buffer, other.buffer);
    std::swap(room, other.room);
    const uint32_t length = len;
    const bool wide = isWide;
    len = other.len;
    isWide = other.isWide;
    other.len = length;
    other.isWide = wide;
}

String& String::operator=(String&& text) noexcept {
    take(text);
    return *this;
}

}  // namespace Tessarine
