#pragma once
#include "base/source/fstring.h"

namespace Tessarine {
class UFont;

/** Translates texts as they are drawn, and measures them translated. */
class IRealtimeTranslator {
public:
    virtual ~IRealtimeTranslator() = default;
    /** Borrowed until the next call. */
    virtual const tchar* translate(const tchar* text) = 0;
    /** In pixels, rounded up. By the font's face: UDrawDevice would ask here again. */
    virtual int32_t getStringWidth(const UFont& font, const tchar* text) = 0;

    /** Borrowed; null: texts are drawn as they stand. */
    static inline IRealtimeTranslator* gInstance = nullptr;
};

}  // namespace Tessarine
