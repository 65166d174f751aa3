#include "host/frontend.h"
#include <unistd.h>

using namespace Tessarine;

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
