#pragma once

namespace Tessarine {

/** Passes on whether a call of the system was done. If it wasn't and failures are to be shown, the user sees why. errno stays. */
bool told(bool done);

}  // namespace Tessarine
