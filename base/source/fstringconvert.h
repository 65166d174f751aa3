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

/** A unit as comparisons that ignore case see it. */
tchar foldUnit(tchar c);
inline char foldUnit(char c) {
    return ConstString::toLower(c);
}

/** The units of a string of one width, wherever they stand. */
inline std::string_view units8(const ConstString& text) {
    return {static_cast<const char*>(text.ptr()), text.length()};
}
inline std::u16string_view units16(const ConstString& text) {
    return {static_cast<const tchar*>(text.ptr()), text.length()};
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

/** Calls with both texts in their own width when both are narrow, else with both wide. */
template <class Call>
auto inOneWidth(const ConstString& a, const ConstString& b, Call call) {
    if (!a.isWideString() && !b.isWideString())
        return call(units8(a), units8(b));
    const WideText wideA(a), wideB(b);
    return call(std::u16string_view(wideA), std::u16string_view(wideB));
}

}  // namespace Tessarine
