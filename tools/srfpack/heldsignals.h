#pragma once

namespace SrfPack {
/** As long as it lives, a signal that asks the program to end only leaves a mark, so that what is half-written can be removed;
    it takes effect at the end, and a second one at once. One at a time; what the caller has ignored stays ignored. */
class HeldSignals {
public:
    HeldSignals();
    ~HeldSignals();
    HeldSignals(const HeldSignals&) = delete;
    HeldSignals& operator=(const HeldSignals&) = delete;

    /** One has come. */
    static bool hasCome();
};
}  // namespace SrfPack
