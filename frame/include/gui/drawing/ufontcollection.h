#pragma once
#include "gui/drawing/ufont.h"

namespace Tessarine {

/** The platform's fonts. Main thread. */
struct UFontCollection {
    static uint32_t count();
    /** false: out of range. */
    static bool getName(uint32_t index, String& name);
    /** By the exact name; -1: it isn't installed. */
    static int32_t getIndexByName(const tchar* name);
    /** The font takes the name, and a face for its size and style. false, and the font as it was: there is none. */
    static bool setupFontByIndex(UFont& font, uint32_t index);
    static bool setupFontByName(UFont& font, const tchar* name);
    /** The files of the folder "fonts" beside the application, once. false: they were, or there is no application's folder. */
    static bool registerApplicationFonts();
};

}  // namespace Tessarine
