#include "host/options.h"
#include "host/screentext.h"
#include <charconv>
#include <cstring>

namespace {
constexpr const char* kHelp = R"(Usage: talv-host [OPTION]...
Controls racks of microphone head amps over a serial line.

  --console            read commands from standard input, write JSON Lines to standard output
                       (without it: a live view when standard output is a terminal)
  --module PATH        the extension's bundle folder, or the shared object in it
  --user-folder DIR    the root of the preferences, made if missing
  --serial-dir DIR     where serial devices are looked for (default /dev/)
  --serial-prefix P    a name prefix that counts as a serial port; may be repeated, replaces the
                       usual ones: tty. ttyS ttyUSB ttyACM
  --port NAME          the port to use from now on, for instance ttyUSB0
  --inputs N           audio inputs of this host, 0 to 2040 (default 64)
  --help, --version    say so and end

The command "help" lists the commands. A line "quit", the end of the input, SIGINT, SIGTERM and SIGHUP end the host
and keep its settings.
)";

struct OptionRow {
    const char* name;
    /** Null text: the option stands alone. false: the text is no value for it. */
    bool (*take)(Options& options, const char* text);
    bool hasText;
};

bool takeInputs(Options& options, const char* text) {
    int32_t number = -1;
    const char* end = text + std::strlen(text);
    const auto [rest, error] = std::from_chars(text, end, number);
    if (error != std::errc() || rest != end || number < 0 || number > kMaxInputs)
        return false;
    options.inputs = number;
    return true;
}

template <std::string Options::*Field>
bool takeText(Options& options, const char* text) {
    options.*Field = text;
    return *text != 0;
}

bool takeConsole(Options& options, const char* /*text*/) {
    return options.console = true;
}

bool takePrefix(Options& options, const char* text) {
    options.serialPrefixes.push_back(text);
    return *text != 0;
}

/** A name in the folder, not a path. */
bool takePort(Options& options, const char* text) {
    options.port = text;
    return options.hasPort = std::strchr(text, '/') == nullptr;
}

constexpr OptionRow kOptions[] = {
    {"--console",       takeConsole,                      false},
    {"--module",        takeText<&Options::module>,       true },
    {"--user-folder",   takeText<&Options::userFolder>,   true },
    {"--serial-dir",    takeText<&Options::serialFolder>, true },
    {"--serial-prefix", takePrefix,                       true },
    {"--port",          takePort,                         true },
    {"--inputs",        takeInputs,                       true },
};

const OptionRow* rowOf(const std::string& name) {
    for (const OptionRow& row : kOptions)
        if (name == row.name)
            return &row;
    return nullptr;
}

/** One line, whatever was typed. */
Options::Result refuse(std::string& text, const std::string& why) {
    text = "talv-host: " + printable(why) + "\n";
    return Options::kRefused;
}
}  // namespace

Options::Result scanOptions(int count, char** arguments, Options& options, std::string& text) {
    for (int i = 1; i < count; ++i) {
        const std::string word = arguments[i];
        if (word == "--help" || word == "--version") {
            text = word == "--help" ? kHelp : "talv-host " TESSARINE_VERSION "\n";
            return Options::kAnswered;
        }
        const size_t equals = word.find('=');
        const bool isJoined = equals != std::string::npos;
        const OptionRow* row = rowOf(word.substr(0, equals));
        if (!row || (isJoined && !row->hasText))
            return refuse(text, "unknown option " + word);
        if (row->hasText && !isJoined && i + 1 == count)
            return refuse(text, word + " needs a value");
        const char* value = !row->hasText ? "" : isJoined ? arguments[i] + equals + 1 : arguments[++i];
        if (!row->take(options, value))
            return refuse(text, std::string(row->name) + ": bad value \"" + value + "\"");
    }
    text.clear();
    return Options::kRun;
}
