#pragma once
#include "base/source/fstring.h"
#include "base/uprogresshook.h"

namespace SrfPack {
/** Shows how far the work is, on standard error if that is a terminal, and leaves nothing there. A signal stops the work. */
class TerminalProgress : public Tessarine::UProgressHook {
public:
    TerminalProgress();
    ~TerminalProgress() override;
    bool setProgress(int32_t percent) override;
    void setText(const Tessarine::ConstString& text) override { current = Tessarine::FString(text); }
    /** What the work was at last; empty: nothing yet. */
    const Tessarine::FString& getCurrent() const { return current; }

private:
    Tessarine::FString current;
    bool isTerminal;
    int32_t shown = -1;  // percent; below 0: nothing yet
};
}  // namespace SrfPack
