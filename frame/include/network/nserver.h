#pragma once
#include "network/nsocket.h"

namespace Tessarine {
struct NAddress;

/** Waits for connections of others.

    Threads   one at a time, except cancel(). */
class NServer : public FObject {
public:
    NServer() = default;
    ~NServer() override;
    NServer(const NServer&) = delete;
    NServer& operator=(const NServer&) = delete;

    /** An address of this machine as text; null: reached from this machine alone. Port 0: any that is free. */
    bool listen(const char* address, uint16_t port);
    /** 0: it doesn't listen. */
    uint16_t getPort() const;
    /** The next connection, with a reference for the caller. Null: nobody came in so many milliseconds (0: any), or a failure. */
    NSocket* accept(int32_t timeoutMs, const NTimeouts& timeouts = {});
    void close();
    /** As NSocket::cancel. Any thread. */
    void cancel() { interrupt.cancel(); }
    /** Of the last call. */
    NError getError() const { return error; }

private:
    bool listenAt(const NAddress& address);

    NInterrupt interrupt;
    int32_t descriptor = -1;  // owned
    NError error = NError::kNone;
};

}  // namespace Tessarine
