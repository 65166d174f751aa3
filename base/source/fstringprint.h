#pragma once
#include "base/source/fstring.h"
#include <locale.h>

/** Formatting under the string family. */

namespace Tessarine {

constexpr uint32_t kMaxPrinted = 4096;  // units with the terminator

/** The "C" locale, process-wide and never freed, which the C library allows for this one. */
locale_t cLocale();

/** Formats 16-bit text into room for kMaxPrinted units and terminates it; the result is the length. Stops at a 0. */
uint32_t printUnits(tchar* printed, const tchar* format, va_list arguments);

}  // namespace Tessarine
