#include "tools/talv-sim/commands.h"
#include "tools/talv-sim/numbers.h"
#include "tools/words/words.h"
#include <algorithm>

namespace TalvSim {
namespace {
Json refused(const std::string& why) {
    return {
        {"event", "error"},
        {"error", why    }
    };
}

Json valueOf(const Device& device, const ParamRow& row, int32_t channel) {
    return row.param == kDevName ? Json(device.name()) : Json(device.value(row.param, channel));
}

Json valuesOf(const Device& device, const ParamRow& row) {
    if (!row.isPerChannel())
        return valueOf(device, row, 0);
    Json values = Json::array();
    for (int32_t channel = 0; channel < row.channels; ++channel)
        values.push_back(valueOf(device, row, channel));
    return values;
}
}  // namespace

const Commands::Row Commands::kRows[] = {
    {"help",   "help",                     0, 0,    &Commands::help  },
    {"plug",   "plug",                     0, 0,    &Commands::plug  },
    {"raw",    "raw HEX",                  1, 4096, &Commands::raw   },
    {"state",  "state ID",                 1, 1,    &Commands::state },
    {"turn",   "turn ID PARAM [CH] VALUE", 3, 4,    &Commands::turn  },
    {"unplug", "unplug",                   0, 0,    &Commands::unplug},
};

Json Commands::run(const std::string& line, TimePoint at) {
    now = at;
    std::optional<Words> words = wordsOf(line);
    if (!words || words->empty())
        return refused("words are separated by blanks, or written as JSON strings");
    const auto row = std::ranges::find(kRows, words->front(), &Row::name);
    if (row == std::end(kRows))
        return refused("unknown command '" + words->front() + "'; see help");
    words->erase(words->begin());
    if (words->size() < row->minWords || words->size() > row->maxWords)
        return refused(std::string("usage: ") + row->usage);
    return (this->*row->action)(*words);
}

Json Commands::help(const Words&) {
    Json names = Json::array();
    for (const Row& row : kRows)
        names.push_back(row.usage);
    names.push_back("quit");
    return {
        {"event",    "help"},
        {"commands", names }
    };
}

Json Commands::plug(const Words&) {
    std::string error;
    if (rig.line.isPlugged())
        return refused("the line is plugged already");
    if (!rig.line.plug(error))
        return refused(error);
    return {
        {"event",    "plugged"          },
        {"path",     rig.line.path()    },
        {"terminal", rig.line.terminal()}
    };
}

Json Commands::raw(const Words& words) {
    std::string text;
    for (const std::string& word : words)
        text += word + " ";
    const std::optional<Bytes> bytes = fromHex(text);
    if (!bytes || bytes->empty())
        return refused("bytes are pairs of hex digits");
    if (!rig.line.isPlugged())
        return refused("the line is unplugged");
    rig.outbox.put(*bytes, now);
    return {
        {"event", "raw"        },
        {"bytes", toHex(*bytes)}
    };
}

Json Commands::state(const Words& words) {
    const Device* device = deviceOf(words[0]);
    if (!device)
        return refused("no device '" + words[0] + "'");
    Json reply = {
        {"event", "state"     },
        {"id",    device->id()}
    };
    for (const ParamRow& row : kParams)
        reply[row.name] = valuesOf(*device, row);
    return reply;
}

Json Commands::turn(const Words& words) {
    Device* device = deviceOf(words[0]);
    if (!device)
        return refused("no device '" + words[0] + "'");
    const ParamRow* row = paramByName(words[1]);
    if (!row)
        return refused("no parameter '" + words[1] + "'");
    if (row->isPerChannel() != (words.size() == 4))
        return refused(words[1] + (row->isPerChannel() ? " needs a channel and a value" : " has no channels"));
    const std::optional<int64_t> channel = row->isPerChannel() ? wholeNumber(words[2], 0, kNumChannels - 1) : 0;
    if (!channel)
        return refused("a channel is 0 to 7");
    const std::optional<int64_t> value = wholeNumber(words.back());
    if (row->param == kDevName ? !isDeviceName(words.back()) : !value)
        return refused(row->param == kDevName ? "a name has printable ASCII characters only"
                                              : "'" + words.back() + "' is no whole number");
    if (row->param == kDevName)
        device->rename(words.back());
    else
        device->turn(row->param, int32_t(*channel), *value);
    return turned(*device, *row, int32_t(*channel));
}

Json Commands::unplug(const Words&) {
    if (!rig.line.isPlugged())
        return refused("the line is unplugged already");
    rig.line.unplug();
    rig.outbox.clear();
    return {
        {"event", "unplugged"}
    };
}

Device* Commands::deviceOf(const std::string& word) {
    const std::optional<int64_t> id = wholeNumber(word, 1, 255);
    const auto found = id ? rig.devices.find(uint8_t(*id)) : rig.devices.end();
    return found == rig.devices.end() ? nullptr : &found->second;
}

Json Commands::turned(Device& device, const ParamRow& row, int32_t channel) {
    Json reply = {
        {"event", "turned"   },
        {"id",    device.id()},
        {"param", row.name   }
    };
    if (row.isPerChannel())
        reply["ch"] = channel;
    reply["value"] = valueOf(device, row, channel);
    const Bytes report = device.report(row.param, channel);
    const bool sent = !report.empty() && rig.line.isPlugged();
    reply["report"] = sent ? Json(toHex(report)) : Json();
    if (sent)
        rig.outbox.say(report, now);
    else
        reply["note"] = report.empty() ? "there is no report of this parameter" : "the line is unplugged";
    return reply;
}
}  // namespace TalvSim
