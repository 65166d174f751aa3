#pragma once
#include "network/hooks.h"
#include "network/openssl/securenetwork.h"
#include "tests/support/fetch.h"
#include "tests/support/scriptedserver.h"
#include "tests/support/webserver.h"
#include <map>

namespace Tessarine {
/** Certificates of an authority of the test's own, made by the openssl command in a folder. */
class Certificates {
public:
    explicit Certificates(const std::filesystem::path& folder) : folder(folder) {
        const std::string forHere = "subjectAltName=DNS:localhost,IP:127.0.0.1,IP:::1";
        good = made("authority", "basicConstraints=critical,CA:TRUE", "-key authority.key") &&
               made("own", forHere, "-key own.key") && made("right", forHere) &&
               made("expired", forHere, kIssued, -1) && made("wronghost", "subjectAltName=DNS:elsewhere.example");
    }
    std::string of(const std::string& name) const { return (folder / (name + ".pem")).string(); }
    std::string keyOf(const std::string& name) const { return (folder / (name + ".key")).string(); }

    bool good;

private:
    bool openssl(const std::string& arguments) {
        return std::system(("cd " + folder.string() + " && openssl " + arguments + " 2>/dev/null").c_str()) == 0;
    }
    bool made(const std::string& name, const std::string& extension, const char* signer = kIssued, int days = 1) {
        return openssl("req -newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes -subj /CN=" + name + " -keyout " + name +
                       ".key -addext " + extension + " -out " + name + ".csr") &&
               openssl("x509 -req -in " + name + ".csr -copy_extensions copy -days " + std::to_string(days) + " -out " +
                       name + ".pem " + signer);
    }

    static constexpr const char* kIssued = "-CA authority.pem -CAkey authority.key";
    std::filesystem::path folder;
};

/** A server with one port for each certificate, and one in the open. */
class SecureNetwork : public testing::Test {
protected:
    static void SetUpTestSuite() {
        if (!WebServer::isInstalled() || std::system("openssl version >/dev/null 2>&1") != 0)
            return;
        server = new WebServer;
        const Certificates certificates(server->path());
        ASSERT_TRUE(certificates.good);
        ASSERT_TRUE(installTessarineSecureNetwork());
        EXPECT_FALSE(trustAuthoritiesOf(certificates.keyOf("right").c_str()));
        ASSERT_TRUE(trustAuthoritiesOf(certificates.of("authority").c_str()));
        std::string blocks;
        const auto listen = [&](const char* name, const std::string& options, const char* address = "127.0.0.1:") {
            const uint16_t port = ports.try_emplace(name, WebServer::freePort()).first->second;
            blocks += std::string("server { listen ") + address + std::to_string(port) + options + "}\n";
        };
        const auto shows = [&](const std::string& name) {
            return " ssl; ssl_certificate " + certificates.of(name) + "; ssl_certificate_key " +
                   certificates.keyOf(name) + "; ";
        };
        for (const char* address : {"127.0.0.1:", "[::1]:"})
            listen("right", shows("right"), address);
        for (const char* name : {"wronghost", "expired", "own"})
            listen(name, shows(name));
        listen("old", shows("right") + "ssl_protocols TLSv1.1; ssl_ciphers ALL:@SECLEVEL=0;");
        listen("named", shows("wronghost"));
        listen("named", shows("right") + "server_name localhost;");
        const std::string right = std::to_string(ports["right"]);
        listen("open", "; location /up { return 302 https://localhost:" + right +
                           "/big; } location /private { auth_basic x; auth_basic_user_file " + server->path().string() +
                           "/users; }");
        listen("down", shows("right") + "location / { return 302 http://127.0.0.1:" + std::to_string(ports["open"]) +
                           "/big; }");
        big.resize(3000000);
        for (size_t i = 0; i < big.size(); ++i)
            big[i] = char(i * 2654435761u >> 24);
        std::ofstream(server->www() / "big") << big;
        std::filesystem::create_directory(server->www() / "private");
        std::ofstream(server->www() / "private" / "x") << "secret";
        std::ofstream(server->path() / "users") << "user:{PLAIN}word\n";
        ASSERT_TRUE(server->start(blocks, ports["open"]));
    }
    static void TearDownTestSuite() {
        gNetworkHooks = {};
        delete std::exchange(server, nullptr);
    }
    void SetUp() override { ASSERT_TRUE(server) << "no nginx or no openssl command here"; }
    static std::string at(const std::string& host, const char* port, const std::string& file) {
        return host + ':' + std::to_string(ports[port]) + '/' + file;
    }

    static inline WebServer* server = nullptr;
    static inline std::map<std::string, uint16_t> ports;
    static inline std::string big;
};

}  // namespace Tessarine
