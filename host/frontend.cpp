#include "host/frontend.h"
#include "host/linereader.h"
#include <fcntl.h>
#include <unistd.h>

using namespace Tessarine;

namespace {
/** A write to a terminal that nobody reads would wait although there was room for its beginning. */
int openOutput() {
    const bool isTerminal = isatty(STDOUT_FILENO);
    const int own = isTerminal ? open("/proc/self/fd/1", O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC) : -1;
    return own >= 0 ? own : STDOUT_FILENO;
}
}  // namespace

FrontEnd::FrontEnd() : output(openOutput()) {}

FrontEnd::~FrontEnd() {
    if (output != STDOUT_FILENO)
        close(output);
}

void FrontEnd::run(Remote& watched, const ModuleHost& module) {
    remote = &watched;
    const auto answer = [this](const Json& reply) {
        showReply(reply);
        quitWhenIdle();
    };
    commands = OPtr<Commands>(new Commands(watched, module, answer, quitHost));
    input = watchInput(STDIN_FILENO, [this] { onInput(); });
}

void FrontEnd::stop() {
    input = nullptr;
    if (commands)
        commands->end();
    commands = nullptr;
}

void FrontEnd::write(const std::string& text) {
    if (!writeAll(output, text, quitSignalsDescriptor()))
        quitHost();
}

void FrontEnd::onInput() {
    inputEnded = !readInput();
    if (inputEnded)
        input = nullptr;
    quitWhenIdle();
}

/** The end of the input is a command like any other: those before it come first. */
void FrontEnd::quitWhenIdle() {
    if (inputEnded && commands->isIdle())
        quitHost();
}

void FrontEnd::readyChanged(bool ready) {
    showReady(ready);
    if (commands)
        commands->look();
}

void FrontEnd::deviceFound(int32_t device) {
    showDevice(device);
    if (commands)
        commands->deviceFound(device);
}
