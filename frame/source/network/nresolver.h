#pragma once
#include "network/ninterrupt.h"
#include <sys/socket.h>
#include <vector>

namespace Tessarine {

/** Where to connect to, or to listen. */
struct NAddress {
    const sockaddr* get() const { return reinterpret_cast<const sockaddr*>(&storage); }
    sockaddr_storage storage{};
    socklen_t size = 0;
};

/** The addresses of a host for connections, in the order to try them; kUnknownHost: there are none. A name server that doesn't
    answer is left alone when time is up. */
NError resolveHost(const char* host, uint16_t port, const NInterrupt& interrupt, int64_t endMs,
                   std::vector<NAddress>& addresses);
/** Of a text that is an address; false: it is none. */
bool scanAddress(const char* text, uint16_t port, std::vector<NAddress>& addresses);

}  // namespace Tessarine
