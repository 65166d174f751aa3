#include "storage/furl.h"
#include "storage/fpersistent.h"
#include <algorithm>
#include <charconv>
#include <string>
#include <string_view>

namespace Tessarine {
namespace {
using Text = std::u16string_view;

constexpr Text kProtocolMark = u"://";
constexpr const tchar* kFileProtocol = u"file";
constexpr std::string_view kAllowedMarks =
    "$-_.+!*'(),;/?:@=&~";  // what a URL has as it is, besides letters and digits

struct PortRow {
    Text protocol;
    uint16_t port;
};
constexpr PortRow kPorts[] = {
    {u"file",  0  },
    {u"http",  80 },
    {u"https", 443},
};

const PortRow* portRowOf(const FString& protocol) {
    const auto row = std::ranges::find_if(kPorts, [&](const PortRow& each) {
        return protocol.compare(ConstString(each.protocol.data(), int32_t(each.protocol.size())), kIgnoreCase) == 0;
    });
    return row != std::end(kPorts) ? row : nullptr;
}

void assign(FString& target, Text text) {
    target.assign(text.data(), int32_t(text.size()));
}

Text textOf(const tchar* text) {
    return text ? Text(text) : Text();
}

/** What stands before the mark, which goes with it; all, when there is none. */
Text takeUpTo(Text& text, Text mark) {
    const Text taken = text.substr(0, text.find(mark));
    text.remove_prefix(std::min(text.size(), taken.size() + mark.size()));
    return taken;
}

/** An empty one is 0. */
bool scanPort(Text text, uint16_t& port) {
    const std::string digits(text.begin(), text.end());
    const bool plain = std::ranges::all_of(text, [](tchar c) { return ConstString::isCharDigit(c); });
    port = 0;
    if (text.empty())
        return true;
    const auto scanned = std::from_chars(digits.data(), digits.data() + digits.size(), port);
    return plain && scanned.ec == std::errc();
}

/** Where the host ends and ":" with the port begins; the end without a port. */
size_t endOfHost(Text text) {
    const size_t bracket = text.starts_with(u'[') ? text.find(u']') : Text::npos;
    const size_t end = text.find(u':', bracket == Text::npos ? 0 : bracket);
    return std::min(end, text.size());
}

bool isPlain(uint8_t byte) {
    return byte < 0x80 &&
           (ConstString::isCharAlphaNum(char(byte)) || kAllowedMarks.find(char(byte)) != std::string_view::npos);
}

int32_t hexDigitOf(tchar c) {
    const bool letter = (c | 0x20) >= u'a' && (c | 0x20) <= u'f';
    return ConstString::isCharDigit(c) ? c - u'0' : letter ? (c | 0x20) - u'a' + 10 : -1;
}

/** The byte of "%" and two digits at the start; -1: it begins in another way. */
int32_t escapedByte(std::string_view text) {
    if (text.size() < 3 || text[0] != '%')
        return -1;
    const int32_t high = hexDigitOf(uint8_t(text[1])), low = hexDigitOf(uint8_t(text[2]));
    return high < 0 || low < 0 ? -1 : high << 4 | low;
}

std::string utf8Of(const String& text) {
    FString bytes;
    bytes.assign(text);
    bytes.toWideString();
    bytes.toMultiByte(kCodePageUTF8);
    return std::string(units8(bytes));
}
}  // namespace

IMPLEMENT_CLASS(FUrl, FPath)

FUrl::FUrl(const tchar* text) {
    setUrl(text);
}

FUrl::FUrl(const tchar* protocol, const tchar* host, const tchar* file) {
    set(protocol, host, 0, file);
    guessDefaultPort();
}

FUrl::FUrl(const tchar* protocol, const tchar* host, uint16_t port, const tchar* file, const tchar* user,
           const tchar* password) {
    set(protocol, host, port, file);
    this->user = user;
    this->password = password;
}

bool FUrl::setUrl(const tchar* text) {
    Text rest = textOf(text);
    FUrl parsed;
    if (rest.find(kProtocolMark) == Text::npos) {
        parsed.protocol = kFileProtocol;
        rest.remove_prefix(rest.starts_with(u'/'));
    } else {
        assign(parsed.protocol, takeUpTo(rest, kProtocolMark));
        if (!parsed.parseAuthority(takeUpTo(rest, u"/")))
            return false;
    }
    assign(parsed.file, rest);
    parsed.setFileType(getFileType());
    *this = parsed;
    updatePath();
    return true;
}

bool FUrl::parseAuthority(Text text) {
    const size_t at = text.rfind(u'@');
    if (at != Text::npos) {
        Text login = text.substr(0, at);
        assign(user, takeUpTo(login, u":"));
        assign(password, login);
        text.remove_prefix(at + 1);
    }
    const size_t end = endOfHost(text);
    assign(host, text.substr(0, end));
    text.remove_prefix(std::min(text.size(), end + 1));
    guessDefaultPort();
    return text.empty() || scanPort(text, port);
}

void FUrl::getUrl(FString& text) const {
    text = protocol;
    text += ConstString(kProtocolMark.data());
    if (!user.isEmpty() || !password.isEmpty()) {
        text += user;
        if (!password.isEmpty())
            (text += u":") += password;
        text += u"@";
    }
    text += host;
    const PortRow* row = portRowOf(protocol);
    FString number;
    if (port != (row ? row->port : 0))
        text += number.printf(":%d", port);
    text += u"/";
    text += file;
}

void FUrl::set(const tchar* newProtocol, const tchar* newHost, uint16_t newPort, const tchar* newFile) {
    protocol = newProtocol;
    host = newHost;
    port = newPort;
    user = u"";
    password = u"";
    setFile(newFile);
}

void FUrl::setFile(const tchar* text, bool encode) {
    file = text;
    if (encode)
        urlEncode(file);
    updatePath();
}

void FUrl::updatePath() {
    FPath::fromString(file.text16(), file.isEmpty() ? kFolderPath : kFilePath);
}

bool FUrl::guessDefaultPort() {
    const PortRow* row = portRowOf(protocol);
    if (row)
        port = row->port;
    return row != nullptr;
}

void FUrl::getFullPath(FString& text) const {
    getUrl(text);
}

void FUrl::descend(const tchar* text, int32_t kind) {
    FPath::descend(text, kind);
    takePath();
}

bool FUrl::ascend() {
    if (file.isEmpty())
        return false;
    if (!FPath::ascend())
        FPath::fromString(u"", kFolderPath);
    takePath();
    return true;
}

/** The file part from name and folders. */
void FUrl::takePath() {
    FPath::getFullPath(file);
    if (isFolder() && !file.isEmpty() && !file.endsWith(u"/"))
        file += u"/";
}

void FUrl::fromString(const tchar* text, int32_t kind) {
    if (setUrl(text) && !isFolder())
        setKind(kind);
}

void FUrl::urlEncode(String& text) {
    constexpr char kDigits[] = "0123456789abcdef";
    std::string encoded;
    for (const char c : utf8Of(text)) {
        const auto byte = uint8_t(c);
        if (isPlain(byte))
            encoded += c;
        else
            encoded.append({'%', kDigits[byte >> 4], kDigits[byte & 15]});
    }
    text.fromUTF8(encoded.c_str());
}

bool FUrl::urlDecode(String& text) {
    const std::string encoded = utf8Of(text);
    std::string decoded;
    for (std::string_view rest = encoded; !rest.empty();) {
        const int32_t byte = escapedByte(rest);
        decoded += byte < 0 ? rest.front() : char(byte);
        rest.remove_prefix(byte < 0 ? 1 : 3);
    }
    return decoded.find('\0') == std::string::npos && text.fromUTF8(decoded.c_str());
}

bool FUrl::storeAttributes(FAttributes& attributes) const {
    return attributes.set("Protocol", protocol) && attributes.set("Host", host) && attributes.set("Port", port) &&
           attributes.set("User", user) && attributes.set("Password", password) && attributes.set("File", file);
}

bool FUrl::restoreAttributes(FAttributes& attributes) {
    FUrl restored;
    int64_t number = 0;
    if (!attributes.get("Protocol", restored.protocol) || !attributes.get("File", restored.file))
        return false;
    attributes.get("Host", restored.host);
    attributes.get("User", restored.user);
    attributes.get("Password", restored.password);
    if (attributes.get("Port", number) && (number < 0 || number > UINT16_MAX))
        return false;
    restored.port = uint16_t(number);
    for (FString* each : {&restored.protocol, &restored.host, &restored.user, &restored.password, &restored.file})
        each->toWideString();
    *this = restored;
    updatePath();
    return true;
}

}  // namespace Tessarine
