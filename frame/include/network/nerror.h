#pragma once
#include <cstdint>

namespace Tessarine {
class UTranslatedString;

/** Why a connection, or what was asked over it, came to nothing. */
enum class NError : int32_t {
    kNone,
    kBadUrl,  // a part that can't be asked for: no host, a control character, another protocol
    kUnknownHost,
    kUnreachable,  // nobody listens, or there is no way
    kTimeout,
    kCancelled,
    kBroken,       // it ended where it should not, or is no connection
    kNoSecurity,   // the other side speaks no secure protocol that is good enough, or this program none at all
    kUntrusted,    // its certificate isn't good for the host
    kBadAnswer,    // no answer of the protocol, or one beyond all bounds
    kRefused,      // the server or a proxy said no
    kBadRedirect,  // sent on to where one doesn't go
    kTooManyRedirects,
    kLoginNeeded,  // there is nobody to ask for one, or the one that there was isn't right
    kNoMeans,      // the system has no descriptors, or the address is taken
    kNumErrors,
};

/** What a user can be told. */
const UTranslatedString& textOf(NError error);

}  // namespace Tessarine
