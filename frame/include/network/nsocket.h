#pragma once
#include "base/source/fobject.h"
#include "network/ninterrupt.h"
#include <memory>

namespace Tessarine {
class NSecureChannel;
struct NAddress;

/** How long things may take, in milliseconds; 0: any time. */
struct NTimeouts {
    int32_t connectMs = 30000;  // name and connection, together; the handshake; the head of an answer
    int32_t idleMs = 30000;     // until the next bytes pass
    int32_t wholeMs = 0;        // all, from the connection on
};

/** One end of a connection by TCP, over either version of the Internet's protocol.

    Hosts     a name, or an address as text, one of version 6 without its brackets. Addresses are tried in the system's order, each
              for its share of the time.
    Failures  the first one is kept until the next connect(). Nothing raises a signal, and no child inherits the descriptor.
    Threads   one at a time, except cancel(). */
class NSocket : public FObject {
public:
    explicit NSocket(const NTimeouts& timeouts = {});
    /** Takes over the descriptor of a connection. */
    NSocket(int32_t connected, const NTimeouts& timeouts);
    ~NSocket() override;
    NSocket(const NSocket&) = delete;
    NSocket& operator=(const NSocket&) = delete;

    bool connect(const char* host, uint16_t port);
    /** From here on encrypted, with a partner who has proved to be the host. false: it is no connection any more. */
    bool secure(const char* host);
    /** As many bytes as there are, at least one; 0: the other side has ended, or none are wanted; -1: a failure. */
    int64_t receive(void* buffer, int64_t count);
    /** All of them. */
    bool send(const void* bytes, int64_t count);
    void close();
    /** Ends what goes on, and whatever is begun later, with kCancelled. Any thread. */
    void cancel() { interrupt.cancel(); }
    bool isCancelled() const { return interrupt.isCancelled(); }
    bool isOpen() const { return descriptor >= 0; }
    /** All that follows must be done within so many milliseconds, besides the time-outs; 0: no longer. connect() and secure() end
        it as well. */
    void limit(int32_t ms) { phaseEndMs = NClock::fromNowMs(ms); }
    NError getError() const { return error; }

    // for secure channels: the bytes as they are on the line
    static constexpr int64_t kWouldBlock = -1, kFailed = -2;
    /** Without waiting; 0: the end. */
    int64_t receiveNow(void* buffer, int64_t count);
    int64_t sendNow(const void* bytes, int64_t count);
    /** For an event of poll. */
    bool wait(int16_t events);
    /** Keeps the first one; always false. */
    bool fail(NError why);

private:
    void begin();
    bool connectTo(const NAddress& address, int64_t endMs);
    bool isConnected();
    bool isDue();

    NTimeouts timeouts;
    NInterrupt interrupt;
    int32_t descriptor = -1;  // owned
    int64_t phaseEndMs = NClock::kNever, wholeEndMs = NClock::kNever;
    NError error = NError::kNone;
    std::unique_ptr<NSecureChannel> channel;  // null: as the bytes are
};

/** What makes the bytes of a socket secret and its partner known. Failures are told to the socket. */
class NSecureChannel {
public:
    virtual ~NSecureChannel() = default;
    virtual bool handshake(NSocket& socket, const char* host) = 0;
    /** As NSocket::receive. */
    virtual int64_t receive(NSocket& socket, void* buffer, int64_t count) = 0;
    virtual bool send(NSocket& socket, const void* bytes, int64_t count) = 0;
    /** Says goodbye, without waiting. */
    virtual void close(NSocket& socket) = 0;
};

}  // namespace Tessarine
