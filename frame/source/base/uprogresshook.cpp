#include "base/uprogresshook.h"
#include <algorithm>

namespace Tessarine {

IMPLEMENT_ABSTRACT_CLASS(UProgressHook, CmObject)

bool tellProgress(UProgressHook* hook, int64_t done, int64_t total) {
    if (!hook)
        return true;
    const double share = total > 0 ? double(done) / double(total) : 0;
    return hook->setProgress(int32_t(std::clamp(share, 0.0, 1.0) * 100));
}

}  // namespace Tessarine
