#include "graphed/gcommandvalue.h"

namespace Tessarine {
IMPLEMENT_CLASS(GCommandValue, UValue)

GCommandValue::GCommandValue(GCommand* command) {
    connect(IPtr<GCommand>(command).detach(), 0, true);
}

}  // namespace Tessarine
