#pragma once
#include "tools/srfpack/options.h"

namespace SrfPack {
/** Does what the options say. The result is one line on what went wrong, and where; empty: it is done. */
std::string run(const Options& options);
}  // namespace SrfPack
