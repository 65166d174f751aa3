#include "storage/furlhttphandler.h"
#include "base/fmessage.h"
#include "base/utranslatedstring.h"
#include "encryption/fbase64.h"
#include "furlhttphead.h"
#include "furltext.h"
#include "network/hooks.h"
#include "pluginterfaces/base/smartpointer.h"
#include "pluginterfaces/host/idefaultpool.h"
#include <algorithm>
#include <string_view>
#include <unistd.h>

namespace Tessarine {
namespace {
constexpr UTranslatedString kLoginTitle("Authentication needed");
constexpr const char* kAskLogin = "authenticate WWW";
constexpr const char* kReadDefaults = "read HttpHandlerDefaults";
constexpr const char* kAsking = "handler";
constexpr const char* kDefaults = "HttpHandlerDefaults";
constexpr const char* kAgent = "User-Agent: Tessarine HTTP URL Handler";
constexpr std::string_view kHostMarks = "-._~:[]%";
constexpr uint16_t kHttpPort = 80, kHttpsPort = 443;
constexpr int32_t kMaxDefaultLength = 1024;

bool isHost(std::string_view text) {
    const auto fits = [](char c) { return ConstString::isCharAlphaNum(c) || kHostMarks.find(c) != kHostMarks.npos; };
    return !text.empty() && std::ranges::all_of(text, fits);
}

bool hasControls(std::string_view text) {
    return std::ranges::any_of(text, [](char c) { return uint8_t(c) < 0x20 || c == 0x7F; });
}

/** As one connects to it: an address of version 6 stands in brackets in a URL. */
std::string withoutBrackets(const std::string& host) {
    const bool has = host.size() > 2 && host.front() == '[' && host.back() == ']';
    return has ? host.substr(1, host.size() - 2) : host;
}

std::string decoded(FString text) {
    FUrl::urlDecode(text);  // a text that can't be decoded is meant as it is
    return utf8Of(text);
}

/** Of the settings; empty where there is none, or an overlong one. */
std::string textOf(IDefaultPool3& pool, const char* key) {
    tchar text[kMaxDefaultLength] = {};
    return pool.getString16(kDefaults, key, text, kMaxDefaultLength) == kResultOk ? utf8Of(FString(text))
                                                                                  : std::string();
}

int32_t numberOf(IDefaultPool3& pool, const char* key) {
    int32_t number = 0;
    pool.getLong(kDefaults, key, number);
    return number;
}
}  // namespace

IMPLEMENT_ABSTRACT_CLASS(FUrlHttpHandler, FUrlHandler)
IMPLEMENT_ABSTRACT_CLASS(FUrlHttpsHandler, FUrlHttpHandler)
IMPLEMENT_CLASS(FUrlStream, NStream)

void initFUrlHttpHandler() {
    FUrl::registerHandler(u"http", kHttpPort, [](FUrl& url) -> FUrlHandler* { return new FUrlHttpHandler(url); });
}

void initFUrlHttpsHandler() {
    FUrl::registerHandler(u"https", kHttpsPort, [](FUrl& url) -> FUrlHandler* { return new FUrlHttpsHandler(url); });
}

FUrlHttpHandler::FUrlHttpHandler(FUrl& url) : FUrlHandler(url) {
    if (isMainThread())
        answer(kReadDefaults);
}

bool FUrlHttpHandler::open() {
    close();
    if (cancelled)  // the main thread may still answer what was asked before
        return fail(NError::kCancelled);
    error = NError::kNone;
    status = redirects = logins = 0;
    sendsProxyLogin = false;
    if ((isMainThread() || !isProxyKnown) && gNetworkHooks.defaultPool && !askMainThread(kReadDefaults))
        return fail(NError::kCancelled);
    Step step = Step::kAgain;
    while (step == Step::kAgain)
        step = request();
    if (step == Step::kFailed)
        close();
    return step == Step::kDone;
}

void FUrlHttpHandler::close() {
    if (stream)
        stream->close();
    FGuard guard(streamLock);
    stream = nullptr;
    isContentOpen = false;
    length = -1;
}

void FUrlHttpHandler::cancel() {
    cancelled = true;
    {
        FGuard guard(streamLock);
        if (stream)
            stream->cancel();
    }
    answered.signal();
}

FUrlHttpHandler::Step FUrlHttpHandler::failed(NError why) {
    fail(why);
    return Step::kFailed;
}

// --- one request

bool FUrlHttpHandler::canBeAsked() const {
    const Login login = urlLogin();
    const bool isGood =
        isHost(utf8Of(url.getHost())) && url.getPort() != 0 && !hasControls(login.user + login.password);
    const bool isProxyGood =
        isHost(proxy.host) && proxy.port != 0 && !hasControls(proxy.login.user + proxy.login.password);
    return (isSecure() || url.isProtocol(u"http")) && isGood && (!proxy.use || isProxyGood);
}

FUrlHttpHandler::Step FUrlHttpHandler::request() {
    close();
    if (!canBeAsked())
        return failed(NError::kBadUrl);
    {
        FGuard guard(streamLock);
        stream = new FUrlStream(url, timeouts);
    }
    if (cancelled)  // looked at behind the stream, which cancel() finds from now on
        return failed(NError::kCancelled);
    FHttpHead head;
    Step step = connect();
    if (step == Step::kDone)
        step = exchange(requestText("GET " + target(), false), head);
    if (step != Step::kDone)
        return step;
    if (head.isRedirect())
        return follow(head);
    if (head.wantsProxyLogin() && isForProxy())
        return loginToProxy();
    if (head.wantsLogin())
        return loginToHost();
    if (head.isFailure())
        return failed(NError::kRefused);
    stream->beginContent(head.isEmpty() ? 0 : head.contentBytes);
    length = head.isEmpty() ? 0 : head.length;
    isContentOpen = true;
    return Step::kDone;
}

FUrlHttpHandler::Step FUrlHttpHandler::connect() {
    const std::string host = withoutBrackets(utf8Of(url.getHost()));
    const bool connected = proxy.use ? stream->connect(withoutBrackets(proxy.host).c_str(), proxy.port)
                                     : stream->connect(host.c_str(), url.getPort());
    if (!connected)
        return failed(stream->getError());
    const Step step = proxy.use && isSecure() ? tunnel(hostAndPort(true)) : Step::kDone;
    if (step == Step::kDone && isSecure() && !stream->secure(host.c_str()))
        return failed(stream->getError());
    return step;
}

/** Has the proxy pass on what it can't read. */
FUrlHttpHandler::Step FUrlHttpHandler::tunnel(const std::string& host) {
    FHttpHead head;
    const Step step = exchange(requestText("CONNECT " + host, true), head);
    if (step != Step::kDone)
        return step;
    if (head.wantsProxyLogin())
        return loginToProxy();
    return head.status / 100 == 2 ? Step::kDone : failed(NError::kRefused);
}

/** Says something, and takes the head of the answer. */
FUrlHttpHandler::Step FUrlHttpHandler::exchange(const std::string& text, FHttpHead& head) {
    if (stream->writeRaw(text.data(), int64_t(text.size())) != int64_t(text.size()))
        return failed(stream->getError());
    stream->limit(timeouts.connectMs);
    for (std::string line; !head.isComplete();)
        if (!stream->readLine(line, FHttpHead::kMaxLineBytes) || !head.takeLine(line))
            return failed(stream->verify() ? NError::kBadAnswer : stream->getError());
    stream->limit(0);
    status = head.status;
    return Step::kDone;
}

FUrlHttpHandler::Step FUrlHttpHandler::follow(const FHttpHead& head) {
    if (++redirects > kMaxRedirects)
        return failed(NError::kTooManyRedirects);
    FUrl next;
    FString text;
    const bool isUrl =
        !hasControls(head.location) && text.fromUTF8(head.location.c_str()) && next.setUrl(text.text16());
    const bool isAllowed = next.isProtocol(u"https") || (next.isProtocol(u"http") && !isSecure());
    if (!isUrl || !isAllowed || next.getHost().isEmpty())
        return failed(NError::kBadRedirect);
    const bool isSame = next.isProtocol(url.getProtocol().text16()) && next.getPort() == url.getPort() &&
                        next.getHost().compare(url.getHost(), kIgnoreCase) == 0;
    if (isSame && next.getUser().isEmpty())
        next = FUrl(next.getProtocol().text16(), next.getHost().text16(), next.getPort(), next.getFile().text16(),
                    url.getUser().text16(), url.getPassword().text16());
    url = next;
    return Step::kAgain;
}

FUrlHttpHandler::Step FUrlHttpHandler::loginToProxy() {
    if (sendsProxyLogin || !proxy.hasLogin)
        return failed(NError::kLoginNeeded);
    sendsProxyLogin = true;
    return Step::kAgain;
}

FUrlHttpHandler::Step FUrlHttpHandler::loginToHost() {
    close();
    guarded = url;
    const Login refused = urlLogin();
    const bool entered = gNetworkHooks.askLogin && ++logins <= kMaxLogins && askMainThread(kAskLogin);
    if (cancelled)
        return failed(NError::kCancelled);
    if (!entered || enteredUser.isEmpty())
        return failed(NError::kLoginNeeded);
    url.setLogin(enteredUser.text16(), enteredPassword.text16());
    return urlLogin() == refused ? failed(NError::kLoginNeeded) : Step::kAgain;
}

// --- texts

std::string FUrlHttpHandler::hostAndPort(bool always) const {
    const std::string host = utf8Of(url.getHost());
    return url.hasDefaultPort() && !always ? host : host + ':' + std::to_string(url.getPort());
}

/** What is asked for: of a host its file, of a proxy the whole URL, without what is for the host alone. */
std::string FUrlHttpHandler::target() const {
    FString file;
    url.getRequestFile(file);
    return (isForProxy() ? "http://" + hostAndPort(false) + '/' : "/") + utf8Of(file);
}

std::string FUrlHttpHandler::requestText(const std::string& what, bool isTunnel) const {
    const auto basic = [](const Login& login) { return encodeBase64(login.user + ':' + login.password) + "\r\n"; };
    const Login login = urlLogin();
    std::string text = what + " HTTP/1.0\r\nHost: " + hostAndPort(isTunnel) + "\r\n";
    if (sendsProxyLogin && (isTunnel || isForProxy()))
        text += "Proxy-Authorization: Basic " + basic(proxy.login);
    if (!login.user.empty() && !isTunnel)
        text += "Authorization: Basic " + basic(login);
    return text + kAgent + "\r\n\r\n";
}

FUrlHttpHandler::Login FUrlHttpHandler::urlLogin() const {
    return {decoded(url.getUser()), decoded(url.getPassword())};
}

// --- what belongs to the main thread

/** true: it has a good answer. From another thread this waits, until cancel() at the latest. */
bool FUrlHttpHandler::askMainThread(const char* question) {
    if (isMainThread())
        return answer(question);
    answered.reset();
    if (cancelled)
        return false;
    OPtr<FMessage> message(new FMessage(question));
    message->addUnknown(kAsking, this);  // receivers are borrowed, and this may go while it is told
    gMessenger->postMessage(static_cast<CmObject*>(this), message.detach());
    answered.wait();
    return !cancelled && goodAnswer;
}

int32_t FUrlHttpHandler::notify(FMessage* message) {
    if (!message->isType(kAskLogin) && !message->isType(kReadDefaults))
        return FUrlHandler::notify(message);
    if (!cancelled)
        goodAnswer = answer(message->getMessageID());
    answered.signal();
    return 1;
}

bool FUrlHttpHandler::answer(const char* question) {
    return std::string_view(question) == kAskLogin ? askLogin() : readDefaults();
}

bool FUrlHttpHandler::askLogin() {
    enteredUser = enteredPassword = u"";
    return gNetworkHooks.askLogin && gNetworkHooks.askLogin(kLoginTitle, guarded, enteredUser, enteredPassword);
}

bool FUrlHttpHandler::readDefaults() {
    proxy = Proxy();
    isProxyKnown = true;
    IDefaultPool3* pool = gNetworkHooks.defaultPool ? gNetworkHooks.defaultPool() : nullptr;
    if (!pool)
        return true;
    const int32_t port = numberOf(*pool, "Proxy Port");
    proxy.use = numberOf(*pool, "Use Proxy") != 0;
    proxy.host = textOf(*pool, "Proxy Host");
    proxy.port = port > 0 && port <= UINT16_MAX ? uint16_t(port) : 0;
    proxy.hasLogin = numberOf(*pool, "Use Proxy Authentication") != 0;
    proxy.login = {textOf(*pool, "Proxy User"), textOf(*pool, "Proxy Passwd")};
    return true;
}

}  // namespace Tessarine
