#pragma once
#include "pluginterfaces/base/funknown.h"
#include <memory>
#include <unordered_map>

namespace Tessarine {

/** Plain literals as 16-bit text. The key is the pointer, not the text: never pass a buffer whose content changes.

    Threads   main thread or static initialisation only.
    Results   live to the end of the process or module. */
class ConstStringTable {
public:
    static ConstStringTable* instance();
    /** Each byte sign-extended to 16 bits; null for null. */
    const tchar* getString(const char* text);
    tchar getString(char character);

private:
    ConstStringTable();

    using Text = std::unique_ptr<tchar[]>;
    std::unique_ptr<std::unordered_map<const char*, Text>> stringMap;
    std::unique_ptr<std::unordered_map<char, tchar>> charMap;
};

}  // namespace Tessarine
