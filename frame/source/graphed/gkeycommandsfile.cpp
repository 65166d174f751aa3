#include "graphed/gkeycommandsfile.h"
#include "graphed/gcommandmanager.h"
#include "graphed/hooks.h"
#include "storage/fbstream.h"
#include "storage/fxmlarchive.h"
#include <algorithm>
#include <array>
#include <charconv>
#include <optional>
#include <string>
#include <string_view>

namespace Tessarine {
namespace {
constexpr std::string_view kHeader = "# Key Commands File", kVersion = "Version:", kBlanks = " \t\r\n\v\f";
constexpr char kWrittenHeader[] = "# Key Commands File\n# Version: 1.1\n";
constexpr float kLatestVersion = 1.1f, kLastWithoutPads = 1.0f;
constexpr char kMacrosTag[] = "MacroCommands";
constexpr size_t kLongestLine = 1023;     // what is longer comes in pieces
constexpr size_t kLargestFile = 4 << 20;  // bytes
constexpr std::string_view kPadKeys[] = {"/", "*", "-", "+", "."};

struct KeyLine {
    FString category, name;
    UKeyCode key;  // none, or a text that isn't one
};

/** More than the largest file may have, when it is larger. */
std::string contentOf(FStream& stream) {
    std::string content;
    std::array<char, 0x4000> piece;
    for (int64_t read = 1; read > 0 && content.size() <= kLargestFile;) {
        read = stream.readRaw(piece.data(), piece.size());
        content.append(piece.data(), size_t(std::max<int64_t>(read, 0)));
    }
    return content;
}

/** With what ends it. */
std::string_view takeLine(std::string_view& text) {
    const size_t end = std::min(text.find('\n'), text.size() - 1) + 1;
    const std::string_view line = text.substr(0, std::min(end, kLongestLine));
    text.remove_prefix(line.size());
    return line;
}

std::string_view skipBlanks(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
    return text;
}

std::optional<float> versionOf(std::string_view line) {
    if (!line.starts_with('#') || !skipBlanks(line.substr(1)).starts_with(kVersion))
        return {};
    const std::string_view number = skipBlanks(line.substr(line.find(kVersion) + kVersion.size()));
    float version = 0;
    const auto scanned = std::from_chars(number.data(), number.data() + number.size(), version);
    return scanned.ec == std::errc() ? std::optional(version) : std::nullopt;
}

/** What stands between quotes, any number of them side by side; empty: there is no more. */
std::string_view takeToken(std::string_view& text) {
    text.remove_prefix(std::min(text.find_first_not_of('"'), text.size()));
    const std::string_view token = text.substr(0, text.find('"'));
    text.remove_prefix(token.size());
    return token;
}

FString decoded(std::string_view utf8) {
    FString text;
    text.fromUTF8(std::string(utf8).c_str());
    return text;
}

std::string keyTextOf(std::string_view token, float version) {
    if (token.empty() || token.front() == '\r' || token.front() == '\n')
        return {};
    const bool isOldPad = version <= kLastWithoutPads && std::ranges::find(kPadKeys, token) != std::end(kPadKeys);
    return std::string(isOldPad ? "Pad " : "").append(token);
}

bool isDropped(std::string_view key, float version) {
    return version <= kLastWithoutPads && key.find("Arrow") != key.npos && key.find("Shift") != key.npos;
}

KeyLine scanLine(std::string_view line, float version) {
    std::array<std::string_view, 5> tokens;
    for (std::string_view& token : tokens)
        token = takeToken(line);
    KeyLine scanned{decoded(tokens[0]), decoded(tokens[2]), {}};
    const std::string key = keyTextOf(tokens[4], version);
    if (!isDropped(key, version))
        scanned.key.string2KeyCode(decoded(key));
    return scanned;
}

GKeyCommandsFile::Result scan(std::string_view text, std::vector<KeyLine>& lines) {
    if (text.empty() || text.size() > kLargestFile || !takeLine(text).starts_with(kHeader))
        return GKeyCommandsFile::kNotAKeyCommandsFile;
    const float version = text.empty() ? 0 : versionOf(takeLine(text)).value_or(0);
    if (!(version > 0 && version <= kLatestVersion))
        return GKeyCommandsFile::kWrongVersion;
    while (!text.empty()) {
        const std::string_view line = takeLine(text);
        if (line.front() == '#')
            continue;
        if (std::ranges::count(line, '"') % 2 != 0)
            return GKeyCommandsFile::kMalformed;
        if (KeyLine scanned = scanLine(line, version); !scanned.name.isEmpty())
            lines.push_back(std::move(scanned));
    }
    return GKeyCommandsFile::kRead;
}

void assignKeys(const std::vector<KeyLine>& lines, GCommandManager& manager) {
    GCommandManager::KeyCommands keys;
    bool anyKnown = false;
    for (const KeyLine& line : lines) {
        const GCommand* command = manager.findCommandWithHistory(line.category, line.name);
        anyKnown = anyKnown || command;
        if (command && !line.key.isEmpty())
            keys.emplace_back(new GKeyCommand(line.key, command->category, command->name));
    }
    if (anyKnown)
        manager.setKeyCommands(keys);
}

void tellUser(GKeyCommandsFile::Result result) {
    static constexpr const tchar* kTexts[] = {
        nullptr,
        u"This is not a key commands file!",
        u"Cannot import this version of key commands file!",
        u"This is not a key commands file!",
    };
    if (kTexts[result] && gActionHooks.showText)
        gActionHooks.showText(kTexts[result]);
}

/** As UTF-8; nothing when it can't stand between quotes on a line. */
std::optional<std::string> quoted(const ConstString& text) {
    String bytes(text);
    bytes.text16();
    bytes.toMultiByte(kCodePageUTF8);
    const std::string_view content = units8(bytes);
    if (content.find_first_of("\"\r\n") != content.npos)
        return {};
    return std::string(1, '"').append(content).append(1, '"');
}

void appendLine(std::string& file, const GCommand& command, const UKeyCode& key) {
    String text;
    key.keyCode2String(text);
    std::string line;
    for (const ConstString& each : {ConstString(command.category), ConstString(command.name), ConstString(text)}) {
        const auto word = quoted(each);
        if (!word)
            return;
        line += *word + " ";
    }
    line.back() = '\n';
    if (line.size() <= kLongestLine)
        file += line;
}
}  // namespace

const FFileType GKeyCommandsFile::keyCommandFileType(u"Key Commands File", u"txt", nullptr, 0x54455854);  // "TEXT"
const FFileType GKeyCommandsFile::macroCommandFileType(u"Macro Commands File", u"mac");

GKeyCommandsFile::Result GKeyCommandsFile::importFrom(FStream& stream, GCommandManager& manager) {
    std::vector<KeyLine> lines;
    const Result result = scan(contentOf(stream), lines);
    if (result == kRead)
        assignKeys(lines, manager);
    tellUser(result);
    return result;
}

bool GKeyCommandsFile::exportTo(FStream& stream, const GCommandManager& manager) {
    std::string file(kWrittenHeader);
    GCommandManager::KeysByCommand keys(manager.keysByCommand());
    for (CmObject* each : manager.getCommands()) {
        const auto& command = *static_cast<GCommand*>(each);
        if (keys[&command].empty())
            appendLine(file, command, UKeyCode());
        for (const GKeyCommand* key : keys[&command])
            appendLine(file, command, key->keyCode);
    }
    return file.size() <= kLargestFile && stream.writeRaw(file.data(), int64_t(file.size())) == int64_t(file.size());
}

bool GKeyCommandsFile::exportMacros(FStream& stream, const GCommandManager& manager) {
    FAttributes macros;
    return manager.storeMacros(macros) && FXmlArchive(&stream, true).saveAttributes(kMacrosTag, macros);
}

bool GKeyCommandsFile::importMacros(FStream& stream, GCommandManager& manager) {
    FXmlArchive archive(&stream, false);
    FAttributes macros;
    if (!manager.areMacroCommandsEnabled() || !archive.loadAttributes(kMacrosTag, macros) || !archive.isWhole())
        return false;
    manager.restoreMacros(macros);
    return true;
}

}  // namespace Tessarine
