#pragma once

namespace Tessarine {

/** Fills the hooks of the lower floors with this platform's services: run loop and timers, event handler, folders. The
    first call of a program's main and of a module's entry; calling it again changes nothing. */
void installTessarinePlatformCore();

}  // namespace Tessarine
