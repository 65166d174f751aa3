#include "nresolver.h"
#include <atomic>
#include <cstring>
#include <dlfcn.h>
#include <memory>
#include <netdb.h>
#include <poll.h>
#include <pthread.h>
#include <signal.h>
#include <string>
#include <sys/eventfd.h>
#include <unistd.h>

namespace Tessarine {
namespace {

/** The system's lookup. */
struct Lookup {
    Lookup(const char* host, uint16_t port, int32_t flags) : host(host), service(std::to_string(port)) {
        hints.ai_socktype = SOCK_STREAM;
        hints.ai_flags = flags;
    }
    ~Lookup() {
        if (found)
            freeaddrinfo(found);
        if (done >= 0)
            ::close(done);
    }
    Lookup(const Lookup&) = delete;
    void run() { code = getaddrinfo(host.c_str(), service.c_str(), &hints, &found); }

    std::string host, service;
    addrinfo hints{};
    addrinfo* found = nullptr;
    int code = EAI_FAIL;

    // on a thread of its own, since nobody can stop it
    int32_t done = -1;                // readable then
    std::atomic<bool> isLeft{false};  // by its thread or by whom it was for: the second one deletes it
};

void leave(Lookup* lookup) {
    if (lookup->isLeft.exchange(true))
        delete lookup;
}

void* look(void* argument) {
    auto* const lookup = static_cast<Lookup*>(argument);
    lookup->run();
    eventfd_write(lookup->done, 1);
    leave(lookup);
    return nullptr;
}

/** false: the system has no thread for it. */
bool start(Lookup& lookup, pthread_t& thread) {
    sigset_t all, before;
    sigfillset(&all);
    lookup.done = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    pthread_sigmask(SIG_SETMASK, &all, &before);  // a signal is for the program's own threads
    const bool started = lookup.done >= 0 && pthread_create(&thread, nullptr, look, &lookup) == 0;
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    return started;
}

/** The code of a thread that goes on by itself must not be unloaded. */
void keepLoaded() {
    Dl_info own{};
    if (dladdr(reinterpret_cast<const void*>(&look), &own) != 0)
        dlopen(own.dli_fname, RTLD_LAZY | RTLD_NOLOAD | RTLD_NODELETE);
}

void take(const addrinfo* found, std::vector<NAddress>& addresses) {
    for (; found; found = found->ai_next) {
        NAddress address;
        if (!found->ai_addr || found->ai_addrlen > sizeof address.storage)
            continue;
        std::memcpy(&address.storage, found->ai_addr, found->ai_addrlen);
        address.size = found->ai_addrlen;
        addresses.push_back(address);
    }
}
}  // namespace

bool scanAddress(const char* text, uint16_t port, std::vector<NAddress>& addresses) {
    Lookup lookup(text, port, AI_NUMERICHOST | AI_NUMERICSERV);
    lookup.run();
    if (lookup.code == 0)
        take(lookup.found, addresses);
    return !addresses.empty();
}

NError resolveHost(const char* host, uint16_t port, const NInterrupt& interrupt, int64_t endMs,
                   std::vector<NAddress>& addresses) {
    if (interrupt.isCancelled())
        return NError::kCancelled;
    if (scanAddress(host, port, addresses))
        return NError::kNone;
    auto lookup = std::make_unique<Lookup>(host, port, AI_NUMERICSERV | AI_ADDRCONFIG);
    pthread_t thread{};
    if (!start(*lookup, thread))
        return NError::kNoMeans;
    const NError waited = interrupt.wait(lookup->done, POLLIN, endMs);
    if (waited != NError::kNone) {
        keepLoaded();
        pthread_detach(thread);
        leave(lookup.release());
        return waited;
    }
    pthread_join(thread, nullptr);
    if (lookup->code == 0)
        take(lookup->found, addresses);
    return addresses.empty() ? NError::kUnknownHost : NError::kNone;
}

}  // namespace Tessarine
