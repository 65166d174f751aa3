#pragma once

namespace Tessarine {

/** Lets connections be secured, with OpenSSL: TLS 1.2 at least, certificate and host name always looked at, against the
    authorities that the system trusts. false: the library can't be had. At start-up; a second time changes nothing. */
bool installTessarineSecureNetwork();
/** Trusts the authorities of a PEM file besides, such as a company's own. false: there are none in it, or nothing is installed.
    Before the first connection. */
bool trustAuthoritiesOf(const char* pemFile);

}  // namespace Tessarine
