#pragma once
#include "pluginterfaces/base/funknown.h"

namespace Tessarine {
class IBStream;

/** A text for the user, written in English beside its key. A table of another language replaces it; one for English is
    always there, for keys that carry a remark in braces and would not be shown as they are.

    Cost      a static object costs no code at load.
    Threads   the main thread.
    Results   what is handed out lives to the end of the program or module, whatever table comes after. */
class UTranslatedString {
public:
    /** Both literals. Without a key the English text is the key. */
    constexpr explicit UTranslatedString(const char* english, const char* key = nullptr)
        : english(english), key(key ? key : english) {}

    const tchar* text() const;
    operator const tchar*() const { return text(); }
    const char* getKey() const { return key; }

    /** Takes the place of the table before. The stream holds XML:

            <translations>
                <text key="Copy{{Noun}}">Kopie</text>
            </translations>

        The last of equal keys counts, and English stands in for those that are missing. false, and the old table stays:
        not well formed, or another kind of document. */
    static bool loadTable(IBStream* stream);
    /** Back to English. */
    static void forgetTable();

private:
    const char* english;
    const char* key;
};

}  // namespace Tessarine
