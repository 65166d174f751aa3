#pragma once
#include "collect/cmstring.h"

namespace Tessarine {

/** Reads a text token by token: what stands between any of some delimiters. Runs of delimiters count as one.

    Owns   a copy of the text. */
class CmTokens : public CmObject {
public:
    DECLARE_CLASS(CmTokens, CmObject)
    explicit CmTokens(const ConstString& text = ConstString());
    CmTokens(const CmTokens&) = delete;
    CmTokens& operator=(const CmTokens&) = delete;

    /** The next token, which lives until the following call; the empty text at the end. */
    const tchar* next(const ConstString& delimiters);
    /** Back to the start. */
    void reset();

    const CmString& getToken() const { return token; }
    /** What ended the last token; the one before when the text ended there, a line feed when none was met yet. */
    tchar getDelimiter() const { return delimiter; }
    /** Where the next search begins. */
    int32_t getIndex() const { return index; }

private:
    CmString text;        // 16-bit
    const tchar* cursor;  // into text
    int32_t index = 0;    // of the cursor
    CmString token;
    tchar delimiter = u'\n';
};

}  // namespace Tessarine
