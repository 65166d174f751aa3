#include "storage/furl.h"
#include "base/fcompiledinclass.h"
#include "base/source/finitializer.h"
#include "base/source/fthread.h"
#include "furltext.h"
#include "storage/fpersistent.h"
#include "storage/furlhandler.h"
#include <algorithm>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Tessarine {
namespace {
using Text = std::u16string_view;

constexpr Text kProtocolMark = u"://";
constexpr const tchar* kFileProtocol = u"file";
// what a URL has as it is, besides letters and digits; in a login nothing that ends one of its parts
constexpr std::string_view kAllowedMarks = "$-_.+!*'(),;/?:@=&~", kLoginMarks = "$-_.+!*'(),;=&~";
constexpr size_t kEscapeLength = 3;  // "%" and two digits

struct Protocol {
    uint16_t port = 0;
    FUrl::MakeHandler make = nullptr;  // null: nobody knows it
};

/** What is known of protocols, from its first use on. */
class Protocols {
public:
    static Protocols& instance() {
        static Protocols all;
        return all;
    }
    Protocol find(const FString& name) {
        FGuard guard(lock);
        begin();
        const Row* row = rowOf(name);
        return row ? row->known : Protocol();
    }
    void set(const FString& name, const Protocol& known) {
        FGuard guard(lock);
        begin();
        if (Row* row = rowOf(name))
            row->known = known;
        else
            rows.push_back({name, known});
    }

private:
    struct Row {
        FString name;
        Protocol known;
    };
    void begin() {
        if (std::exchange(begun, true))
            return;
        for (const auto init : {initFUrlFileHandler, initFUrlHttpHandler, initFUrlHttpsHandler})
            init();
    }
    Row* rowOf(const FString& name) {
        const auto row =
            std::ranges::find_if(rows, [&](const Row& each) { return each.name.compare(name, kIgnoreCase) == 0; });
        return row != rows.end() ? &*row : nullptr;
    }

    FLock lock;  // guards what follows
    bool begun = false;
    std::vector<Row> rows;
};

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

/** Digits alone, of 16 bits. */
std::optional<uint16_t> scanPort(Text text) {
    uint32_t number = 0;
    for (const tchar c : text) {
        if (!ConstString::isCharDigit(c) || number > UINT16_MAX)
            return std::nullopt;
        number = number * 10 + (c - u'0');
    }
    return number <= UINT16_MAX ? std::optional(uint16_t(number)) : std::nullopt;
}

/** Where the host ends and ":" with the port begins; the end without a port. */
size_t endOfHost(Text text) {
    const size_t bracket = text.starts_with(u'[') ? text.find(u']') : Text::npos;
    const size_t end = text.find(u':', bracket == Text::npos ? 0 : bracket);
    return std::min(end, text.size());
}

/** What a text is made of; views of it. */
struct Parts {
    Text protocol = kFileProtocol, user, password, host, file;
    std::optional<uint16_t> port;  // none is written there
};

bool splitAuthority(Text text, Parts& parts) {
    const size_t at = text.rfind(u'@');
    if (at != Text::npos) {
        parts.password = text.substr(0, at);
        parts.user = takeUpTo(parts.password, u":");
        text.remove_prefix(at + 1);
    }
    const size_t end = endOfHost(text);
    parts.host = text.substr(0, end);
    if (end + 1 >= text.size())
        return true;
    parts.port = scanPort(text.substr(end + 1));
    return parts.port.has_value();
}

bool split(Text text, Parts& parts) {
    if (text.find(kProtocolMark) == Text::npos) {
        text.remove_prefix(text.starts_with(u'/'));
        parts.file = text;
        return true;
    }
    parts.protocol = takeUpTo(text, kProtocolMark);
    const Text authority = takeUpTo(text, u"/");
    parts.file = text;
    return splitAuthority(authority, parts);
}

bool isPlain(char c, std::string_view marks) {
    return ConstString::isCharAlphaNum(c) || marks.find(c) != marks.npos;
}

int32_t hexDigitOf(tchar c) {
    const bool letter = (c | 0x20) >= u'a' && (c | 0x20) <= u'f';
    return ConstString::isCharDigit(c) ? c - u'0' : letter ? (c | 0x20) - u'a' + 10 : -1;
}

/** The byte of "%" and two digits at the start; -1: it begins in another way. */
int32_t escapedByte(std::string_view text) {
    if (text.size() < kEscapeLength || text[0] != '%')
        return -1;
    const int32_t high = hexDigitOf(uint8_t(text[1])), low = hexDigitOf(uint8_t(text[2]));
    return high < 0 || low < 0 ? -1 : high << 4 | low;
}

void appendEncoded(std::string& target, char c, std::string_view marks = kAllowedMarks) {
    constexpr char kDigits[] = "0123456789abcdef";
    const auto byte = uint8_t(c);
    if (isPlain(c, marks))
        target += c;
    else
        target.append({'%', kDigits[byte >> 4], kDigits[byte & 15]});
}

void encode(String& text, std::string_view marks) {
    std::string encoded;
    for (const char c : utf8Of(text))
        appendEncoded(encoded, c, marks);
    text.fromUTF8(encoded.c_str());
}

constinit FCompiledInClass gConverterRecord{FObjectConverter::kCategory, "UrlPathConverter",
                                            FUID(0x9B1C40E7, 0x2D5F4A83, 0xB06E71C8, 0x53FA9D24),
                                            [] { return static_cast<FObject*>(new UrlPathConverter); }};

const OneTimeProcedure UrlPathConverterInitializer(
    true,
    [] {
        FUrl::registerObjectFilter();
        return true;
    },
    "UrlPathConverter", 0);
}  // namespace

