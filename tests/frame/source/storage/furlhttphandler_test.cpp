#include "storage/furlhttphandler.h"
#include "base/utranslatedstring.h"
#include "network/hooks.h"
#include "tests/support/fetch.h"
#include "tests/support/scriptedserver.h"

namespace Tessarine {
namespace {
constexpr auto says = ScriptedServer::says;
const std::string kOk = "HTTP/1.0 200 OK\r\n", kHi = kOk + "Content-Length: 2\r\n\r\nhi",
                  kAsks = "HTTP/1.0 401 No\r\nWWW-Authenticate: basic realm=x\r\n\r\n";

std::string redirectTo(const std::string& place, const char* status = "302") {
    return "HTTP/1.1 " + std::string(status) + " Moved\r\nLocation: " + place + "\r\n\r\n";
}

std::string repeated(int32_t count, const std::string& text) {
    std::string all;
    while (count-- > 0)
        all += text;
    return all;
}

struct AnswerRow {
    const char* name;
    std::string answer;
    NError error;  // of open()
    int32_t status;
    int64_t length = -1;
    std::string content = "";
    bool verified = true;
};

TEST(FUrlHttpHandler, TakesWhatServersSay) {
    const std::string length = "Content-Length: ", line = "A: " + std::string(60000, 'x');
    const AnswerRow rows[] = {
        {"plain", kOk + length + "3\r\n\r\nabc", NError::kNone, 200, 3, "abc"},
        {"until the end", kOk + "\r\nabc\r\n\r\nd", NError::kNone, 200, -1, "abc\r\n\r\nd"},
        {"line feeds alone", "HTTP/1.0 200\ncontent-length: 3\n\nabc", NError::kNone, 200, 3, "abc"},
        {"nothing in it", kOk + length + "0\r\n\r\n", NError::kNone, 200, 0},
        {"less is said", kOk + length + "2\r\n\r\nabc", NError::kNone, 200, 2, "ab"},
        {"more is said", kOk + length + "9\r\n\r\nabc", NError::kNone, 200, 9, "abc", false},
        {"without a blank", kOk + "Content-Length:345\r\n\r\nabc", NError::kNone, 200, 45, "abc"},
        {"somewhere inside", kOk + "X-CONTENT-length: 7\r\n\r\nabc", NError::kNone, 200, -1, "abc"},
        {"below nothing", kOk + length + "-5\r\n\r\nabc", NError::kNone, 200, -1, "abc"},
        {"too long", kOk + length + "99999999999999999999\r\n\r\n", NError::kNone, 200, INT64_MAX, "", false},
        {"see other", "HTTP/1.0 303 See\r\nLocation: http://x/\r\n\r\na", NError::kNone, 303, -1, "a"},
        {"no content", "HTTP/1.0 204 No\r\n" + length + "5\r\n\r\n", NError::kNone, 204, 0},
        {"not modified", "HTTP/1.0 304 Not\r\n" + length + "5\r\n\r\n", NError::kNone, 304, 0},
        {"sent on to nowhere", "HTTP/1.0 301 Moved\r\n\r\na", NError::kNone, 301, -1, "a"},
        {"missing", "HTTP/1.0 404 Not Found\r\nA: b\r\n\r\nsorry", NError::kRefused, 404},
        {"another login", "HTTP/1.0 401 No\r\nWWW-Authenticate: Digest\r\n\r\n", NError::kRefused, 401},
        {"nobody to ask", kAsks, NError::kLoginNeeded, 401},
        {"no proxy at all", "HTTP/1.0 407 No\r\nProxy-Authenticate: Basic\r\n\r\n", NError::kRefused, 407},
        {"another protocol", "220 mail2.example ready\r\n", NError::kBadAnswer, 0},
        {"no status", "HTTP/1.0 0 OK\r\n\r\n", NError::kBadAnswer, 0},
        {"a long status", "HTTP/1.0 1000 OK\r\n\r\n", NError::kBadAnswer, 0},
        {"a status of 200 in 32 bits", "HTTP/1.0 4294967496 OK\r\n\r\n", NError::kBadAnswer, 0},
        {"an endless line", kOk + line + line, NError::kBadAnswer, 0},
        {"endless headers", kOk + repeated(1100, "A: b\r\n") + "\r\n", NError::kBadAnswer, 0},
        {"too much in all", kOk + repeated(20, line + "\r\n") + "\r\n", NError::kBadAnswer, 0},
        {"to a file", redirectTo("file:///etc/passwd"), NError::kBadRedirect, 302},
        {"to a path", redirectTo("/x", "301"), NError::kBadRedirect, 301},
        {"to no host", redirectTo("http:///x", "307"), NError::kBadRedirect, 307},
        {"to a bad port", redirectTo("http://h:65536/x"), NError::kBadRedirect, 302},
        {"with a control", redirectTo("http://127.0.0.1:1/\1x"), NError::kBadRedirect, 302},
        {"out of UTF-8", redirectTo("http://127.0.0.1:1/\xFF"), NError::kBadRedirect, 302},
    };
    for (const AnswerRow& row : rows) {
        SCOPED_TRACE(row.name);
        ScriptedServer server({says(row.answer)});
        Fetch fetch(server.at(""));
        EXPECT_EQ(fetch.open(), row.error);
        EXPECT_EQ(fetch.handler->getStatus(), row.status);
        EXPECT_EQ(fetch.handler->getLength(), row.length);
        FStream* stream = fetch.handler->getStream();
        EXPECT_EQ(stream ? stream->tell() : 0, 0);
        EXPECT_EQ(fetch.content(), row.content);
        EXPECT_EQ(!stream || stream->verify(), row.verified);
    }
}

TEST(FUrlHttpHandler, IsSpokenToInPieces) {
    const size_t head = kHi.size() - 2;
    for (size_t cut = 0; cut <= kHi.size(); ++cut)
        for (const bool goesOn : {false, true}) {
            SCOPED_TRACE(cut);
            ScriptedServer server({[&](NStream& stream) {
                says(kHi.substr(0, cut))(stream);
                std::this_thread::yield();
                says(goesOn ? kHi.substr(cut) + "more" : "")(stream);
            }});
            Fetch fetch(server.at(""));
            const bool isOpen = goesOn || cut >= head, isWhole = goesOn || cut == kHi.size();
            EXPECT_EQ(fetch.open(), isOpen ? NError::kNone : NError::kBadAnswer);
            EXPECT_EQ(fetch.content(), isWhole ? "hi" : isOpen ? kHi.substr(head, cut - head) : "");
            EXPECT_EQ(isOpen && fetch.handler->getStream()->verify(), isWhole);
        }
}

TEST(FUrlHttpHandler, AsksAsToldByTheUrl) {
    const std::string agent = "User-Agent: Tessarine HTTP URL Handler\n";
    const std::tuple<std::string, std::string, const char*, std::string, std::string> rows[] = {
        {"",       "127.0.0.1", "127.0.0.1", "",                           "GET / HTTP/1.0\nHost: HOST\n"                            },
        {"",       "[::1]",     "::1",       "a b/\xC3\xA4%20?q=1&r#here", "GET /a%20b/%c3%a4%20?q=1&r HTTP/1.0\nHost: HOST\n"       },
        {"",       "LocalHost", "127.0.0.1", "a\r\nX: y",                  "GET /a%0d%0aX:%20y HTTP/1.0\nHost: HOST\n"               },
        {"u:p@",   "127.0.0.1", "127.0.0.1", "x",                          "GET /x HTTP/1.0\nHost: HOST\nAuthorization: Basic dTpw\n"},
        {"u%40:@", "127.0.0.1", "127.0.0.1", "x",                          "GET /x HTTP/1.0\nHost: HOST\nAuthorization: Basic dUA6\n"},
    };
    for (const auto& [login, host, address, file, request] : rows) {
        ScriptedServer server({says(kHi)}, address);
        const std::string place = host + ':' + std::to_string(server.port());
        Fetch fetch("HTTP://" + login + place + '/' + file);
        EXPECT_EQ(fetch.open(), NError::kNone);
        EXPECT_EQ(fetch.content(), "hi");
        std::string expected = request + agent;
        EXPECT_EQ(server.end().at(0), expected.replace(expected.find("HOST"), 4, place));
    }
}

TEST(FUrlHttpHandler, RefusesWhatCouldSlipIntoARequest) {
    for (const char* text : {"http:///x", "http://a\r\nb/x", "http://a b/x", "http://a\xC3\xA4/x", "http://h:0/x",
                             "http://u%0a:p@h/x", "http://u:p\r\nX@h/x", "http://h\"/x", "http://\1@h:80/x"})
        EXPECT_EQ(Fetch(text).open(), NError::kBadUrl) << text;
}

TEST(FUrlHttpHandler, FollowsTenRedirectsAtMost) {
    for (const size_t redirects : {10, 11}) {
        ScriptedServer server({[&](NStream& stream) {
            const size_t turn = server.current().size();
            const std::string next = redirectTo(server.at(std::to_string(turn)), turn % 2 ? "301" : "307");
            says(turn <= redirects ? next : kHi)(stream);
        }});
        Fetch fetch(server.at("start", "u:p@"));
        EXPECT_EQ(fetch.open(), redirects == 10 ? NError::kNone : NError::kTooManyRedirects);
        EXPECT_EQ(std::u16string(fetch.url.getFile().text16()), u"10");
        EXPECT_EQ(server.end().size(), 11u);
        for (const std::string& request : server.end())
            EXPECT_NE(request.find("Authorization: Basic dTpw"), request.npos);
    }
}

TEST(FUrlHttpHandler, KeepsLoginsFromOtherHosts) {
    ScriptedServer far({says(kHi)}), near({says(redirectTo(far.at("x")))});
    EXPECT_EQ(Fetch(near.at("start", "u:p@")).open(), NError::kNone);
    EXPECT_NE(near.end().at(0).find("Authorization"), std::string::npos);
    EXPECT_EQ(far.end().at(0).find("Authorization"), std::string::npos);
}

/** Whom the handler asks; the answers come in turn, the last one for good. */
struct User {
    using Answers = std::vector<std::pair<const tchar*, const tchar*>>;
    User(const User&) = delete;
    explicit User(Answers entered = {{u"u", u"p"}}) : answers(std::move(entered)) {
        current = this;
        gNetworkHooks.askLogin = [](const UTranslatedString& title, const FUrl& url, FString& user, FString& password) {
            EXPECT_EQ(std::u16string(title.text()), u"Authentication needed");
            EXPECT_EQ(std::this_thread::get_id(), current->thread);
            current->whileAsked();
            EXPECT_EQ(std::u16string(url.getHost().text16()), u"127.0.0.1");
            const auto& [name, word] = current->answers[std::min(current->asked++, current->answers.size() - 1)];
            user = name;
            password = word;
            return true;
        };
    }
    ~User() { gNetworkHooks = {}; }

