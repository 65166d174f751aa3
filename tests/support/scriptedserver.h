#pragma once
#include "network/nserver.h"
#include "network/nstream.h"
#include <algorithm>
#include <chrono>
#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <utility>
#include <vector>

/** Passes bytes between two connections, up to so many from the second; then ends both without a word. */
inline void passOn(Tessarine::NStream& near, Tessarine::NStream& far, int64_t most) {
    std::thread there([&] {
        char bytes[4096];
        for (int64_t size; (size = near.receive(bytes, sizeof bytes)) > 0 && far.writeRaw(bytes, size) == size;) {}
    });
    char bytes[4096];
    for (int64_t size; most > 0 && (size = far.receive(bytes, std::min<int64_t>(most, sizeof bytes))) > 0; most -= size)
        if (near.writeRaw(bytes, size) != size)
            break;
    near.cancel();
    far.cancel();
    there.join();
}

/** Works until time-outs end it, or another thread's cancel() after a while. */
template <class Stream, class Work>
void worksShortly(Stream& stream, bool isCancelled, Work work) {
    std::thread stopper([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        if (isCancelled)
            stream.cancel();
    });
    const int64_t begin = Tessarine::NClock::nowMs();
    work();
    EXPECT_LT(Tessarine::NClock::nowMs() - begin, 5000);
    stopper.join();
}

/** Answers connections on the loopback: the first by the first of its scripts, and so on; the last one serves all that come
    then. What was asked may be looked at when it has ended. */
class ScriptedServer {
public:
    using Script = std::function<void(Tessarine::NStream& stream)>;

    explicit ScriptedServer(std::vector<Script> scripts, const char* address = "127.0.0.1")
        : scripts(std::move(scripts)) {
        if (server.listen(address, 0))
            thread = std::thread([this] { serve(); });
    }
    ~ScriptedServer() { end(); }
    ScriptedServer(const ScriptedServer&) = delete;

    /** Reads the head of a request, and says a text. */
    static Script says(std::string text) {
        return [text = std::move(text)](Tessarine::NStream& stream) {
            stream.writeRaw(text.data(), int64_t(text.size()));
        };
    }
    /** For scripts: the last one is that of their connection. */
    const std::vector<std::string>& current() const { return requests; }
    uint16_t port() const { return server.getPort(); }
    std::string at(const std::string& file, const std::string& login = "") const {
        return "http://" + login + "127.0.0.1:" + std::to_string(port()) + '/' + file;
    }
    const std::vector<std::string>& end() {
        server.cancel();
        if (thread.joinable())
            thread.join();
        return requests;
    }

private:
    void serve() {
        for (size_t turn = 0;; turn += turn + 1 < scripts.size()) {
            Tessarine::OPtr<Tessarine::NSocket> connected(server.accept(0));
            if (!connected)
                return;
            Tessarine::NStream stream(connected.detach());
            std::string line, request;
            while (stream.readLine(line, 100000) && !line.empty())
                request += line + '\n';
            requests.push_back(request);
            scripts[turn](stream);
        }
    }

    std::vector<Script> scripts;
    std::vector<std::string> requests;
    Tessarine::NServer server;
    std::thread thread;
};
