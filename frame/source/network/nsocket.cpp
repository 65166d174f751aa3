#include "network/nsocket.h"
#include "network/hooks.h"
#include "nresolver.h"
#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <unistd.h>
#include <utility>

namespace Tessarine {

NSocket::NSocket(const NTimeouts& timeouts) : timeouts(timeouts) {}

NSocket::NSocket(int32_t connected, const NTimeouts& timeouts) : timeouts(timeouts), descriptor(connected) {
    ::fcntl(connected, F_SETFL, ::fcntl(connected, F_GETFL) | O_NONBLOCK);
    ::fcntl(connected, F_SETFD, FD_CLOEXEC);
    wholeEndMs = NClock::fromNowMs(timeouts.wholeMs);
}

NSocket::~NSocket() {
    close();
}

bool NSocket::connect(const char* host, uint16_t port) {
    begin();
    std::vector<NAddress> addresses;
    const NError found = resolveHost(host, port, interrupt, std::min(phaseEndMs, wholeEndMs), addresses);
    if (found != NError::kNone)
        return fail(found);
    for (size_t left = addresses.size(); left > 0 && !interrupt.isCancelled(); --left) {
        const int64_t now = NClock::nowMs(), end = std::min(phaseEndMs, wholeEndMs);
        const int64_t share = end == NClock::kNever ? end : now + (end - now) / int64_t(left);
        error = NError::kNone;
        if (connectTo(addresses[addresses.size() - left], share))
            return true;
    }
    close();
    if (interrupt.isCancelled())  // whatever an address before has said
        error = NError::kCancelled;
    return false;
}

void NSocket::begin() {
    close();
    error = NError::kNone;
    limit(timeouts.connectMs);
    wholeEndMs = NClock::fromNowMs(timeouts.wholeMs);
}

bool NSocket::connectTo(const NAddress& address, int64_t endMs) {
    close();
    descriptor = ::socket(address.storage.ss_family, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    if (descriptor < 0)
        return fail(NError::kNoMeans);
    if (::connect(descriptor, address.get(), address.size) != 0) {
        if (errno != EINPROGRESS && errno != EINTR)
            return fail(NError::kUnreachable);
        const NError waited = interrupt.wait(descriptor, POLLOUT, endMs);
        if (waited != NError::kNone)
            return fail(waited);
    }
    if (!isConnected())
        return fail(NError::kUnreachable);
    const int32_t atOnce = 1;
    ::setsockopt(descriptor, IPPROTO_TCP, TCP_NODELAY, &atOnce, sizeof atOnce);
    limit(0);
    return true;
}

bool NSocket::isConnected() {
    int32_t code = 0;
    socklen_t size = sizeof code;
    return ::getsockopt(descriptor, SOL_SOCKET, SO_ERROR, &code, &size) == 0 && code == 0;
}

bool NSocket::secure(const char* host) {
    std::unique_ptr<NSecureChannel> made(gNetworkHooks.makeSecureChannel ? gNetworkHooks.makeSecureChannel() : nullptr);
    limit(timeouts.connectMs);
    const bool done = made && isOpen() && !channel ? made->handshake(*this, host) : fail(NError::kNoSecurity);
    limit(0);
    if (done)
        channel = std::move(made);
    else
        close();
    return done;
}

int64_t NSocket::receive(void* buffer, int64_t count) {
    if (isDue())
        return -1;
    if (count <= 0)
        return 0;
    if (channel)
        return channel->receive(*this, buffer, count);
    int64_t received = 0;
    while ((received = receiveNow(buffer, count)) == kWouldBlock)
        if (!wait(POLLIN))
            return -1;
    return received < 0 ? -1 : received;
}

bool NSocket::send(const void* bytes, int64_t count) {
    if (isDue())
        return false;
    if (channel && count > 0)
        return channel->send(*this, bytes, count);
    const char* next = static_cast<const char*>(bytes);
    while (count > 0) {
        const int64_t sent = sendNow(next, count);
        if (sent == kFailed || (sent == kWouldBlock && !wait(POLLOUT)))
            return false;
        next += std::max<int64_t>(sent, 0);
        count -= std::max<int64_t>(sent, 0);
    }
    return true;
}

void NSocket::close() {
    const NError before = error;
    if (channel)
        channel->close(*this);
    channel.reset();
    error = before;  // a goodbye that doesn't get through is no failure
    if (descriptor >= 0)
        ::close(std::exchange(descriptor, -1));
}

int64_t NSocket::receiveNow(void* buffer, int64_t count) {
    ssize_t received = 0;
    do
        received = ::recv(descriptor, buffer, size_t(count), 0);
    while (received < 0 && errno == EINTR);
    if (received >= 0)
        return received;
    if (errno == EAGAIN)
        return kWouldBlock;
    fail(NError::kBroken);
    return kFailed;
}

int64_t NSocket::sendNow(const void* bytes, int64_t count) {
    ssize_t sent = 0;
    do
        sent = ::send(descriptor, bytes, size_t(count), MSG_NOSIGNAL);
    while (sent < 0 && errno == EINTR);
    if (sent >= 0)
        return sent;
    if (errno == EAGAIN)
        return kWouldBlock;
    fail(NError::kBroken);
    return kFailed;
}

bool NSocket::wait(int16_t events) {
    if (isDue())
        return false;
    const int64_t endMs = std::min({phaseEndMs, wholeEndMs, NClock::fromNowMs(timeouts.idleMs)});
    const NError waited = interrupt.wait(descriptor, events, endMs);
    return waited == NError::kNone || fail(waited);
}

/** The connection isn't to be used any more; asked even while bytes come without a pause. */
bool NSocket::isDue() {
    if (interrupt.isCancelled())
        return !fail(NError::kCancelled);
    if (!isOpen())
        return !fail(NError::kBroken);
    const int64_t endMs = std::min(phaseEndMs, wholeEndMs);
    return endMs != NClock::kNever && NClock::nowMs() >= endMs && !fail(NError::kTimeout);
}

bool NSocket::fail(NError why) {
    if (error == NError::kNone)
        error = why;
    return false;
}

}  // namespace Tessarine
