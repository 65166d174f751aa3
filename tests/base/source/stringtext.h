#pragma once
#include "base/source/fstring.h"
#include <string>

namespace Tessarine {

/** The text of a string that must have that width. */
inline std::string text8Of(const String& text) {
    return text.isWideString() ? "(wide)" : text.text8();
}
inline std::u16string text16Of(const String& text) {
    return text.isWideString() ? text.text16() : u"(narrow)";
}

inline int32_t signOf(int32_t number) {
    return (number > 0) - (number < 0);
}

/** Sets code page 0 to the end of the block. */
class DefaultEncoding {
public:
    explicit DefaultEncoding(uint32_t encoding) { kDefaultSystemEncoding = encoding; }
    ~DefaultEncoding() { kDefaultSystemEncoding = 0; }
};

}  // namespace Tessarine
