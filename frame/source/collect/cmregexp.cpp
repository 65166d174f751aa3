#include "collect/cmregexp.h"
#include "base/source/fstringconvert.h"
#include "storage/farchive.h"
#include "storage/fbstream.h"
#include "storage/fpersistent.h"
#include <algorithm>
#include <vector>

namespace Tessarine {

IMPLEMENT_CLASS(CmRegularExpression, CmObject)

namespace {
constexpr char kExpressionKey[] = "Expression";
constexpr char kCaseSensitiveKey[] = "CaseSensitive";

using Pattern = std::u16string_view;

bool isEscaped(Pattern pattern, size_t index) {
    return index > 0 && pattern[index - 1] == CmRegularExpression::kBackSlash;
}

/** One place of a pattern: what it takes, and whether it may be left without taking anything. */
struct Step {
    explicit Step(Pattern pattern, size_t index) : literal(pattern[index]) {
        if (isEscaped(pattern, index))
            return;
        takesAny = literal == CmRegularExpression::kQuestionMark || literal == CmRegularExpression::kStar;
        stays = literal == CmRegularExpression::kStar;
        isOptional = takesAny || literal == CmRegularExpression::kBackSlash;
    }

    tchar literal;
    bool takesAny = false;
    bool stays = false;       // may take more than one
    bool isOptional = false;  // may take none; what is no wildcard then takes none at all
};

/** All places where the pattern can stand after a run of text, one flag each; the last is its end. */
class Places {
public:
    Places(Pattern pattern, size_t start, bool caseSensitive) : caseSensitive(caseSensitive) {
        for (size_t i = start; i < pattern.size(); ++i) {
            steps.emplace_back(pattern, i);
            steps.back().literal = folded(pattern[i]);
        }
        now.assign(steps.size() + 1, 0);
        now[0] = 1;
        leaveOptional(now);
    }

    /** False: no place is left. */
    bool take(tchar c) {
        const tchar unit = folded(c);
        next.assign(now.size(), 0);
        for (size_t i = 0; i < steps.size(); ++i) {
            if (!now[i])
                continue;
            const Step& step = steps[i];
            const bool takes = step.takesAny || (!step.isOptional && step.literal == unit);
            next[i] |= uint8_t(step.stays);
            next[i + 1] |= uint8_t(takes);
        }
        leaveOptional(next);
        now.swap(next);
        return std::ranges::find(now, 1) != now.end();
    }
    bool isAtEnd() const { return now.back(); }

private:
    tchar folded(tchar c) const { return caseSensitive ? c : ConstString::toLower(c); }
    void leaveOptional(std::vector<uint8_t>& places) const {
        for (size_t i = 0; i < steps.size(); ++i)
            places[i + 1] |= uint8_t(places[i] && steps[i].isOptional);
    }

    const bool caseSensitive;
    std::vector<Step> steps;
    std::vector<uint8_t> now, next;  // two rows of a table of pattern by text
};
}  // namespace

CmRegularExpression::CmRegularExpression(const ConstString& expression, bool caseSensitive)
    : caseSensitive(caseSensitive) {
    setExpression(expression);
}

bool CmRegularExpression::internalize(FArchive& archive) {
    FString text;
    bool itsCaseSensitive;
    if (!text.load(archive.getStream()) || !archive.getStream().readBool(itsCaseSensitive))
        return false;
    setExpression(text);
    caseSensitive = itsCaseSensitive;
    return true;
}

bool CmRegularExpression::externalize(FArchive& archive) const {
    return expression.store(archive.getStream()) && archive.getStream().writeBool(caseSensitive);
}

bool CmRegularExpression::storeAttributes(FAttributes& attributes) const {
    return attributes.set(kExpressionKey, expression) && attributes.set(kCaseSensitiveKey, caseSensitive);
}

bool CmRegularExpression::restoreAttributes(FAttributes& attributes) {
    String text;
    bool itsCaseSensitive;
    if (!attributes.get(kExpressionKey, text) || !attributes.get(kCaseSensitiveKey, itsCaseSensitive))
        return false;
    setExpression(text);
    caseSensitive = itsCaseSensitive;
    return true;
}

void CmRegularExpression::setExpression(const ConstString& newExpression) {
    expression.assign(newExpression);
    expression.toWideString();  // here, so that match only reads
}

bool CmRegularExpression::isValidExpression(const ConstString& text) {
    const WideText wide(text);
    const Pattern pattern(wide);
    for (size_t i = pattern.find(u"**"); i != pattern.npos; i = pattern.find(u"**", i + 1))
        if (!isEscaped(pattern, i))
            return false;
    return true;
}

bool CmRegularExpression::match(const ConstString& text) const {
    if (!isValidExpression(expression))
        return text.compare(expression, caseSensitive ? kMatchCase : kIgnoreCase) == 0;
    return tryString(text, 0);
}

bool CmRegularExpression::tryString(const ConstString& text, uint32_t patternIndex) const {
    const WideText pattern(expression), wide(text);
    Places places(pattern, patternIndex, caseSensitive);
    for (const tchar c : std::u16string_view(wide))
        if (!places.take(c))
            return false;
    return places.isAtEnd();
}

}  // namespace Tessarine
