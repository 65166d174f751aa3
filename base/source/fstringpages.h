#pragma once
#include "pluginterfaces/base/funknown.h"
#include <string_view>

/** The code pages under the conversions: what each byte or pair of bytes means, for what isn't ASCII. */

namespace Tessarine {

/** One character on its way between the forms. */
struct Character {
    char32_t code = 0;
    uint32_t size = 0;  // units it takes in its source; 0: malformed
};

struct ReverseRow {
    tchar unit;
    uint16_t bytes;  // two bytes: the first in the high half
};

/** Both directions of a code page whose characters take one or two bytes. Without a destructor, so that it serves to
    the very end. */
class PageTable {
public:
    /** src isn't empty. */
    Character decode(std::string_view src) const;
    /** The number of bytes, at most two; 0: the page lacks it. */
    uint32_t encode(char32_t code, char* bytes) const;

protected:
    void build(const char* converterName);

    tchar single[0x80];
    tchar* pairs = nullptr;  // borrowed; null in a page of single bytes
    ReverseRow* reverse = nullptr;
    uint32_t reverseCount = 0;
};

struct PageRow {
    uint32_t codePage, encoding;
    uint32_t maxBytes;            // the most that one unit can need
    const PageTable* (*table)();  // null for UTF-8, which needs none; built at first use
};

const PageRow& pageOf(uint32_t codePage);

}  // namespace Tessarine
