#include "gui/values/hooks.h"

namespace Tessarine {

constinit ValueHooks gValueHooks;

}  // namespace Tessarine
