// The wildcard matcher against the rule written down as a plain recursion. An input is a byte of options, a byte that
// says how long the pattern is, the pattern and the text. Bytes stand for the few characters that matter; with kAnyUnits
// they stand for 16-bit units, are as many as there come, and have to be through in time.
#include "collect/cmregexp.h"
#include "pluginterfaces/base/smartpointer.h"
#include <algorithm>
#include <string>
#include <string_view>

using namespace Tessarine;

namespace {
enum Options : uint8_t { kCaseSensitive = 1, kAnyUnits = 2 };
constexpr size_t kMaxPattern = 9, kMaxText = 9;  // the recursion takes time exponential in both
constexpr std::u16string_view kAlphabet = u"**??\\\\aAbB\u00E9\u00C9";

void demand(bool holds) {
    if (!holds)
        __builtin_trap();
}

tchar folded(tchar c, bool caseSensitive) {
    return caseSensitive ? c : ConstString::toLower(c);
}

bool matches(std::u16string& pattern, size_t at, std::u16string_view text, bool caseSensitive) {
    for (; at < pattern.size(); ++at) {
        const bool isLiteral = at > 0 && pattern[at - 1] == u'\\';
        const tchar c = isLiteral ? tchar(0) : pattern[at];
        if (c == u'?')
            return matches(pattern, at + 1, text, caseSensitive) ||
                   (!text.empty() && matches(pattern, at + 1, text.substr(1), caseSensitive));
        if (c == u'*') {
            bool found = text.empty() && at + 1 == pattern.size();
            pattern[at] = u'?';
            for (size_t skipped = 0; skipped <= text.size() && !found; ++skipped)
                found = matches(pattern, at, text.substr(skipped), caseSensitive);
            pattern[at] = u'*';
            return found;
        }
        if (c == u'\\')
            continue;
        if (text.empty() || folded(text.front(), caseSensitive) != folded(pattern[at], caseSensitive))
            return false;
        text.remove_prefix(1);
    }
    return text.empty();
}

bool isValid(std::u16string_view pattern) {
    for (size_t i = 0; i + 1 < pattern.size(); ++i)
        if (pattern[i] == u'*' && pattern[i + 1] == u'*' && (i == 0 || pattern[i - 1] != u'\\'))
            return false;
    return true;
}

std::u16string fewCharacters(std::basic_string_view<uint8_t> bytes, size_t most) {
    std::u16string text;
    for (const uint8_t byte : bytes.substr(0, most))
        text += kAlphabet[byte % kAlphabet.size()];
    return text;
}

std::u16string anyUnits(std::basic_string_view<uint8_t> bytes) {
    std::u16string text;
    for (size_t i = 0; i + 1 < bytes.size(); i += 2)
        text += tchar(std::max(1, bytes[i] << 8 | bytes[i + 1]));
    return text;
}

ConstString viewOf(const std::u16string& text) {
    return ConstString(text.data(), int32_t(text.size()));
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 2)
        return 0;
    const bool caseSensitive = data[0] & kCaseSensitive, any = data[0] & kAnyUnits;
    const std::basic_string_view<uint8_t> bytes(data + 2, size - 2);
    const size_t length = std::min<size_t>(data[1], bytes.size());
    const auto patternBytes = bytes.substr(0, length), textBytes = bytes.substr(length);
    std::u16string pattern = any ? anyUnits(patternBytes) : fewCharacters(patternBytes, kMaxPattern);
    const std::u16string text = any ? anyUnits(textBytes) : fewCharacters(textBytes, kMaxText);

    const OPtr<CmRegularExpression> expression(new CmRegularExpression(viewOf(pattern), caseSensitive));
    const bool valid = isValid(pattern), found = expression->match(viewOf(text));
    demand(CmRegularExpression::isValidExpression(viewOf(pattern)) == valid);
    if (!any && valid)
        demand(found == matches(pattern, 0, text, caseSensitive));
    if (!valid && caseSensitive)
        demand(found == (pattern == text));
    return 0;
}
