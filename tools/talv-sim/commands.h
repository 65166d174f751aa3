#pragma once
#include "tools/talv-sim/device.h"
#include "tools/talv-sim/line.h"
#include "tools/talv-sim/outbox.h"
#include <map>
#include <nlohmann/json.hpp>

namespace TalvSim {
using Json = nlohmann::ordered_json;

/** All that is simulated. Devices answer in the order of their ids. */
struct Rig {
    std::map<uint8_t, Device> devices;
    Line line;
    Outbox outbox;
};

/** What a hand at the front panels and at the plug does, one command a line. Answers one event; a refused command has
    the event "error" and changes nothing. `quit` is not among these: it belongs to whoever runs the rig. */
class Commands {
public:
    explicit Commands(Rig& handled) : rig(handled) {}

    Json run(const std::string& line, TimePoint now);

private:
    using Words = std::vector<std::string>;
    struct Row {
        const char* name;
        const char* usage;
        size_t minWords, maxWords;  // without the name
        Json (Commands::*action)(const Words& words);
    };
    static const Row kRows[];

    Json help(const Words& words);
    Json plug(const Words& words);
    Json raw(const Words& words);
    Json state(const Words& words);
    Json turn(const Words& words);
    Json unplug(const Words& words);
    Device* deviceOf(const std::string& word);
    Json turned(Device& device, const ParamRow& row, int32_t channel);

    Rig& rig;
    TimePoint now{};  // of the command that runs
};
}  // namespace TalvSim
