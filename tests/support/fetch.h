#pragma once
#include "base/fmessage.h"
#include "storage/furlhttphandler.h"
#include <atomic>
#include <gtest/gtest.h>
#include <string>
#include <thread>

namespace Tessarine {

/** The rest, up to 4 MB; empty without a stream. */
inline std::string contentOf(FStream* stream) {
    std::string content(1 << 22, 0);
    content.resize(stream ? size_t(stream->readRaw(content.data(), int64_t(content.size()))) : 0);
    return content;
}

/** A URL, told in UTF-8, and its handler. */
struct Fetch {
    explicit Fetch(const std::string& text, const NTimeouts& timeouts = {5000, 5000, 20000}) {
        FString wide;
        EXPECT_TRUE(wide.fromUTF8(text.c_str()) && url.setUrl(wide.text16()));
        handler = classCast<FUrlHttpHandler>(url.makeHandler());
        handler->setTimeouts(timeouts);
    }
    NError open() {
        const bool opened = handler->open();
        EXPECT_EQ(opened, handler->getError() == NError::kNone);
        EXPECT_EQ(opened, handler->getStream() != nullptr);
        return handler->getError();
    }
    std::string content() const { return contentOf(handler->getStream()); }

    FUrl url;
    FUrlHttpHandler* handler;
};

/** Works on another thread, while this one delivers messages as the main thread does. */
template <class Work>
void runBeside(Work work) {
    std::atomic<bool> done{false};
    std::thread worker([&] {
        work();
        done = true;
    });
    for (; !done; std::this_thread::yield())
        gMessenger->deliverMessages();
    worker.join();
}

}  // namespace Tessarine
