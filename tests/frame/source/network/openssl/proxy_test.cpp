#include "base/fdefaults.h"
#include "securefixture.h"

namespace Tessarine {
namespace {
constexpr const char* kGroup = "HttpHandlerDefaults";
constexpr auto says = ScriptedServer::says;
const std::string kGood = "HTTP/1.0 200 OK\r\n\r\nhi", kAsks = "HTTP/1.0 407 No\r\nProxy-Authenticate: Basic\r\n\r\n",
                  kNever = "HTTP/1.0 403 No\r\n\r\n";

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
        const char* url;
        bool hasLogin;
        std::vector<std::string> answers;
        NError error;
        std::vector<std::string> requests;  // their agents come besides
    };
    const Row rows[] = {
        {"http://u:p@a.example:8080/b c#d", true,  {kGood},         NError::kNone,        {plain + own}           },
        {"http://a.example:8080/b c",       true,  {kAsks, kGood},  NError::kNone,        {plain, plain + login}  },
        {"http://a.example:8080/b c",       false, {kAsks},         NError::kLoginNeeded, {plain}                 },
        {"http://a.example:8080/b c",       true,  {kAsks},         NError::kLoginNeeded, {plain, plain + login}  },
        {"https://u:p@a.example/b",         true,  {kAsks, kNever}, NError::kRefused,     {tunnel, tunnel + login}},
        {"http://a\r\nb/",                  true,  {kGood},         NError::kBadUrl,      {}                      },
    };
    for (const Row& row : rows)
        for (const bool onWorker : {false, true}) {
            SCOPED_TRACE(testing::Message() << &row - rows << (onWorker ? " on a worker" : ""));
            std::vector<ScriptedServer::Script> scripts;
            for (const std::string& text : row.answers)
                scripts.push_back(says(text));
            ScriptedServer proxy(scripts);
            const Settings settings(proxy.port(), row.hasLogin);
            const auto run = [&] {
                Fetch fetch(row.url);
                EXPECT_EQ(fetch.open(), row.error);
                EXPECT_EQ(fetch.content(), row.error == NError::kNone ? "hi" : "");
            };
            onWorker ? runBeside(run) : run();
            ASSERT_EQ(proxy.end().size(), row.requests.size());
            for (size_t i = 0; i < row.requests.size(); ++i)
                EXPECT_EQ(proxy.end()[i], row.requests[i] + "User-Agent: Tessarine HTTP URL Handler\n");
        }
}

TEST(HttpProxy, IsRefusedWhenItIsNoHost) {
    const Settings settings(0, false);
    EXPECT_EQ(Fetch("http://127.0.0.1:1/").open(), NError::kBadUrl);
}

TEST_F(SecureNetwork, GoesThroughTheTunnelOfAProxy) {
    ScriptedServer proxy({[](NStream& stream) {
        NStream far;
        says("HTTP/1.0 200 Connection established\r\n\r\n")(stream);
        if (far.connect("127.0.0.1", ports["right"]))
            passOn(stream, far, INT64_MAX);
    }});
    const Settings settings(proxy.port(), false);
    Fetch fetch(at("https://localhost", "right", "big"));
    EXPECT_EQ(fetch.open(), NError::kNone);
    EXPECT_TRUE(fetch.content() == big);
    fetch.handler->close();
    EXPECT_EQ(proxy.end().at(0).find("CONNECT localhost:"), 0u);
}

}  // namespace
}  // namespace Tessarine
