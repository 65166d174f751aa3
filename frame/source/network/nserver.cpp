#include "network/nserver.h"
#include "nresolver.h"
#include <algorithm>
#include <cerrno>
#include <netinet/in.h>
#include <poll.h>
#include <unistd.h>
#include <utility>

namespace Tessarine {
namespace {
constexpr const char* kThisMachine = "127.0.0.1";
// failures that concern one connection, which is gone, and not those to come
constexpr int kPassing[] = {EAGAIN, EINTR, ECONNABORTED, EPROTO, EPERM, ENETDOWN, ENETUNREACH, EHOSTDOWN, EHOSTUNREACH};
}  // namespace

NServer::~NServer() {
    close();
}

bool NServer::listen(const char* address, uint16_t port) {
    close();
    std::vector<NAddress> addresses;
    const bool scanned = scanAddress(address ? address : kThisMachine, port, addresses);
    const bool listens = scanned && listenAt(addresses.front());
    error = !scanned ? NError::kUnknownHost : listens ? NError::kNone : NError::kNoMeans;
    if (!listens)
        close();
    return listens;
}

bool NServer::listenAt(const NAddress& address) {
    const int32_t again = 1;  // a port that was left a moment ago
    descriptor = ::socket(address.storage.ss_family, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    return descriptor >= 0 && ::setsockopt(descriptor, SOL_SOCKET, SO_REUSEADDR, &again, sizeof again) == 0 &&
           ::bind(descriptor, address.get(), address.size) == 0 && ::listen(descriptor, SOMAXCONN) == 0;
}

uint16_t NServer::getPort() const {
    NAddress bound;
    bound.size = sizeof bound.storage;
    auto* const address = reinterpret_cast<sockaddr*>(&bound.storage);
    if (descriptor < 0 || ::getsockname(descriptor, address, &bound.size) != 0)
        return 0;
    const bool isNew = address->sa_family == AF_INET6;
    return ntohs(isNew ? reinterpret_cast<sockaddr_in6*>(address)->sin6_port
                       : reinterpret_cast<sockaddr_in*>(address)->sin_port);
}

NSocket* NServer::accept(int32_t timeoutMs, const NTimeouts& timeouts) {
    const int64_t endMs = NClock::fromNowMs(timeoutMs);
    error = descriptor < 0 ? NError::kBroken : NError::kNone;
    while (error == NError::kNone) {
        error = interrupt.wait(descriptor, POLLIN, endMs);
        const int32_t connected =
            error == NError::kNone ? ::accept4(descriptor, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC) : -1;
        if (connected >= 0)
            return new NSocket(connected, timeouts);
        if (error == NError::kNone && std::ranges::find(kPassing, errno) == std::end(kPassing))
            error = NError::kNoMeans;
    }
    return nullptr;
}

void NServer::close() {
    if (descriptor >= 0)
        ::close(std::exchange(descriptor, -1));
}

}  // namespace Tessarine
