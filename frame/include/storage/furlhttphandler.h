#pragma once
#include "base/source/fthread.h"
#include "network/nsocket.h"
#include "storage/furlhandler.h"
#include "storage/furlstream.h"
#include <atomic>
#include <string>

namespace Tessarine {
class FHttpHead;

/** Gets the content of a URL by HTTP/1.0, in the open or, for "https", secured.

    Proxy       by the group "HttpHandlerDefaults" of the program's settings, asked for on the main thread: "Use Proxy", "Proxy
                Host", "Proxy Port", "Use Proxy Authentication", "Proxy User", "Proxy Passwd". To what is secured, a tunnel.
    Redirects   of 301, 302 and 307, ten at most, to "http" and "https" alone, and never from the second to the first. Name and
                password are for the host that they were given for.
    Login       what the URL has; when that isn't taken, what the user enters, whom the main thread asks. From a worker this waits
                for the main thread: one that waits for the worker would never be free to ask. Both go into the URL.
    Failures    404 and the like too: there is no stream then, and getStatus() tells which.
    Threads     one at a time, except cancel() and notify(). What a worker asks holds the handler until it was told, so that it may
                outlive its URL. Whoever ends the main thread's loop cancels first what workers wait for. */
class FUrlHttpHandler : public FUrlHandler {
public:
    static constexpr int32_t kMaxRedirects = 10, kMaxLogins = 5;
    static constexpr NTimeouts kTimeouts{30000, 30000, 3600000};

    explicit FUrlHttpHandler(FUrl& url);
    FUrlHttpHandler(const FUrlHttpHandler&) = delete;
    FUrlHttpHandler& operator=(const FUrlHttpHandler&) = delete;

    /** Of each connection that comes; at first kTimeouts. The head of an answer has as much time as the connection. */
    void setTimeouts(const NTimeouts& newTimeouts) { timeouts = newTimeouts; }
    /** The last answer's code; 0: there was none. */
    int32_t getStatus() const { return status; }

    bool open() override;
    void close() override;
    void cancel() override;
    int64_t getLength() override { return stream ? length : -1; }
    FStream* getStream() override { return isContentOpen ? stream.get() : nullptr; }
    /** What a worker asks of the main thread. */
    int32_t notify(FMessage* message) override;

    DECLARE_ABSTRACT_CLASS(FUrlHttpHandler, FUrlHandler)

private:
    enum class Step { kDone, kAgain, kFailed };
    struct Login {
        std::string user, password;  // UTF-8
        bool operator==(const Login&) const = default;
    };
    struct Proxy {
        bool use = false, hasLogin = false;
        std::string host;
        uint16_t port = 0;
        Login login;
    };

    Step failed(NError why);
    bool canBeAsked() const;
    Step request();
    Step connect();
    Step tunnel(const std::string& host);
    Step exchange(const std::string& text, FHttpHead& head);
    Step follow(const FHttpHead& head);
    Step loginToProxy();
    Step loginToHost();

    bool isSecure() const { return url.isProtocol(u"https"); }
    /** Requests that a proxy reads itself. */
    bool isForProxy() const { return proxy.use && !isSecure(); }
    std::string hostAndPort(bool always) const;
    std::string target() const;
    std::string requestText(const std::string& what, bool isTunnel) const;
    Login urlLogin() const;

    bool askMainThread(const char* question);
    bool answer(const char* question);
    bool readDefaults();
    bool askLogin();

    NTimeouts timeouts = kTimeouts;
    FLock streamLock;  // guards stream where another thread may cancel it
    OPtr<FUrlStream> stream;
    bool isContentOpen = false;
    int64_t length = -1;
    int32_t status = 0, redirects = 0, logins = 0;
    std::atomic<bool> cancelled{false};

    Proxy proxy;
    bool isProxyKnown = false;
    bool sendsProxyLogin = false;  // the proxy has asked
    FCondition answered;           // by the main thread, or cancelled
    bool goodAnswer = false;
    FUrl guarded;  // what the user is asked about; once cancelled, that may outlive the URL
    FString enteredUser, enteredPassword;
};

/** The same, for URLs that begin with "https". */
class FUrlHttpsHandler : public FUrlHttpHandler {
public:
    using FUrlHttpHandler::FUrlHttpHandler;

    DECLARE_ABSTRACT_CLASS(FUrlHttpsHandler, FUrlHttpHandler)
};

}  // namespace Tessarine
