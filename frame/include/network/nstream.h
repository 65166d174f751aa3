#pragma once
#include "network/nsocket.h"
#include "pluginterfaces/base/smartpointer.h"
#include "storage/fbstream.h"
#include <memory>
#include <string>

namespace Tessarine {

/** The bytes of a connection as a stream: what is read waits for the other side, what is written goes out at once.

    Places    count what was read. There is no way back: seek goes forward, reading, or fails with -1.
    Failures  verify() is false after one, and getError() tells which; a plain end is none.
    Threads   one at a time, except cancel(). */
class NStream : public FStream {
public:
    explicit NStream(const NTimeouts& timeouts = {}) : socket(new NSocket(timeouts)) {}
    /** Takes the connection over, as NServer gives it; null: it has none. */
    explicit NStream(NSocket* connected) : socket(connected ? connected : new NSocket) {}
    ~NStream() override;
    NStream(const NStream&) = delete;
    NStream& operator=(const NStream&) = delete;

    bool connect(const char* host, uint16_t port);
    /** As NSocket::secure; false as well when something that isn't secured was read ahead. */
    bool secure(const char* host);
    void close();
    /** Any thread. */
    void cancel() { socket->cancel(); }
    bool isOpen() const { return socket->isOpen(); }
    NError getError() const { return socket->getError(); }
    /** As NSocket::limit. */
    void limit(int32_t ms) { socket->limit(ms); }

    /** What is there already, at least a byte; 0 at the end, -1 after a failure. */
    int64_t receive(void* buffer, int64_t count);
    /** Up to a line feed, which goes, as does a carriage return before it. false: the end, a failure, or more than maxBytes before it. */
    bool readLine(std::string& line, uint32_t maxBytes);
    using FStream::readLine;
    /** What follows is a content of so many bytes (-1: up to the end), and places count from here. An end before that is a
        failure. */
    void beginContent(int64_t bytes);

    int64_t readRaw(void* buffer, int64_t count) override;
    int64_t writeRaw(const void* buffer, int64_t count) override;
    int64_t seek(int64_t pos, FSeekMode mode) override;
    int64_t tell() override { return place; }
    bool verify() override { return getError() == NError::kNone; }
    using FStream::seek;
    using FStream::tell;

    DECLARE_CLASS(NStream, FStream)

private:
    static constexpr int64_t kUnbounded = -1;
    int64_t takeBuffered(void* buffer, int64_t count);
    int64_t receiveNew(void* buffer, int64_t count);
    bool fillBuffer();

    OPtr<NSocket> socket;            // never another one, so that cancel() finds it
    std::unique_ptr<char[]> buffer;  // read ahead; made at first use
    int64_t next = 0, filled = 0;    // in the buffer
    int64_t place = 0;
    int64_t contentLeft = kUnbounded;  // to come from the socket
};

}  // namespace Tessarine
