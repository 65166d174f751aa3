#include "base/source/fstringunicode.h"
#include <algorithm>
#include <iterator>
#include <string>
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

std::u16string folded(std::u16string_view text) {
    std::u16string result(text.size() * 3, u'\0');  // no unit folds to more than three
    UErrorCode error = U_ZERO_ERROR;
    const int32_t size = u_strFoldCase(result.data(), int32_t(result.size()), text.data(), int32_t(text.size()),
                                       U_FOLD_CASE_DEFAULT, &error);
    result.resize(U_SUCCESS(error) ? size_t(size) : 0);
    return result;
}

int32_t signOf(int32_t number) {
    return (number > 0) - (number < 0);
}

bool isTrailSurrogate(std::u16string_view text, size_t at) {
    return at < text.size() && (text[at] & 0xFC00) == 0xDC00;
}

int32_t compareRest(std::u16string_view a, std::u16string_view b, size_t at, bool asPrefix) {
    if (at > 0 && (isTrailSurrogate(a, at) || isTrailSurrogate(b, at)))
        --at;  // a pair that begins alike
    a = a.substr(at);
    b = b.substr(at);
    if (asPrefix) {
        const std::u16string foldedA = folded(a), foldedB = folded(b);
        return foldedA.starts_with(foldedB) ? 0 : signOf(foldedA.compare(foldedB));
    }
    UErrorCode error = U_ZERO_ERROR;
    return signOf(
        u_strCaseCompare(a.data(), int32_t(a.size()), b.data(), int32_t(b.size()), U_FOLD_CASE_DEFAULT, &error));
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
