#include "gui/drawing/hooks.h"

namespace Tessarine {

constinit DrawingHooks gDrawingHooks;

}  // namespace Tessarine
