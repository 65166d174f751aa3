#pragma once
#include "base/source/fstring.h"
#include "base/uprogresshook.h"
#include <algorithm>

namespace Tessarine {

/** Tells a hook of a row of files as of one. */
class RowProgress : public UProgressHook {
public:
    /** The hook is borrowed and may be null; total in bytes. */
    RowProgress(UProgressHook* hook, uint64_t total)
        : hook(hook), total(int64_t(std::min<uint64_t>(total, INT64_MAX))) {}

    void begin(int64_t bytes) { size = std::max<int64_t>(bytes, 0); }
    bool setProgress(int32_t percent) override { return tell(from(size / 100 * percent)); }
    bool end() { return tell(done = from(size)); }
    void setText(const ConstString& text) override {
        if (hook)
            hook->setText(text);
    }
    /** The hook has said so. */
    bool isStopped() const { return stopped; }

private:
    int64_t from(int64_t bytes) const { return done + std::min(bytes, INT64_MAX - done); }
    bool tell(int64_t bytes) {
        stopped = stopped || !tellProgress(hook, bytes, total);
        return !stopped;
    }

    UProgressHook* hook;
    int64_t total, done = 0, size = 0;
    bool stopped = false;
};

}  // namespace Tessarine
