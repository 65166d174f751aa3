#include "tools/talv-sim/options.h"
#include "tools/talv-sim/numbers.h"
#include <algorithm>
#include <functional>

namespace TalvSim {
namespace {
constexpr int64_t kMaxBaud = 10'000'000, kMaxDelayMs = 3'600'000;
constexpr char kDefaultDevice[] = "1";
constexpr char kDefaultName[] = "HA-8CH";

constexpr char kHelp[] = R"(talv-sim - a line of simulated head amps on a pseudo-terminal

usage: talv-sim --link PATH [--devices ID[:NAME],...] [--baud N] [--corrupt PERCENT] [--drop PERCENT] [--seed N]
                [--delay-ms N] [--split] [--log]
       talv-sim --help | --version

Makes a pseudo-terminal in raw mode and a symbolic link PATH to it, which a host opens as its serial port. Each device
has eight channels, keeps what it is told, and answers the device id broadcast, every request and every setting.

  --link PATH          the link, for instance DIR/tty.sim. A link that an earlier run left is replaced, anything else of
                       that name is left alone and refused. The link is removed at the end
  --devices LIST       ids from 1 to 255, each with a name if wanted: 1:Drums,2:Strings,7. A name is ASCII and is cut
                       to eight characters. Default: device 1, named HA-8CH
  --baud N             speed of the devices' bytes, ten bits each; 0 is unpaced. Default: 38400
  --corrupt PERCENT    this share of the devices' frames has one byte changed, be it the length, the content or the
                       checksum. Default: 0
  --drop PERCENT       this share of the devices' frames never arrives. Default: 0
  --seed N             which frames are damaged, and where: the same seed damages the same ones. Default: 1
  --delay-ms N         milliseconds before each frame of a device. Default: 0
  --split              delivers byte by byte
  --log                prints each frame on the line
  --help, --version    print and exit

Commands, one a line on standard input; words are separated by blanks, or written as JSON strings; lines that are empty
or begin with # are skipped. Each gets one event in reply.

  turn ID PARAM [CH] VALUE   a hand at the front panel: changes the device and sends its report. A number out of range
                             is bounded. There is no report of meterMode, and of meter all channels are reported
  raw HEX                    puts bytes on the line, undamaged: raw 03 80 05 7A
  unplug                     closes the line: the host's port hangs up and the link goes
  plug                       opens a new one
  state ID                   prints a device
  help                       prints the commands
  quit                       ends the program; so do SIGTERM, SIGINT and SIGHUP. The end of the input does not

PARAM is devMode, devName, wordClock, gain, plus48V, hpf, meterMode, meter, gainTrim, panelLock, brightness,
plus48VMaster or hpfFreq; gain, plus48V, hpf, meter, gainTrim and hpfFreq have channels, CH is 0 to 7.

Output: one JSON object a line. {"event":"line","path":...} comes first, {"event":"stopped"} last. Replies: "turned",
"raw", "unplugged", "plugged", "state", "help", "error". With --log also "rx" and "tx" with "bytes" and "text" for each
frame, "corrupted": true in a frame that was damaged, "dropped" for one that was lost on purpose, and "lost" for one
that found the line full: a host reads 4 KB late at most.

Exit status: 0 after quit or a signal, 1 when the line or the output fails, 2 for a bad option.
)";

std::string rangeText(int64_t max) {
    return "is no whole number from 0 to " + std::to_string(max);
}

/** Each taker answers what is wrong with the text, empty when it is good. */
using Taker = std::function<std::string(Options&, const std::string&)>;

template <class T>
Taker intoNumber(T LineQuality::*field, int64_t max) {
    return [=](Options& options, const std::string& text) {
        const std::optional<int64_t> number = wholeNumber(text, 0, max);
        options.quality.*field = T(number.value_or(0));
        return number ? std::string() : rangeText(max);
    };
}

Taker intoPercent(double LineQuality::*field) {
    return [=](Options& options, const std::string& text) {
        const std::optional<double> percent = percentNumber(text);
        options.quality.*field = percent.value_or(0);
        return std::string(percent ? "" : "is no number from 0 to 100");
    };
}

std::string takeDevice(Options& options, const std::string& text) {
    const size_t colon = text.find(':');
    const std::optional<int64_t> id = wholeNumber(text.substr(0, colon), 1, 255);
    const std::string name = colon == std::string::npos ? kDefaultName : text.substr(colon + 1);
    if (!id)
        return "has an id that is no whole number from 1 to 255";
    if (!isDeviceName(name))
        return "has a name with other than printable ASCII characters";
    return options.devices.emplace(uint8_t(*id), name).second ? "" : "has the same id twice";
}

std::string takeDevices(Options& options, const std::string& list) {
    options.devices.clear();
    for (size_t at = 0; at <= list.size();) {
        const size_t comma = std::min(list.find(',', at), list.size());
        std::string wrong = takeDevice(options, list.substr(at, comma - at));
        if (!wrong.empty())
            return wrong;
        at = comma + 1;
    }
    return {};
}

std::string takeSplit(Options& options, const std::string&) {
    options.quality.split = true;
    return {};
}

std::string takeLog(Options& options, const std::string&) {
    options.log = true;
    return {};
}

std::string takeHelp(Options& options, const std::string&) {
    options.answer = kHelp;
    return {};
}

std::string takeVersion(Options& options, const std::string&) {
    options.answer = "talv-sim " TESSARINE_VERSION "\n";
    return {};
}

std::string takeLink(Options& options, const std::string& path) {
    options.link = path;
    return path.empty() ? "is no path" : "";
}

struct Row {
    const char* name;
    bool hasValue;
    Taker take;
};
const std::vector<Row>& rows() {
    static const std::vector<Row> table = {
        {"--link", true, takeLink},
        {"--devices", true, takeDevices},
        {"--baud", true, intoNumber(&LineQuality::baud, kMaxBaud)},
        {"--corrupt", true, intoPercent(&LineQuality::corruptPercent)},
        {"--drop", true, intoPercent(&LineQuality::dropPercent)},
        {"--seed", true, intoNumber(&LineQuality::seed, INT64_MAX)},
        {"--delay-ms", true, intoNumber(&LineQuality::delayMs, kMaxDelayMs)},
        {"--split", false, takeSplit},
        {"--log", false, takeLog},
        {"--help", false, takeHelp},
        {"--version", false, takeVersion},
    };
    return table;
}
}  // namespace

std::optional<Options> readOptions(const std::vector<std::string>& arguments, std::string& error) {
    Options options;
    takeDevices(options, kDefaultDevice);
    for (auto at = arguments.begin(); at != arguments.end(); ++at) {
        const size_t equals = at->starts_with("--") ? at->find('=') : std::string::npos;
        const std::string name = at->substr(0, equals);
        const auto row = std::ranges::find(rows(), name, &Row::name);
        error = name;
        if (row == rows().end())
            return error += ": unknown option", std::nullopt;
        const bool inPlace = equals != std::string::npos;
        if (inPlace && !row->hasValue)
            return error += ": takes no value", std::nullopt;
        if (row->hasValue && !inPlace && ++at == arguments.end())
            return error += ": needs a value", std::nullopt;
        const std::string value = inPlace ? at->substr(equals + 1) : row->hasValue ? *at : std::string();
        const std::string wrong = row->take(options, value);
        if (!wrong.empty())
            return error.append(": '").append(value).append("' ").append(wrong), std::nullopt;
        if (!options.answer.empty())
            return options;
    }
    if (options.link.empty())
        return error = "--link: is needed", std::nullopt;
    return options;
}
}  // namespace TalvSim
