#include "network/openssl/securenetwork.h"
#include "network/hooks.h"
#include "network/nsocket.h"
#include <algorithm>
#include <memory>
#include <openssl/bio.h>
#include <openssl/err.h>
#include <openssl/ssl.h>
#include <openssl/x509v3.h>
#include <poll.h>

namespace Tessarine {
namespace {

template <auto Function>
struct Freed {
    template <class T>
    void operator()(T* object) const {
        Function(object);
    }
};
using Context = std::unique_ptr<SSL_CTX, Freed<SSL_CTX_free>>;
using Session = std::unique_ptr<SSL, Freed<SSL_free>>;

// what the library asks of a socket: not its own way to write, which would raise SIGPIPE

int passOn(BIO* bio, int64_t passed, int retry) {
    BIO_clear_retry_flags(bio);
    if (passed == NSocket::kWouldBlock)
        BIO_set_flags(bio, retry | BIO_FLAGS_SHOULD_RETRY);
    return int(std::max<int64_t>(passed, -1));
}

int readSocket(BIO* bio, char* buffer, int count) {
    return passOn(bio, static_cast<NSocket*>(BIO_get_data(bio))->receiveNow(buffer, count), BIO_FLAGS_READ);
}

int writeSocket(BIO* bio, const char* bytes, int count) {
    return passOn(bio, static_cast<NSocket*>(BIO_get_data(bio))->sendNow(bytes, count), BIO_FLAGS_WRITE);
}

long controlSocket(BIO* /*bio*/, int command, long /*number*/, void* /*pointer*/) {
    return command == BIO_CTRL_FLUSH;
}

BIO_METHOD* makeSocketMethod() {
    BIO_METHOD* const made = BIO_meth_new(BIO_get_new_index(), "NSocket");
    if (made) {
        BIO_meth_set_read(made, readSocket);
        BIO_meth_set_write(made, writeSocket);
        BIO_meth_set_ctrl(made, controlSocket);
    }
    return made;
}

/** Of all connections, and never freed: at the program's end some may still be open. Null: the library can't be had. */
BIO_METHOD* socketMethod() {
    static BIO_METHOD* const method = makeSocketMethod();
    return method;
}

Context makeContext() {
    Context context(SSL_CTX_new(TLS_client_method()));
    const bool good = context && SSL_CTX_set_min_proto_version(context.get(), TLS1_2_VERSION) == 1 &&
                      SSL_CTX_set_default_verify_paths(context.get()) == 1;
    if (!good)
        return nullptr;
    SSL_CTX_set_verify(context.get(), SSL_VERIFY_PEER, nullptr);
    SSL_CTX_set_options(context.get(), SSL_OP_NO_RENEGOTIATION);
    SSL_CTX_clear_mode(context.get(), SSL_MODE_AUTO_RETRY);  // between records, time-outs and a cancel are looked at
    return context;
}

/** As socketMethod. */
SSL_CTX* sharedContext() {
    static SSL_CTX* const context = makeContext().release();
    return context;
}

class Channel final : public NSecureChannel {
public:
    bool handshake(NSocket& socket, const char* host) override;
    int64_t receive(NSocket& socket, void* buffer, int64_t count) override;
    bool send(NSocket& socket, const void* bytes, int64_t count) override;
    void close(NSocket& socket) override;

private:
    bool prepare(NSocket& socket, const char* host);
    bool isFor(const char* host);
    template <class Call>
    bool repeat(NSocket& socket, Call call);

    Session session;
    bool isGood = false;  // goodbyes are only for those who still understand each other
};

bool Channel::handshake(NSocket& socket, const char* host) {
    if (!prepare(socket, host))
        return socket.fail(NError::kNoSecurity);
    isGood = repeat(socket, [&] { return SSL_do_handshake(session.get()); });
    if (isGood)
        return true;
    const bool untrusted = SSL_get_verify_result(session.get()) != X509_V_OK;
    return socket.fail(untrusted ? NError::kUntrusted : NError::kNoSecurity);
}

bool Channel::prepare(NSocket& socket, const char* host) {
    session.reset(sharedContext() ? SSL_new(sharedContext()) : nullptr);
    BIO* bio = session && socketMethod() ? BIO_new(socketMethod()) : nullptr;
    if (!bio)
        return false;
    BIO_set_data(bio, &socket);
    BIO_set_init(bio, 1);
    SSL_set_bio(session.get(), bio, bio);
    SSL_set_connect_state(session.get());
    return isFor(host);
}

/** Says whose certificate it must be; only a name is told to the server, for one that serves several. */
bool Channel::isFor(const char* host) {
    if (X509_VERIFY_PARAM_set1_ip_asc(SSL_get0_param(session.get()), host) == 1)
        return true;
    SSL_set_hostflags(session.get(), X509_CHECK_FLAG_NO_PARTIAL_WILDCARDS);
    return *host && SSL_set1_host(session.get(), host) == 1 && SSL_set_tlsext_host_name(session.get(), host) == 1;
}

/** Calls until it is done, waiting for the socket in between; false: it failed, or the other side has ended. */
template <class Call>
bool Channel::repeat(NSocket& socket, Call call) {
    for (;;) {
        ERR_clear_error();
        const int result = call();
        if (result == 1)
            return true;
        const int why = SSL_get_error(session.get(), result);
        const bool waits = why == SSL_ERROR_WANT_READ || why == SSL_ERROR_WANT_WRITE;
        isGood = isGood && (waits || why == SSL_ERROR_ZERO_RETURN);
        if (!waits || !socket.wait(why == SSL_ERROR_WANT_READ ? POLLIN : POLLOUT))
            return false;
    }
}

int64_t Channel::receive(NSocket& socket, void* buffer, int64_t count) {
    size_t received = 0;
    if (repeat(socket, [&] { return SSL_read_ex(session.get(), buffer, size_t(count), &received); }))
        return int64_t(received);
    if (SSL_get_shutdown(session.get()) & SSL_RECEIVED_SHUTDOWN && isGood)
        return 0;
    socket.fail(NError::kBroken);  // an end without a goodbye may be anybody's
    return -1;
}

bool Channel::send(NSocket& socket, const void* bytes, int64_t count) {
    size_t sent = 0;
    return repeat(socket, [&] { return SSL_write_ex(session.get(), bytes, size_t(count), &sent); }) ||
           socket.fail(NError::kBroken);
}

void Channel::close(NSocket& /*socket*/) {
    if (isGood)
        SSL_shutdown(session.get());
    session.reset();
}
}  // namespace

bool installTessarineSecureNetwork() {
    if (sharedContext())
        gNetworkHooks.makeSecureChannel = []() -> NSecureChannel* { return new Channel; };
    return sharedContext() != nullptr;
}

bool trustAuthoritiesOf(const char* pemFile) {
    return gNetworkHooks.makeSecureChannel && SSL_CTX_load_verify_file(sharedContext(), pemFile) == 1;
}

}  // namespace Tessarine
