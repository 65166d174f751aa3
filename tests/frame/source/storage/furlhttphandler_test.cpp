#include "storage/furlhttphandler.h"
#include "base/fmessage.h"
#include "base/utranslatedstring.h"
#include "network/hooks.h"
#include "tests/support/scriptedserver.h"
#include <functional>
#include <gtest/gtest.h>

namespace Tessarine {
namespace {
using Scripts = std::vector<ScriptedServer::Script>;
constexpr auto says = ScriptedServer::says;
constexpr NTimeouts kShort = {300, 300, 600};

std::u16string wide(const std::string& text) {
    return std::u16string(text.begin(), text.end());
}

std::string at(uint16_t port, const std::string& file) {
    return "http://127.0.0.1:" + std::to_string(port) + '/' + file;
}

std::string redirectTo(const std::string& place, const char* status = "302") {
    return "HTTP/1.1 " + std::string(status) + " Moved\r\nLocation: " + place + "\r\n\r\n";
}

std::string contentOf(FStream* stream) {
    std::string content(1 << 20, 0);
    content.resize(stream ? size_t(stream->readRaw(content.data(), int64_t(content.size()))) : 0);
    return content;
}

/** A URL and its handler. */
struct Fetch {
    explicit Fetch(const std::string& text, const NTimeouts& timeouts = {5000, 5000, 10000}) : url(wide(text).c_str()) {
        handler = classCast<FUrlHttpHandler>(url.makeHandler());
        if (handler)
            handler->setTimeouts(timeouts);
    }
    FUrl url;
    FUrlHttpHandler* handler;
};

struct AnswerRow {
    const char* name;
    std::string answer;
    NError error;  // of open()
    int32_t status;
    int64_t length;
    std::string content;
    bool verified = true;
};

std::vector<AnswerRow> answers() {
    const std::string line(70000, 'x'), ok = "HTTP/1.0 200 OK\r\n";
    std::string headers, long1000;
    for (int32_t i = 0; i < 1100; ++i)
        headers += "A: b\r\n";
    for (int32_t i = 0; i < 20; ++i)
        long1000 += "A: " + std::string(60000, 'x') + "\r\n";
    return {
        {"plain", ok + "Content-Length: 3\r\n\r\nabc", NError::kNone, 200, 3, "abc"},
        {"until the end", ok + "\r\nabc\r\n\r\nd", NError::kNone, 200, -1, "abc\r\n\r\nd"},
        {"line feeds alone", "HTTP/1.0 200\ncontent-length: 3\n\nabc", NError::kNone, 200, 3, "abc"},
        {"nothing in it", ok + "Content-Length: 0\r\n\r\n", NError::kNone, 200, 0, ""},
        {"less is said", ok + "Content-Length: 2\r\n\r\nabc", NError::kNone, 200, 2, "ab"},
        {"more is said", ok + "Content-Length: 9\r\n\r\nabc", NError::kNone, 200, 9, "abc", false},
        {"without a blank", ok + "Content-Length:345\r\n\r\nabc", NError::kNone, 200, 45, "abc"},
        {"somewhere inside", ok + "X-CONTENT-length: 7\r\n\r\nabc", NError::kNone, 200, -1, "abc"},
        {"below nothing", ok + "Content-Length: -5\r\n\r\nabc", NError::kNone, 200, -1, "abc"},
        {"beyond all numbers", ok + "Content-Length: 99999999999999999999\r\n\r\n", NError::kNone, 200, INT64_MAX, "",
         false},
        {"see other", "HTTP/1.0 303 See\r\nLocation: http://x/\r\n\r\na", NError::kNone, 303, -1, "a"},
        {"not modified", "HTTP/1.0 304 Not\r\n\r\n", NError::kNone, 304, -1, ""},
        {"sent on to nowhere", "HTTP/1.0 301 Moved\r\n\r\na", NError::kNone, 301, -1, "a"},
        {"missing", "HTTP/1.0 404 Not Found\r\nA: b\r\n\r\nsorry", NError::kRefused, 404, -1, ""},
        {"broken inside", "HTTP/1.0 500\r\n\r\n", NError::kRefused, 500, -1, ""},
        {"another login", "HTTP/1.0 401 No\r\nWWW-Authenticate: Digest\r\n\r\n", NError::kRefused, 401, -1, ""},
        {"nobody to ask", "HTTP/1.0 401 No\r\nWWW-Authenticate: basic\r\n\r\n", NError::kLoginNeeded, 401, -1, ""},
        {"no proxy at all", "HTTP/1.0 407 No\r\nProxy-Authenticate: Basic\r\n\r\n", NError::kRefused, 407, -1, ""},
        {"another protocol", "220 mail2.example ready\r\n", NError::kBadAnswer, 0, -1, ""},
        {"nothing", "", NError::kBadAnswer, 0, -1, ""},
        {"cut off", ok + "A: b", NError::kBadAnswer, 0, -1, ""},
        {"an endless line", ok + line + line + line, NError::kBadAnswer, 0, -1, ""},
        {"endless headers", ok + headers + "\r\n", NError::kBadAnswer, 0, -1, ""},
        {"too much in all", ok + long1000 + "\r\n", NError::kBadAnswer, 0, -1, ""},
        {"to a file", redirectTo("file:///etc/passwd"), NError::kBadRedirect, 302, -1, ""},
        {"to a path", redirectTo("/x"), NError::kBadRedirect, 302, -1, ""},
        {"to another kind", redirectTo("ftp://127.0.0.1/x", "301"), NError::kBadRedirect, 301, -1, ""},
        {"to no host", redirectTo("http:///x", "307"), NError::kBadRedirect, 307, -1, ""},
        {"to a bad port", redirectTo("http://h:65536/x"), NError::kBadRedirect, 302, -1, ""},
        {"through a zero", redirectTo("http://127.0.0.1:1/\1x"), NError::kBadRedirect, 302, -1, ""},
        {"out of UTF-8", redirectTo("http://127.0.0.1:1/\xFF"), NError::kBadRedirect, 302, -1, ""},
    };
}

TEST(FUrlHttpHandler, TakesWhatServersSay) {
    for (const AnswerRow& row : answers()) {
        SCOPED_TRACE(row.name);
        ScriptedServer server({says(row.answer)});
        Fetch fetch(at(server.port(), ""));
        EXPECT_EQ(fetch.handler->open(), row.error == NError::kNone);
        EXPECT_EQ(int32_t(fetch.handler->getError()), int32_t(row.error));
        EXPECT_EQ(fetch.handler->getStatus(), row.status);
        EXPECT_EQ(fetch.handler->getLength(), row.length);
        FStream* stream = fetch.handler->getStream();
        EXPECT_EQ(stream != nullptr, row.error == NError::kNone);
        EXPECT_EQ(stream ? stream->tell() : 0, 0);
        EXPECT_EQ(contentOf(stream), row.content);
        EXPECT_EQ(!stream || stream->verify(), row.verified);
    }
}

TEST(FUrlHttpHandler, IsSpokenToInPieces) {
    const std::string head = "HTTP/1.0 200 OK\r\nContent-Length: 3\r\n\r\n", all = head + "abc";
    for (size_t cut = 0; cut <= all.size(); ++cut) {
        SCOPED_TRACE(cut);
        for (const bool goesOn : {false, true}) {
            ScriptedServer server({[&](NStream& stream) {
                says(all.substr(0, cut))(stream);
                std::this_thread::yield();
                if (goesOn)
                    says(all.substr(cut))(stream);
            }});
            Fetch fetch(at(server.port(), ""));
            EXPECT_EQ(fetch.handler->open(), goesOn || cut >= head.size());
            FStream* stream = fetch.handler->getStream();
            const std::string expected = !stream ? "" : goesOn ? "abc" : all.substr(head.size(), cut - head.size());
            EXPECT_EQ(contentOf(stream), expected);
            EXPECT_EQ(stream && stream->verify(), goesOn || cut == all.size());
        }
    }
}

TEST(FUrlHttpHandler, AsksAsToldByTheUrl) {
    const std::string agent = "User-Agent: Tessarine HTTP URL Handler\n";
    const std::tuple<const char*, const char*, std::string> rows[] = {
        {"",       "",                           "GET / HTTP/1.0\nHost: HOST\n" + agent                            },
        {"",       "a b/\xC3\xA4%20?q=1&r#here", "GET /a%20b/%c3%a4%20?q=1&r HTTP/1.0\nHost: HOST\n" + agent       },
        {"",       "a\r\nX: y",                  "GET /a%0d%0aX:%20y HTTP/1.0\nHost: HOST\n" + agent               },
        {"u:p@",   "x",                          "GET /x HTTP/1.0\nHost: HOST\nAuthorization: Basic dTpw\n" + agent},
        {"u%40:@", "x",                          "GET /x HTTP/1.0\nHost: HOST\nAuthorization: Basic dUA6\n" + agent},
    };
    for (const auto& [login, file, expected] : rows) {
        ScriptedServer server({says("HTTP/1.0 200 OK\r\n\r\n")});
        const std::string host = "127.0.0.1:" + std::to_string(server.port());
        FString text;
        ASSERT_TRUE(text.fromUTF8(("HTTP://" + std::string(login) + host + '/' + file).c_str()));
        FUrl url(text.text16());
        EXPECT_TRUE(url.makeHandler()->open());
        std::string request = server.end().at(0);
        request.replace(request.find(host), host.size(), "HOST");
        EXPECT_EQ(request, expected);
    }
}

TEST(FUrlHttpHandler, FindsHostsByNameAndByNewAddresses) {
    const std::pair<const char*, const char*> rows[] = {
        {"[::1]",     "::1"      },
        {"LocalHost", "127.0.0.1"},
    };
    for (const auto& [host, address] : rows) {
        ScriptedServer server({says("HTTP/1.0 200 OK\r\n\r\nhere")}, address);
        const std::string place = std::string(host) + ':' + std::to_string(server.port());
        Fetch fetch("http://" + place);
        EXPECT_TRUE(fetch.handler->open());
        EXPECT_EQ(contentOf(fetch.handler->getStream()), "here");
        EXPECT_NE(server.end().at(0).find("\nHost: " + place + '\n'), std::string::npos);
    }
}

TEST(FUrlHttpHandler, RefusesWhatCouldSlipIntoARequest) {
    const std::u16string rows[] = {u"http:///x",           u"http://a\r\nb/x",     u"http://a b/x",
                                   u"http://a\u00E4/x",    u"http://h:0/x",        u"http://u%0a:p@h/x",
                                   u"http://u:p\r\nX@h/x", u"http://h\"/x",        u"http://a@b@c\\/",
                                   u"http://[::1\n]:1/x",  u"http://\u0001@h:80/x"};
    for (const std::u16string& text : rows) {
        FUrl url(text.c_str());
        FUrlHandler* handler = url.makeHandler();
        ASSERT_TRUE(handler);
        EXPECT_FALSE(handler->open());
        EXPECT_EQ(int32_t(handler->getError()), int32_t(NError::kBadUrl)) << std::string(text.begin(), text.end());
    }
}

TEST(FUrlHttpHandler, FollowsTenRedirectsAtMost) {
    for (const int32_t redirects : {10, 11}) {
        Scripts scripts;
        const ScriptedServer* self = nullptr;
        for (int32_t i = 0; i < redirects; ++i)
            scripts.push_back([&self, i](NStream& stream) {
                says(redirectTo(at(self->port(), std::to_string(i)), i % 2 ? "301" : "307"))(stream);
            });
        scripts.push_back(says("HTTP/1.0 200 OK\r\n\r\nend"));
        ScriptedServer server(scripts);
        self = &server;
        Fetch fetch("http://u:p@127.0.0.1:" + std::to_string(server.port()) + "/start");
        EXPECT_EQ(fetch.handler->open(), redirects == 10);
        EXPECT_EQ(contentOf(fetch.handler->getStream()), redirects == 10 ? "end" : "");
        EXPECT_EQ(server.end().size(), 11u);
        for (const std::string& request : server.end())
            EXPECT_NE(request.find("Authorization: Basic dTpw"), request.npos);
        if (redirects == 10)
            EXPECT_EQ(std::u16string(fetch.url.getFile().text16()), u"9");
        else
            EXPECT_EQ(fetch.handler->getError(), NError::kTooManyRedirects);
    }
}

TEST(FUrlHttpHandler, KeepsLoginsFromOtherHosts) {
    ScriptedServer far({says("HTTP/1.0 200 OK\r\n\r\nfar")});
    ScriptedServer near({says(redirectTo(at(far.port(), "x")))});
    Fetch fetch("http://u:p@127.0.0.1:" + std::to_string(near.port()) + "/start");
    EXPECT_TRUE(fetch.handler->open());
    EXPECT_NE(near.end().at(0).find("Authorization"), std::string::npos);
    EXPECT_EQ(far.end().at(0).find("Authorization"), std::string::npos);
}

/** Whom the handler asks; the answers come in turn, the last one for good. */
struct User {
    using Answers = std::vector<std::pair<const tchar*, const tchar*>>;
    User(const User&) = delete;
    explicit User(Answers entered) : answers(std::move(entered)) {
        asked = 0;
        current = this;
        gNetworkHooks.askLogin = [](const UTranslatedString& title, const FUrl&, FString& user, FString& password) {
            EXPECT_EQ(std::u16string(title.text()), u"Authentication needed");
            EXPECT_EQ(std::this_thread::get_id(), current->thread);
            const auto& [name, word] = current->answers[std::min(asked, current->answers.size() - 1)];
            ++asked;
            user = name;
            password = word;
            return true;
        };
    }
    ~User() { gNetworkHooks = {}; }

