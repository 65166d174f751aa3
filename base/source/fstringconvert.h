#pragma once
#include "base/source/fstring.h"
#include <string_view>

/** Counted conversions under the string family. */

namespace Tessarine {

/** Units written, at most capacity, whole characters only; no terminator. -1: malformed. A null dst counts what there
    would be. */
int64_t decodeText(std::string_view src, tchar* dst, size_t capacity, uint32_t codePage);
/** Bytes written, at most capacity, whole characters only; no terminator. A null dst counts what there would be. */
int64_t encodeText(std::u16string_view src, char* dst, size_t capacity, uint32_t codePage);
/** The most bytes that one unit can need. */
uint32_t maxBytesPerUnit(uint32_t codePage);
/** The code page of a platform encoding, that of ASCII for an unknown one. */
uint32_t codePageOfEncoding(uint32_t encoding);

/** A text in a block of malloc of just its size, with its terminator. */
struct ConvertedText {
    void* block = nullptr;  // null: malformed, too long or no memory
    uint32_t length = 0;
};
ConvertedText decodedBlock(std::string_view src, uint32_t codePage);
ConvertedText encodedBlock(std::u16string_view src, uint32_t codePage);

/** How many units at the start are ASCII. */
size_t asciiRun(std::string_view text);
size_t asciiRun(std::u16string_view text);

/** A unit as comparisons that ignore case see it: its simple folding. */
tchar foldUnit(tchar c);
inline char foldUnit(char c) {
    return ConstString::toLower(c);
}

/** The first place at or after start, or -1; an empty text is nowhere. */
int32_t findText(std::string_view text, std::string_view what, size_t start, CompareMode mode);
int32_t findText(std::u16string_view text, std::u16string_view what, size_t start, CompareMode mode);

inline uint32_t upTo(uint32_t available, int32_t count) {
    return count < 0 || uint32_t(count) > available ? available : uint32_t(count);
}

/** A text of either width seen as 16-bit text, converted where it must be; a short one without an allocation.
    Unconvertible text is empty. */
class WideText {
public:
    explicit WideText(const ConstString& text);
    WideText(const WideText&) = delete;
    operator std::u16string_view() const { return units; }

private:
    tchar local[64];
    String copy;
    std::u16string_view units;
};

/** Calls with both texts in their own width when they have the same, else with both wide. */
template <class Call>
auto inOneWidth(const ConstString& a, const ConstString& b, Call call) {
    if (a.isWideString() && b.isWideString())
        return call(units16(a), units16(b));
    if (!a.isWideString() && !b.isWideString())
        return call(units8(a), units8(b));
    const WideText wideA(a), wideB(b);
    return call(std::u16string_view(wideA), std::u16string_view(wideB));
}

/** Calls with the units of a text in its own width. */
template <class Call>
auto inItsWidth(const ConstString& text, Call call) {
    return text.isWideString() ? call(units16(text)) : call(units8(text));
}

}  // namespace Tessarine
