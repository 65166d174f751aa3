#include "network/hooks.h"
#include <unistd.h>

namespace Tessarine {

constinit NetworkHooks gNetworkHooks;

bool isFirstThread() {
    return ::gettid() == ::getpid();
}

bool isMainThread() {
    return gNetworkHooks.isMainThread ? gNetworkHooks.isMainThread() : isFirstThread();
}

}  // namespace Tessarine
