#include "host/console.h"
#include "gui/uctrler.h"
#include "pluginterfaces/gui/ivalue.h"
#include <unistd.h>

using namespace Tessarine;

void quitHost() {
    gController->quit(true);
}

void Console::put(const Json& object) {
    if (!writeAll(STDOUT_FILENO, lineOf(object)))
        quitHost();
    if (inputEnded)
        quitWhenIdle();
}

void Console::started(const ModuleHost& module) {
    put({{"event", "started"}, {"module", module.getPath()}, {"version", module.getVersion()}});
}

void Console::run(Remote& watched, const ModuleHost& module) {
    remote = &watched;
    commands = new Commands(watched, module, [this](const Json& reply) { put(reply); }, quitHost);
    input = watchInput(STDIN_FILENO, [this] { readInput(); });
}

void Console::readInput() {
    std::vector<std::string> lines;
    inputEnded = !reader.read(lines);
    if (inputEnded)
        input = nullptr;
    for (const std::string& line : lines)
        commands->take(line);
    if (inputEnded)
        quitWhenIdle();
}

/** The end of the input is a command like any other: those before it come first. */
void Console::quitWhenIdle() {
    if (commands && commands->isIdle())
        quitHost();
}

void Console::stop() {
    input = nullptr;
    commands = nullptr;
}

void Console::stopped() {
    put({{"event", "stopped"}});
}

void Console::readyChanged(bool ready) {
    put({{"event", "ready"}, {"ready", ready}});
    if (commands)
        commands->look();
}

void Console::deviceFound(int32_t device) {
    put({{"event", "device"}, {"id", device}});
}

void Console::devicesGone() {
    put({{"event", "devices-gone"}});
}

void Console::valueChanged(const ParamAddress& address) {
    Json event = {{"event", "value"}, {"id", address.device}, {"param", address.param->name}};
    if (address.param->perChannel)
        event["ch"] = address.channel;
    if (IValue* value = remote->getValue(address)) {
        event["value"] = valueOf(address, value);
        put(event);
    }
}

void Console::connectionChanged() {
    put({{"event", "connection"}});
}