IMPLEMENT_CLASS(FUrl, FPath)

void FUrlHandlerSlot::take(FUrlHandler* made) {
    if (handler)
        handler->release();
    handler = made;
}

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
    const std::u16string own(textOf(text));  // the text may be a part of this URL
    Parts parts;
    if (!split(own, parts))
        return false;
    assign(protocol, parts.protocol);
    assign(user, parts.user);
    assign(password, parts.password);
    assign(host, parts.host);
    assign(file, parts.file);
    port = parts.port ? *parts.port : Protocols::instance().find(protocol).port;
    updatePath();
    return true;
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
    FString number;
    if (!hasDefaultPort())
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
    const Protocol known = Protocols::instance().find(protocol);
    if (known.make)
        port = known.port;
    return known.make != nullptr;
}

bool FUrl::hasDefaultPort() const {
    return port == Protocols::instance().find(protocol).port;
}

void FUrl::setLogin(const tchar* plainUser, const tchar* plainPassword) {
    user = plainUser;
    password = plainPassword;
    encode(user, kLoginMarks);
    encode(password, kLoginMarks);
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
    encode(text, kAllowedMarks);
}

void FUrl::getRequestFile(FString& text) const {
    const std::string bytes = utf8Of(file);
    std::string encoded;
    for (std::string_view rest = std::string_view(bytes).substr(0, bytes.find('#')); !rest.empty();) {
        const bool isEscape = escapedByte(rest) >= 0;
        if (isEscape)
            encoded += rest.substr(0, kEscapeLength);
        else
            appendEncoded(encoded, rest.front());
        rest.remove_prefix(isEscape ? kEscapeLength : 1);
    }
    text.fromUTF8(encoded.c_str());
}

bool FUrl::urlDecode(String& text) {
    const std::string encoded = utf8Of(text);
    std::string decoded;
    for (std::string_view rest = encoded; !rest.empty();) {
        const int32_t byte = escapedByte(rest);
        decoded += byte < 0 ? rest.front() : char(byte);
        rest.remove_prefix(byte < 0 ? 1 : kEscapeLength);
    }
    return decoded.find('\0') == std::string::npos && text.fromUTF8(decoded.c_str());
}

FUrlHandler* FUrl::makeHandler() {
    const Protocol known = Protocols::instance().find(protocol);
    handler.take(known.make ? known.make(*this) : nullptr);
    return handler.get();
}

bool FUrl::openStream(IBStream** stream) {
    FUrlHandler* made = makeHandler();
    *stream = made && made->open() ? made->getStream() : nullptr;
    if (*stream)
        (*stream)->addRef();
    return *stream != nullptr;
}

void FUrl::registerHandler(const FString& protocol, uint16_t port, MakeHandler make) {
    Protocols::instance().set(protocol, {port, make});
}

void FUrl::registerObjectFilter() {
    FCompiledInClass::registerClass(gConverterRecord);
}

bool FUrl::storeAttributes(FAttributes& attributes) const {
    return attributes.set("Protocol", protocol) && attributes.set("Host", host) && attributes.set("Port", port) &&
           attributes.set("User", user) && attributes.set("Password", password) && attributes.set("File", file);
}

bool FUrl::restoreAttributes(FAttributes& attributes) {
    FUrl restored;
    if (!attributes.get("Protocol", restored.protocol) || !attributes.get("File", restored.file))
        return false;
    attributes.get("Host", restored.host);
    attributes.get("User", restored.user);
    attributes.get("Password", restored.password);
    int64_t number = Protocols::instance().find(restored.protocol).port;
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
