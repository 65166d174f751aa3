#include "base/fdefaults.h"
#include "base/fmessage.h"
#include "securefixture.h"

namespace Tessarine {
namespace {
constexpr const char* kGroup = "HttpHandlerDefaults";
constexpr auto says = ScriptedServer::says;
const std::string kGood = "HTTP/1.0 200 OK\r\n\r\nhi", kAsks = "HTTP/1.0 407 No\r\nProxy-Authenticate: Basic\r\n\r\n",
                  kNever = "HTTP/1.0 403 No\r\n\r\n", kAgent = "User-Agent: Tessarine HTTP URL Handler\n";

/** The program's settings, with a proxy in them. */
struct Settings {
    Settings(uint16_t port, bool hasLogin) {
        FDefaultPool* pool = FDefaultPool::use();
        pool->setLong(kGroup, "Use Proxy", 1);
        pool->setString8(kGroup, "Proxy Host", "127.0.0.1");
        pool->setLong(kGroup, "Proxy Port", port);
        pool->setLong(kGroup, "Use Proxy Authentication", hasLogin);
        pool->setString16(kGroup, "Proxy User", u"me");
        pool->setString16(kGroup, "Proxy Passwd", u"\u00E4");
    }
    ~Settings() { FDefaultPool::unuse(); }
};

TEST(HttpProxy, IsAskedForWholeUrls) {
    const std::string plain = "GET http://a.example:8080/b%20c HTTP/1.0\nHost: a.example:8080\n",
                      tunnel = "CONNECT a.example:443 HTTP/1.0\nHost: a.example:443\n",
                      login = "Proxy-Authorization: Basic bWU6w6Q=\n", own = "Authorization: Basic dTpw\n";
    struct Row {
        const char* name;
        const char16_t* url;
        bool hasLogin;
        std::vector<ScriptedServer::Script> answers;
        NError error;
        std::vector<std::string> requests;
    };
    const Row rows[] = {
        {"plain",          u"http://u:p@a.example:8080/b c#d", true,  {says(kGood)}, NError::kNone,        {plain + own + kAgent}},
        {"with a login",
         u"http://a.example:8080/b c",                         true,
         {says(kAsks), says(kGood)},
         NError::kNone,
         {plain + kAgent, plain + login + kAgent}                                                                                },
        {"without one",    u"http://a.example:8080/b c",       false, {says(kAsks)}, NError::kLoginNeeded, {plain + kAgent}      },
        {"with a bad one",
         u"http://a.example:8080/b c",                         true,
         {says(kAsks)},
         NError::kLoginNeeded,
         {plain + kAgent, plain + login + kAgent}                                                                                },
        {"no tunnel",
         u"https://u:p@a.example/b",                           true,
         {says(kAsks), says(kNever)},
         NError::kRefused,
         {tunnel + kAgent, tunnel + login + kAgent}                                                                              },
        {"no address",     u"http://a\r\nb/",                  true,  {says(kGood)}, NError::kBadUrl,      {}                    },
    };
    for (const Row& row : rows)
        for (const bool onWorker : {false, true}) {
            SCOPED_TRACE(std::string(row.name) + (onWorker ? " on a worker" : ""));
            ScriptedServer proxy(row.answers);
            const Settings settings(proxy.port(), row.hasLogin);
            FUrl url(row.url);
            std::atomic<bool> done{false};
            const auto fetch = [&] {
                FUrlHandler* handler = url.makeHandler();
                EXPECT_EQ(handler->open(), row.error == NError::kNone);
                EXPECT_EQ(int32_t(handler->getError()), int32_t(row.error));
                EXPECT_EQ(contentOf(handler->getStream()), row.error == NError::kNone ? "hi" : "");
                done = true;
            };
            std::thread worker;
            if (onWorker)
                worker = std::thread(fetch);
            else
                fetch();
            for (; !done; std::this_thread::sleep_for(std::chrono::milliseconds(1)))
                gMessenger->deliverMessages();
            if (onWorker)
                worker.join();
            EXPECT_EQ(proxy.end(), row.requests);
        }
}

TEST(HttpProxy, IsRefusedWhenItIsNoHost) {
    const Settings settings(0, false);
    FUrl url(u"http://127.0.0.1:1/");
    FUrlHandler* handler = url.makeHandler();
    EXPECT_FALSE(handler->open());
    EXPECT_EQ(handler->getError(), NError::kBadUrl);
}

TEST_F(SecureNetwork, GoesThroughTheTunnelOfAProxy) {
    ScriptedServer proxy({[](NStream& stream) {
        NStream far(kTimeouts);
        says("HTTP/1.0 200 Connection established\r\n\r\n")(stream);
        if (far.connect("127.0.0.1", ports["right"]))
            passOn(stream, far, INT64_MAX);
    }});
    const Settings settings(proxy.port(), false);
    const std::string text = at("https://localhost", "right", "big");
    FUrl url(std::u16string(text.begin(), text.end()).c_str());
    FUrlHandler* handler = url.makeHandler();
    ASSERT_TRUE(handler->open());
    EXPECT_TRUE(contentOf(handler->getStream()) == big);
    handler->close();
    EXPECT_EQ(proxy.end().at(0).find("CONNECT localhost:"), 0u);
}

}  // namespace
}  // namespace Tessarine
