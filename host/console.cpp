#include "host/console.h"
#include "pluginterfaces/gui/ivalue.h"
#include <unistd.h>

using namespace Tessarine;

void Console::put(const Json& object) {
    write(lineOf(object));
}

void Console::started(const ModuleHost& module) {
    put({
        {"event",   "started"          },
        {"module",  module.getPath()   },
        {"version", module.getVersion()}
    });
}

void Console::stopped() {
    put({
        {"event", "stopped"}
    });
}

void Console::showDevice(int32_t device) {
    put({
        {"event", "device"},
        {"id",    device  }
    });
}

void Console::devicesGone() {
    put({
        {"event", "devices-gone"}
    });
}

void Console::valueChanged(const ParamAddress& address) {
    IValue* value = remote->getValue(address);
    if (!value)
        return;
    Json event = {
        {"event", "value"}
    };
    event.update(describe(address, settingOf(*address.param, value)));
    put(event);
}

void Console::connectionChanged() {
    put({
        {"event", "connection"}
    });
}

void Console::showReady(bool ready) {
    put({
        {"event", "ready"},
        {"ready", ready  }
    });
}

bool Console::readInput() {
    std::vector<std::string> lines;
    const bool more = reader.read(lines);
    for (const std::string& line : lines)
        take(line);
    return more;
}
