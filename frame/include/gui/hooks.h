#pragma once
#include "base/source/fstring.h"

namespace Tessarine {
class IPlatformEventHandler;

/** Folders that the platform knows. */
enum class PlatformFolder : int32_t { kApplication, kSystem, kTemporary, kPreferences, kShared };

/** What the controller's floor asks of the platform, and of the view system above it. All null until they are installed. */
struct ControllerHooks {
    /** The one event handler, borrowed. Without it there is no event loop, and opening the platform succeeds with nothing. */
    IPlatformEventHandler* (*eventHandler)() = nullptr;
    /** The folder's path without a closing "/"; false: there is none. Nothing is created. */
    bool (*folder)(PlatformFolder kind, String& path) = nullptr;
    /** File name of the running program, or of the module. */
    bool (*programName)(String& name) = nullptr;
    /** Whether the press that is held becomes a drag. */
    bool (*waitDrag)() = nullptr;
    /** Shows a text to the user, for a number of milliseconds or, with 0, until it is answered. */
    void (*showText)(const tchar* text, int32_t durationMs) = nullptr;
    /** Asks all windows to close; false: one refused. */
    bool (*closeAllWindows)() = nullptr;
};
extern ControllerHooks gControllerHooks;

}  // namespace Tessarine
