#include "tools/srfpack/heldsignals.h"
#include <csignal>
#include <iterator>

namespace SrfPack {
namespace {
constexpr int kHeld[] = {SIGHUP, SIGINT, SIGTERM};
volatile std::sig_atomic_t came = 0;
struct sigaction before[std::size(kHeld)];

void note(int signal) {
    came = signal;
}
}  // namespace

HeldSignals::HeldSignals() {
    struct sigaction action = {};
    action.sa_handler = note;
    action.sa_flags = int(SA_RESTART | SA_RESETHAND);
    for (size_t i = 0; i < std::size(kHeld); ++i)
        if (::sigaction(kHeld[i], nullptr, &before[i]) == 0 && before[i].sa_handler != SIG_IGN)
            ::sigaction(kHeld[i], &action, nullptr);
}

HeldSignals::~HeldSignals() {
    for (size_t i = 0; i < std::size(kHeld); ++i)
        ::sigaction(kHeld[i], &before[i], nullptr);
    if (came != 0)
        std::raise(came);
}

bool HeldSignals::hasCome() {
    return came != 0;
}
}  // namespace SrfPack
