#include "base/source/hooks.h"

namespace Tessarine {

constinit RunLoopHooks gRunLoopHooks;

}  // namespace Tessarine
