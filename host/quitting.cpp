#include "host/quitting.h"
#include "gui/uctrler.h"
#include <csignal>
#include <sys/signalfd.h>

using namespace Tessarine;

namespace {
int descriptor = -1;  // to the end of the process

bool isIgnored(int signal) {
    struct sigaction action = {};
    return sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}
}  // namespace

void quitHost() {
    if (gController)
        gController->quit(true);
}

void holdQuitSignals() {
    sigset_t held;
    sigemptyset(&held);
    for (const int signal : {SIGINT, SIGTERM})
        sigaddset(&held, signal);
    if (!isIgnored(SIGHUP))
        sigaddset(&held, SIGHUP);
    for (const int signal : {SIGINT, SIGTERM})
        std::signal(signal, SIG_DFL);  // a shell may have started us with SIGINT ignored, which drops it unseen
    pthread_sigmask(SIG_BLOCK, &held, nullptr);
    descriptor = signalfd(descriptor, &held, SFD_CLOEXEC | SFD_NONBLOCK);
}

std::unique_ptr<Watch> watchQuitSignals() {
    return watchInput(descriptor, quitHost);
}

int quitSignalsDescriptor() {
    return descriptor;
}
