#pragma once
#include "base/uprogresshook.h"

namespace SrfPack {
/** Shows how far the work is, on standard error if that is a terminal, and leaves nothing there. */
class TerminalProgress : public Tessarine::UProgressHook {
public:
    TerminalProgress();
    ~TerminalProgress() override;
    bool setProgress(int32_t percent) override;

private:
    bool isTerminal;
    int32_t shown = -1;  // percent; below 0: nothing yet
};
}  // namespace SrfPack
