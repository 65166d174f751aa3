#pragma once
#include "network/nserver.h"
#include "network/nstream.h"
#include "tests/support/testfolder.h"
#include <chrono>
#include <fstream>
#include <set>
#include <signal.h>
#include <string>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <utility>
#include <vector>

/** A real web server on the loopback, nginx, which serves the files of its folder www. */
class WebServer {
public:
    static bool isInstalled() { return !program().empty(); }

    WebServer() { std::filesystem::create_directory(folder.path / "www"); }
    ~WebServer() { stop(); }
    WebServer(const WebServer&) = delete;

    /** A port that nobody has at the moment, another one each time. */
    static uint16_t freePort() {
        static std::set<uint16_t> given;
        for (;;) {
            Tessarine::NServer server;
            const uint16_t port = server.listen(nullptr, 0) ? server.getPort() : 0;
            if (port == 0 || given.insert(port).second)
                return port;
        }
    }
    std::filesystem::path www() const { return folder.path / "www"; }

    /** servers: its "server" blocks. false: it didn't come up at that port. */
    bool start(const std::string& servers, uint16_t port) {
        const std::string place = folder.path.string() + '/';
        std::ofstream config(place + "conf");
        config << "daemon off; master_process off; pid " << place << "pid; error_log " << place << "error.log;\n"
               << "events {}\nhttp { access_log off; sendfile on; default_type text/plain; server_tokens off;\n";
        for (const char* module : {"client_body", "proxy", "fastcgi", "uwsgi", "scgi"})
            config << module << "_temp_path " << place << module << ";\n";
        config << "root " << place << "www;\n" << servers << "}\n";
        config.close();
        run({program(), "-q", "-p", place, "-e", place + "error.log", "-c", place + "conf"});
        return isUp(port);
    }
    void stop() {
        if (process <= 0)
            return;
        ::kill(process, SIGTERM);
        ::waitpid(std::exchange(process, 0), nullptr, 0);
    }
    const std::filesystem::path& path() const { return folder.path; }

private:
    static std::string program() {
        for (const char* place : {"/usr/sbin/nginx", "/usr/bin/nginx", "/usr/local/sbin/nginx"})
            if (::access(place, X_OK) == 0)
                return place;
        return "";
    }
    void run(std::vector<std::string> words) {
        std::vector<char*> arguments;
        for (std::string& word : words)
            arguments.push_back(word.data());
        arguments.push_back(nullptr);
        process = ::fork();
        if (process == 0) {
            ::prctl(PR_SET_PDEATHSIG, SIGTERM);  // it goes with the test, however that ends
            ::execv(arguments[0], arguments.data());
            ::_exit(127);
        }
    }
    bool isUp(uint16_t port) const {
        for (int tries = 0; process > 0 && tries < 500; ++tries) {
            if (Tessarine::NSocket().connect("127.0.0.1", port))
                return true;
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        return false;
    }

    TemporaryFolder folder;
    pid_t process = 0;
};
