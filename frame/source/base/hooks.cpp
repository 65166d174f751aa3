#include "base/hooks.h"

namespace Tessarine {

constinit ComponentHooks gComponentHooks;

}  // namespace Tessarine
