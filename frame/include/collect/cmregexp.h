#pragma once
#include "base/source/cmobject.h"
#include "base/source/fstring.h"

namespace Tessarine {

/** A pattern of wildcards, which a text matches as a whole.

    ?   no character, or any one
    *   any run of characters; two of them side by side make the expression invalid
    \   the next character stands for itself; only the one character before is looked at, so that both the second
        backslash and the star of \\* stand for themselves

    Cost      pattern times text, whatever stands in them.
    Threads   match may be called from several at once. */
class CmRegularExpression : public CmObject {
public:
    DECLARE_CLASS(CmRegularExpression, CmObject)
    DECLARE_NEWCOPY(CmRegularExpression)
    static constexpr tchar kQuestionMark = u'?';
    static constexpr tchar kStar = u'*';
    static constexpr tchar kBackSlash = u'\\';

    explicit CmRegularExpression(const ConstString& expression = ConstString(), bool caseSensitive = true);

    bool internalize(FArchive& archive) override;
    bool externalize(FArchive& archive) const override;
    bool storeAttributes(FAttributes& attributes) const override;
    bool restoreAttributes(FAttributes& attributes) override;

    const FString& getExpression() const { return expression; }
    void setExpression(const ConstString& newExpression);
    bool isCaseSensitive() const { return caseSensitive; }
    void setCaseSensitive(bool state) { caseSensitive = state; }

    static bool isValidExpression(const ConstString& text);
    /** An invalid expression is compared as plain text. */
    bool match(const ConstString& text) const;
    /** The pattern from patternIndex on against the whole text, valid or not. */
    bool tryString(const ConstString& text, uint32_t patternIndex) const;

private:
    FString expression;  // 16-bit
    bool caseSensitive;
};

}  // namespace Tessarine
