#pragma once
#include "pluginterfaces/base/funknown.h"

namespace Tessarine {

/** A text for the user, written in English beside its key. Without a translation the English text stands.
    A static object costs no code at load. Main thread; what is handed out lives to the end of the program or module. */
class UTranslatedString {
public:
    /** Both literals. Without a key the English text is the key. */
    constexpr explicit UTranslatedString(const char* english, const char* key = nullptr)
        : english(english), key(key ? key : english) {}

    const tchar* text() const;
    operator const tchar*() const { return text(); }
    const char* getKey() const { return key; }

private:
    const char* english;
    const char* key;
};

}  // namespace Tessarine
