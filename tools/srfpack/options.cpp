#include "tools/srfpack/options.h"
#include <algorithm>

namespace SrfPack {
namespace {
constexpr char kHelp[] = R"(srfpack - pack and unpack resource files

usage: srfpack create [--compress] FOLDER FILE
       srfpack list [--json] FILE
       srfpack extract FILE FOLDER
       srfpack replace FILE INNER PATH
       srfpack compact FILE
       srfpack verify FILE
       srfpack --help | --version

  create     packs the content of FOLDER, sub-folders too, in the order of the names' bytes: the same folder gives the
             same bytes. Links to files are read, links to folders passed over
  list       prints what is in FILE: size, stored size and path of each member
  extract    writes it below FOLDER, which is created if missing. Nothing is written before all of FILE has been read
             without a fault, and nothing ever outside FOLDER
  replace    puts the bytes of PATH in the place of the member INNER, such as bitmaps/back.png
  compact    rewrites FILE without gaps
  verify     reads every member to its end

  --compress   compresses what gets smaller by it; without, numbers end at 2 GiB, and larger content is refused
  --json       prints one array of {"path", "folder", "offset", "stored", "size", "compressed"}
  --help, --version   print and exit
  --           ends the options

create, replace and compact write aside and rename: FILE is the old one or the new one. Progress is shown on a terminal
only.

Exit status: 0 when done, 1 when a file can't be read or written or is damaged, 2 for bad usage.
)";

struct CommandRow {
    const char* name;
    size_t operands;
};
constexpr CommandRow kCommands[] = {
    {"create",  2},
    {"list",    1},
    {"extract", 2},
    {"replace", 3},
    {"compact", 1},
    {"verify",  1},
};

struct SwitchRow {
    const char* name;
    const char* command;
    bool Options::*field;
};
constexpr SwitchRow kSwitches[] = {
    {"--compress", "create", &Options::compress},
    {"--json",     "list",   &Options::json    },
};

struct AnswerRow {
    const char* name;
    const char* text;
};
constexpr AnswerRow kAnswers[] = {
    {"--help",    kHelp                            },
    {"--version", "srfpack " TESSARINE_VERSION "\n"},
};

/** What is wrong with an option, empty when it is good. */
std::string takeOption(Options& options, const std::string& name) {
    const auto answer = std::ranges::find(kAnswers, name, &AnswerRow::name);
    if (answer != std::end(kAnswers)) {
        options.answer = answer->text;
        return {};
    }
    const auto row = std::ranges::find(kSwitches, name, &SwitchRow::name);
    if (row == std::end(kSwitches))
        return name + ": unknown option";
    if (options.command != row->command)
        return name + ": is for " + row->command + " only, behind its name";
    options.*row->field = true;
    return {};
}

/** What is wrong with the whole, empty when it is good. */
std::string checkCommand(const Options& options) {
    if (options.command.empty())
        return "a command is needed; try --help";
    const auto row = std::ranges::find(kCommands, options.command, &CommandRow::name);
    if (row == std::end(kCommands))
        return options.command + ": unknown command";
    if (options.operands.size() != row->operands)
        return options.command + ": needs " + std::to_string(row->operands) + " names, not " +
               std::to_string(options.operands.size());
    const bool hasEmpty = std::ranges::find(options.operands, "") != options.operands.end();
    return hasEmpty ? options.command + ": a name is empty" : "";
}
}  // namespace

std::optional<Options> readOptions(const std::vector<std::string>& arguments, std::string& error) {
    Options options;
    bool optionsEnd = false;
    for (const std::string& word : arguments) {
        if (!optionsEnd && word == "--")
            optionsEnd = true;
        else if (!optionsEnd && word.starts_with('-') && word != "-")
            error = takeOption(options, word);
        else if (options.command.empty())
            options.command = word;
        else
            options.operands.push_back(word);
        if (!error.empty())
            return std::nullopt;
        if (!options.answer.empty())
            return options;
    }
    error = checkCommand(options);
    return error.empty() ? std::optional(options) : std::nullopt;
}
}  // namespace SrfPack
