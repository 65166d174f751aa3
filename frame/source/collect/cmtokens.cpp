#include "collect/cmtokens.h"
#include "base/source/fstringconvert.h"
#include <algorithm>

namespace Tessarine {

IMPLEMENT_CLASS(CmTokens, CmObject)

CmTokens::CmTokens(const ConstString& text) : text(text) {
    if (!this->text.toWideString())
        this->text.resize(0, true);
    reset();
}

const tchar* CmTokens::next(const ConstString& delimiters) {
    const WideText wide(delimiters);
    const std::u16string_view separators(wide), rest(cursor, text.length() - size_t(index));
    const size_t start = std::min(rest.find_first_not_of(separators), rest.size());
    const size_t end = std::min(rest.find_first_of(separators, start), rest.size());
    token.assign(cursor + start, int32_t(end - start));
    if (end < rest.size())
        delimiter = rest[end];
    cursor += end;
    index += int32_t(end);
    return token.text16();
}

void CmTokens::reset() {
    cursor = text.text16();
    index = 0;
}

}  // namespace Tessarine
