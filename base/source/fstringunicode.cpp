#include "base/source/fstringunicode.h"
#include <algorithm>
#include <iterator>
#include <string_view>
#include <unicode/uchar.h>
#include <unicode/unorm2.h>
#include <unicode/ustring.h>

namespace Tessarine {
namespace {
using CaseMapping = int32_t (*)(UChar*, int32_t, const UChar*, int32_t, const char*, UErrorCode*);

tchar mapCase(CaseMapping mapping, tchar c) {
    UErrorCode error = U_ZERO_ERROR;
    UChar mapped[4];
    const int32_t count = mapping(mapped, int32_t(std::size(mapped)), &c, 1, "", &error);
    return U_SUCCESS(error) && count == 1 ? mapped[0] : c;
}

/** 0 for a unit that folds to more than one. */
tchar wholeFold(tchar c) {
    UErrorCode error = U_ZERO_ERROR;
    UChar folded[4];
    const int32_t count = u_strFoldCase(folded, int32_t(std::size(folded)), &c, 1, U_FOLD_CASE_DEFAULT, &error);
    return U_SUCCESS(error) && count == 1 ? folded[0] : tchar(0);
}

constexpr tchar kTableUnits = 0x600;  // Latin, Greek, Cyrillic: nearly all alphabets that have case

/** What the Unicode service answers for the first alphabets, asked once. */
struct CaseTable {
    CaseTable() {
        for (tchar c = 0; c < kTableUnits; ++c) {
            upper[c] = mapCase(u_strToUpper, c);
            lower[c] = mapCase(u_strToLower, c);
            simpleFold[c] = tchar(u_foldCase(c, U_FOLD_CASE_DEFAULT));
            fold[c] = wholeFold(c);
        }
    }
    tchar upper[kTableUnits], lower[kTableUnits], simpleFold[kTableUnits], fold[kTableUnits];
};

const CaseTable& caseTable() {
    static const CaseTable table;
    return table;
}

bool isTrailSurrogate(std::u16string_view text, size_t at) {
    return at < text.size() && (text[at] & 0xFC00) == 0xDC00;
}

/** The full folding of a text, a unit at a time. */
class FoldedUnits {
public:
    explicit FoldedUnits(std::u16string_view text) : rest(text) {}
    /** -1 at the end. */
    int32_t next() {
        if (at == count && !foldCharacter())
            return -1;
        return units[at++];
    }

private:
    bool foldCharacter() {
        if (rest.empty())
            return false;
        const int32_t size = (rest[0] & 0xFC00) == 0xD800 && isTrailSurrogate(rest, 1) ? 2 : 1;
        UErrorCode error = U_ZERO_ERROR;
        units[0] = rest[0] < kTableUnits ? caseTable().fold[rest[0]] : tchar(0);
        count = units[0]
                    ? 1
                    : u_strFoldCase(units, int32_t(std::size(units)), rest.data(), size, U_FOLD_CASE_DEFAULT, &error);
        at = 0;
        rest.remove_prefix(size_t(size));
        return true;
    }

    std::u16string_view rest;
    UChar units[4];  // no character folds to more than three
    int32_t at = 0, count = 0;
};

int32_t signOf(int32_t number) {
    return (number > 0) - (number < 0);
}

/** Not by the service's own comparison, which looks at foreign memory where a lone surrogate meets a pair. */
int32_t compareRest(std::u16string_view a, std::u16string_view b, size_t at, bool asPrefix) {
    if (at > 0 && (isTrailSurrogate(a, at) || isTrailSurrogate(b, at)))
        --at;  // a pair that begins alike
    FoldedUnits foldedA(a.substr(at)), foldedB(b.substr(at));
    for (;;) {
        const int32_t unitA = foldedA.next(), unitB = foldedB.next();
        if (unitB < 0 && asPrefix)
            return 0;
        if (unitA != unitB || unitA < 0)
            return signOf(unitA - unitB);
    }
}

const UNormalizer2* normalizer(UnicodeNormalization form, UErrorCode& error) {
    static constexpr const UNormalizer2* (*kNormalizers[])(UErrorCode*) = {
        unorm2_getNFCInstance, unorm2_getNFDInstance, unorm2_getNFKCInstance, unorm2_getNFKDInstance};
    return kNormalizers[form](&error);
}
}  // namespace

tchar foldUnit(tchar c) {
    if (ConstString::isCharAscii(c))
        return tchar(foldUnit(char(c)));
    return c < kTableUnits ? caseTable().simpleFold[c] : tchar(u_foldCase(c, U_FOLD_CASE_DEFAULT));
}

tchar ConstString::toUpper(tchar c) {
    if (isCharAscii(c))
        return tchar(toUpper(char(c)));
    return c < kTableUnits ? caseTable().upper[c] : mapCase(u_strToUpper, c);
}

tchar ConstString::toLower(tchar c) {
    if (isCharAscii(c))
        return tchar(toLower(char(c)));
    return c < kTableUnits ? caseTable().lower[c] : mapCase(u_strToLower, c);
}

bool ConstString::isCharSpace(tchar c) {
    static constexpr tchar kSpaces[] = {32, 160, 8239, 8287, 12288};
    return (c >= 8194 && c <= 8203) || std::ranges::find(kSpaces, c) != std::end(kSpaces);
}

int32_t compareIgnoringCase(std::u16string_view a, std::u16string_view b, bool asPrefix) {
    const size_t size = std::min(a.size(), b.size());
    size_t at = sameIgnoringCase(a.data(), b.data(), size);
    for (; at < size; at += 1 + sameIgnoringCase(a.data() + at + 1, b.data() + at + 1, size - at - 1)) {
        if (a[at] >= kTableUnits || b[at] >= kTableUnits)
            return compareRest(a, b, at, asPrefix);
        const tchar foldA = caseTable().fold[a[at]], foldB = caseTable().fold[b[at]];
        if (foldA == 0 || foldB == 0)
            return compareRest(a, b, at, asPrefix);
        if (foldA != foldB)
            return signOf(foldA - foldB);
    }
    return asPrefix && b.size() == size ? 0 : (a.size() > size) - (b.size() > size);
}

bool ConstString::isNormalized(UnicodeNormalization form) const {
    if (isEmpty() || isAsciiString())
        return true;
    UErrorCode error = U_ZERO_ERROR;
    const WideText wide(*this);
    const std::u16string_view text = wide;
    return unorm2_isNormalized(normalizer(form, error), text.data(), int32_t(text.size()), &error) && U_SUCCESS(error);
}

bool String::normalize(UnicodeNormalization form) {
    if (!isWide)
        return false;
    if (isEmpty() || isNormalized(form))
        return true;
    UErrorCode error = U_ZERO_ERROR;
    const UNormalizer2* service = normalizer(form, error);
    const int32_t size = unorm2_normalize(service, buffer16, int32_t(len), nullptr, 0, &error);
    String result;
    if (error != U_BUFFER_OVERFLOW_ERROR || !result.resize(uint32_t(size), true))
        return false;
    error = U_ZERO_ERROR;
    unorm2_normalize(service, buffer16, int32_t(len), result.buffer16, size, &error);
    result.len = uint32_t(size);
    if (U_FAILURE(error))
        return false;
    swapContent(result);
    return true;
}

}  // namespace Tessarine
