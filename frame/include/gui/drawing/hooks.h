#pragma once
#include "base/source/fstring.h"

namespace Tessarine {
class CmObject;
class FStream;
class ISkinDependent;
class UBitmap;
class UBitmapCollection;
class UColor;

namespace Graphics {
class IFactory;
}

/** What drawing asks of its platform, and of the skin above it. All null until they are installed. */
struct DrawingHooks {
    /** The platform's factory, with a reference for the caller. Without it nothing is drawn and nothing loads. */
    Graphics::IFactory* (*createFactory)() = nullptr;
    /** A bitmap that the skin names, borrowed; null: it has none. */
    UBitmap* (*skinBitmap)(const char* name) = nullptr;
    /** Adds the bitmaps of a collection that the skin names; false: it has none. */
    bool (*skinBitmapCollection)(const char* name, UBitmapCollection& images) = nullptr;
    /** Who hears of a change of skin, borrowed from one to the other. */
    void (*addSkinDependent)(ISkinDependent* dependent) = nullptr;
    void (*removeSkinDependent)(ISkinDependent* dependent) = nullptr;
    /** A numbered resource of a module, with a reference for the caller; null: there is none. */
    FStream* (*openResource)(int32_t id, void* module) = nullptr;
    /** A property of a collection of the skin by its index; false: there is none. */
    bool (*skinProperty)(const char* collection, int32_t index, FString& name, CmObject*& value) = nullptr;
    /** A colour of the desktop's theme by its number, 1 and up; false: there is none. */
    bool (*themeColor)(int32_t index, UColor& color) = nullptr;
    /** The user reads Japanese. */
    bool (*isJapanese)() = nullptr;
};
extern DrawingHooks gDrawingHooks;

}  // namespace Tessarine
