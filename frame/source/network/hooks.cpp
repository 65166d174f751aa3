#include "network/hooks.h"

namespace Tessarine {

constinit NetworkHooks gNetworkHooks;

}  // namespace Tessarine
