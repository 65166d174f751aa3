#pragma once
#include "network/nstream.h"
#include "storage/furl.h"

namespace Tessarine {

/** The content of a URL that comes over a connection. It outlives the handler that opened it. */
class FUrlStream : public NStream {
public:
    explicit FUrlStream(const FUrl& url = FUrl(), const NTimeouts& timeouts = {}) : NStream(timeouts), url(url) {}

    /** Where the content comes from. */
    const FUrl& getUrl() const { return url; }

    DECLARE_CLASS(FUrlStream, NStream)

private:
    FUrl url;
};

}  // namespace Tessarine
