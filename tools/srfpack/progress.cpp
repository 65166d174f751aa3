#include "tools/srfpack/progress.h"
#include "tools/srfpack/heldsignals.h"
#include <cstdio>
#include <unistd.h>

namespace SrfPack {
TerminalProgress::TerminalProgress() : isTerminal(::isatty(STDERR_FILENO)) {}

TerminalProgress::~TerminalProgress() {
    if (shown >= 0)
        std::fputs("\r    \r", stderr);
}

bool TerminalProgress::setProgress(int32_t percent) {
    if (isTerminal && percent != shown) {
        std::fprintf(stderr, "\r%3d%%", percent);
        std::fflush(stderr);
        shown = percent;
    }
    return !HeldSignals::hasCome();
}
}  // namespace SrfPack