    static inline User* current = nullptr;
    Answers answers;
    size_t asked = 0;
    std::thread::id thread = std::this_thread::get_id();
    std::function<void()> whileAsked = [] {};
};

TEST(FUrlHttpHandler, AsksTheUserForALogin) {
    const std::tuple<const char*, User::Answers, const char*, NError, size_t> rows[] = {
        {"at once",          {{u"a b", u"c%"}},               "",     NError::kNone,        1},
        {"the second",       {{u"x", u"y"}, {u"a b", u"c%"}}, "",     NError::kNone,        2},
        {"other than known", {{u"a b", u"c%"}},               "u:p@", NError::kNone,        1},
        {"the same again",   {{u"u", u"p"}},                  "u:p@", NError::kLoginNeeded, 1},
        {"no name",          {{u"", u"p"}},                   "",     NError::kLoginNeeded, 1},
        {"a line end",       {{u"u\r\nX: y", u"p"}},          "",     NError::kBadUrl,      1},
    };
    for (const auto& [name, answers, login, error, asked] : rows) {
        SCOPED_TRACE(name);
        ScriptedServer server({[&](NStream& stream) {
            const std::string& request = server.current().back();
            says(request.find("Authorization: Basic YSBiOmMl\n") != request.npos ? kHi : kAsks)(stream);
        }});
        const auto run = [&] {
            Fetch fetch(server.at("", login));
            EXPECT_EQ(fetch.open(), error);
            EXPECT_EQ(fetch.content(), error == NError::kNone ? "hi" : "");
        };
        User user(answers);
        run();
        EXPECT_EQ(std::exchange(user.asked, 0), asked);
        runBeside(run);
        EXPECT_EQ(user.asked, asked);
    }
}

TEST(FUrlHttpHandler, GivesUpInTimeAndWhenCancelled) {
    for (const bool isCancelled : {false, true})
        for (const std::string& begin : {std::string(), kOk + "A: b", kOk + "\r\n"}) {
            SCOPED_TRACE(begin + (isCancelled ? " cancelled" : ""));
            ScriptedServer server({[&](NStream& stream) {
                says(begin)(stream);
                while (stream.writeRaw("x", 1) == 1)
                    std::this_thread::sleep_for(std::chrono::milliseconds(20));
            }});
            Fetch fetch(server.at(""), isCancelled ? NTimeouts{} : NTimeouts{300, 300, 600});
            NError error = NError::kNone;
            worksShortly(*fetch.handler, isCancelled, [&] {
                error = fetch.open();
                fetch.content();
            });
            if (auto* const stream = classCast<FUrlStream>(fetch.handler->getStream()))
                error = stream->getError();
            EXPECT_EQ(error, isCancelled ? NError::kCancelled : NError::kTimeout);
            fetch.handler->close();
        }
}

TEST(FUrlHttpHandler, AsksNobodyOnceItIsCancelled) {
    User user;
    ScriptedServer server({says(kAsks)});
    Fetch fetch(server.at(""));
    std::thread worker([&] { EXPECT_EQ(fetch.open(), NError::kCancelled); });
    while (!gMessenger->areMessagesPosted(static_cast<CmObject*>(fetch.handler)))
        std::this_thread::yield();
    fetch.handler->cancel();
    worker.join();
    gMessenger->deliverMessages();
    EXPECT_EQ(user.asked, 0u);
}

TEST(FUrlHttpHandler, MayGoWhileTheUserIsAsked) {
    User user;
    ScriptedServer server({says(kAsks)});
    auto fetch = std::make_unique<Fetch>(server.at(""));
    std::atomic<bool> gone{false};
    user.whileAsked = [&, handler = fetch->handler] {
        handler->cancel();
        while (!gone)
            std::this_thread::yield();
    };
    runBeside([&] {
        EXPECT_EQ(fetch->open(), NError::kCancelled);
        fetch.reset();
        gone = true;
    });
    EXPECT_EQ(user.asked, 1u);
}

TEST(FUrlHttpHandler, MayGoWhileItsQuestionIsTold) {
    User user;
    gNetworkHooks.defaultPool = []() -> IDefaultPool3* { return nullptr; };
    runBeside([] {
        for (int32_t i = 0; i < 300; ++i) {
            auto fetch = std::make_unique<Fetch>("http://127.0.0.1:1/");
            std::thread stopper([handler = IPtr<FUrlHttpHandler>(fetch->handler)] { handler->cancel(); });
            EXPECT_NE(fetch->open(), NError::kNone);
            fetch.reset();
            stopper.join();
        }
    });
}

TEST(FUrl, OpensStreamsThatOutliveIt) {
    ScriptedServer server({says(kHi)});
    IBStream *opened = nullptr, *none = nullptr;
    EXPECT_FALSE(FUrl(u"nobody://knows/it").openStream(&none));
    ASSERT_TRUE(Fetch(server.at("x")).url.openStream(&opened));
    const OPtr<IBStream> stream(opened);
    auto* const urlStream = classCast<FUrlStream>(commonObject(opened));
    ASSERT_TRUE(urlStream);
    EXPECT_EQ(std::u16string(urlStream->getUrl().getFile().text16()), u"x");
    EXPECT_EQ(contentOf(urlStream), "hi");
}

}  // namespace
}  // namespace Tessarine