    static inline User* current = nullptr;
    static inline size_t asked = 0;
    Answers answers;
    std::thread::id thread = std::this_thread::get_id();
};

/** Works on another thread, while this one delivers messages as the main thread does. */
template <class Work>
void runBeside(Work work) {
    std::atomic<bool> done{false};
    std::thread worker([&] {
        work();
        done = true;
    });
    while (!done) {
        gMessenger->deliverMessages();
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    worker.join();
}

TEST(FUrlHttpHandler, AsksTheUserForALogin) {
    struct Row {
        const char* name;
        User::Answers answers;
        const char* login;  // in the URL
        NError error;
        size_t asked;
    };
    const Row rows[] = {
        {"at once",          {{u"a b", u"c%"}},               "",     NError::kNone,        1},
        {"the second",       {{u"x", u"y"}, {u"a b", u"c%"}}, "",     NError::kNone,        2},
        {"other than known", {{u"a b", u"c%"}},               "u:p@", NError::kNone,        1},
        {"the same again",   {{u"u", u"p"}},                  "u:p@", NError::kLoginNeeded, 1},
        {"no name",          {{u"", u"p"}},                   "",     NError::kLoginNeeded, 1},
        {"a line end",       {{u"u\r\nX: y", u"p"}},          "",     NError::kBadUrl,      1},
    };
    const auto guarded = [](NStream& stream, const std::string& request) {
        const bool good = request.find("Authorization: Basic YSBiOmMl\n") != request.npos;
        says(good ? "HTTP/1.0 200 OK\r\n\r\nin" : "HTTP/1.0 401 No\r\nWWW-Authenticate: Basic realm=x\r\n\r\n")(stream);
    };
    for (const bool onWorker : {false, true})
        for (const Row& row : rows) {
            SCOPED_TRACE(std::string(row.name) + (onWorker ? " on a worker" : ""));
            User user(row.answers);
            const std::vector<std::string>* asked = nullptr;
            ScriptedServer server({[&](NStream& stream) { guarded(stream, asked->back()); }});
            asked = &server.current();
            Fetch fetch("http://" + std::string(row.login) + "127.0.0.1:" + std::to_string(server.port()) + "/");
            bool opened = false;
            if (onWorker)
                runBeside([&] { opened = fetch.handler->open(); });
            else
                opened = fetch.handler->open();
            EXPECT_EQ(opened, row.error == NError::kNone);
            EXPECT_EQ(fetch.handler->getError(), row.error);
            EXPECT_EQ(User::asked, row.asked);
            EXPECT_EQ(contentOf(fetch.handler->getStream()), opened ? "in" : "");
        }
}

TEST(FUrlHttpHandler, GivesUpInTimeAndWhenCancelled) {
    std::atomic<bool> over{false};
    const auto drip = [&](const char* head) {
        return [&over, head](NStream& stream) {
            says(head)(stream);
            while (!over && stream.writeRaw("x", 1) == 1)
                std::this_thread::sleep_for(std::chrono::milliseconds(20));
        };
    };
    const std::pair<const char*, ScriptedServer::Script> rows[] = {
        {"never answers",
         [&](NStream& stream) {
             char byte;
             stream.readRaw(&byte, 1);
         }                                                      },
        {"byte by byte",         drip("")                       },
        {"headers byte by byte", drip("HTTP/1.0 200 OK\r\nA: b")},
        {"content byte by byte", drip("HTTP/1.0 200 OK\r\n\r\n")},
    };
    for (const bool isCancelled : {false, true})
        for (const auto& [name, script] : rows) {
            SCOPED_TRACE(std::string(name) + (isCancelled ? ", cancelled" : ""));
            over = false;
            ScriptedServer server({script});
            Fetch fetch(at(server.port(), ""), isCancelled ? NTimeouts{60000, 60000, 60000} : kShort);
            std::thread stopper([&] {
                if (!isCancelled)
                    return;
                std::this_thread::sleep_for(std::chrono::milliseconds(100));
                fetch.handler->cancel();
            });
            const int64_t begin = NClock::nowMs();
            if (fetch.handler->open())
                contentOf(fetch.handler->getStream());
            EXPECT_LT(NClock::nowMs() - begin, 5000);
            stopper.join();
            FStream* stream = fetch.handler->getStream();
            const NError error = stream ? classCast<FUrlStream>(stream)->getError() : fetch.handler->getError();
            EXPECT_EQ(int32_t(error), int32_t(isCancelled ? NError::kCancelled : NError::kTimeout));
            over = true;
        }
}

TEST(FUrlHttpHandler, IsCancelledWhileTheUserIsAsked) {
    User user(User::Answers{
        {u"u", u"p"}
    });
    ScriptedServer server({says("HTTP/1.0 401 No\r\nWWW-Authenticate: Basic\r\n\r\n")});
    Fetch fetch(at(server.port(), ""));
    std::thread worker([&] { EXPECT_FALSE(fetch.handler->open()); });
    while (!gMessenger->areMessagesPosted(static_cast<CmObject*>(fetch.handler)))
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    fetch.handler->cancel();
    worker.join();
    EXPECT_EQ(fetch.handler->getError(), NError::kCancelled);
    gMessenger->deliverMessages();  // too late: nobody is to be asked
    EXPECT_EQ(User::asked, 0u);
}

TEST(FUrlHttpHandler, MayGoWhileTheUserIsAsked) {
    static FUrlHttpHandler* handler = nullptr;
    static std::atomic<bool> gone;
    gone = false;
    gNetworkHooks.askLogin = [](const UTranslatedString&, const FUrl& url, FString& user, FString&) {
        handler->cancel();
        while (!gone)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        EXPECT_EQ(std::u16string(url.getHost().text16()), u"127.0.0.1");
        user = u"u";
        return true;
    };
    ScriptedServer server({says("HTTP/1.0 401 No\r\nWWW-Authenticate: Basic\r\n\r\n")});
    runBeside([&] {
        auto fetch = std::make_unique<Fetch>(at(server.port(), ""));
        handler = fetch->handler;
        EXPECT_FALSE(handler->open());
        fetch.reset();
        gone = true;
    });
    gNetworkHooks = {};
}

/** Does something while it is told a message. */
struct Receiver : CmObject {
    explicit Receiver(std::function<void()> work) : work(std::move(work)) {}
    int32_t notify(FMessage*) override {
        work();
        return 1;
    }
    std::function<void()> work;
};

TEST(FUrlHttpHandler, MayBeWaitedForWhereMessagesAreToldWhenItAskedNothing) {
    ScriptedServer server({[](NStream& stream) {
        char byte;
        stream.readRaw(&byte, 1);
    }});
    std::atomic<FUrlHttpHandler*> handler{nullptr};
    std::thread worker([&] {
        Fetch fetch(at(server.port(), ""));
        handler = fetch.handler;
        EXPECT_FALSE(fetch.handler->open());
    });
    while (!handler)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    Receiver receiver([&] {
        handler.load()->cancel();
        worker.join();
    });
    gMessenger->postMessage(static_cast<CmObject*>(&receiver), new FMessage("end"));
    gMessenger->deliverMessages();
    EXPECT_FALSE(worker.joinable());
}

TEST(FUrl, OpensStreamsThatOutliveIt) {
    ScriptedServer server({says("HTTP/1.0 200 OK\r\nContent-Length: 3\r\n\r\nabc")});
    IBStream* opened = nullptr;
    {
        FUrl url(wide(at(server.port(), "x")).c_str());
        ASSERT_TRUE(url.openStream(&opened));
        const FUrl copy(url);
        FUrl other(u"nobody://knows/it");
        IBStream* none = opened;
        EXPECT_FALSE(other.openStream(&none));
        EXPECT_EQ(none, nullptr);
    }
    const OPtr<IBStream> stream(opened);
    auto* const urlStream = classCast<FUrlStream>(commonObject(opened));
    ASSERT_TRUE(urlStream);
    EXPECT_EQ(std::u16string(urlStream->getUrl().getFile().text16()), u"x");
    EXPECT_EQ(contentOf(urlStream), "abc");
}

}  // namespace
}  // namespace Tessarine
