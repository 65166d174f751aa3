#include "host/options.h"
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

The command "help" lists the commands. A line "quit", the end of the input, SIGINT and SIGTERM end the host
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

constexpr OptionRow kOptions[] = {
    {"--console", [](Options& options, const char*) { return options.console = true; }, false},
    {"--module", takeText<&Options::module>, true},
    {"--user-folder", takeText<&Options::userFolder>, true},
    {"--serial-dir", takeText<&Options::serialFolder>, true},
    {"--serial-prefix",
     [](Options& options, const char* text) {
         options.serialPrefixes.push_back(text);
         return *text != 0;
     }, true},
    {"--port",
     [](Options& options, const char* text) {
         options.port = text;
         return options.hasPort = std::strchr(text, '/') == nullptr;
     }, true},
    {"--inputs", takeInputs, true},
};

const OptionRow* rowOf(const std::string& name) {
    for (const OptionRow& row : kOptions)
        if (name == row.name)
            return &row;
    return nullptr;
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
        const std::string name = word.substr(0, equals);
        const OptionRow* row = rowOf(name);
        text = "talv-host: ";
        if (!row || (equals != std::string::npos && !row->hasText)) {
            text += "unknown option " + word + "\n";
            return Options::kRefused;
        }
        const char* value = !row->hasText                 ? ""
                            : equals != std::string::npos ? arguments[i] + equals + 1
                            : i + 1 < count               ? arguments[++i]
                                                          : nullptr;
        if (!value || !row->take(options, value)) {
            text += name + (value ? std::string(": bad value \"") + value + "\"\n" : " needs a value\n");
            return Options::kRefused;
        }
    }
    text.clear();
    return Options::kRun;
}
